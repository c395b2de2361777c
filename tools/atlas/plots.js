// The plots: rates and improvement, each in a figure of its own with the same ages.

const plots = {};
let age = 65;

// Ages as ranges: 0–199, 204.
function ranges(ages) {
  const parts = [];
  for (const each of ages) {
    const last = parts.at(-1);
    if (last?.[1] === each - 1) last[1] = each;
    else parts.push([each, each]);
  }
  return parts.map(([a, b]) => (a === b ? a : `${a}–${b}`)).join(", ");
}

// What there is to draw: ages, a list of numbers or gaps for each line, and what is left out of it.
function dataOf(lines, log, mixed) {
  const [first, last] = allAges();
  const ages = Array.from({ length: last - first + 1 }, (_, index) => first + index);
  const leftOut = [];
  const data = lines.map((one) => {
    const factor = mixed && one.permille ? 1 / 1000 : 1;
    const values = ages.map((each) => one.numbers[each - one.table.start] ?? null);
    const without = ages.filter((_, index) => log && values[index] !== null && values[index] <= 0);
    if (without.length) leftOut.push([one, without]);
    return values.map((value) => (value === null || (log && value <= 0) ? null : value * factor));
  });
  return { data: [ages, ...data], leftOut };
}

function textOfLeftOut(leftOut) {
  const count = leftOut.reduce((sum, [, ages]) => sum + ages.length, 0);
  if (!count) return "";
  const negative = leftOut.some(([one]) => one.numbers.some((value) => value < 0));
  const places = leftOut.map(([one, ages]) => {
    return `${fullName(one)} at ${ages.length > 1 ? "ages" : "age"} ${ranges(ages)}`;
  });
  const where = places.length > 6 ? `in ${places.length} columns` : places.join("; ");
  const what = `${count > 1 ? "values" : "value"} of zero${negative ? " or less" : ""}`;
  return `Left out: ${count} ${what}, which a log scale does not have (${where}).`;
}

// The title of a figure and what its axes are.
function labelsOf(kind, lines, log, mixed) {
  const decrements = [...new Set(sidesOf().map((table) => table.decrement))];
  const rates = kind === "rates";
  const divided = namesOf(lines.filter((one) => one.permille));
  const unit = !lines.length
    ? "nothing selected"
    : mixed
      ? `decimal: the per mille of ${divided} divided by 1000`
      : unitOf(lines[0]);
  const what = rates ? `Rate of ${decrements.join(" or ")}` : "Rate of improvement";
  return {
    title: rates ? `Rates of ${decrements.join(" and ")}` : "Improvement",
    axis: `${what} in a year, ${unit}, ${log ? "log" : "linear"} scale, by age`,
  };
}

// On a log scale powers of ten have a tick, and 2 and 5 too where there are few of them.
function hasTick(value, { min, max }) {
  const digit = Number(value.toExponential(6).split("e")[0]);
  return digit === 1 || (max / min <= 100 && (digit === 2 || digit === 5));
}

// Without exponents, which are harder to compare.
const tickText = (value) => value.toFixed(10).replace(/\.?0+$/, "");

function optionsOf(kind, lines, log, box) {
  const crowded = lines.length > 8;
  const grid = { stroke: css("--grid"), width: 1 };
  const axis = { stroke: css("--muted"), font: `12px ${css("--sans")}`, grid, ticks: grid };
  const logScale = {
    distr: 3,
    range: (u, low, high) => (low === null ? [0.1, 1] : uPlot.rangeLog(low, high, 10, false)),
  };
  const linearScale = {
    range: (u, low, high) => [Math.min(0, low ?? 0), high > 0 ? high * 1.05 : (high ?? 0) + 0.01],
  };
  return {
    width: box.clientWidth,
    height: Math.min(kind === "rates" ? 400 : 260, Math.max(230, Math.round(innerWidth * 0.75))),
    padding: [12, 14, 0, 0],
    legend: { show: false },
    focus: { alpha: crowded ? 0.3 : 1 },
    cursor: {
      y: false,
      drag: { x: true, y: false, setScale: false, dist: 8 },
      focus: { prox: crowded ? 20 : -1 },
      points: {
        size: crowded ? 0 : 9,
        width: crowded ? 0 : 2,
        fill: (u, at) => inkOf(lines[at - 1]),
        stroke: () => css("--panel"),
      },
    },
    scales: {
      x: { time: false, range: () => view.ages ?? allAges() },
      y: log ? logScale : linearScale,
    },
    axes: [
      { ...axis, size: 34, incrs: [1, 2, 5, 10, 20, 25, 50] },
      {
        ...axis,
        size: (u, texts) => 22 + 7.4 * Math.max(3, ...(texts ?? []).map((text) => text.length)),
        values: (u, splits) => splits.map((each) => (each === null ? "" : tickText(each))),
        filter: (u, splits) =>
          splits.map((each) => (!log || hasTick(each, u.scales.y) ? each : null)),
      },
    ],
    series: [
      {},
      ...lines.map((one) => ({
        label: fullName(one),
        stroke: inkOf(one),
        width: one.side ? 1.7 : 2,
        dash: dashOf(one),
        points: { show: false },
      })),
    ],
    hooks: {
      ready: [() => showAge(age)],
      drawAxes: [(u) => drawWarnings(u, lines)],
      drawSeries: [(u, at) => drawMarks(u, at, lines[at - 1], crowded)],
      // Where the pointer leaves, the line at the age stays.
      setCursor: [(u) => u.status && showAge(u.data[0][u.cursor.idx] ?? age)],
      setSelect: [zoomToSelection],
    },
  };
}

