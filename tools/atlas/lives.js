// A life: its rates year by year, how long it is expected to live, what an annuity to it costs.

import { rateAt, yearAt } from "./projection.js";

// A life goes by the select durations one after the other, by attained age, then by the last.
const seriesAfter = (all, years) =>
  all[0].shape === "durations" ? all[Math.min(years, all.length - 1)] : all[0];

// Its rates as decimals from `age` to omega. `yearOf` tells the calendar year of an age. Null where
// the table does not reach, or does not say what the rate of a year is.
export function ratesOfLife(all, age, yearOf, selected) {
  const { table } = all[0];
  if (age < table.start || age > table.end) return null;
  const rates = [];
  for (let each = age; each <= table.end; each += 1) {
    const one = selected ? seriesAfter(all, each - age) : all.at(-1);
    const rate = rateAt(one, each, yearOf(each));
    if (rate === null) return null;
    rates.push(one.permille ? rate / 1000 : rate);
  }
  return rates;
}

// Years still to come, with half of the year of death: the complete expectation of life.
export function expectation(rates) {
  let [years, alive] = [0.5, 1];
  for (const rate of rates) {
    alive *= 1 - rate;
    years += alive;
  }
  return years;
}

// One unit a year in advance, as long as the life lives; interest as a decimal.
export function annuityDue(rates, interest) {
  let [value, alive] = [0, 1];
  rates.forEach((rate, years) => {
    value += alive * (1 + interest) ** -years;
    alive *= 1 - rate;
  });
  return value;
}

// The lives of a table at an age: each sex, and as just selected where the table is select. Rates
// of the year alone are told apart from those of the life, which gets older in later years.
export function livesOf(table, { age, time, interest }) {
  const lives = [];
  for (const all of table.columns.values()) {
    const [{ kind, shape, sex }] = all;
    if (kind !== "rates") continue;
    for (const selected of shape === "durations" ? [true, false] : [false]) {
      const priced = (yearOf) => {
        const rates = ratesOfLife(all, age, yearOf, selected);
        if (!rates) return null;
        return { expectation: expectation(rates), annuity: annuityDue(rates, interest / 100) };
      };
      const first = selected ? all[0] : all.at(-1);
      const then = yearAt(time, age);
      lives.push({
        ...{ sex, first, selected, select: shape === "durations" },
        rate: rateAt(first, age, then),
        own: priced((each) => (then === null ? null : then + each - age)),
        period: time.kind === "year" ? priced(() => then) : null,
      });
    }
  }
  return lives;
}
