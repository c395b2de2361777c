// The embedded tables with their series. Nothing here needs a document: the tests read it too.

export const KINDS = ["rates", "improvement"];
export const SEXES = { m: "males", f: "females", u: "both sexes" };
export const MOST_TABLES = 4; // that are laid over each other

const MARK_WORDS = {
  reconstructed: "reconstructed, not published",
  doubtful: "probably misprinted, as published",
  completed: "completed by a rule",
};

// Flat by age, or one list for each duration or calendar year.
function shapeOf(all) {
  if (all[0].label === null) return "flat";
  return all.at(-1).label === "ult" ? "durations" : "years";
}

function seriesFrom(table, lists, [column, label, list, computed, marks, order, grade]) {
  const kind = column.toLowerCase().startsWith("mi_") ? "improvement" : "rates";
  const name = label === null ? column : `${column}.${label}`;
  const sex = table.meta.get("sex_independent") ? "u" : column.slice(-1);
  const permille = kind === "rates" && table.permille;
  return {
    table,
    column,
    label,
    name,
    kind,
    sex,
    permille,
    computed,
    marks,
    order,
    grade,
    ...lists[list],
  };
}

function tableFrom(given, lists) {
  const meta = new Map(given.meta);
  const table = { ...given, meta, start: meta.get("start_age"), end: meta.get("omega") };
  table.permille = meta.get("decrement_scale_factor") === 1000;
  table.base = meta.get("base_year") ?? null;
  table.formula = meta.get("generational_formula_type") ?? null;
  table.invented = given.source === null;
  table.series = given.series.map((parts) => seriesFrom(table, lists, parts));
  table.columns = new Map(); // key of the column to its series
  for (const one of table.series) {
    table.columns.set(one.column, [...(table.columns.get(one.column) ?? []), one]);
  }
  for (const all of table.columns.values()) {
    const shape = shapeOf(all);
    for (const [index, one] of all.entries()) Object.assign(one, { index, of: all.length, shape });
  }
  table.marks = table.series.flatMap((one) => one.marks);
  table.reconstructed = table.marks.find((mark) => mark.kind === "reconstructed") ?? null;
  return table;
}

export function readAtlas(given) {
  const lists = given.lists.map((joined) => {
    const texts = joined.split(" ");
    return { texts, numbers: texts.map(Number) };
  });
  const tables = new Map(given.tables.map((each) => [each.name, tableFrom(each, lists)]));
  for (const table of tables.values()) table.before = tables.get(table.before) ?? null;
  return { ...given, tables };
}

export const textAt = (one, age) => one.texts[age - one.table.start];
export const unitOf = (one) => (one.permille ? "per mille" : "decimal");
export const markAt = (one, age) => one.marks.find(({ from, to }) => from <= age && age <= to);
export const markWords = ({ kind }) => MARK_WORDS[kind];
export const agesOf = ({ from, to }) => (from === to ? `age ${from}` : `ages ${from}–${to}`);

export function allAges(tables) {
  const first = Math.min(...tables.map((table) => table.start));
  return [first, Math.max(...tables.map((table) => table.end))];
}

// Ages as ranges: 0–199, 204.
export function ranges(ages) {
  const parts = [];
  for (const each of ages) {
    const last = parts.at(-1);
    if (last?.[1] === each - 1) last[1] = each;
    else parts.push([each, each]);
  }
  return parts.map(([a, b]) => (a === b ? `${a}` : `${a}–${b}`)).join(", ");
}
