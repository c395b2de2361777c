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

// Base years that differ are said where nothing is projected; else who does not take part.
export function notesOf(view) {
  const tables = tablesOf(view);
  const based = tables.filter(({ base }) => base);
  const bases = new Set(based.map(({ base }) => base));
  const notes = [];
  if (view.time.kind === "stored") {
    if (bases.size > 1) {
      const years = listed(based.map(({ name, base }) => `${name} ${base}`));
      notes.push(`Not projected: the rates are of different years (${years}).`);
    }
    return notes;
  }
  const still = listed(tables.filter(({ formula }) => !formula).map(({ name }) => name));
  if (still) notes.push(`No improvement, so the same in every year: ${still}.`);
  const linear = tables.filter(({ formula }) => formula === "linear_improvement");
  if (linear.length) {
    notes.push(
      `${listed(linear.map(({ name }) => name))}: linear improvement is not spelt out by the table. ` +
        "Drawn as q · (1 − mi · years), not below 0.",
    );
  }
  const unsaid = tables.filter(
    ({ invented, formula, series }) =>
      invented &&
      formula &&
      series.some(({ kind, shape }) => kind === "improvement" && shape === "years"),
  );
  if (unsaid.length) {
    const who = listed(unsaid.map(({ name }) => name));
    notes.push(
      `${who}: years without improvement rates take the last before; the table does not say so.`,
    );
  }
  const [first, last] = agesOfView(view);
  const early = tables.filter(
    ({ formula, base, start }) =>
      formula === "projected_improvement" &&
      yearAt(view.time, Math.max(first, start)) < base &&
      last > first,
  );
  for (const { name, base } of early) {
    const upTo = view.time.kind === "born" ? `ages below ${base - view.time.year}` : "all ages";
    notes.push(`${name} has no factors for years before ${base}: ${upTo} are left out.`);
  }
  return notes;
}

function axisOf(view, kind, { lines, ratio, mixed }, log) {
  const decrements = listed(tablesOf(view).map(({ decrement }) => decrement)).replace(
    ", ",
    " and ",
  );
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

// Completed and reconstructed ages as bands, with the tables that have them. Ages that overlap are
// one band: which series it is of stands in the legend.
function bandsOf(lines) {
  const bands = [];
  for (const { marks, table } of lines) {
    for (const { kind, from, to } of marks) {
      const same = bands.find((each) => each.kind === kind && from <= each.to && each.from <= to);
      if (!same) bands.push({ kind, from, to, names: new Set([table.name]) });
      else {
        Object.assign(same, { from: Math.min(from, same.from), to: Math.max(to, same.to) });
        same.names.add(table.name);
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
