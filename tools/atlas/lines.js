// How a series is drawn: ink, dashes, marks. Inks are for light ground or dark.

import { markWords } from "./tables.js";

// A table has one hue: of its first duration and of its last, saturation, lightness of both on light
// ground and on dark, for each of the tables that are laid over each other.
const INKS = [
  [200, 214, 88, 56, 36, 60, 68],
  [28, 15, 90, 52, 38, 60, 66],
  [150, 164, 90, 36, 25, 46, 54],
  [300, 286, 55, 58, 42, 72, 76],
];
// The sex by the dash, as by the mark; a duration that is not the last has dots in it.
const DASHES = { m: [], f: [9, 4], u: [14, 4, 3, 4] };
const DOTTED = { m: [5, 2], f: [5, 2, 1, 4], u: [12, 2, 2, 2, 2, 2] };
// The ages of a decade with a mark, by table, so that marks do not hide each other.
const FIRST_MARK = [0, 5, 3, 8];

export function inkOf(one, dark) {
  const [hue, lastHue, saturation, ...light] = INKS[one.side];
  const [from, to] = dark ? light.slice(2) : light.slice(0, 2);
  const part = one.of > 1 ? one.index / (one.of - 1) : 1;
  const between = (a, b) => Math.round(a + (b - a) * part);
  return `hsl(${between(hue, lastHue)} ${saturation}% ${between(from, to)}%)`;
}

const isLast = (one) => one.index === one.of - 1;
export function dashOf(one) {
  if (one.table.reconstructed) return [3, 3];
  return (isLast(one) ? DASHES : DOTTED)[one.sex];
}

// A mark in the middle of a series, as texts of paths: males have squares, females circles, both
// diamonds. The first table's are full; the others' hollow, with a dot, with a bar.
export function markOf({ sex, side }, x, y, size) {
  const [half, point] = [size * 0.9, size * 1.3];
  const [wide, arc] = [2 * size, `a${size} ${size} 0 1 0 `];
  const outline = {
    m: `M${x - half} ${y - half}h${2 * half}v${2 * half}h${-2 * half}Z`,
    f: `M${x - size} ${y}${arc}${wide} 0${arc}${-wide} 0Z`,
    u: `M${x} ${y - point}L${x + point} ${y}L${x} ${y + point}L${x - point} ${y}Z`,
  }[sex];
  const inside = ["", "", `M${x - 0.4} ${y}h0.8`, `M${x} ${y - size}v${2 * size}`][side];
  return { outline, inside, full: side === 0 };
}

// The ages with a mark: one in ten, the published ones where others are not, and single values.
export function markedAges({ ages, lines }, line) {
  const crowded = lines.length > 8;
  return ages.filter((age, at) => {
    if (line.drawn[at] === null) return false;
    const alone = (line.drawn[at - 1] ?? null) === null && (line.drawn[at + 1] ?? null) === null;
    if (alone) return true;
    const { reconstructed: not } = line.table;
    if (not) return age < not.from || age > not.to;
    return age % 10 === FIRST_MARK[line.side] && (!crowded || isLast(line));
  });
}

// Shorter and shorter, of which the longest that fits is taken.
export function bandTexts({ kind, from, to, names }) {
  const ages = from === to ? `${from}` : `${from}–${to}`;
  const what = markWords({ kind });
  return [`${names}: ages ${ages} ${what}`, `${ages} ${what}`, `${ages} ${kind}`, kind];
}
