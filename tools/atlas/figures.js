// Under the rates: lives of the chosen age, what they can expect, what is paid to them costs.

import { tablesOf } from "./address.js";
import { byId, el, markup } from "./dom.js";
import { PAID, livesIn, pricedLives } from "./lives.js";
import { yearAt } from "./projection.js";
import { SEXES, unitOf } from "./tables.js";

const ALIVE = `<i>p</i>(<i>k</i>), the chance to be alive after <i>k</i> years, is
  (1 − <i>q</i>(<i>x</i>)) (1 − <i>q</i>(<i>x</i> + 1)) … (1 − <i>q</i>(<i>x</i> + <i>k</i> − 1)).`;
const YEARS = { 1: "1 year" };
const yearsOf = (count) => YEARS[count] ?? `${count} years`;

// When something is paid, in words.
export const whenOf = ({ term, deferred }) =>
  (deferred ? `after ${yearsOf(deferred)}, ` : "") +
  (term === null ? "for life" : `for ${yearsOf(term)}`);

const endowed = (years) => `<i>v</i><sup>${years}</sup> <i>p</i>(${years})`;

// The quantities of lives: key, name, when or how, formula, digits.
function quantitiesOf({ term, deferred, paid, interest }) {
  const late = paid.endsWith("arrears") ? 1 : 0;
  const [end, at] = [deferred + term, `at ${interest}\u00a0%`]; // what is null counts as 0
  const over = (from) => `<i>k</i> from ${from} ${term ? `to ${from + term - 1}` : "on"}`;
  const v = `<i>v</i> = 1 / (1 + ${interest} / 100)`;
  const when = whenOf({ term, deferred });
  const first = deferred ? endowed(deferred) : "1";
  const woolhouse = `, ${late ? "plus" : "less"} 11/24 (${first}${term ? ` − ${endowed(end)}` : ""}):
    a twelfth a month by Woolhouse’s approximation with two terms`;
  const twelfths = paid.startsWith("monthly") ? woolhouse : "";
  const death = `Σ <i>v</i><sup><i>k</i>+1</sup> (<i>p</i>(<i>k</i>) − <i>p</i>(<i>k</i> + 1)),
    ${over(deferred)}: one at the end of the year of death`;
  return [
    {
      ...{ key: "expectation", name: "expectation of life", how: "complete: e + ½", digits: 2 },
      formula: `½ + Σ <i>p</i>(<i>k</i>), <i>k</i> from 1 on; the half is for the year of death.
        ${ALIVE}`,
    },
    {
      ...{ key: "annuity", name: `${late ? "annuity-immediate" : "annuity-due"} ${at}` },
      ...{ how: `${PAID[paid]}, ${when}`, digits: 6 },
      formula: `Σ <i>v</i><sup><i>k</i></sup> <i>p</i>(<i>k</i>), ${over(deferred + late)}${twelfths};
        ${v}.`,
    },
    {
      ...{ key: "assurance", name: `${term ? "term" : "whole life"} assurance ${at}`, digits: 6 },
      how: `end of the year of death${term || deferred ? `, ${when}` : ""}`,
      formula: `${death}; ${v}.`,
    },
    term && {
      ...{ key: "endowment", name: `endowment ${at}`, how: `at death or the end, ${when}` },
      ...{ formula: `${death}, and ${endowed(end)}: one to who is then alive; ${v}.`, digits: 6 },
    },
  ].filter(Boolean);
}

const opened = new Set(); // the formulas that are open

function headOf({ name, how, formula }, group) {
  const summary = el("summary", name, how && el("small", how));
  const details = el("details", summary, markup("p", formula));
  details.open = opened.has(group + name);
  details.addEventListener("toggle", () => {
    opened[details.open ? "add" : "delete"](group + name);
  });
  return el("th", { scope: "row" }, details);
}

// Which life it is: its table where there are others, sex, age where there are two, when selected.
function headOfLife(view, { words, chance, life, age }) {
  if (words) return el("th", { scope: "col" }, words, el("small", `independent: ${chance}`));
  const { table, sex, select, selected } = life;
  const { sides, pair, deferred } = view;
  const name = `${sides.length > 1 ? `${table.name} ` : ""}${SEXES[sex]}${pair ? ` of ${age}` : ""}`;
  const before = deferred && table.before ? `, ${table.before.name} before` : "";
  const start = table.before ? `annuity from ${age + deferred}${before}` : `selected at ${age}`;
  return el("th", { scope: "col" }, name, select && el("small", selected ? start : "ultimate"));
}

