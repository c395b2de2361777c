// What is chosen. It stands in the address, so that a view is a link.

let view = {};

// Few enough to be told apart: of rates up to three, else the ends of a column.
function shownAtFirst(table) {
  const few = (one) => one.of <= 3 && one.kind === "rates";
  const shown = table.series.filter(
    (one) => few(one) || one.index === 0 || one.index === one.of - 1,
  );
  return new Set(shown.map((one) => one.name));
}

function readAddress() {
  const given = new URLSearchParams(location.hash.slice(1));
  const [named, beside] = [given.get("table"), given.get("with")];
  const table = tables.get(named) ?? tables.values().next().value;
  const other = beside === table.name ? null : (tables.get(beside) ?? null);
  const shown = (key, of) => {
    if (!of) return new Set();
    if (!given.has(key)) return shownAtFirst(of);
    const names = given.get(key).split(",");
    return new Set(of.series.map((one) => one.name).filter((name) => names.includes(name)));
  };
  view = { table, other, ages: null, all: given.get("values") === "all" };
  view.shown = [shown("series", table), shown("withseries", other)];
  view.scale = {
    rates: given.get("rates") === "linear" ? "linear" : "log",
    improvement: given.get("improvement") === "log" ? "log" : "linear",
  };
  const [first, last] = allAges();
  const [from, to] = (given.get("ages") ?? "").split("-").map(Number);
  if (from >= first && from < to && to <= last) view.ages = [from, to];

  const unknown = [named, beside].filter((name) => name && !tables.has(name));
  byId("problem").hidden = !unknown.length;
  byId("problem").textContent = `There is no table ${unknown.join(" and no table ")}.`;
}

function address() {
  const parts = [`table=${view.table.name}`];
  const add = (key, of, shown) => {
    const names = (some) => of.series.map((one) => one.name).filter((name) => some.has(name));
    const chosen = names(shown).join();
    if (chosen !== names(shownAtFirst(of)).join()) parts.push(`${key}=${chosen}`);
  };
  if (view.other) parts.push(`with=${view.other.name}`);
  add("series", view.table, view.shown[0]);
  if (view.other) add("withseries", view.other, view.shown[1]);
  if (view.scale.rates !== "log") parts.push("rates=linear");
  if (view.scale.improvement !== "linear") parts.push("improvement=log");
  if (view.ages) parts.push(`ages=${view.ages.join("-")}`);
  if (view.all) parts.push("values=all");
  return `#${parts.join("&")}`;
}

// A step within a view: the link follows, the way back does not grow.
function changed() {
  history.replaceState(null, "", address());
  drawBoth();
  showValues();
}

// Another table: a step that the browser can take back.
function go(table, other, shown = shownAtFirst(table), otherShown = null) {
  view.ages = null;
  view.table = table;
  view.other = other === table ? null : other;
  view.shown = [shown, otherShown ?? (view.other ? shownAtFirst(view.other) : new Set())];
  if (location.hash === address()) show();
  else location.hash = address();
}

const sidesOf = () => (view.other ? [view.table, view.other] : [view.table]);
const fullName = (one) => (view.other ? `${one.table.name} ${one.name}` : one.name);

function allAges() {
  const sides = sidesOf();
  const first = Math.min(...sides.map((table) => table.start));
  return [first, Math.max(...sides.map((table) => table.end))];
}

// The chosen series, each with the side that it is on: 0 the table, 1 the other.
const chosenSeries = () =>
  sidesOf().flatMap((table, side) =>
    table.series.filter((one) => view.shown[side].has(one.name)).map((one) => ({ ...one, side })),
  );
const seriesOf = (kind) => chosenSeries().filter((one) => one.kind === kind);
