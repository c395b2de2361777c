// The legend, in which series are chosen and read.

const labelOf = ({ label, sex }) =>
  label === null
    ? SEXES[sex]
    : label === "ult"
      ? "ultimate"
      : label.length < 3
        ? `duration ${label}`
        : label;

function choose(side, series, on) {
  for (const one of series) view.shown[side][on ? "add" : "delete"](one.name);
  changed();
}

function chipOf(one, side) {
  const input = el("input", { type: "checkbox", value: one.name });
  const value = el("span.value");
  value.dataset.side = input.dataset.side = side;
  value.dataset.at = one.table.series.indexOf(one);
  input.addEventListener("change", () => choose(side, [one], input.checked));
  const title = `${one.table.name} ${one.name}${one.computed ? ", computed at import" : ""}`;
  const label = el("span", labelOf(one) + (one.computed ? "°" : ""));
  return el("label", { title }, input, swatch({ ...one, side }), label, value);
}

function allOrNone(column, all, side) {
  const buttons = [true, false].map((on) => {
    const text = on ? "all" : "none";
    const name = `${text} of ${all[0].table.name} ${column}`;
    const button = el("button", { type: "button", "aria-label": name }, text);
    button.addEventListener("click", () => choose(side, all, on));
    return button;
  });
  return el("span.buttons", buttons);
}

function columnLegend(table, column, all, side) {
  const what = all[0].kind === "rates" ? table.decrement : "improvement";
  const name = view.other ? el(`span.of.side-${side}`, table.name) : null;
  const words = ` ${SEXES[all[0].sex]}, ${what}, ${unitOf(all[0])}`;
  const set = el("fieldset", el("legend", name, el("code", column), words));
  if (all.length > 3) set.append(allOrNone(column, all, side));
  const chips = all.map((one) => chipOf(one, side));
  set.append(el(all.length > 6 ? "div.series.many" : "div.series", chips));
  if (table.reconstructed) {
    const warning = `⚠ ${agesOf(table.reconstructed)} are reconstructed, not published`;
    set.append(el("p.warned", warning));
  }
  return set;
}

function buildLegend(kind) {
  const columns = sidesOf().flatMap((table, side) =>
    [...table.columns]
      .filter(([, all]) => all[0].kind === kind)
      .map(([column, all]) => columnLegend(table, column, all, side)),
  );
  byId(kind)
    .querySelector(".legend")
    .replaceChildren(...columns);
}
