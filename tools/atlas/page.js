"use strict";
// The page: what is chosen stands in the address, everything shown is made from it.
(() => {
  const atlas = JSON.parse(document.getElementById("atlas-data").textContent);
  const byId = (id) => document.getElementById(id);
  const KINDS = ["rates", "improvement"];
  const DECREMENTS = { qx: "death", ix: "disability", ox: "exit" };
  const SEXES = { m: "males", f: "females", u: "both sexes" };

  function el(tag, attributes = {}, ...children) {
    const node = document.createElement(tag);
    for (const [key, value] of Object.entries(attributes)) {
      if (value === true) node.setAttribute(key, "");
      else if (value !== false && value != null) node.setAttribute(key, value);
    }
    node.append(...children.filter((child) => child != null));
    return node;
  }

  function svg(tag, attributes, ...children) {
    const node = document.createElementNS("http://www.w3.org/2000/svg", tag);
    for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
    node.append(...children);
    return node;
  }

  // The texts of the generator, which has escaped what is in them.
  function markup(tag, text, attributes = {}) {
    const node = el(tag, attributes);
    node.innerHTML = text;
    return node;
  }

  // ---- tables and series ----

  const lists = atlas.lists.map((texts) => {
    texts = texts.split(" ");
    return { texts, numbers: texts.map(Number) };
  });

  const plain = (text) => text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();
  const tables = new Map();
  for (const table of atlas.tables) {
    const meta = (table.meta = new Map(table.meta));
    table.start = meta.get("start_age");
    table.end = meta.get("omega");
    table.permille = meta.get("decrement_scale_factor") === 1000;
    table.group = table.family === null ? null : atlas.families[table.family];
    table.invented = table.group === null;
    table.columns = new Map();
    table.series = table.series.map(([column, label, list, computed]) => {
      const kind = column.toLowerCase().startsWith("mi_") ? "improvement" : "rates";
      const name = label === null ? column : `${column}.${label}`;
      const sex = meta.get("sex_independent") ? "u" : column.slice(-1);
      const one = { table, column, label, name, kind, sex, computed, ...lists[list] };
      one.permille = kind === "rates" && table.permille;
      if (!table.columns.has(column)) table.columns.set(column, []);
      table.columns.get(column).push(one);
      return one;
    });
    for (const all of table.columns.values()) {
      all.forEach((one, index) => Object.assign(one, { index, of: all.length }));
    }
    table.search = plain([
      table.name, meta.get("table_name"), meta.get("table_type"), meta.get("description"),
      table.group ? `${table.group.title} ${table.group.country} published` : "synthetic invented",
      table.reconstructed ? "reconstructed" : "", meta.get("select") ? "select" : "",
      meta.get("generational_formula_type") ?? "static",
    ].join(" "));
    tables.set(table.name, table);
  }

  const textAt = (one, age) => one.texts[age - one.table.start];
  const unitOf = (one) => (one.permille ? "per mille" : "decimal");
  const reconstructedAt = ({ reconstructed: ages }, age) => ages && age >= ages[0] && age <= ages[1];
  const agesOf = (ages) => `ages ${ages[0]}–${ages[1]}`;

  // Few enough to be told apart: all durations up to three, else the ends.
  function shownAtFirst(table) {
    const shown = [];
    for (const all of table.columns.values()) {
      const few = all.length <= 3 && all[0].kind === "rates";
      shown.push(...all.filter((one) => few || one.index === 0 || one.index === one.of - 1));
    }
    return new Set(shown.map((one) => one.name));
  }

  // ---- what is chosen, in the address ----

  let view = {};

  function readAddress() {
    const given = new URLSearchParams(location.hash.slice(1));
    const named = given.get("table");
    const table = tables.get(named) ?? atlas.tables[0];
    const other = tables.get(given.get("with")) ?? null;
    const chosen = (key, of) => {
      if (!of) return new Set();
      if (!given.has(key)) return shownAtFirst(of);
      const names = given.get(key).split(",");
      return new Set(of.series.map((one) => one.name).filter((name) => names.includes(name)));
    };
    const ages = /^(\d+)-(\d+)$/.exec(given.get("ages") ?? "");
    view = {
      table, other,
      shown: [chosen("series", table), chosen("withseries", other)],
      scale: {
        rates: given.get("rates") === "linear" ? "linear" : "log",
        improvement: given.get("improvement") === "log" ? "log" : "linear",
      },
      ages: ages && +ages[1] < +ages[2] ? [+ages[1], +ages[2]] : null,
      all: given.get("values") === "all",
    };
    const unknown = [[named, table], [given.get("with"), other]]
      .filter(([name, found]) => name && found?.name !== name).map(([name]) => name);
    byId("problem").hidden = !unknown.length;
    byId("problem").textContent = `There is no table ${unknown.join(" and no table ")}.`;
  }

  function address() {
    const parts = [`table=${view.table.name}`];
    const selection = (key, of, shown) => {
      const first = [...shownAtFirst(of)];
      if (first.length !== shown.size || first.some((name) => !shown.has(name))) {
        parts.push(`${key}=${of.series.map((one) => one.name).filter((n) => shown.has(n)).join(",")}`);
      }
    };
    if (view.other) parts.push(`with=${view.other.name}`);
    selection("series", view.table, view.shown[0]);
    if (view.other) selection("withseries", view.other, view.shown[1]);
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

  const sidesOf = () => [view.table, view.other].filter(Boolean);
  const seriesOf = (kind) => sidesOf().flatMap((table, side) => table.series
    .filter((one) => one.kind === kind && view.shown[side].has(one.name))
    .map((one) => ({ ...one, side })));

  // ---- the list ----

  // Rates of all tables on the same axes.
  function sparkline(table) {
    const width = 84, height = 30, x = (age) => (age / 126) * width;
    const y = (rate) => 1 + (Math.log10(rate) / -5) * (height - 2);
    const picture = svg("svg", { viewBox: `0 0 ${width} ${height}`, class: "spark", "aria-hidden": "true" });
    for (const all of table.columns.values()) {
      const one = all[all.length - 1];
      if (one.kind !== "rates") continue;
      let path = "";
      one.numbers.forEach((value, index) => {
        const age = table.start + index, rate = value / (table.permille ? 1000 : 1);
        if (rate >= 1e-5 && age <= 126) path += `${path ? "L" : "M"}${x(age).toFixed(1)} ${y(rate).toFixed(1)}`;
      });
      const dashed = table.reconstructed ? { "stroke-dasharray": "2 2" } : {};
      if (path) picture.append(svg("path", { d: path, class: `sex-${one.sex}`, ...dashed }));
    }
    return picture;
  }

  function buildList() {
    const groups = new Map();
    const options = byId("other");
    options.append(el("option", { value: "" }, "no other table"));
    for (const table of atlas.tables) {
      const title = table.group ? table.group.title : "Synthetic";
      if (!groups.has(title)) {
        const place = table.group ? table.group.country : "invented, for tests only";
        const items = el("ul");
        const group = el("section", {}, el("h2", {}, title, " ", el("small", {}, place)), items);
        const optgroup = el("optgroup", { label: `${title} (${place})` });
        groups.set(title, { items, optgroup });
        byId("list").append(group);
        options.append(optgroup);
      }
      const flag = table.reconstructed
        ? el("span", { class: "flag warn" }, `⚠ ${table.reconstructed.join("–")} reconstructed`)
        : table.invented ? el("span", { class: "flag made" }, "invented") : null;
      const link = el("a", { href: `#table=${table.name}`, tabindex: -1 },
        el("span", { class: "what" }, el("strong", {}, table.name),
          table.meta.get("table_name") === table.name ? null : el("span", { class: "as" }, table.meta.get("table_name")),
          el("span", { class: "type" }, `${table.meta.get("table_type")} ${table.start}–${table.end} `, flag ?? "")),
        sparkline(table));
      link.dataset.name = table.name;
      const { items, optgroup } = groups.get(title);
      items.append(el("li", {}, link));
      const mark = table.reconstructed ? ` (⚠ ${table.reconstructed.join("–")} reconstructed)` : "";
      optgroup.append(el("option", { value: table.name }, table.name + mark));
    }
  }

  const links = () => [...byId("list").querySelectorAll("a")].filter((link) => !link.closest("[hidden]"));

  // One link takes part in the tab order; the arrows lead to the others.
  function rove() {
    const found = links();
    const stop = found.find((link) => link.getAttribute("aria-current")) ?? found[0];
    for (const link of byId("list").querySelectorAll("a")) link.tabIndex = link === stop ? 0 : -1;
  }

  function search() {
    const words = plain(byId("query").value).split(/\s+/).filter(Boolean);
    for (const link of byId("list").querySelectorAll("a")) {
      const text = tables.get(link.dataset.name).search;
      link.parentNode.hidden = !words.every((word) => text.includes(word));
    }
    for (const group of byId("list").children) group.hidden = !group.querySelector("li:not([hidden])");
    const found = links().length;
    byId("count").textContent = words.length ? `${found} of ${tables.size} tables` : `${tables.size} tables`;
    rove();
  }

  function openList(open) {
    document.body.classList.toggle("listing", open);
    byId("toggle").setAttribute("aria-expanded", open);
  }

  function listKeys(event) {
    const found = links();
    const at = found.indexOf(document.activeElement);
    const step = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: found.length - 1 }[event.key];
    if (event.target === byId("query")) {
      if (event.key === "Enter" && found.length) found[0].click();
      else if (event.key === "ArrowDown" && found.length) (found.find((a) => a.tabIndex === 0) ?? found[0]).focus();
      else return;
    } else if (step === -1) byId("query").focus();
    else if (step !== undefined && at >= 0) found[Math.min(step, found.length - 1)].focus();
    else return;
    event.preventDefault();
  }

  // ---- how a series is drawn ----

  const dark = matchMedia("(prefers-color-scheme: dark)");
  // Hue, saturation and the range of lightness over the labels of a column, for light and for dark.
  const INKS = [
    { m: [211, 88, 52, 36, 72, 66], f: [17, 90, 46, 38, 70, 62], u: [222, 16, 50, 30, 64, 84] },
    { m: [172, 95, 31, 24, 52, 52], f: [292, 52, 56, 40, 80, 74], u: [48, 95, 30, 24, 56, 62] },
  ];
  const DASHES = [[2, 3], [7, 4], [11, 3, 2, 3], [4, 2], [14, 4], [9, 3, 2, 3, 2, 3]];

  function inkOf(one) {
    const [hue, saturation, ...light] = INKS[one.side][one.sex];
    const [from, to] = dark.matches ? light.slice(2) : light.slice(0, 2);
    const part = one.of > 1 ? one.index / (one.of - 1) : 1;
    return `hsl(${hue} ${saturation}% ${from + (to - from) * part}%)`;
  }

  const isLast = (one) => one.index === one.of - 1;
  const dashOf = (one) => (one.table.reconstructed ? [3, 3] : isLast(one) ? [] : DASHES[one.index % DASHES.length]);

  // Males have squares, females circles, both diamonds; filled for the table, hollow for the other.
  function markPath(sex, x, y, size) {
    const path = new Path2D();
    if (sex === "f") path.arc(x, y, size, 0, 2 * Math.PI);
    else if (sex === "m") path.rect(x - size * 0.9, y - size * 0.9, size * 1.8, size * 1.8);
    else {
      path.moveTo(x, y - size * 1.3);
      for (const [dx, dy] of [[1.3, 0], [0, 1.3], [-1.3, 0]]) path.lineTo(x + dx * size, y + dy * size);
      path.closePath();
    }
    return path;
  }

  function swatch(one) {
    const ink = inkOf(one);
    const paint = { stroke: ink, "stroke-width": 2, fill: one.side ? "var(--panel)" : ink };
    const mark = one.sex === "f" ? svg("circle", { cx: 15, cy: 7, r: 3.5, ...paint })
      : one.sex === "m" ? svg("rect", { x: 11.8, y: 3.8, width: 6.4, height: 6.4, ...paint })
        : svg("path", { d: "M15 2l5 5l-5 5l-5 -5z", ...paint });
    return svg("svg", { viewBox: "0 0 30 14", class: "swatch", "aria-hidden": "true" },
      svg("path", { d: "M0 7H30", stroke: ink, "stroke-width": 2.2, "stroke-dasharray": dashOf(one).join(" ") }), mark);
  }

  // ---- plots ----

  const plots = {};
  let age = 65;

  const decadic = (value) => Math.abs(Math.log10(value) - Math.round(Math.log10(value))) < 1e-9;
  const tick = (value) => String(+value.toPrecision(6)).replace(/^(\d)e-(\d+)$/, (_, digit, power) =>
    `0.${"0".repeat(power - 1)}${digit}`);

  // Hatched where a table is reconstructed, and a word where one is invented.
  function drawWarnings(u, lines) {
    const { ctx } = u, { left, top, width, height } = u.bbox, ratio = devicePixelRatio;
    const style = getComputedStyle(document.documentElement);
    ctx.save();
    ctx.beginPath();
    ctx.rect(left, top, width, height);
    ctx.clip();
    ctx.font = `600 ${11 * ratio}px system-ui, sans-serif`;
    ctx.textBaseline = "top";
    const doubtful = lines.filter((one) => one.table.reconstructed);
    if (doubtful.length) {
      const [from, to] = doubtful[0].table.reconstructed;
      const x0 = u.valToPos(from, "x", true), x1 = u.valToPos(to, "x", true);
      ctx.save();
      ctx.beginPath();
      ctx.rect(x0, top, x1 - x0, height);
      ctx.clip();
      ctx.fillStyle = style.getPropertyValue("--hatch-ground");
      ctx.fillRect(x0, top, x1 - x0, height);
      ctx.strokeStyle = style.getPropertyValue("--hatch");
      ctx.lineWidth = ratio;
      ctx.beginPath();
      for (let x = x0 - height; x < x1; x += 9 * ratio) {
        ctx.moveTo(x, top + height);
        ctx.lineTo(x + height, top);
      }
      ctx.stroke();
      const names = [...new Set(doubtful.map((one) => one.table.name))].join(", ");
      const words = [`${names}: ages ${from}–${to} reconstructed, not published`,
        `${from}–${to} reconstructed, not published`, `${from}–${to} reconstructed`, "reconstructed"];
      const text = words.find((word) => ctx.measureText(word).width < x1 - x0 - 16 * ratio);
      if (text) {
        const wide = ctx.measureText(text).width, x = (x0 + x1 - wide) / 2;
        ctx.fillStyle = style.getPropertyValue("--panel");
        ctx.fillRect(x - 5 * ratio, top + 5 * ratio, wide + 10 * ratio, 18 * ratio);
        ctx.fillStyle = style.getPropertyValue("--warn");
        ctx.fillText(text, x, top + 8 * ratio);
      }
      ctx.restore();
    }
    const invented = [...new Set(lines.filter((one) => one.table.invented).map((one) => one.table.name))];
    if (invented.length) {
      ctx.fillStyle = style.getPropertyValue("--made");
      ctx.textAlign = "right";
      ctx.textBaseline = "bottom";
      const brief = width < 420 * ratio ? "invented" : `invented: ${invented.join(", ")}`;
      ctx.fillText(brief, left + width - 8 * ratio, top + height - 6 * ratio);
    }
    ctx.restore();
  }

  // A mark at every tenth age, at the published ages where others are reconstructed, and where a
  // value stands alone.
  function drawMarks(u, at, one, crowded) {
    const x = u.data[0], y = u.data[at], ratio = devicePixelRatio;
    const style = getComputedStyle(document.documentElement);
    u.ctx.save();
    u.ctx.beginPath();
    u.ctx.rect(u.bbox.left - 6 * ratio, u.bbox.top - 6 * ratio, u.bbox.width + 12 * ratio, u.bbox.height + 12 * ratio);
    u.ctx.clip();
    u.ctx.strokeStyle = inkOf(one);
    u.ctx.fillStyle = one.side ? style.getPropertyValue("--panel") : inkOf(one);
    u.ctx.lineWidth = 1.6 * ratio;
    for (let i = 0; i < x.length; i += 1) {
      if (y[i] == null || x[i] < u.scales.x.min || x[i] > u.scales.x.max) continue;
      const alone = y[i - 1] == null && y[i + 1] == null;
      const due = one.table.reconstructed ? !reconstructedAt(one.table, x[i])
        : x[i] % 10 === (one.side ? 5 : 0) && (!crowded || isLast(one));
      if (!alone && !due) continue;
      const path = markPath(one.sex, u.valToPos(x[i], "x", true), u.valToPos(y[i], "y", true), 3.2 * ratio);
      u.ctx.fill(path);
      u.ctx.stroke(path);
    }
    u.ctx.restore();
  }

  // Ages as ranges: 0–199, 204.
  function ranges(ages) {
    const parts = [];
    for (const each of ages) {
      const last = parts[parts.length - 1];
      if (last && last[1] === each - 1) last[1] = each;
      else parts.push([each, each]);
    }
    return parts.map(([a, b]) => (a === b ? a : `${a}–${b}`)).join(", ");
  }

  function draw(kind) {
    const figure = byId(kind), box = figure.querySelector(".plot");
    plots[kind]?.destroy();
    delete plots[kind];
    box.replaceChildren();
    delete box.uplot;
    figure.hidden = !sidesOf().some((table) => table.series.some((one) => one.kind === kind));
    if (figure.hidden) return;
    for (const radio of figure.querySelectorAll("input[type=radio]")) radio.checked = radio.value === view.scale[kind];

    const lines = seriesOf(kind), log = view.scale[kind] === "log";
    const first = Math.min(...sidesOf().map((table) => table.start));
    const last = Math.max(...sidesOf().map((table) => table.end));
    const ages = Array.from({ length: last - first + 1 }, (_, index) => first + index);
    const mixed = new Set(lines.map(unitOf)).size > 1;
    const leftOut = [];
    const data = lines.map((one) => {
      const factor = mixed && one.permille ? 1 / 1000 : 1, without = [];
      const y = ages.map((each) => {
        const value = one.numbers[each - one.table.start];
        if (value === undefined) return null;
        if (log && value <= 0) {
          without.push(each);
          return null;
        }
        return value * factor;
      });
      if (without.length) leftOut.push([one, without]);
      return y;
    });

    const decrements = new Set(sidesOf().map((table) => DECREMENTS[{ life: "qx", disability: "ix", exit: "ox" }[table.meta.get("table_type")]]));
    const what = kind === "rates" ? `Rate of ${[...decrements].join(" or ")} in a year` : "Rate of improvement in a year";
    figure.querySelector("h3").textContent = kind === "rates" ? `Rates of ${[...decrements].join(" and ")}` : "Improvement";
    const divided = [...new Set(lines.filter((one) => one.permille).map((one) => one.table.name))].join(", ");
    const unit = mixed ? `decimal: the per mille of ${divided} divided by 1000` : lines.length ? unitOf(lines[0]) : "";
    const label = `${what}, ${unit || "nothing selected"}, ${log ? "log" : "linear"} scale, by age`;
    figure.querySelector(".axis").textContent = `↑ ${label}`;
    box.setAttribute("aria-label", `Plot. ${label}. ${lines.map((one) => `${one.table.name} ${one.name}`).join(", ")}`);

    const zeros = leftOut.reduce((sum, [, without]) => sum + without.length, 0);
    const where = leftOut.length > 6 ? `in ${leftOut.length} columns`
      : leftOut.map(([one, without]) => `${view.other ? `${one.table.name} ` : ""}${one.name} at ${without.length > 1 ? "ages" : "age"} ${ranges(without)}`).join("; ");
    figure.querySelector(".leftout").textContent = zeros
      ? `Left out: ${zeros} ${zeros > 1 ? "values" : "value"} of zero, which a log scale does not have (${where}).` : "";

    if (!data.some((y) => y.some((value) => value !== null))) {
      box.append(el("p", { class: "empty" }, lines.length ? "There is nothing above zero to draw." : "No column is selected."));
      return;
    }
    const style = getComputedStyle(document.documentElement);
    const ink = style.getPropertyValue("--muted"), grid = style.getPropertyValue("--grid");
    const font = `12px ${style.getPropertyValue("--sans")}`;
    const crowded = lines.length > 8;
    const size = () => ({ width: box.clientWidth, height: Math.round(Math.min(kind === "rates" ? 400 : 260, Math.max(230, innerWidth * 0.75))) });
    const axis = { stroke: ink, font, grid: { stroke: grid, width: 1 }, ticks: { stroke: grid, width: 1, size: 5 } };
    const plot = new uPlot({
      ...size(),
      padding: [12, 14, 0, 0],
      legend: { show: false },
      focus: { alpha: crowded ? 0.3 : 1 },
      cursor: {
        y: false,
        drag: { x: true, y: false, setScale: false, dist: 8 },
        focus: { prox: crowded ? 20 : -1 },
        points: { size: 9, width: 2, fill: (u, at) => inkOf(lines[at - 1]), stroke: () => style.getPropertyValue("--panel") },
      },
      scales: {
        x: { time: false, range: () => view.ages ?? [first, last] },
        y: log ? { distr: 3, range: (u, low, high) => (low === null ? [0.1, 1] : uPlot.rangeLog(low, high, 10, false)) }
          : { range: (u, low, high) => [Math.min(0, low ?? 0), high > 0 ? high * 1.05 : Math.max(high ?? 1, 0.01)] },
      },
      axes: [
        { ...axis, size: 34, values: (u, all) => all.map((each) => (Number.isInteger(each) ? String(each) : "")) },
        {
          ...axis, size: (u, all) => 22 + 7.4 * Math.max(3, ...(all ?? []).map((text) => (text ?? "").length)),
          values: (u, all) => {
            const { min, max } = u.scales.y, wide = Math.log10(max / min) > 2;
            return all.map((each) => (each == null || (log && wide && !decadic(each)) ? "" : tick(each)));
          },
          filter: (u, all) => (log ? all.map((each) => (decadic(each) || (Math.log10(u.scales.y.max / u.scales.y.min) <= 2
            && [2, 5].includes(Math.round(each / 10 ** Math.floor(Math.log10(each) + 1e-9)))) ? each : null)) : all),
        },
      ],
      series: [{}, ...lines.map((one) => ({
        label: `${one.table.name} ${one.name}`, stroke: inkOf(one), width: one.side ? 1.7 : 2, dash: dashOf(one),
        points: { show: false }, spanGaps: false,
      }))],
      hooks: {
        drawClear: [(u) => drawWarnings(u, lines)],
        drawSeries: [(u, at) => drawMarks(u, at, lines[at - 1], crowded)],
        setCursor: [(u) => (u.cursor.idx == null ? showAge(age) : showAge(u.data[0][u.cursor.idx]))],
        setSelect: [(u) => {
          const from = Math.round(u.posToVal(u.select.left, "x"));
          const to = Math.round(u.posToVal(u.select.left + u.select.width, "x"));
          if (u.select.width && from < to) zoom([from, to]);
        }],
      },
    }, [ages, ...data], box);
    plot.over.addEventListener("dblclick", () => zoom(null));
    plot.over.addEventListener("pointermove", (event) => {
      if (event.pointerType === "mouse") return;
      showAge(Math.round(plot.posToVal(event.clientX - plot.over.getBoundingClientRect().left, "x")));
    });
    plots[kind] = box.uplot = plot; // also found from the console
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
    age = Math.max(Math.min(...sides.map((t) => t.start)), Math.min(wanted, Math.max(...sides.map((t) => t.end))));
    if (document.activeElement !== byId("age") || +byId("age").value !== wanted) byId("age").value = age;
    for (const output of document.querySelectorAll(".legend output")) {
      const one = sides[output.dataset.side].series[output.dataset.at];
      output.textContent = textAt(one, age) ?? "–";
      output.classList.toggle("doubtful", Boolean(reconstructedAt(one.table, age)));
    }
    for (const plot of Object.values(plots)) {
      plot.setCursor({ left: plot.valToPos(age, "x"), top: 0 }, false);
    }
  }

  // ---- the legend, in which series are chosen ----

  function buildLegend(kind) {
    const legend = byId(kind).querySelector(".legend");
    legend.replaceChildren();
    sidesOf().forEach((table, side) => {
      for (const [column, all] of table.columns) {
        if (all[0].kind !== kind) continue;
        const what = kind === "rates" ? DECREMENTS[column.slice(0, 2)] : "improvement";
        const set = el("fieldset", {}, el("legend", {},
          view.other ? el("span", { class: `of side-${side}` }, table.name) : null,
          el("code", {}, column), ` ${SEXES[all[0].sex]}, ${what}, ${unitOf(all[0])}`));
        if (all.length > 3) {
          for (const [text, on] of [["all", true], ["none", false]]) {
            const button = el("button", { type: "button", "aria-label": `${text} of ${table.name} ${column}` }, text);
            button.addEventListener("click", () => {
              for (const one of all) view.shown[side][on ? "add" : "delete"](one.name);
              changed();
            });
            set.append(button);
          }
        }
        const chips = el("div", { class: "series" });
        for (const one of all) {
          const input = el("input", { type: "checkbox", value: one.name });
          input.dataset.side = side;
          input.addEventListener("change", () => {
            view.shown[side][input.checked ? "add" : "delete"](one.name);
            changed();
          });
          const output = el("output");
          output.dataset.side = side;
          output.dataset.at = table.series.indexOf(one);
          const name = one.label === null ? one.column : /^\d$/.test(one.label) ? `duration ${one.label}` : one.label === "ult" ? "ultimate" : one.label;
          chips.append(el("label", { title: `${table.name} ${one.name}${one.computed ? ", computed at import" : ""}` },
            input, swatch({ ...one, side }), el("span", {}, name + (one.computed ? "°" : "")), output));
        }
        set.append(chips);
        if (table.reconstructed) set.append(el("p", { class: "warned" }, `⚠ ${agesOf(table.reconstructed)} are reconstructed, not published`));
        legend.append(set);
      }
    });
  }

  // ---- values ----

  // Head and rows as texts; what is shown, copied and written to a file.
  function valuesTable() {
    const sides = sidesOf();
    const columns = sides.flatMap((table, side) => table.series
      .filter((one) => view.all || view.shown[side].has(one.name)));
    const heads = columns.map((one) => (view.other ? `${one.table.name} ${one.name} [${unitOf(one)}]` : one.name));
    const noted = sides.filter((table) => table.reconstructed || table.invented);
    heads.push(...noted.map((table) => (view.other ? `${table.name} note` : "note")));
    const first = Math.min(...sides.map((table) => table.start));
    const last = Math.max(...sides.map((table) => table.end));
    const rows = [];
    for (let each = first; each <= last; each += 1) {
      const has = (table) => each >= table.start && each <= table.end;
      const note = (table) => (!has(table) ? "" : table.invented ? "invented"
        : reconstructedAt(table, each) ? "reconstructed" : "published");
      rows.push([String(each), ...columns.map((one) => textAt(one, each) ?? ""), ...noted.map(note)]);
    }
    return { columns, rows: [["age", ...heads], ...rows] };
  }

  function showValues() {
    const { columns, rows } = valuesTable();
    const [head, ...body] = rows;
    byId("all").checked = view.all;
    byId("copied").textContent = "";
    byId("fallback").hidden = true;
    const cell = (text, at) => el("td", { class: /^reconstructed|^invented/.test(text) ? "note" : null }, text);
    byId("values").replaceChildren(
      el("caption", {}, columns.length ? `${sidesOf().map((table) => table.name).join(" and ")}, ${columns.length} of their columns`
        .replace(/^(\w+), (\d+) of their/, "$1, $2 of its") : "No column is selected."),
      el("thead", {}, el("tr", {}, ...head.map((text, at) => el("th", { scope: "col" }, text,
        at && columns[at - 1] && !view.other ? el("small", {}, unitOf(columns[at - 1])) : null)))),
      el("tbody", {}, ...body.map(([each, ...texts]) => el("tr", { class: texts.includes("reconstructed") ? "doubtful" : null },
        el("th", { scope: "row" }, each), ...texts.map(cell)))));
  }

  async function copy() {
    const text = valuesTable().rows.map((row) => row.join("\t")).join("\n") + "\n";
    const box = byId("fallback");
    try {
      await navigator.clipboard.writeText(text);
    } catch {
      box.hidden = false;
      box.value = text;
      box.select();
      if (!document.execCommand("copy")) {
        byId("copied").textContent = "The browser does not let the page copy: the values are selected below.";
        return;
      }
      box.hidden = true;
      byId("copy").focus();
    }
    byId("copied").textContent = "Copied.";
  }

  function download() {
    const quoted = (text) => (/[",\n]/.test(text) ? `"${text.replace(/"/g, '""')}"` : text);
    const text = valuesTable().rows.map((row) => row.map(quoted).join(",")).join("\n") + "\n";
    const name = sidesOf().map((table) => table.name + (table.invented ? "-invented" : "")
      + (table.reconstructed ? "-reconstructed" : "")).join("-");
    const url = URL.createObjectURL(new Blob([text], { type: "text/csv" }));
    el("a", { href: url, download: `${name}.csv` }).click();
    setTimeout(() => URL.revokeObjectURL(url), 60000);
  }

  // ---- what is said about a table ----

  const python = (value) => (value === null ? "None" : value === true ? "True" : value === false ? "False" : String(value));

  function describe() {
    const { table } = view, { meta, group } = table;
    document.title = `${table.name} – Atlas of decrement tables`;
    byId("name").textContent = table.name;
    byId("published").textContent = meta.get("table_name") === table.name ? "" : meta.get("table_name");
    byId("description").textContent = meta.get("description");
    const chip = (text, kind) => el("li", { class: kind ?? null }, text);
    const doubts = group ? group.facts.filter(([, kind]) => kind === "doubt").length : 0;
    const facts = [
      table.reconstructed && chip(`⚠ ${agesOf(table.reconstructed)} reconstructed`, "warn"),
      table.invented && chip("invented, for tests only", "made"),
      group && chip(`${group.country}, ${group.title}`),
      chip(meta.get("table_type")), chip(agesOf([table.start, table.end])),
      chip(table.permille ? "per mille" : "decimal"),
      meta.get("base_year") && chip(`base year ${meta.get("base_year")}`),
      meta.get("select") && chip(`select period ${meta.get("select_period")}`),
      meta.get("sex_independent") && chip("unisex"),
      chip((meta.get("generational_formula_type") ?? "static").replace("_", " ")),
      doubts && el("li", { class: "doubt" }, el("button", { type: "button" }, `${doubts} open ${doubts > 1 ? "doubts" : "doubt"} ↓`)),
    ].filter(Boolean);
    byId("chips").replaceChildren(...facts);
    byId("chips").querySelector("button")?.addEventListener("click", () => {
      byId("provenance-title").scrollIntoView();
      byId("provenance-title").focus({ preventScroll: true });
    });

    const warnings = [];
    for (const each of sidesOf()) {
      if (each.reconstructed) {
        warnings.push(el("div", { class: "banner warn", role: "note" },
          el("p", { class: "lead" }, `⚠ ${each.name}: ${agesOf(each.reconstructed)} are reconstructed, not published.`),
          ...atlas.warning.map((text) => markup("p", text))));
      } else if (each.invented) {
        warnings.push(el("div", { class: "banner made", role: "note" },
          el("p", { class: "lead" }, `${each.name} is synthetic: its rates are invented, for tests only.`)));
      }
    }
    // The long text once, also where two such tables are compared.
    warnings.slice(1).forEach((banner) => banner.replaceChildren(banner.firstChild));
    byId("warnings").replaceChildren(...warnings);
    byId("computed-mark").hidden = !sidesOf().some((each) => each.series.some((one) => one.computed));

    const shapes = [...table.columns].map(([column, [one, ...more]]) => `${column} ${one.label === null ? "(flat)" : `(${[one, ...more].map((each) => each.label).join(" ")})`}`);
    const entries = [...meta].map(([key, value]) => [key, python(value), value === null ? "none" : null]);
    entries.push(["data", shapes.join(", "), null]);
    entries.push(...atlas.keys.filter((key) => !meta.has(key)).map((key) => [key, "absent", "absent"]));
    byId("metadata").replaceChildren(...entries.map(([key, text, kind]) => el("div", { class: kind },
      el("dt", {}, el("code", {}, key)), el("dd", {}, kind === "absent" ? el("em", {}, text) : text))));

    byId("provenance").replaceChildren(...sidesOf().flatMap(provenanceOf));
  }

  function provenanceOf(table) {
    const { group } = table;
    const title = el("h4", {}, `${table.name}: ${group ? group.title : "not published"}`);
    if (!group) return [title, markup("p", atlas.invented)];
    const names = { doubt: "doubt", odd: "note" };
    const facts = el("dl", { class: "facts" }, ...group.facts.map(([name, kind, text]) => el("div", { class: kind },
      el("dt", {}, kind === "doubt" ? `⚠ ${name === "Open" ? "Open doubt" : name}` : name, names[kind] === "note" ? el("small", {}, "mind") : null),
      markup("dd", text))));
    const rows = el("table", {}, el("caption", {}, "The published columns and their checks"),
      el("thead", {}, el("tr", {}, ...atlas.head.map((text) => el("th", { scope: "col" }, text)))),
      el("tbody", {}, ...table.rows.map((cells) => el("tr", {}, ...cells.map((text) => markup("td", text))))));
    const computed = table.series.filter((one) => one.computed).map((one) => one.name);
    return [title, ...group.warning.map((text) => markup("p", text, { class: "warned" })), facts,
      el("div", { class: "scroll", tabindex: 0, role: "region", "aria-label": `Published columns of ${table.name}` }, rows),
      computed.length ? el("p", { class: "computed" }, `Computed at import, not published: ${computed.join(", ")}.`) : null,
    ].filter(Boolean);
  }

  // ---- all of it ----

  function show() {
    readAddress();
    for (const link of byId("list").querySelectorAll("a")) {
      if (link.dataset.name === view.table.name) link.setAttribute("aria-current", "page");
      else link.removeAttribute("aria-current");
    }
    rove();
    byId("other").value = view.other?.name ?? "";
    byId("swap").disabled = !view.other;
    describe();
    KINDS.forEach(buildLegend);
    drawBoth();
    showValues();
  }

  function go(table, other, ...shown) {
    view = { ...view, table, other, ages: null };
    view.shown = [shown[0] ?? shownAtFirst(table), shown[1] ?? (other ? shownAtFirst(other) : new Set())];
    location.hash = address();
  }

  function listen() {
    byId("query").addEventListener("input", search);
    byId("finder").addEventListener("keydown", listKeys);
    byId("toggle").addEventListener("click", () => {
      openList(!document.body.classList.contains("listing"));
      if (document.body.classList.contains("listing")) byId("query").focus();
    });
    // A link of the list changes the table and keeps what it is compared with.
    byId("list").addEventListener("click", (event) => {
      const link = event.target.closest("a");
      if (!link || event.ctrlKey || event.metaKey || event.shiftKey) return;
      event.preventDefault();
      const narrow = document.body.classList.contains("listing");
      openList(false);
      go(tables.get(link.dataset.name), view.other, undefined, view.shown[1]);
      if (narrow) byId("name").focus();
    });
    byId("other").addEventListener("change", () => go(view.table, tables.get(byId("other").value) ?? null, view.shown[0]));
    byId("swap").addEventListener("click", () => go(view.other, view.table, view.shown[1], view.shown[0]));
    byId("age").addEventListener("input", () => byId("age").value && showAge(Math.round(+byId("age").value)));
    byId("age").addEventListener("change", () => (byId("age").value = age));
    byId("allages").addEventListener("click", () => zoom(null));
    byId("all").addEventListener("change", () => {
      view.all = byId("all").checked;
      changed();
    });
    byId("copy").addEventListener("click", copy);
    byId("download").addEventListener("click", download);
    for (const kind of KINDS) {
      byId(kind).querySelector(".scale").addEventListener("change", (event) => {
        view.scale[kind] = event.target.value;
        changed();
      });
      byId(kind).querySelector(".plot").addEventListener("keydown", (event) => {
        const step = { ArrowLeft: -1, ArrowRight: 1, PageDown: -10, PageUp: 10, Home: -999, End: 999 }[event.key];
        if (!step) return;
        event.preventDefault();
        showAge(age + step);
      });
    }
    document.addEventListener("keydown", (event) => {
      if (event.key !== "/" || /INPUT|SELECT|TEXTAREA/.test(event.target.tagName)) return;
      event.preventDefault();
      if (getComputedStyle(byId("toggle")).display !== "none") openList(true);
      byId("query").focus();
    });
    addEventListener("hashchange", show);
    dark.addEventListener("change", show);
    new ResizeObserver(() => {
      for (const kind of KINDS) {
        const box = byId(kind).querySelector(".plot");
        if (plots[kind] && box.clientWidth && box.clientWidth !== plots[kind].width) {
          plots[kind].setSize({ width: box.clientWidth, height: plots[kind].height });
        }
      }
    }).observe(document.querySelector("main"));
  }

  buildList();
  search();
  listen();
  show();
  // On a narrow screen the list is what is seen first, unless a link leads to a table.
  if (!location.hash) openList(true);
})();
