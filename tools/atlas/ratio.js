// One table as a percentage of another.

import { rateAt } from "./projection.js";

const decimal = (one, rate) => (one.permille ? rate / 1000 : rate);

// The series of the first table that a series is compared with: of the same sex, or of both; of the
// same duration, or the ultimate one.
export function counterpart(one, first) {
  const candidates = [...first.columns.values()].filter(([each]) => each.kind === "rates");
  const fits = (all) => all[0].sex === one.sex;
  const all =
    candidates.find(fits) ??
    candidates.find(([each]) => each.sex === "u") ??
    candidates.find(([each]) => each.column.slice(-1) === one.column.slice(-1));
  return all ? (all.find(({ label }) => label === one.label) ?? all.at(-1)) : null;
}

// In percent; null where there is nothing to divide, or to divide by.
export function percentAt(one, other, age, year) {
  const [rate, of] = [rateAt(one, age, year), rateAt(other, age, year)];
  return rate === null || !of ? null : (100 * decimal(one, rate)) / decimal(other, of);
}