// A row of the table, of what is priced along the life or by the rates of one year.
function rowOf(quantity, group, columns, cellOf = null) {
  const pricedOf = (one) => one[group]?.[quantity.key].toFixed(quantity.digits) ?? "–";
  return el(
    "tr",
    headOf(quantity, group),
    ...columns.map((one) => el("td", (cellOf ?? pricedOf)(one))),
  );
}

function tableOf(view, columns) {
  const projected = tablesOf(view)
    .filter(({ projection }) => projection)
    .map(({ name, projection }) => `${name}: ${projection}.`);
  const stored = view.time.kind === "stored" || !projected.length;
  const formula = stored ? "As stored." : projected.join(" ");
  const rate = rowOf({ name: "rate", how: "of the next year", formula }, "own", columns, (one) =>
    (one.rate ?? null) === null
      ? "–"
      : [String(Number(one.rate.toPrecision(6))), el("small", unitOf(one.series))],
  );
  const dying = { name: "age at death", formula: "The age and the expectation of life." };
  const death = rowOf(dying, "own", columns, ({ death }) => death?.toFixed(2) ?? "–");
  const rows = (group) => quantitiesOf(view).map((quantity) => rowOf(quantity, group, columns));
  const [expectation, ...values] = rows("own");
  const heads = columns.map((one) => headOfLife(view, one));
  const own = el("tbody", rate, expectation, death, values);
  const title = `With the rates of ${view.time.year} only, in every year of life`;
  const spanning = el("th", { scope: "rowgroup", colspan: columns.length + 1 }, title);
  const period = view.time.kind === "year" && el("tbody", el("tr", spanning), rows("period"));
  return [el("thead", el("tr", el("td"), heads)), own, period].filter(Boolean);
}

// What decides the figures and cannot be seen in them.
function decidersOf(view, tables, columns) {
  const then = yearAt(view.time, view.age);
  const notes = tables.flatMap((table) => {
    const grid = table.series.filter(
      ({ kind, shape }) => kind === "improvement" && shape === "years",
    );
    const last = Math.max(...grid.map(({ label }) => Number(label)));
    const beyond = then !== null && grid.length && then + table.end - view.age > last;
    return [
      table.select && `${table.name}: select rates go by ${table.select}.`,
      beyond && `${table.name}: the improvement of ${last} is that of every later year.`,
    ];
  });
  for (const { left, life } of columns.filter((one) => one.life && one.left > 0.0001)) {
    const percent = (100 * left).toFixed(2);
    const who = `${percent} % of the ${SEXES[life.sex]} are alive at the end of the table`;
    notes.push(`${life.table.name}: ${who}; nothing after it is counted.`);
  }
  return [...new Set(notes.filter(Boolean))].map((text) => el("li", text));
}

function titleOf({ time }, age, tables) {
  if (time.kind === "stored")
    return `A life of ${age}, with the rates as stored: nothing improves.`;
  const year = yearAt(time, age);
  const improves = tables.some(({ formula }) => formula) ? ": rates improve as it gets older" : "";
  return `A life of ${age} in ${year}, born in ${year - age}${improves}.`;
}

export function showLives(view) {
  const tables = tablesOf(view).filter((table) => livesIn(table).length);
  byId("lives").hidden = !tables.length;
  if (!tables.length) return;
  const columns = pricedLives(view);
  byId("lives-title").textContent = titleOf(view, view.age, tables);
  byId("lives-table").style.setProperty("--lives", columns.length);
  byId("lives-table").replaceChildren(...tableOf(view, columns));
  byId("lives-notes").replaceChildren(...decidersOf(view, tables, columns));
  byId("plan").firstElementChild.textContent =
    `Term, deferment, two lives: ${PAID[view.paid]}, ${whenOf(view)}${view.pair ? ", two lives" : ""}`;
  fillPair(view, tables.flatMap(livesIn));
}

const WHICH = ["one", "two"];

function fillPair(view, lives) {
  WHICH.forEach((id, at) => {
    const options = lives.map((life) => {
      const name = view.sides.length > 1 ? `${life.table.name} ` : "";
      const kind = life.select ? (life.selected ? ", select" : ", ultimate") : "";
      return el("option", { value: life.key }, `${name}${SEXES[life.sex]}${kind}`);
    });
    const none = at ? [el("option", { value: "" }, "none")] : [];
    byId(id).replaceChildren(...none, ...options);
    byId(id).value = view.pair?.keys[at] ?? (at ? "" : lives[0].key);
  });
  byId("pair-age").hidden = !view.pair;
}
