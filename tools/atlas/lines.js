// How a series is drawn: ink, dashes, marks.

const dark = matchMedia("(prefers-color-scheme: dark)");
// Hue, saturation and the range of lightness over the labels of a column, for light and for dark.
const INKS = [
  { m: [211, 88, 52, 36, 72, 66], f: [17, 90, 46, 38, 70, 62], u: [222, 16, 50, 30, 64, 84] },
  { m: [172, 95, 31, 24, 52, 52], f: [292, 52, 56, 40, 80, 74], u: [48, 95, 30, 24, 56, 62] },
];
const DASHES = [
  [2, 3],
  [7, 4],
  [11, 3, 2, 3],
  [4, 2],
  [14, 4],
  [9, 3, 2, 3, 2, 3],
];

function inkOf(one) {
  const [hue, saturation, ...light] = INKS[one.side][one.sex];
  const [from, to] = dark.matches ? light.slice(2) : light.slice(0, 2);
  const part = one.of > 1 ? one.index / (one.of - 1) : 1;
  return `hsl(${hue} ${saturation}% ${from + (to - from) * part}%)`;
}

const isLast = (one) => one.index === one.of - 1;
const dashOf = (one) =>
  one.table.reconstructed ? [3, 3] : isLast(one) ? [] : DASHES[one.index % DASHES.length];

// Males have squares, females circles, both diamonds; filled for the table, hollow for the other.
function markPath(sex, x, y, size) {
  const path = new Path2D();
  if (sex === "f") path.arc(x, y, size, 0, 2 * Math.PI);
  else if (sex === "m") path.rect(x - size * 0.9, y - size * 0.9, size * 1.8, size * 1.8);
  else {
    path.moveTo(x, y - size * 1.3);
    for (const [dx, dy] of [
      [1.3, 0],
      [0, 1.3],
      [-1.3, 0],
    ])
      path.lineTo(x + dx * size, y + dy * size);
    path.closePath();
  }
  return path;
}

function swatch(one) {
  const ink = inkOf(one);
  const paint = { stroke: ink, "stroke-width": 2, fill: one.side ? "var(--panel)" : ink };
  const mark =
    one.sex === "f"
      ? svg("circle", { cx: 15, cy: 7, r: 3.5, ...paint })
      : one.sex === "m"
        ? svg("rect", { x: 11.8, y: 3.8, width: 6.4, height: 6.4, ...paint })
        : svg("path", { d: "M15 2l5 5l-5 5l-5 -5z", ...paint });
  return svg(
    "svg",
    { viewBox: "0 0 30 14", class: "swatch", "aria-hidden": "true" },
    svg("path", {
      d: "M0 7H30",
      stroke: ink,
      "stroke-width": 2.2,
      "stroke-dasharray": dashOf(one).join(" "),
    }),
    mark,
  );
}

// ---- on the canvas of a plot ----

const css = (name) => getComputedStyle(document.documentElement).getPropertyValue(name);
const namesOf = (lines) => [...new Set(lines.map((one) => one.table.name))].join(", ");

// Hatched, with a word on it, where a table is reconstructed.
function drawReconstructed(u, [from, to], names) {
  const { ctx, bbox } = u;
  const ratio = devicePixelRatio;
  const left = u.valToPos(from, "x", true);
  const width = u.valToPos(to, "x", true) - left;
  ctx.save();
  ctx.beginPath();
  ctx.rect(left, bbox.top, width, bbox.height);
  ctx.clip();
  ctx.fillStyle = css("--hatch-ground");
  ctx.fillRect(left, bbox.top, width, bbox.height);
  ctx.strokeStyle = css("--hatch");
  ctx.lineWidth = ratio;
  ctx.beginPath();
  for (let x = left - bbox.height; x < left + width; x += 9 * ratio) {
    ctx.moveTo(x, bbox.top + bbox.height);
    ctx.lineTo(x + bbox.height, bbox.top);
  }
  ctx.stroke();
  const wordings = [
    `${names}: ages ${from}–${to} reconstructed, not published`,
    `${from}–${to} reconstructed, not published`,
    `${from}–${to} reconstructed`,
    "reconstructed",
  ];
  const fits = (text) => ctx.measureText(text).width < width - 16 * ratio;
  const text = wordings.find(fits);
  if (text) {
    const wide = ctx.measureText(text).width;
    const x = left + (width - wide) / 2;
    ctx.fillStyle = css("--panel");
    ctx.fillRect(x - 5 * ratio, bbox.top + 5 * ratio, wide + 10 * ratio, 18 * ratio);
    ctx.fillStyle = css("--warn");
    ctx.fillText(text, x, bbox.top + 8 * ratio);
  }
  ctx.restore();
}

function drawWarnings(u, lines) {
  const { ctx, bbox } = u;
  const ratio = devicePixelRatio;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left, bbox.top, bbox.width, bbox.height);
  ctx.clip();
  ctx.font = `600 ${11 * ratio}px ${css("--sans")}`;
  ctx.textBaseline = "top";
  ctx.textAlign = "left";
  const doubtful = lines.filter((one) => one.table.reconstructed);
  for (const range of new Set(doubtful.map((one) => one.table.reconstructed.join()))) {
    const some = doubtful.filter((one) => one.table.reconstructed.join() === range);
    drawReconstructed(u, some[0].table.reconstructed, namesOf(some));
  }
  const invented = namesOf(lines.filter((one) => one.table.invented));
  if (invented) {
    ctx.fillStyle = css("--made");
    ctx.textAlign = "right";
    ctx.textBaseline = "bottom";
    const text = bbox.width < 420 * ratio ? "invented" : `invented: ${invented}`;
    ctx.fillText(text, bbox.left + bbox.width - 8 * ratio, bbox.top + bbox.height - 6 * ratio);
  }
  ctx.restore();
}

// A mark at every tenth age, at the published ages where others are reconstructed, and where a
// value stands alone.
function drawMarks(u, at, one, crowded) {
  const { ctx, bbox } = u;
  const [x, y] = [u.data[0], u.data[at]];
  const ratio = devicePixelRatio;
  const edge = 6 * ratio;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left - edge, bbox.top - edge, bbox.width + 2 * edge, bbox.height + 2 * edge);
  ctx.clip();
  ctx.strokeStyle = inkOf(one);
  ctx.fillStyle = one.side ? css("--panel") : inkOf(one);
  ctx.lineWidth = 1.6 * ratio;
  ctx.setLineDash([]);
  for (let i = 0; i < x.length; i += 1) {
    if (y[i] === null || x[i] < u.scales.x.min || x[i] > u.scales.x.max) continue;
    const alone = (y[i - 1] ?? null) === null && (y[i + 1] ?? null) === null;
    const due = one.table.reconstructed
      ? !reconstructedAt(one.table, x[i])
      : x[i] % 10 === (one.side ? 5 : 0) && (!crowded || isLast(one));
    if (!alone && !due) continue;
    const [left, top] = [u.valToPos(x[i], "x", true), u.valToPos(y[i], "y", true)];
    const path = markPath(one.sex, left, top, 3.2 * ratio);
    ctx.fill(path);
    ctx.stroke(path);
  }
  ctx.restore();
}
