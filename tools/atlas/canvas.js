// What the plots have beside the lines: hatched ages, marks, the chosen age.

import { css, dark } from "./dom.js";
import { bandTexts, inkOf, markOf, markedAges } from "./lines.js";

function clipped(u, edge, paint) {
  const { ctx, bbox } = u;
  ctx.save();
  ctx.beginPath();
  ctx.rect(bbox.left - edge, bbox.top - edge, bbox.width + 2 * edge, bbox.height + 2 * edge);
  ctx.clip();
  paint(ctx, bbox, devicePixelRatio);
  ctx.restore();
}

// Hatched, with a word on it, where values are not published.
function drawBand(u, ctx, bbox, ratio, band) {
  const left = u.valToPos(band.from, "x", true);
  const width = Math.max(u.valToPos(band.to, "x", true) - left, 3 * ratio);
  const lean = band.kind === "reconstructed" ? 1 : -1;
  ctx.save();
  ctx.beginPath();
  ctx.rect(left, bbox.top, width, bbox.height);
  ctx.clip();
  ctx.fillStyle = css(`--${band.kind}-ground`);
  ctx.fillRect(left, bbox.top, width, bbox.height);
  ctx.strokeStyle = css(`--${band.kind}`);
  ctx.lineWidth = ratio;
  ctx.beginPath();
  const step = (band.kind === "reconstructed" ? 9 : 13) * ratio;
  for (let x = left - bbox.height; x < left + width + bbox.height; x += step) {
    ctx.moveTo(x, bbox.top + bbox.height);
    ctx.lineTo(x + lean * bbox.height, bbox.top);
  }
  ctx.stroke();
  const text = bandTexts(band).find((each) => ctx.measureText(each).width < width - 16 * ratio);
  if (text) {
    const wide = ctx.measureText(text).width;
    const x = left + (width - wide) / 2;
    ctx.fillStyle = css("--panel");
    ctx.fillRect(x - 5 * ratio, bbox.top + 5 * ratio, wide + 10 * ratio, 18 * ratio);
    ctx.fillStyle = css(band.kind === "completed" ? "--muted" : "--warn");
    ctx.fillText(text, x, bbox.top + 8 * ratio);
  }
  ctx.restore();
}

export function drawUnder(u, drawing, age) {
  clipped(u, 0, (ctx, bbox, ratio) => {
    ctx.font = `600 ${11 * ratio}px ${css("--sans")}`;
    ctx.textBaseline = "top";
    ctx.textAlign = "left";
    for (const band of drawing.bands) drawBand(u, ctx, bbox, ratio, band);
    if (drawing.invented) {
      ctx.fillStyle = css("--made");
      ctx.textAlign = "right";
      ctx.textBaseline = "bottom";
      const text = bbox.width < 420 * ratio ? "invented" : `invented: ${drawing.invented}`;
      ctx.fillText(text, bbox.left + bbox.width - 8 * ratio, bbox.top + bbox.height - 6 * ratio);
    }
    const lines = [{ at: u.valToPos(age, "x", true), across: true }];
    if (drawing.ratio) lines.push({ at: u.valToPos(100, "y", true), across: false });
    ctx.strokeStyle = css("--muted");
    ctx.lineWidth = ratio;
    for (const { at, across } of lines) {
      ctx.setLineDash(across ? [4 * ratio, 4 * ratio] : []);
      ctx.beginPath();
      ctx.moveTo(across ? at : bbox.left, across ? bbox.top : at);
      ctx.lineTo(across ? at : bbox.left + bbox.width, across ? bbox.top + bbox.height : at);
      ctx.stroke();
    }
  });
}

export function drawMarks(u, drawing, line) {
  const ink = inkOf(line, dark.matches);
  clipped(u, 6 * devicePixelRatio, (ctx, bbox, ratio) => {
    ctx.strokeStyle = ink;
    ctx.setLineDash([]);
    for (const age of markedAges(drawing, line)) {
      if (age < u.scales.x.min || age > u.scales.x.max) continue;
      const value = line.drawn[age - drawing.ages[0]];
      const place = [u.valToPos(age, "x", true), u.valToPos(value, "y", true)];
      const { outline, inside, full } = markOf(line, ...place, 3.2 * ratio);
      ctx.fillStyle = full ? ink : css("--panel");
      ctx.lineWidth = 1.6 * ratio;
      ctx.fill(new Path2D(outline));
      ctx.stroke(new Path2D(outline));
      ctx.lineWidth = 1.8 * ratio;
      if (inside) ctx.stroke(new Path2D(inside));
    }
  });
}
