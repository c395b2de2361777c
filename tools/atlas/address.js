// What is chosen, and the address that holds all of it: a view is a link.

import { MOST_TABLES, allAges } from "./tables.js";

const SCALES = { rates: ["log", "linear", "ratio"], improvement: ["linear", "log"] };
const DEFAULT = { age: 65, interest: 2 };
const YEARS = [1800, 2200];

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
const inRange = (number, [low, high]) => number >= low && number <= high;

// A number of the address, or what stands for one that is missing or makes no sense.
function numberOf(given, key, range, otherwise) {
  const text = given.get(key);
  const number = Number(text);
  return text && inRange(number, range) ? number : otherwise;
}

function timeOf(given) {
  for (const kind of ["year", "born"]) {
    const year = Math.round(numberOf(given, kind, YEARS, 0));
    if (year) return { kind, year };
  }
  return { kind: "stored", year: null };
}

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
  for (const [kind, all] of Object.entries(SCALES)) {
    scale[kind] = all.includes(given.get(kind)) ? given.get(kind) : all[0];
  }
  if (sides.length < 2 && scale.rates === "ratio") scale.rates = "log";
  const ages = (given.get("ages") ?? "").split("-").map(Number);
  const [first, last] = allAges(known);
  return {
    view: {
      sides,
      scale,
      time: timeOf(given),
      age: Math.round(numberOf(given, "age", [0, 200], DEFAULT.age)),
      interest: numberOf(given, "interest", [-5, 50], DEFAULT.interest),
      ages: ages[0] >= first && ages[0] < ages[1] && ages[1] <= last ? ages : null,
      all: given.get("values") === "all",
      comma: given.get("csv") === "comma",
    },
    unknown,
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
