// What can be chosen above the plots: tables laid over, time, age.

import { notesOf } from "./drawing.js";
import { byId, button, el } from "./dom.js";
import { atlas, change, layOver, putFirst, state, takeAway } from "./state.js";
import { agesOfView, tablesOf } from "./address.js";
import { MOST_TABLES } from "./tables.js";

const inputs = {
  year: () => byId("year"),
  age: () => byId("age"),
  interest: () => byId("interest"),
};
const first = new Date().getFullYear(); // the year that is offered first

export function chosenAge(view) {
  const [low, high] = agesOfView(view);
  return Math.max(low, Math.min(view.age, high));
}

function choices() {
  const groups = new Map();
  for (const table of atlas.tables.values()) {
    const place = table.country ?? "invented, for tests only";
    const label = `${table.family} (${place})`;
    if (!groups.has(label)) groups.set(label, el("optgroup", { label }));
    const { from, to } = table.reconstructed ?? {};
    const mark = table.reconstructed ? ` (⚠ ${from}–${to} reconstructed)` : "";
    groups.get(label).append(el("option", { value: table.name }, table.name + mark));
  }
  return [el("option", { value: "" }, "add a table…"), ...groups.values()];
}

const laid = (table) =>
  el(
    "li",
    el("span", table.name),
    button("first", () => putFirst(table), `Put ${table.name} first`),
    button("×", () => takeAway(table), `Take ${table.name} away`),
  );

const otherYear = (kind, year, age) => (kind === "born" ? year - age : year + age);

function chooseTime(kind) {
  const { time } = state.view;
  const age = chosenAge(state.view);
  const year =
    time.kind === "stored"
      ? first - (kind === "born" ? age : 0)
      : time.kind === kind
        ? time.year
        : otherYear(kind, time.year, age);
  change({ time: kind === "stored" ? { kind, year: null } : { kind, year } });
}

// A number that is typed counts once it makes sense; the field shows what counts when it is left.
function listenTo(id, choose) {
  const field = inputs[id]();
  field.addEventListener("input", () => {
    if (field.value && field.validity.valid) choose(Number(field.value));
  });
  field.addEventListener("change", () => showControls(state.view));
}

export function startControls() {
  byId("other").append(...choices());
  byId("other").addEventListener("change", (event) => {
    const table = atlas.tables.get(event.target.value);
    event.target.value = "";
    if (table) layOver(table);
  });
  byId("time").addEventListener("change", (event) => chooseTime(event.target.value));
  listenTo("year", (year) => change({ time: { ...state.view.time, year } }));
  listenTo("age", (age) => change({ age }));
  listenTo("interest", (interest) => change({ interest }));
  // On a phone the plot comes first.
  byId("choices").open = innerWidth > 640;
}

export function showControls(view) {
  const [, ...others] = tablesOf(view);
  byId("laid").replaceChildren(...others.map(laid));
  byId("other").disabled = others.length + 1 >= MOST_TABLES;
  for (const option of byId("other").querySelectorAll("option")) {
    option.disabled = tablesOf(view).some(({ name }) => name === option.value);
  }
  byId("time").value = view.time.kind;
  byId("year").hidden = view.time.kind === "stored";
  const values = { year: view.time.year, age: chosenAge(view), interest: view.interest };
  for (const [id, field] of Object.entries(inputs)) {
    // What is being typed is not changed under the fingers.
    const typed = document.activeElement === field() && field().value && field().validity.valid;
    if (!typed) field().value = values[id] ?? "";
  }
  const time = {
    stored: "as stored",
    year: `of ${view.time.year}`,
    born: `born ${view.time.year}`,
  };
  const over = others.length ? `, with ${others.map(({ name }) => name).join(", ")}` : "";
  byId("choices").firstElementChild.textContent =
    `Rates ${time[view.time.kind]}, age ${values.age}${over}`;
  const notes = notesOf(view).map((text) => el("li", text));
  if (notes.length && view.time.kind === "stored") {
    notes[0].append(
      " ",
      button(`Project all to ${first}`, () => change({ time: { kind: "year", year: first } })),
    );
  }
  byId("notes").replaceChildren(...notes);
}