function draw(kind) {
  const figure = byId(kind);
  const box = figure.querySelector(".plot");
  plots[kind]?.destroy();
  delete plots[kind];
  box.replaceChildren();
  figure.hidden = !sidesOf().some((table) => table.series.some((one) => one.kind === kind));
  if (figure.hidden) return;

  const lines = seriesOf(kind);
  const log = view.scale[kind] === "log";
  const mixed = new Set(lines.map(unitOf)).size > 1;
  const { data, leftOut } = dataOf(lines, log, mixed);
  const { title, axis } = labelsOf(kind, lines, log, mixed);
  figure.querySelector("h3").textContent = title;
  figure.querySelector(".axis").textContent = `↑ ${axis}`;
  figure.querySelector(".leftout").textContent = textOfLeftOut(leftOut);
  figure.querySelector(`[value=${view.scale[kind]}]`).checked = true;
  box.setAttribute("aria-label", `Plot. ${axis}. ${lines.map(fullName).join(", ")}`);
  if (!data.slice(1).some((values) => values.some((value) => value !== null))) {
    const why = lines.length ? "There is nothing above zero to draw." : "No column is selected.";
    box.append(el("p.empty", why));
    return;
  }
  const plot = new uPlot(optionsOf(kind, lines, log, box), data, box);
  plot.over.addEventListener("dblclick", () => zoom(null));
  plot.over.addEventListener("pointermove", (event) => {
    if (event.pointerType === "mouse") return; // the library follows it
    const left = event.clientX - plot.over.getBoundingClientRect().left;
    showAge(Math.round(plot.posToVal(left, "x")));
  });
  plots[kind] = plot;
}

function zoomToSelection({ select, posToVal }) {
  const from = Math.round(posToVal(select.left, "x"));
  const to = Math.round(posToVal(select.left + select.width, "x"));
  if (select.width && from < to) zoom([from, to]);
}

function zoom(ages) {
  view.ages = ages;
  changed();
}

function drawBoth() {
  KINDS.forEach(draw);
  byId("allages").hidden = !view.ages;
  byId("allages").textContent = view.ages ? `Ages ${view.ages.join("–")}: show all` : "";
  for (const input of document.querySelectorAll(".legend input")) {
    input.checked = view.shown[input.dataset.side].has(input.value);
  }
  showAge(age);
}

// The values of an age beside the names, and a line at the age in both plots.
function showAge(wanted) {
  const sides = sidesOf();
  const [first, last] = allAges();
  age = Math.max(first, Math.min(wanted, last));
  const input = byId("age");
  // What is being typed is not changed under the fingers.
  if (document.activeElement !== input || Number(input.value) !== wanted) input.value = age;
  for (const output of document.querySelectorAll(".legend .value")) {
    const one = sides[output.dataset.side].series[output.dataset.at];
    output.textContent = textAt(one, age) ?? "–";
    output.classList.toggle("doubtful", Boolean(reconstructedAt(one.table, age)));
  }
  for (const plot of Object.values(plots)) {
    // status: its scales are known from the moment that it is ready.
    if (plot.status) plot.setCursor({ left: plot.valToPos(age, "x"), top: 0 }, false);
  }
}

function fitPlots() {
  for (const [kind, plot] of Object.entries(plots)) {
    const width = byId(kind).querySelector(".plot").clientWidth;
    if (width && width !== plot.width) plot.setSize({ width, height: plot.height });
  }
}
