// What is chosen, and the address that holds all of it: a view is a link.

import { PAID, livesIn } from "./lives.js";
import { readAs } from "./numbers.js";
import { MOST_TABLES, allAges } from "./tables.js";

const SCALES = { rates: ["log", "linear", "ratio"], improvement: ["linear", "log"] };
const DEFAULT = { age: 65, interest: 2, term: null, deferred: 0, paid: "advance" };

// Few enough to be told apart: of rates up to three, else the ends of a column.
export function shownAtFirst(table) {
  const few = (one) => one.of <= 3 && one.kind === "rates";
  const shown = table.series.filter(
    (one) => few(one) || one.index === 0 || one.index === one.of - 1,
  );
  return new Set(shown.map((one) => one.name));
}

export const sideOf = (table, shown = shownAtFirst(table)) => ({ table, shown });
export const tablesOf = (view) => view.sides.map(({ table }) => table);
export const agesOfView = (view) => allAges(tablesOf(view));
const seriesKey = (side) => (side ? `series${side + 1}` : "series");

// A number of the address; where it is missing or cannot be meant, what is shown instead, which is
// said.
function numberOf(given, key, kind, otherwise, { problems, range, words = otherwise }) {
  if (!given.has(key)) return otherwise;
  const { value, nearest, problem } = readAs(kind, given.get(key), range);
  if (!problem) return value;
  const shown = kind === "age" ? (nearest ?? otherwise) : otherwise;
  problems.push(`${problem} Shown: ${shown ?? words}.`);
  return shown;
}

function timeOf(given, problems) {
  for (const kind of ["year", "born"]) {
    const year = numberOf(given, kind, "year", null, { problems, words: "rates as stored" });
    if (year !== null) return { kind, year };
  }
  return { kind: "stored", year: null };
}

// Two lives of the tables, the second of an age of its own.
const keysOf = (sides) => sides.flatMap(({ table }) => livesIn(table).map(({ key }) => key));
function pairOf(given, sides, age, problems) {
  if (!given.has("lives")) return null;
  const keys = given.get("lives").split(",");
  const unknown = keys.filter((key) => !keysOf(sides).includes(key));
  if (!unknown.length && keys.length === 2) {
    const range = allAges(sides.map(({ table }) => table));
    return { keys, age: numberOf(given, "age2", "age", age, { problems, range }) };
  }
  problems.push(unknown.length ? `There is no life ${unknown.join()} here.` : "Lives are two.");
  return null;
}

const clamped = (value, [low, high]) => Math.max(low, Math.min(value, high));

// The view of an address. A name alone is that table; names are found whatever their case.
export function readAddress(hash, tables) {
  const text = hash.replace(/^#/, "");
  const bare = text && !/[=&]/.test(text);
  const given = new URLSearchParams(bare ? { table: text } : text);
  const byName = (name) =>
    tables.get(name) ??
    [...tables.values()].find((each) => each.name.toLowerCase() === name.toLowerCase());
  const asked = [given.get("table"), ...(given.get("with") ?? "").split(",")].filter(Boolean);
  const unknown = asked.filter((name) => !byName(name));
  const problems = unknown.map((name) => `There is no table ${name}.`);
  const known = [...new Set(asked.map(byName).filter(Boolean))].slice(0, MOST_TABLES);
  if (!known.length) known.push(tables.values().next().value);
  const sides = known.map((table, side) => {
    if (!given.has(seriesKey(side))) return sideOf(table);
    const names = given.get(seriesKey(side)).split(",");
    return sideOf(
      table,
      new Set(names.filter((name) => table.series.some((one) => one.name === name))),
    );
  });
  const scale = {};
  for (const [kind, some] of Object.entries(SCALES)) {
    scale[kind] = some.includes(given.get(kind)) ? given.get(kind) : some[0];
  }
  if (sides.length < 2 && scale.rates === "ratio") scale.rates = "log";
  const ages = (given.get("ages") ?? "").split("-").map(Number);
  const all = allAges(known);
  const [first, last] = all;
  const number = (key, more) => numberOf(given, key, key, DEFAULT[key], { problems, ...more });
  let paid = given.get("paid") ?? DEFAULT.paid;
  if (!Object.hasOwn(PAID, paid)) {
    problems.push(`Nothing is paid “${paid}” here. Shown: ${PAID[DEFAULT.paid]}.`);
    paid = DEFAULT.paid;
  }
  const time = timeOf(given, problems);
  const age = numberOf(given, "age", "age", clamped(DEFAULT.age, all), { problems, range: all });
  return {
    view: {
      sides,
      scale,
      time,
      age,
      interest: number("interest"),
      term: number("term", { words: "for life" }),
      deferred: number("deferred"),
      paid,
      pair: pairOf(given, sides, age, problems),
      ages: ages[0] >= first && ages[0] < ages[1] && ages[1] <= last ? ages : null,
      all: given.get("values") === "all",
      comma: given.get("csv") === "comma",
    },
    problems,
  };
}

export function writeAddress(view) {
  const [{ table }, ...others] = view.sides;
  const parts = [`table=${table.name}`];
  if (others.length) parts.push(`with=${others.map((side) => side.table.name)}`);
  view.sides.forEach((side, at) => {
    const names = (some) =>
      side.table.series.map(({ name }) => name).filter((name) => some.has(name));
    const chosen = names(side.shown).join();
    if (chosen !== names(shownAtFirst(side.table)).join()) parts.push(`${seriesKey(at)}=${chosen}`);
  });
  if (view.time.kind !== "stored") parts.push(`${view.time.kind}=${view.time.year}`);
  for (const [kind, all] of Object.entries(SCALES)) {
    if (view.scale[kind] !== all[0]) parts.push(`${kind}=${view.scale[kind]}`);
  }
  for (const [key, value] of Object.entries(DEFAULT)) {
    if (view[key] !== value) parts.push(`${key}=${view[key]}`);
  }
  if (view.pair?.keys.every((key) => keysOf(view.sides).includes(key))) {
    parts.push(`lives=${view.pair.keys}`);
    if (view.pair.age !== view.age) parts.push(`age2=${view.pair.age}`);
  }
  if (view.ages) parts.push(`ages=${view.ages.join("-")}`);
  if (view.all) parts.push("values=all");
  if (view.comma) parts.push("csv=comma");
  return `#${parts.join("&")}`;
}

// The chosen series of a kind, each with the side that it is on: 0 the first table.
export function chosenOf(view, kind = null) {
  return view.sides.flatMap(({ table, shown }, side) =>
    table.series
      .filter((one) => shown.has(one.name) && (!kind || one.kind === kind))
      .map((one) => ({ ...one, side })),
  );
}
export const fullName = (view, one) =>
  view.sides.length > 1 ? `${one.table.name} ${one.name}` : one.name;
