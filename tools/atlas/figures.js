// Under the rates: how long a life of the chosen age is expected to live, what an annuity costs.

import { tablesOf } from "./address.js";
import { byId, el } from "./dom.js";
import { livesOf } from "./lives.js";
import { yearAt } from "./projection.js";
import { computedText } from "./sheet.js";
import { SEXES, unitOf } from "./tables.js";

const years = (priced) => (priced ? priced.expectation.toFixed(2) : "–");
const value = (priced) => (priced ? priced.annuity.toFixed(6) : "–");

function headsOf(view, age) {
  const { time, interest } = view;
  const annuity = `annuity-due at ${interest} %`;
  const own = ["expectation of life", "age at death", annuity];
  if (time.kind !== "year") return own;
  return [...own, `with the rates of ${time.year} only: expectation`, annuity];
}

function rowOf(view, table, life, age) {
  const select = life.selected ? `, selected at ${age}` : life.select ? ", ultimate" : "";
  const name = view.sides.length > 1 ? `${table.name} ` : "";
  const rate = life.rate === null ? "–" : `${computedText(life.rate)} ${unitOf(life.first)}`;
  const cells = [rate, years(life.own), life.own ? (age + life.own.expectation).toFixed(2) : "–"];
  cells.push(value(life.own));
  if (view.time.kind === "year") cells.push(years(life.period), value(life.period));
  const head = el("th", { scope: "row" }, `${name}${SEXES[life.sex]}${select}`);
  return el(
    "tr",
    head,
    cells.map((text) => el("td", text)),
  );
}

function titleOf({ time }, age, tables) {
  if (time.kind === "stored")
    return `A life of ${age}, with the rates as stored: nothing improves.`;
  const year = yearAt(time, age);
  const improves = tables.some(({ formula }) => formula) ? ": rates improve as it gets older" : "";
  return `A life of ${age} in ${year}, born in ${year - age}${improves}.`;
}

export function showLives(view) {
  const age = view.age;
  const mortal = tablesOf(view).filter((table) => table.meta.get("table_type") === "life");
  byId("lives").hidden = !mortal.length;
  const heads = [`q at ${age}`, ...headsOf(view, age)].map((text) =>
    el("th", { scope: "col" }, text),
  );
  const rows = mortal.flatMap((table) =>
    livesOf(table, { age, time: view.time, interest: view.interest }).map((life) =>
      rowOf(view, table, life, age),
    ),
  );
  byId("lives-title").textContent = titleOf(view, age, mortal);
  byId("lives-table").replaceChildren(el("thead", el("tr", el("td"), heads)), el("tbody", rows));
}
