// What stands at the pointer: the age, and the value of every curve there, the highest first.

import { el } from "./dom.js";
import { swatch } from "./legend.js";
import { SEXES } from "./tables.js";

const MOST = 14; // curves that are named
const GAP = 14; // pixels from the pointer

// The curves with a value at an age, from the highest to the lowest, as in the plot.
export const curvesAt = (lines, at) =>
  lines
    .map((line) => ({ line, value: line.values[at] ?? null }))
    .filter(({ value }) => value !== null)
    .sort((one, other) => other.value - one.value);

export const precise = (value, ratio) => (ratio ? `${value.toFixed(2)} %` : String(value));

// A tooltip of a plot, which follows its pointer; hidden where the pointer is on no age.
export function tooltip(drawing) {
  const tip = el("div.tip", { "aria-hidden": "true", hidden: true });
  return {
    tip,
    show({ over, cursor, data }) {
      const at = cursor.left >= 0 ? cursor.idx : null;
      const curves = at === null || at === undefined ? [] : curvesAt(drawing.lines, at);
      tip.hidden = !curves.length;
      if (tip.hidden) return;
      const rows = curves.slice(0, MOST).map(({ line, value }) => {
        const texts = [line.called, SEXES[line.sex], precise(value, drawing.ratio)];
        return el("tr", el("td", swatch(line)), ...texts.map((text) => el("td", text)));
      });
      const more = curves.length - MOST;
      tip.replaceChildren(
        el("b", `Age ${data[0][at]}`),
        el("table", rows),
        ...(more > 0 ? [el("span", `and ${more} below`)] : []),
      );
      const right = cursor.left < over.clientWidth / 2;
      tip.style.left = right ? `${cursor.left + GAP}px` : "";
      tip.style.right = right ? "" : `${over.clientWidth - cursor.left + GAP}px`;
      const room = over.clientHeight - tip.offsetHeight;
      tip.style.top = `${Math.max(0, Math.min(cursor.top - GAP, room))}px`;
    },
  };
}
