// Rates of another year than the stored ones: every formula and shape of improvement.

// The list of improvement rates in force in a year. A year without one takes the last before it;
// before the first year the first holds.
function inForce(all, year) {
  let found = all[0];
  for (const one of all) if (Number(one.label) <= year) found = one;
  return found;
}

const sum = (from, to, term) => {
  let total = 0;
  for (let year = from; year < to; year += 1) total += term(year);
  return total;
};

// By what the base rate is multiplied, with mi(year), the improvement rate of the age in a year.
const FORMULAS = {
  // A rate of a year is the force by which the rate falls from that year to the next.
  exponential_improvement(mi, base, year, flat) {
    if (flat) return Math.exp(-mi(year) * (year - base));
    return Math.exp(year < base ? sum(year, base, mi) : -sum(base, year, mi));
  },
  discrete_improvement: (mi, base, year) => (1 - mi(year)) ** (year - base),
  // A factor leads from the year before to its year. There is none for the base year or before.
  projected_improvement(mi, base, year) {
    if (year < base) return null;
    let product = 1;
    for (let each = base + 1; each <= year; each += 1) product *= 1 - mi(each);
    return product;
  },
  // The tables that name it do not spell it out.
  linear_improvement: (mi, base, year) => Math.max(0, 1 - mi(year) * (year - base)),
};

function improvementOf({ table, column }) {
  const sex = column.slice(-1);
  return table.columns.get(`mi_${sex}`) ?? table.columns.get(`MI_${sex}`);
}

function factorAt(one, age, year) {
  const { table } = one;
  const index = age - table.start;
  const all = improvementOf(one);
  const { shape } = all[0];
  const own = shape === "durations" ? all.find(({ label }) => label === one.label) : all[0];
  const mi = (each) => (shape === "years" ? inForce(all, each) : own).numbers[index];
  return FORMULAS[table.formula](mi, table.base, year, shape !== "years");
}

// The rate of a series at an age in a calendar year, in the unit of the table; null where there is
// none. Without a year, or where nothing improves, the stored one.
export function rateAt(one, age, year = null) {
  const stored = one.numbers[age - one.table.start] ?? null;
  if (stored === null || year === null || !one.table.formula || one.kind !== "rates") return stored;
  const factor = factorAt(one, age, year);
  return factor === null ? null : Math.min(stored * factor, one.permille ? 1000 : 1);
}

// What time is chosen: { kind: "stored" | "year" | "born", year }.
export function yearAt(time, age) {
  return { stored: null, year: time.year, born: time.year + age }[time.kind];
}

// A time of another kind, so that a life of this age stays in its year; `first` is offered at first.
export function timeAs(kind, time, age, first) {
  if (kind === "stored") return { kind, year: null };
  const then = yearAt(time, age) ?? first;
  return { kind, year: kind === "born" ? then - age : then };
}

export const projects = (one, time) =>
  time.kind !== "stored" && one.kind === "rates" && one.table.formula !== null;

export function timeText(time) {
  return { stored: "", year: `in ${time.year}`, born: `born ${time.year}` }[time.kind];
}
