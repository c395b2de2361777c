// The values as a sheet: shown, copied, written to a file.

import { agesOfView, chosenOf, tablesOf } from "./address.js";
import { projects, rateAt, timeText, yearAt } from "./projection.js";
import { counterpart, percentAt } from "./ratio.js";
import { markAt, textAt, unitOf } from "./tables.js";

// Projected rates are computed: as many digits as a computation gives the same everywhere.
export const computedText = (value) =>
  value === null ? "" : String(Number(value.toPrecision(10)));

// A value as it stands in the module, or projected.
export function valueText(view, one, age) {
  if (!projects(one, view.time)) return textAt(one, age) ?? "";
  return computedText(rateAt(one, age, yearAt(view.time, age)));
}

// Where a value could be taken for a published one, a last column says what it is.
function noteAt(table, columns, age) {
  if (age < table.start || age > table.end) return "";
  if (table.invented) return "invented";
  const own = columns.filter((one) => one.table === table);
  const marked = own.filter((one) => markAt(one, age));
  if (!marked.length) return "published";
  const kinds = [...new Set(marked.map((one) => markAt(one, age).kind))].join(" and ");
  return marked.length === own.length
    ? kinds
    : `${kinds}: ${marked.map(({ name }) => name).join(" ")}`;
}

function columnsOf(view) {
  const { sides, scale, all, time } = view;
  const chosen = all
    ? sides.flatMap(({ table }, side) => table.series.map((one) => ({ ...one, side })))
    : chosenOf(view);
  const many = sides.length > 1;
  const columns = chosen.map((one) => {
    const when = projects(one, time) ? ` ${timeText(time)}` : "";
    const name = many ? `${one.table.name} ${one.name}` : one.name;
    return {
      one,
      head: name + when,
      unit: unitOf(one),
      textOf: (age) => valueText(view, one, age),
    };
  });
  if (scale.rates !== "ratio") return columns;
  for (const one of chosen.filter(({ kind, side }) => kind === "rates" && side)) {
    const other = counterpart(one, sides[0].table);
    if (!other) continue;
    const textOf = (age) => computedText(percentAt(one, other, age, yearAt(time, age)));
    const head = `${one.table.name} ${one.name} of ${other.table.name} ${other.name}`;
    columns.push({ one, head, unit: "%", textOf });
  }
  return columns;
}

export function sheetOf(view, { version, date, digest }) {
  const tables = tablesOf(view);
  const columns = columnsOf(view);
  const series = columns.map(({ one }) => one);
  const noted = tables.filter(
    (table) => table.invented || series.some((one) => one.table === table && one.marks.length),
  );
  const [first, last] = agesOfView(view);
  const body = [];
  for (let age = first; age <= last; age += 1) {
    const values = columns.map(({ textOf }) => textOf(age));
    body.push([String(age), ...values, ...noted.map((table) => noteAt(table, series, age))]);
  }
  const about = tables.flatMap((table) => {
    const base = table.base ? `; base year ${table.base}` : "";
    const source = table.invented ? "invented, for tests only" : table.source;
    const meant = `for ${table.purpose}; standing: ${table.standing.text}; age: ${table.age_basis.text}`;
    return [
      `${table.name}: ${source}${base}`,
      ...(table.invented ? [] : [`${table.name}: ${meant}`]),
      ...(table.projection ? [`${table.name}: ${table.projection}`] : []),
      ...(table.warning ? [`${table.name}: WARNING: ${table.warning}`] : []),
    ];
  });
  about.push(`data_tables ${version} of ${date}, catalogue ${digest}`);
  if (series.some((one) => projects(one, view.time))) {
    about.push(`Rates ${timeText(view.time)}: projected as said of each table`);
  }
  const names = noted.map((table) => (tables.length > 1 ? `${table.name} note` : "note"));
  const head = ["age", ...columns.map((column) => `${column.head} [${column.unit}]`), ...names];
  return { about, columns, head, body };
}

const isNumber = (text) => /^-?\d+(\.\d+)?(e-?\d+)?$/.test(text);

// With a comma in numbers, cells are parted by semicolons, as spreadsheets of those countries want.
export function csvOf({ about, head, body }, comma) {
  const separator = comma ? ";" : ",";
  const cell = (text) => {
    if (isNumber(text)) return comma ? text.replace(".", ",") : text;
    return /[",;\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
  };
  const rows = [head, ...body].map((row) => row.map(cell).join(separator));
  // Programs skip lines that begin with #; spreadsheets shall not cut them up.
  const comments = about.map((text) => (comma ? cell(`# ${text}`) : `# ${text}`));
  // By the mark at the beginning spreadsheets know the letters; other programs stumble over it.
  return (comma ? "\ufeff" : "") + [...comments, ...rows].map((line) => `${line}\n`).join("");
}

export const tabbed = ({ about, head, body }) =>
  [...about.map((text) => [text]), head, ...body].map((row) => `${row.join("\t")}\n`).join("");

export function fileName(view, ending) {
  const names = tablesOf(view).map((table) => {
    const mark = table.invented ? "-invented" : table.reconstructed ? "-reconstructed" : "";
    return table.name + mark;
  });
  const time = view.time.kind === "stored" ? "" : `-${view.time.kind}-${view.time.year}`;
  return `${names.join("-")}${time}.${ending}`;
}
