// The legend, in which series are chosen and read.

import { chosenOf, fullName } from "./address.js";
import { byId, button, dark, el, svg } from "./dom.js";
import { dashOf, inkOf, markOf } from "./lines.js";
import { yearAt } from "./projection.js";
import { counterpart, percentAt } from "./ratio.js";
import { valueText } from "./sheet.js";
import { change, state } from "./state.js";
import { KINDS, SEXES, agesOf, markAt, markWords, unitOf } from "./tables.js";

const labelOf = ({ label, sex, shape }) => {
  if (label === null) return SEXES[sex];
  if (label === "ult") return "ultimate";
  return shape === "durations" ? `duration ${label}` : label;
};

export function swatch(one) {
  const ink = inkOf(one, dark.matches);
  const { outline, inside, full } = markOf(one, 30, 7, 3.5);
  return svg(
    "svg",
    { viewBox: "0 0 60 14", class: "swatch", "aria-hidden": "true" },
    svg("path", {
      d: "M0 7H60",
      stroke: ink,
      "stroke-width": 2.4,
      "stroke-dasharray": dashOf(one).join(" "),
    }),
    svg("path", { d: outline, stroke: ink, "stroke-width": 2, fill: full ? ink : "var(--panel)" }),
    svg("path", { d: inside, stroke: ink, "stroke-width": 2 }),
  );
}

function choose(side, series, chosen) {
  for (const one of series) state.view.sides[side].shown[chosen ? "add" : "delete"](one.name);
  change({});
}

function chipOf(one, side) {
  const input = el("input", { type: "checkbox", value: one.name });
  const value = el("span.value");
  value.dataset.side = input.dataset.side = side;
  value.dataset.at = one.table.series.indexOf(one);
  input.addEventListener("change", () => choose(side, [one], input.checked));
  const title = `${one.table.name} ${one.name}${one.computed ? ", computed, not published" : ""}`;
  const label = el("span", labelOf(one) + (one.computed ? "°" : ""));
  return el("label", { title }, input, swatch({ ...one, side }), label, value);
}

function allOrNone(column, all, side) {
  const { name } = all[0].table;
  const buttons = [true, false].map((chosen) => {
    const text = chosen ? "all" : "none";
    return button(text, () => choose(side, all, chosen), `${text} of ${name} ${column}`);
  });
  return el("span.buttons", buttons);
}

// What is not published, with the series where it is not of all.
function markedText(all) {
  const found = new Map();
  for (const one of all) {
    for (const mark of one.marks) {
      const text = `${agesOf(mark)} ${markWords(mark)}`;
      found.set(text, [...(found.get(text) ?? []), labelOf(one)]);
    }
  }
  const parts = [...found].map(([text, labels]) =>
    labels.length === all.length ? text : `${labels.join(", ")}: ${text}`,
  );
  return parts.join("; ");
}

function columnLegend(view, table, column, all, side) {
  const what = all[0].kind === "rates" ? table.decrement : "improvement";
  const name = view.sides.length > 1 ? el("span.of", table.name) : null;
  const base = table.base ? `, base year ${table.base}` : "";
  const words = ` ${SEXES[all[0].sex]}, ${what}, ${unitOf(all[0])}${base}`;
  const set = el("fieldset", el("legend", name, el("code", column), words));
  if (all.length > 3) set.append(allOrNone(column, all, side));
  set.append(
    el(
      "div.series",
      all.map((one) => chipOf(one, side)),
    ),
  );
  const marked = markedText(all);
  if (marked)
    set.append(
      el(
        all.some(({ marks }) => marks.some(({ kind }) => kind !== "completed"))
          ? "p.warned"
          : "p.remark",
        marked,
      ),
    );
  return set;
}

export function buildLegend(view) {
  for (const kind of KINDS) {
    const columns = view.sides.flatMap(({ table }, side) =>
      [...table.columns]
        .filter(([, all]) => all[0].kind === kind)
        .map(([column, all]) => columnLegend(view, table, column, all, side)),
    );
    byId(kind)
      .querySelector(".legend")
      .replaceChildren(...columns);
  }
}

export function checkLegend(view) {
  for (const input of document.querySelectorAll(".legend input")) {
    input.checked = view.sides[input.dataset.side].shown.has(input.value);
  }
}

// The value of a series at an age; with the percentage where these are drawn.
function readingOf(view, one, side, age) {
  const text = valueText(view, one, age);
  if (!text || view.scale.rates !== "ratio" || !side || one.kind !== "rates") return text;
  const other = counterpart(one, view.sides[0].table);
  const percent = other && percentAt(one, other, age, yearAt(view.time, age));
  return percent === null ? text : `${percent.toFixed(2)} %`;
}

// Writes the values of an age beside the names, and tells those of a kind that are drawn.
export function readLegend(age, kind = null) {
  const { view } = state;
  for (const output of document.querySelectorAll(".legend .value")) {
    const { side, at } = output.dataset;
    const one = view.sides[side].table.series[at];
    output.textContent = readingOf(view, one, Number(side), age) || "–";
    const mark = markAt(one, age);
    output.classList.toggle("doubtful", Boolean(mark) && mark.kind !== "completed");
    output.classList.toggle("completed", mark?.kind === "completed");
  }
  const values = chosenOf(view, kind).map((one) => {
    const mark = markAt(one, age);
    const reading = readingOf(view, one, one.side, age) || "none";
    return `${fullName(view, one)} ${reading}${mark ? ` (${markWords(mark)})` : ""}`;
  });
  return `Age ${age}: ${values.join(", ")}`;
}
