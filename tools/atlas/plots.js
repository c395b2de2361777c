// The plots: rates and improvement, each in a figure of its own with the same ages.

import uPlot from "uplot";

import { agesOfView, tablesOf } from "./address.js";
import { drawMarks, drawUnder } from "./canvas.js";
import { byId, button, css, dark, el, save } from "./dom.js";
import { drawingOf } from "./drawing.js";
import { readLegend } from "./legend.js";
import { dashOf, inkOf } from "./lines.js";
import { hasTick, heightOf, pictureOf, tickText } from "./picture.js";
import { fileName } from "./sheet.js";
import { atlas, change, state } from "./state.js";
import { KINDS } from "./tables.js";
import { tooltip } from "./tooltip.js";

const plots = {};
const drawings = {};
const noTick = "";

function optionsOf(drawing, box, hint) {
  const { lines, log, range } = drawing;
  const crowded = lines.length > 8;
  const grid = { stroke: css("--grid"), width: 1 };
  const axis = { stroke: css("--muted"), font: `12px ${css("--sans")}`, grid, ticks: grid };
  const filter = (u, splits) => splits.map((at) => (!log || hasTick(at, u.scales.y) ? at : null));
  // What of it fits the window below what stands above it.
  const room = innerHeight - (box.getBoundingClientRect().top + scrollY) - 24;
  const low = Math.max(240, Math.round(innerWidth * 0.3));
  const most = drawing.kind === "rates" ? 430 : 260;
  return {
    width: box.clientWidth,
    height: Math.max(Math.min(most, room), Math.min(low, most, 340)),
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
        fill: (u, at) => inkOf(lines[at - 1], dark.matches),
        stroke: () => css("--panel"),
      },
    },
    scales: {
      x: { time: false, range: () => range },
      y: { distr: log ? 3 : 1, range: (u, low, high) => heightOf(drawing, low, high) },
    },
    axes: [
      { ...axis, size: 34, incrs: [1, 2, 5, 10, 20, 25, 50] },
      {
        ...axis,
        size: (u, texts) => 22 + 7.4 * Math.max(3, ...(texts ?? []).map((text) => text.length)),
        values: (u, splits) => splits.map((at) => (at === null ? noTick : tickText(at))),
        filter,
      },
    ],
    series: [
      {},
      ...lines.map((line) => ({
        label: line.called,
        stroke: inkOf(line, dark.matches),
        width: line.side ? 1.7 : 2,
        dash: dashOf(line),
        points: { show: false },
      })),
    ],
    hooks: {
      drawAxes: [(u) => drawUnder(u, drawing, state.view.age)],
      drawSeries: [(u, at) => drawMarks(u, drawing, lines[at - 1])],
      // Values are read where the pointer is; when it leaves, at the chosen age again.
      setCursor: [
        (u) => u.status && readLegend(u.data[0][u.cursor.idx] ?? state.view.age),
        (u) => u.status && hint.show(u),
      ],
      setSelect: [zoomToSelection],
    },
  };
}

function draw(kind) {
  const figure = byId(kind);
  const box = figure.querySelector(".plot");
  const { view } = state;
  plots[kind]?.destroy();
  delete plots[kind];
  box.replaceChildren();
  figure.hidden = !tablesOf(view).some((table) => table.series.some((one) => one.kind === kind));
  if (figure.hidden) return;

  const drawing = drawingOf(view, kind);
  drawings[kind] = drawing;
  const { lines, axis } = drawing;
  figure.querySelector("h3").textContent = drawing.title;
  figure.querySelector(".axis").textContent = `↑ ${axis}`;
  figure.querySelector(".leftout").textContent = drawing.leftOut;
  const ratio = figure.querySelector("[value=ratio]");
  if (ratio) ratio.disabled = view.sides.length < 2;
  figure.querySelector(`[value=${view.scale[kind]}]`).checked = true;
  box.setAttribute("aria-label", `Plot. ${axis}. ${lines.map(({ called }) => called).join(", ")}`);
  for (const saving of figure.querySelectorAll(".save button")) saving.disabled = !lines.length;
  if (!lines.some((line) => line.drawn.some((value) => value !== null))) {
    const why = lines.length ? "There is nothing above zero to draw." : "No column is selected.";
    box.append(el("p.empty", why));
    return;
  }
  const hint = tooltip(drawing);
  const plot = new uPlot(
    optionsOf(drawing, box, hint),
    [drawing.ages, ...lines.map((line) => line.drawn)],
    box,
  );
  plot.over.append(hint.tip);
  const ageAt = (event) => {
    const left = event.clientX - plot.over.getBoundingClientRect().left;
    return Math.round(plot.posToVal(left, "x"));
  };
  plot.over.addEventListener("dblclick", () => change({ ages: null }));
  // A press without dragging chooses the age.
  let pressed = null;
  plot.over.addEventListener("pointerdown", (event) => (pressed = event.clientX));
  plot.over.addEventListener("pointerup", (event) => {
    if (pressed !== null && Math.abs(event.clientX - pressed) < 8) change({ age: ageAt(event) });
    pressed = null;
  });
  plots[kind] = plot;
}

