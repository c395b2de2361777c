// What can be chosen above the plots: tables laid over, time, age.

import { notesOf } from "./drawing.js";
import { byId, button, el } from "./dom.js";
import { atlas, change, layOver, putFirst, state, takeAway, thisYear } from "./state.js";
import { agesOfView, tablesOf } from "./address.js";
import { PAID } from "./lives.js";
import { readAs } from "./numbers.js";
import { timeAs } from "./projection.js";
import { MOST_TABLES } from "./tables.js";

// The fields of numbers: what is shown of a view, and what is chosen by what is typed.
const FIELDS = {
  year: {
    shown: ({ time }) => time.year,
    choose: (year) => change({ time: { ...state.view.time, year } }),
  },
  age: { shown: ({ age }) => age, choose: (age) => change({ age }), range: agesOfView },
  interest: { shown: ({ interest }) => interest, choose: (interest) => change({ interest }) },
  term: { shown: ({ term }) => term, choose: (term) => change({ term }) },
  deferred: { shown: ({ deferred }) => deferred, choose: (deferred) => change({ deferred }) },
  age2: {
    kind: "age",
    shown: ({ pair }) => pair?.age,
    choose: (age) => change({ pair: { ...state.view.pair, age } }),
    range: agesOfView,
  },
};

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

// Whether what is typed is what is shown; if it cannot be meant, a sentence beside it says so.
function judge(id, view) {
  const field = byId(id);
  const { range, shown, kind = id } = FIELDS[id];
  const { value, problem } = readAs(kind, field.value, range?.(view));
  field.setAttribute("aria-invalid", Boolean(problem));
  byId(`${id}-problem`).textContent = problem
    ? `${problem} Shown: ${shown(view) ?? "for life"}.`
    : "";
  return { value, problem };
}

function listenTo(id) {
  const read = () => {
    const { value, problem } = judge(id, state.view);
    if (!problem) FIELDS[id].choose(value);
  };
  byId(id).addEventListener("input", read);
  byId(id).addEventListener("keydown", (event) => {
    const step = { ArrowUp: 1, ArrowDown: -1 }[event.key];
    if (!step) return;
    event.preventDefault();
    byId(id).value = FIELDS[id].shown(state.view) + step;
    read();
  });
}

// What is typed stays as it is typed, also where it cannot be meant, until something else is shown.
function fill(id, view) {
  const field = byId(id);
  const shown = String(FIELDS[id].shown(view) ?? "");
  const typed = field.value && judge(id, view);
  if (String(typed?.value) !== shown && !(typed?.problem && field.dataset.shown === shown)) {
    field.value = shown;
    if (shown) judge(id, view);
  }
  field.dataset.shown = shown;
}

export function startControls() {
  byId("other").append(...choices());
  byId("other").addEventListener("change", (event) => {
    const table = atlas.tables.get(event.target.value);
    event.target.value = "";
    if (table) layOver(table);
  });
  byId("time").addEventListener("change", ({ target }) => {
    const { time, age } = state.view;
    change({ time: timeAs(target.value, time, age, thisYear) });
  });
  byId("paid").append(
    ...Object.entries(PAID).map(([value, text]) => el("option", { value }, text)),
  );
  byId("paid").addEventListener("change", (event) => change({ paid: event.target.value }));
  const pairUp = () => {
    const keys = [byId("one").value, byId("two").value];
    const { pair, age } = state.view;
    change({ pair: keys[1] ? { keys, age: pair?.age ?? age } : null });
  };
  for (const id of ["one", "two"]) byId(id).addEventListener("change", pairUp);
  Object.keys(FIELDS).forEach(listenTo);
  // On a phone the plot comes first.
  for (const id of ["choices", "plan"]) byId(id).open = innerWidth > 640;
}

export function showControls(view) {
  const [, ...others] = tablesOf(view);
  byId("laid").replaceChildren(...others.map(laid));
  byId("other").disabled = others.length + 1 >= MOST_TABLES;
  for (const option of byId("other").querySelectorAll("option")) {
    option.disabled = tablesOf(view).some(({ name }) => name === option.value);
  }
  byId("time").value = view.time.kind;
  byId("paid").value = view.paid;
  byId("year").hidden = view.time.kind === "stored";
  for (const id of Object.keys(FIELDS)) fill(id, view);
  const time = {
    stored: "as stored",
    year: `of ${view.time.year}`,
    born: `born ${view.time.year}`,
  };
  const over = others.length ? `, with ${others.map(({ name }) => name).join(", ")}` : "";
  byId("choices").firstElementChild.textContent =
    `Rates ${time[view.time.kind]}, age ${view.age}${over}`;
  const notes = notesOf(view).map((text) => el("li", text));
  if (notes.length && view.time.kind === "stored") {
    notes[0].append(
      " ",
      button(`Project all to ${thisYear}`, () =>
        change({ time: { kind: "year", year: thisYear } }),
      ),
    );
  }
  byId("notes").replaceChildren(...notes);
}
