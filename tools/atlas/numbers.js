// Numbers as people type them, in fields and in the address.

const SPACES = /(\d)[\s'](?=\d{3}(?!\d))/g; // between thousands
const NUMBER = /^[+-]?(\d+[.,]?\d*|[.,]\d+)$/;

// What each is called, its range, and whether it is whole. The range of ages is that of the tables.
const ASKED = {
  interest: { a: "Interest", range: [-5, 50], unit: " %" },
  age: { a: "An age", whole: true },
  term: { a: "A term", range: [1, 130], whole: true, unit: " years", optional: true },
  deferred: { a: "A deferment", range: [0, 130], whole: true, unit: " years" },
  year: { a: "A year", range: [1800, 2200], whole: true },
};

// With a decimal comma or point; null where no number can be meant.
export function readNumber(text) {
  const bare = text.trim().replace("\u2212", "-").replace(SPACES, "$1");
  return NUMBER.test(bare) ? Number(bare.replace(",", ".")) : null;
}

// The value that is typed, or a sentence that says why it cannot be meant.
export function readAs(kind, text, range = ASKED[kind].range) {
  const { a, whole, optional, unit = "" } = ASKED[kind];
  if (optional && !text.trim()) return { value: null };
  const value = readNumber(unit === " %" ? text.replace(/\s*%\s*$/, "") : text);
  if (value === null) return { problem: `“${text.trim()}” is not a number.` };
  if (whole && !Number.isInteger(value)) return { problem: `${a} is a whole number.` };
  const [low, high] = range;
  const nearest = Math.max(low, Math.min(value, high));
  if (value === nearest) return { value };
  return { nearest, problem: `${a} is ${low} to ${high}${unit} here, not ${value}.` };
}
