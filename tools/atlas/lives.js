// Lives: their rates year by year, how long they are expected to live, what is paid to them costs.

import { rateAt, yearAt } from "./projection.js";

export const PAID = {
  advance: "yearly in advance",
  arrears: "yearly in arrears",
  monthly: "monthly in advance",
  "monthly-arrears": "monthly in arrears",
};

// The lives that a table knows: each sex, and as just selected where the table is select.
export function livesIn(table) {
  const columns = [...table.columns.values()].filter(([{ kind }]) => kind === "rates");
  if (table.meta.get("table_type") !== "life") return [];
  return columns.flatMap((all) => {
    const [{ sex, shape }] = all;
    const select = shape === "durations";
    return (select ? [true, false] : [false]).map((selected) => {
      const key = `${table.name}.${sex}${selected ? ".selected" : ""}`;
      return { key, table, all, sex, select, selected };
    });
  });
}

// Rates as decimals from `age` to omega, where `yearOf` tells the calendar year of an age. A life
// goes by the select durations one after the other, by attained age, then by the last. Where the
// table holds from the start of an annuity, it does so after the years deferred, another before.
// Null where the table does not reach, or does not say what the rate of a year is.
export function ratesOf({ table, all, selected }, age, yearOf, deferred) {
  if (age < table.start || age > table.end) return null;
  const start = age + (table.before ? deferred : 0);
  const rates = [];
  for (let each = age; each <= table.end; each += 1) {
    const some = selected && each < start ? table.before.columns.get(all[0].column) : all;
    const counted = selected && each >= start;
    const one = counted ? (some[each - start] ?? some.at(-1)) : some.at(-1);
    const rate = rateAt(one, each, yearOf(each));
    if (rate === null) return null;
    rates.push(one.permille ? rate / 1000 : rate);
  }
  return rates;
}

// p(k), the chance to be alive after k years, k = 0, 1 … to the end of the last year with a rate.
export function survival(rates) {
  const alive = [1];
  for (const rate of rates) alive.push(alive.at(-1) * (1 - rate));
  return alive;
}

// While both live; while one of them does. They die independently of each other.
const joint = (one, other) => one.slice(0, other.length).map((p, k) => p * other[k]);
function lastSurvivor(one, other) {
  const [long, short] = one.length < other.length ? [other, one] : [one, other];
  return long.map((p, k) => p + (short[k] ?? 0) * (1 - p));
}

// One unit a year or at death, after the years deferred, for life (term null) or a term; interest
// in percent. Monthly by Woolhouse's approximation, two terms.
export function price(alive, { interest, term, deferred, paid }) {
  const last = alive.length - 1;
  const end = term === null ? last : Math.min(deferred + term, last);
  const present = (amount, k) => amount * (1 + interest / 100) ** -k;
  const endowed = term === null ? 0 : present(alive[deferred + term] ?? 0, deferred + term);
  const late = paid.endsWith("arrears") ? 1 : 0;
  let [expectation, annuity, assurance] = [0, 0, 0];
  for (let k = 0; k < last; k += 1) {
    expectation += (alive[k] + alive[k + 1]) / 2;
    if (k < deferred || k >= end) continue;
    annuity += present(alive[k + late], k + late);
    assurance += present(alive[k] - alive[k + 1], k + 1);
  }
  if (paid.startsWith("monthly")) {
    const less = (11 / 24) * (present(alive[deferred] ?? 0, deferred) - endowed);
    annuity += late ? less : -less;
  }
  const endowment = term === null ? null : assurance + endowed;
  return { expectation, annuity, assurance, endowment };
}

// The lives of all tables at the chosen age; or a pair: one at that age, the other at its own, both,
// one of both. Rates of the year alone are told apart from those of lives, which get older in later years.
export function pricedLives(view) {
  const { sides, time, pair } = view;
  const then = yearAt(time, view.age);
  const known = sides.flatMap(({ table }) => livesIn(table));
  const aliveOf = (life, age) => {
    const along = (yearOf) => {
      const rates = ratesOf(life, age, yearOf, view.deferred);
      return rates && survival(rates);
    };
    return [
      along((each) => (then === null ? null : then + each - age)),
      time.kind === "year" ? along(() => then) : null,
    ];
  };
  const priced = (alive, what) => {
    const [own, period] = alive.map((each) => each && price(each, view));
    return { ...what, own, period, left: alive[0]?.at(-1) ?? 0 };
  };
  const alone = (life, age) => {
    const first = life.selected && !(life.table.before && view.deferred) ? life.all[0] : null;
    const table = life.selected && !first ? life.table.before : life.table;
    const series = first ?? table.columns.get(life.all[0].column).at(-1);
    const rate = rateAt(series, age, then);
    const one = priced(aliveOf(life, age), { life, age, rate, series });
    return { ...one, death: one.own && age + one.own.expectation };
  };
  if (!pair) return known.map((life) => alone(life, view.age));
  const [one, other] = pair.keys.map((key) => known.find((life) => life.key === key));
  const [his, hers] = [aliveOf(one, view.age), aliveOf(other, pair.age)];
  const both = (combine) => his.map((p, at) => (p && hers[at] ? combine(p, hers[at]) : null));
  const status = (words, chance, combine) => priced(both(combine), { words, chance });
  return [
    alone(one, view.age),
    alone(other, pair.age),
    status("while both live", "p₁ p₂", joint),
    status("while one of both lives", "p₁ + p₂ − p₁ p₂", lastSurvivor),
  ];
}
