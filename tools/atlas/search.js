// The search: whole words before the beginnings of words, and those before parts of words.

import { SEXES } from "./tables.js";
import { NAMES, SYNONYMS } from "./synonyms.js";

// Without accents and capitals, in words; what is written together stays findable by its parts.
const plain = (text) => text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();
const split = (text) => text.split(/[^\p{L}\p{M}\p{N}]+/u).filter(Boolean);
const wordsOf = (text) => split(text).map(plain);
function partsOf(name) {
  const whole = plain(name);
  const pieces = whole.split(/[^a-z0-9]+/);
  return [whole, ...pieces, ...pieces.flatMap((piece) => piece.match(/[a-z]+|\d+/g) ?? [])];
}

// Words that say nothing in a question of several words.
const IDLE = new Set(
  wordsOf(
    "de la el los las del y en of the for and or with a an in on by to table tables tabla tablas tafel",
  ),
);

// How a word is found: whole in a name or in our words, whole in other texts, at the beginning of a
// word, within one; and what that is worth. 0 is not at all.
const [WHOLE, WRITTEN, BEGUN, WITHIN] = [1, 2, 3, 4];
const WORTH = [0, 4, 2, 1, 0.5];

// The terms of a table, words of ours: these have synonyms.
function termsOf(table) {
  const rates = [...table.columns.values()].filter(([one]) => one.kind === "rates");
  // What a table is expressly without is not what it is looked for by.
  const purpose = table.purpose.replace(/without [^,:;]+/g, "");
  const terms = [purpose, table.country ?? "", table.meta.get("table_type"), table.decrement];
  terms.push(table.warning ?? "");
  terms.push(table.orders.join(" "), table.permille ? "per mille" : "decimal");
  terms.push(...rates.map(([one]) => SEXES[one.sex]));
  terms.push(table.formula ? `improvement generational ${table.formula}` : "static");
  for (const [one] of table.columns.values()) terms.push(one.shape, one.column);
  if (table.meta.get("select")) terms.push("select ultimate");
  terms.push(table.invented ? "synthetic" : "published");
  terms.push(...table.marks.map(({ kind }) => kind));
  return terms.map((text) => text.replaceAll("_", " ")).join(" . ");
}

function entryOf(table) {
  const text = wordsOf(termsOf(table)).join(" ");
  const terms = new Set(text.split(" "));
  for (const [first, ...others] of SYNONYMS) {
    if (!` ${text} `.includes(` ${plain(first)} `)) continue;
    for (const word of others.flatMap(wordsOf)) terms.add(word);
  }
  const others = NAMES.filter(([pattern]) => pattern.test(table.name)).flatMap(([pattern, name]) =>
    name.split(" ").map((each) => table.name.replace(pattern, each)),
  );
  const names = new Set([table.name, table.meta.get("table_name"), ...others].flatMap(partsOf));
  const sources = table.facts.map(([, text]) => text.replace(/<[^>]+>/g, ""));
  const texts = new Set(wordsOf([table.meta.get("description"), ...sources].join(" ")));
  return { name: table.name, names, terms, texts };
}

function matchOf({ names, terms, texts }, word) {
  if (terms.has(word) || names.has(word)) return WHOLE;
  // The beginning of a name is how one types a name.
  if (word.length > 2 && [...names].some((each) => each.startsWith(word))) return WHOLE;
  if (texts.has(word)) return WRITTEN;
  const all = [...names, ...terms, ...texts];
  if (all.some((each) => each.startsWith(word))) return BEGUN;
  return word.length > 2 && all.some((each) => each.includes(word)) ? WITHIN : 0;
}

export function indexOf(tables) {
  return [...tables.values()].map(entryOf);
}

// The names of the tables that have every word, the best first, else in the order of the module.
export function find(index, query) {
  const typed = split(query);
  // In capitals they are meant: DE is Germany.
  const telling = (typed.length > 1 ? typed.filter((word) => !IDLE.has(word)) : typed).map(plain);
  const judged = index.map((entry) => ({
    entry,
    matches: telling.map((word) => matchOf(entry, word)),
  }));
  // A word that is somewhere a whole one is not looked for in parts of words.
  const allowed = telling.map((_, at) => {
    const best = Math.min(...judged.map(({ matches }) => matches[at] || WORTH.length));
    return Math.max(best, WRITTEN);
  });
  const found = judged.filter(({ matches }) =>
    matches.every((match, at) => match && match <= allowed[at]),
  );
  const worst = ({ matches }) => Math.max(0, ...matches);
  const least = Math.min(...found.map(worst));
  const rest = found
    .filter((one) => worst(one) === least)
    .map(({ entry, matches }) => {
      const named = telling.filter((word) => entry.names.has(word)).length;
      return { entry, worth: matches.reduce((sum, match) => sum + WORTH[match], named) };
    });
  return rest.sort((a, b) => b.worth - a.worth).map(({ entry }) => entry.name);
}

// How many letters have to be changed, added or left out to make one word of the other.
function distance(one, other) {
  let row = [...other, ""].map((_, at) => at);
  for (const [at, letter] of [...one].entries()) {
    const next = [at + 1];
    for (let to = 0; to < other.length; to += 1) {
      next.push(Math.min(next[to] + 1, row[to + 1] + 1, row[to] + (letter !== other[to])));
    }
    row = next;
  }
  return row.at(-1);
}

// Words that find something and are close to a typed word that does not.
export function nearest(index, query) {
  const words = new Set(index.flatMap(({ names, terms }) => [...names, ...terms]));
  const missed = wordsOf(query).filter((word) => !index.some((entry) => matchOf(entry, word)));
  return missed.slice(0, 1).flatMap((word) =>
    [...words]
      .filter((each) => each.length > 2)
      .map((each) => ({ each, far: distance(word, each) }))
      .filter(({ far }) => far <= Math.max(2, word.length / 3))
      .sort((a, b) => a.far - b.far)
      .slice(0, 3)
      .map(({ each }) => each),
  );
}