function zoomToSelection({ select, posToVal }) {
  const from = Math.round(posToVal(select.left, "x"));
  const to = Math.round(posToVal(select.left + select.width, "x"));
  // After the library has done with the release of the pointer.
  if (select.width && from < to) setTimeout(() => change({ ages: [from, to] }));
}

export function drawPlots(view) {
  KINDS.forEach(draw);
  byId("allages").hidden = !view.ages;
  byId("allages").textContent = view.ages ? `Ages ${view.ages.join("–")}: show all` : "";
}

function fitPlots() {
  for (const [kind, plot] of Object.entries(plots)) {
    const width = byId(kind).querySelector(".plot").clientWidth;
    if (width && width !== plot.width) plot.setSize({ width, height: plot.height });
  }
}

// ---- saved and printed ----

function picture(kind, inTheDark) {
  const { view } = state;
  const names = tablesOf(view)
    .map(({ name }) => name)
    .join(", ");
  const sources = tablesOf(view).map(
    ({ name, base, source }) =>
      `${name}: ${source ?? "invented"}${base ? `; base year ${base}` : ""}`,
  );
  const made = `data_tables ${atlas.version} of ${atlas.date}, catalogue ${atlas.digest}`;
  const drawing = drawings[kind];
  return pictureOf(drawing, `${names}: ${drawing.title}`, [...sources, made], inTheDark);
}

function savePicture(kind, ending) {
  const text = picture(kind, dark.matches);
  const name = fileName(state.view, `${kind}.${ending}`);
  if (ending === "svg") return save(name, "image/svg+xml", text);
  const image = new Image();
  image.addEventListener("load", () => {
    const canvas = el("canvas", { width: 2 * image.width, height: 2 * image.height });
    canvas.getContext("2d").drawImage(image, 0, 0, canvas.width, canvas.height);
    canvas.toBlob((blob) => save(name, "image/png", blob));
  });
  image.src = `data:image/svg+xml,${encodeURIComponent(text)}`;
  return image;
}

// What is printed has the width of the paper, and is light.
function printed() {
  for (const kind of KINDS) {
    const paper = byId(kind).querySelector(".paper");
    paper.replaceChildren();
    if (plots[kind]) paper.innerHTML = picture(kind, false);
  }
}

function listenToFigure(kind) {
  const figure = byId(kind);
  figure.querySelector(".scale").addEventListener("change", (event) => {
    change({ scale: { ...state.view.scale, [kind]: event.target.value } });
  });
  for (const ending of ["svg", "png"]) {
    const name = `Save the plot as ${ending.toUpperCase()}`;
    figure
      .querySelector(".save")
      .append(button(ending.toUpperCase(), () => savePicture(kind, ending), name));
  }
  figure.querySelector(".plot").addEventListener("keydown", (event) => {
    const steps = { ArrowLeft: -1, ArrowRight: 1, PageDown: -10, PageUp: 10, Home: -999, End: 999 };
    if (!(event.key in steps)) return;
    event.preventDefault();
    const [first, last] = agesOfView(state.view);
    const age = state.view.age + steps[event.key];
    change({ age: Math.max(first, Math.min(age, last)) });
    byId("reading").textContent = readLegend(state.view.age, kind);
    // The plot is a new one, which is drawn a moment later.
    setTimeout(() =>
      plots[kind]?.setCursor({ left: plots[kind].valToPos(state.view.age, "x"), top: 0 }),
    );
  });
}

export function startPlots() {
  KINDS.forEach(listenToFigure);
  byId("allages").addEventListener("click", () => change({ ages: null }));
  dark.addEventListener("change", () => drawPlots(state.view));
  addEventListener("beforeprint", printed);
  new ResizeObserver(fitPlots).observe(document.querySelector("article"));
}
