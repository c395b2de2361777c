// A figure as the text of an SVG: to save, to print, and for a PNG.

import { bandTexts, dashOf, inkOf, markOf, markedAges } from "./lines.js";

const SIZE = { width: 1000, plot: 460, left: 74, right: 18, top: 64, row: 22, column: 460 };
const RIGHT = SIZE.width - SIZE.right;
const COLUMNS = Math.floor((SIZE.width - SIZE.left) / SIZE.column); // of the legend
const COLOURS = {
  light: { ground: "#fffefb", ink: "#1c2227", muted: "#59636c", grid: "#e9e5db", warn: "#8a3b00" },
  dark: { ground: "#1b2025", ink: "#e7eaec", muted: "#a2adb6", grid: "#2a3239", warn: "#ffc277" },
};
const HATCHES = { reconstructed: "#d9822b", doubtful: "#d9822b", completed: "#7a8894" };

const escaped = (text) => text.replace(/[&<>"]/g, (sign) => `&#${sign.charCodeAt(0)};`);
const short = (number) => Math.round(number * 100) / 100;

// An element with its attributes; numbers to two decimals.
function tag(name, attributes, inner = "") {
  const parts = Object.entries(attributes).map(([key, value]) => {
    const shown = typeof value === "number" ? short(value) : escaped(value);
    return ` ${key}="${shown}"`;
  });
  return `<${name}${parts.join("")}>${inner}</${name}>`;
}
// Words in lines of about as many letters.
function wrapped(words, letters) {
  const lines = [""];
  for (const word of words.split(" ")) {
    if (`${lines.at(-1)} ${word}`.length > letters) lines.push("");
    lines.push(`${lines.pop()} ${word}`.trim());
  }
  return lines;
}

const textTag = (x, y, words, more = {}) => tag("text", { x, y, ...more }, escaped(words));

// Without exponents, which are harder to compare.
export const tickText = (value) => value.toFixed(10).replace(/\.?0+$/, "");

// On a log scale powers of ten have a text, and 2 and 5 too where there are few of them.
export function hasTick(value, { min, max }) {
  const digit = Number(value.toExponential(6).split("e")[0]);
  return digit === 1 || (max / min <= 100 && (digit === 2 || digit === 5));
}

// 1, 2 or 5 times a power of ten apart.
export function ticksOf([min, max], most) {
  const raw = (max - min) / most;
  const power = 10 ** Math.floor(Math.log10(raw));
  const step = [1, 2, 5, 10].find((each) => each * power >= raw) * power;
  const ticks = [];
  for (let at = Math.ceil(min / step - 1e-9); at * step <= max * (1 + 1e-12) + 1e-15; at += 1) {
    ticks.push(Number((at * step).toPrecision(12)));
  }
  return ticks;
}

function logTicks({ min, max }) {
  const ticks = [];
  for (let power = Math.floor(Math.log10(min)); power <= Math.log10(max); power += 1) {
    for (const digit of [1, 2, 5]) {
      const value = Number(`${digit}e${power}`);
      if (value >= min && value <= max && hasTick(value, { min, max })) ticks.push(value);
    }
  }
  return ticks;
}

const floored = (value, round) => {
  const power = 10 ** Math.floor(Math.log10(value) + 1e-12);
  return Number(
    (round(value / power + (round === Math.floor ? 1e-9 : -1e-9)) * power).toPrecision(9),
  );
};

// The range of a plot over the values that are seen, as both the page and the picture draw it.
export function heightOf({ log, ratio }, low, high) {
  if (low === null || low === undefined) return log ? [0.1, 1] : [0, 1];
  if (log) {
    const [min, max] = [floored(low, Math.floor), floored(high, Math.ceil)];
    return min < max ? [min, max] : [min, min * 10];
  }
  if (!ratio) return [Math.min(0, low), high > 0 ? high * 1.05 : high + 0.01];
  const [from, to] = [Math.min(low, 100), Math.max(high, 100)];
  const room = Math.max((to - from) * 0.08, 1);
  return [Math.max(0, from - room), to + room];
}

function bandOf({ x, top, bottom, colours }, band, at) {
  const [left, right] = [x(band.from), x(band.to)];
  const width = Math.max(right - left, 2);
  const hatch = { width: 8, height: 8, patternUnits: "userSpaceOnUse", id: `hatch-${at}` };
  const lean = `rotate(${band.kind === "reconstructed" ? 45 : -45})`;
  const stroke = { stroke: HATCHES[band.kind], "stroke-width": 2, "stroke-opacity": 0.5 };
  const lines = tag("path", { d: "M0 0V8", ...stroke });
  const box = { x: left, y: top, width, height: bottom - top, fill: `url(#hatch-${at})` };
  const halo = { stroke: colours.ground, "stroke-width": 5, "paint-order": "stroke" };
  const words = bandTexts(band).find((each) => each.length * 6.2 < width - 12);
  const style = { "text-anchor": "middle", "font-weight": 600, fill: colours.warn, ...halo };
  return (
    tag("pattern", { ...hatch, patternTransform: lean }, lines) +
    tag("rect", box) +
    (words ? textTag((left + right) / 2, top + 16, words, style) : "")
  );
}

function paintedMark(line, x, y, ink, ground) {
  const { outline, inside, full } = markOf(line, x, y, 3.4);
  const d = (path) => path.replace(/-?\d+\.\d+/g, (number) => String(short(Number(number))));
  const style = { stroke: ink, "stroke-width": 1.6 };
  return (
    tag("path", { d: d(outline), fill: full ? ink : ground, ...style }) +
    (inside ? tag("path", { d: d(inside), fill: "none", ...style }) : "")
  );
}

const strokeOf = (line, ink) => ({
  fill: "none",
  stroke: ink,
  "stroke-width": 2,
  "stroke-dasharray": dashOf(line).join(" "),
});

function lineOf(frame, drawing, line) {
  const { x, y, colours } = frame;
  const ink = inkOf(line, frame.dark);
  const [first, last] = drawing.range;
  let [d, open] = ["", false];
  drawing.ages.forEach((age, at) => {
    const value = line.drawn[at];
    const seen = value !== null && age >= first && age <= last;
    if (seen) d += `${open ? "L" : "M"}${short(x(age))} ${short(y(value))}`;
    open = seen;
  });
  const marks = markedAges(drawing, line)
    .filter((age) => age >= first && age <= last)
    .map((age) =>
      paintedMark(line, x(age), y(line.drawn[age - drawing.ages[0]]), ink, colours.ground),
    );
  return tag("path", { d, ...strokeOf(line, ink) }) + marks.join("");
}

function gridOf({ x, y, top, bottom, colours }, { log, range }, [min, max]) {
  const stroke = colours.grid;
  const ages = ticksOf(range, 14).filter(Number.isInteger);
  const values = log ? logTicks({ min, max }) : ticksOf([min, max], 8);
  const centred = { "text-anchor": "middle" };
  return [
    ...ages.map((age) => tag("path", { d: `M${short(x(age))} ${top}V${bottom}`, stroke })),
    ...ages.map((age) => textTag(x(age), bottom + 18, String(age), centred)),
    ...values.map((at) => tag("path", { d: `M${SIZE.left} ${short(y(at))}H${RIGHT}`, stroke })),
    ...values.map((at) =>
      textTag(SIZE.left - 8, y(at) + 4, tickText(at), { "text-anchor": "end" }),
    ),
  ];
}

function legendOf({ bottom, colours, dark }, lines) {
  return lines.map((line, at) => {
    const ink = inkOf(line, dark);
    const across = SIZE.left + (at % COLUMNS) * SIZE.column;
    const down = bottom + 44 + Math.floor(at / COLUMNS) * SIZE.row;
    return (
      tag("path", { d: `M${across} ${down}h44`, ...strokeOf(line, ink) }) +
      paintedMark(line, across + 22, down, ink, colours.ground) +
      textTag(across + 54, down + 4, line.called, { fill: colours.ink })
    );
  });
}

// The values between the ages that are seen, and the range that they need.
function valuesSeen({ lines, ages, range }) {
  return lines.flatMap(({ drawn }) =>
    drawn.filter((value, at) => value !== null && ages[at] >= range[0] && ages[at] <= range[1]),
  );
}

// `about`: what is said below, a line each.
export function pictureOf(drawing, heading, about, dark = false) {
  const { width, plot, left, top, row } = SIZE;
  const { range, lines, log } = drawing;
  const colours = COLOURS[dark ? "dark" : "light"];
  const seen = valuesSeen(drawing);
  const most = (pick) => (seen.length ? seen.reduce((a, b) => pick(a, b)) : null);
  const [min, max] = heightOf(drawing, most(Math.min), most(Math.max));
  const [low, high] = log ? [Math.log(min), Math.log(max)] : [min, max];
  const bottom = top + plot;
  const x = (age) => left + ((age - range[0]) / (range[1] - range[0])) * (RIGHT - left);
  const y = (value) => bottom - (((log ? Math.log(value) : value) - low) / (high - low)) * plot;
  const frame = { x, y, top, bottom, colours, dark };

  const bands = drawing.bands
    .map((band) => ({
      ...band,
      from: Math.max(band.from, range[0]),
      to: Math.min(band.to, range[1]),
    }))
    .filter((band) => band.from <= band.to);
  const invented = drawing.invented ? [`Invented, for tests only: ${drawing.invented}`] : [];
  const footer = [...invented, ...about].flatMap((words) => wrapped(words, 135));
  const below = bottom + 52 + Math.ceil(lines.length / COLUMNS) * row;
  const height = below + footer.length * row;
  return `${tag(
    "svg",
    {
      ...{ xmlns: "http://www.w3.org/2000/svg", width, height, viewBox: `0 0 ${width} ${height}` },
      ...{ "font-family": "system-ui, sans-serif", "font-size": 13, fill: colours.muted },
    },
    [
      tag("rect", { width: "100%", height: "100%", fill: colours.ground }),
      textTag(left, 28, heading, { "font-size": 18, "font-weight": 600, fill: colours.ink }),
      textTag(left, 50, drawing.axis),
      ...gridOf(frame, drawing, [min, max]),
      ...bands.map((band, at) => bandOf(frame, band, at)),
      ...lines.map((line) => lineOf(frame, drawing, line)),
      ...legendOf(frame, lines),
      ...footer.map((words, at) => textTag(left, below + at * row, words)),
    ].join(""),
  )}\n`;
}
