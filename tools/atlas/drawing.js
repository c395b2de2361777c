// What a figure draws, by age, and what has to be said about it.

import { agesOfView, chosenOf, fullName, tablesOf } from "./address.js";
import { projects, rateAt, timeText, yearAt } from "./projection.js";
import { counterpart, percentAt } from "./ratio.js";
import { ranges, unitOf } from "./tables.js";

const listed = (names) => [...new Set(names)].join(", ");

// The lines, and what they are drawn in: the unit of the tables, decimals where units are mixed, or
// percent of the first table.
function linesOf(view, kind, ages) {
  const ratio = kind === "rates" && view.scale.rates === "ratio";
  const chosen = chosenOf(view, kind);
  const mixed = new Set(chosen.map(unitOf)).size > 1;
  const [lines, alone] = [[], []];
  for (const one of chosen) {
    const name = fullName(view, one);
    const yearOf = (age) => yearAt(view.time, age);
    if (!ratio) {
      const factor = mixed && one.permille ? 1 / 1000 : 1;
      const at = (age) => rateAt(one, age, yearOf(age));
      const values = ages.map((age) => (at(age) === null ? null : at(age) * factor));
      lines.push({ ...one, called: name, values });
      continue;
    }
    const other = counterpart(one, view.sides[0].table);
    if (!other) alone.push(name);
    if (!other || (one.side === 0 && other.name === one.name)) continue;
    const values = ages.map((age) => percentAt(one, other, age, yearOf(age)));
    lines.push({ ...one, called: `${name} as % of ${other.table.name} ${other.name}`, values });
  }
  return { lines, ratio, mixed, alone };
}

// A log scale has no zero.
function leaveOut(lines, ages, log) {
  const leftOut = [];
  for (const line of lines) {
    const without = ages.filter((_, at) => log && line.values[at] !== null && line.values[at] <= 0);
    if (without.length) leftOut.push([line, without]);
    line.drawn = line.values.map((value) => (log && value !== null && value <= 0 ? null : value));
  }
  return leftOut;
}

function textOfLeftOut(leftOut) {
  const count = leftOut.reduce((total, [, ages]) => total + ages.length, 0);
  if (!count) return "";
  const negative = leftOut.some(([line]) => line.values.some((value) => value < 0));
  const places = leftOut.map(
    ([line, ages]) => `${line.called} at ${ages.length > 1 ? "ages" : "age"} ${ranges(ages)}`,
  );
  const where = places.length > 6 ? `in ${places.length} columns` : places.join("; ");
  const what = `${count > 1 ? "values" : "value"} of zero${negative ? " or less" : ""}`;
  return `Left out: ${count} ${what}, which a log scale does not have (${where}).`;
}

const withBases = (tables) =>
  listed(tables.map(({ name, base }) => (base ? `${name} (${base})` : name)));
const onYears = ({ kind, shape }) => kind === "improvement" && shape === "years";

// What must be known about projected rates, those of the life that is shown or those that are not
// drawn: of which tables it holds, and what.
function cautionsOf({ time, age }) {
  const early = ({ formula, base }, from) => formula && yearAt(time, from) < base;
  const projected = ({ formula }) => formula === "projected_improvement";
  const before = (table) => early(table, age) && !projected(table);
  const none = (table) => early(table, table.start) && projected(table);
  return [
    [({ formula }) => !formula, (some) => `No improvement, so the same in every year: ${some}.`],
    [before, (some) => `Before the base year the formula is taken backwards: ${some}.`],
    [none, (some) => `No factors for years before the base year, which are left out: ${some}.`],
    [
      ({ formula }) => formula === "linear_improvement",
      (some) => `Not spelt out by the table, drawn as q · (1 − mi · years), not below 0: ${some}.`,
    ],
    [
      ({ invented, series }) => invented && series.some(onYears),
      (some) => `Other years than those of its grid are not spelt out by the table: ${some}.`,
    ],
  ];
}

// Base years that differ are said where nothing is projected; else what is done where.
export function notesOf(view) {
  const tables = tablesOf(view);
  const based = tables.filter(({ base }) => base);
  if (view.time.kind === "stored") {
    const differ = new Set(based.map(({ base }) => base)).size > 1;
    return differ ? [`Not projected: the rates are of different years: ${withBases(based)}.`] : [];
  }
  const notes = [];
  for (const [holds, say] of cautionsOf(view)) {
    const some = tables.filter(holds);
    if (some.length) notes.push(say(withBases(some)));
  }
  return notes;
}

function axisOf(view, kind, { lines, ratio, mixed }, log) {
  const decrements = [...new Set(tablesOf(view).map(({ decrement }) => decrement))].join(" and ");
  const rates = kind === "rates";
  const title = rates ? `Rates of ${decrements}` : "Improvement";
  const when = lines.some((one) => projects(one, view.time)) ? ` ${timeText(view.time)}` : "";
  const scale = `${log ? "log" : "linear"} scale, by age`;
  if (ratio) {
    return { title, axis: `Rates${when} as a percentage of ${view.sides[0].table.name}, ${scale}` };
  }
  const divided = listed(lines.filter(({ permille }) => permille).map(({ table }) => table.name));
  const unit = !lines.length
    ? "nothing selected"
    : mixed
      ? `decimal: the per mille of ${divided} divided by 1000`
      : unitOf(lines[0]);
  const what = rates ? "Rate in a year" : "Rate of improvement in a year";
  const time = rates ? when && (view.time.kind === "born" ? `, of a life${when}` : `,${when}`) : "";
  return { title, axis: `${what}${time}, ${unit}, ${scale}` };
}

// Marked ages as bands, with the tables and columns that have them. Ages that overlap are one band.
function bandsOf(lines) {
  const bands = [];
  for (const { marks, table, name } of lines) {
    for (const { kind, from, to } of marks) {
      const same = bands.find((each) => each.kind === kind && from <= each.to && each.from <= to);
      if (!same) bands.push({ kind, from, to, names: new Set([`${table.name} ${name}`]) });
      else {
        Object.assign(same, { from: Math.min(from, same.from), to: Math.max(to, same.to) });
        same.names.add(`${table.name} ${name}`);
      }
    }
  }
  return bands.map((band) => ({ ...band, names: listed(band.names) }));
}

export function drawingOf(view, kind) {
  const [first, last] = agesOfView(view);
  const ages = Array.from({ length: last - first + 1 }, (_, index) => first + index);
  const log = view.scale[kind] === "log";
  const drawn = linesOf(view, kind, ages);
  const zeros = textOfLeftOut(leaveOut(drawn.lines, ages, log));
  const alone = `Left out, because ${view.sides[0].table.name} has no rates of the sex: `;
  const leftOut = drawn.alone.length ? `${alone}${listed(drawn.alone)}.` : zeros;
  return {
    ...{ kind, ages, log, leftOut, lines: drawn.lines, ratio: drawn.ratio },
    ...{ bands: bandsOf(drawn.lines), range: view.ages ?? [first, last] },
    ...axisOf(view, kind, drawn, log),
    invented: listed(
      drawn.lines.filter(({ table }) => table.invented).map(({ table }) => table.name),
    ),
  };
}
