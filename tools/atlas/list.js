// The list of tables, and the search in it.

const SPARK = { width: 84, height: 30, lastAge: 126, decades: 5 };

// The rates of a table, on the same axes for all tables.
function sparkline(table) {
  const { width, height, lastAge, decades } = SPARK;
  const box = { viewBox: `0 0 ${width} ${height}`, class: "spark", "aria-hidden": "true" };
  const picture = svg("svg", box);
  for (const all of table.columns.values()) {
    const one = all.at(-1);
    const points = [];
    one.numbers.forEach((value, index) => {
      const depth = -Math.log10(value / (one.permille ? 1000 : 1));
      const x = ((table.start + index) / lastAge) * width;
      if (depth > decades || x > width) return;
      points.push(`${x.toFixed(1)} ${(1 + (depth / decades) * (height - 2)).toFixed(1)}`);
    });
    if (one.kind !== "rates" || !points.length) continue;
    const line = { d: `M${points.join("L")}`, class: `sex-${one.sex}` };
    if (table.reconstructed) line["stroke-dasharray"] = "2 2";
    picture.append(svg("path", line));
  }
  return picture;
}

function linkTo(table) {
  const published = table.meta.get("table_name");
  const flag = table.reconstructed
    ? el("span.flag.warn", `⚠ ${table.reconstructed.join("–")} reconstructed`)
    : table.invented
      ? el("span.flag.made", "invented")
      : null;
  const type = `${table.meta.get("table_type")} ${table.start}–${table.end} `;
  const what = el("span.what", el("strong", table.name));
  if (published !== table.name) what.append(el("span.as", published));
  what.append(el("span.type", type, flag));
  const link = el("a", { href: `#table=${table.name}` }, what, sparkline(table));
  link.dataset.name = table.name;
  return link;
}

// The list, and the same groups in the choice of a table to compare with.
function buildList() {
  const groups = new Map();
  byId("other").append(el("option", { value: "" }, "no other table"));
  for (const table of tables.values()) {
    const title = table.group?.title ?? "Synthetic";
    if (!groups.has(title)) {
      const place = table.group?.country ?? "invented, for tests only";
      const group = { items: el("ul"), options: el("optgroup", { label: `${title} (${place})` }) };
      byId("list").append(el("section", el("h2", title, " ", el("small", place)), group.items));
      byId("other").append(group.options);
      groups.set(title, group);
    }
    const mark = table.reconstructed ? ` (⚠ ${table.reconstructed.join("–")} reconstructed)` : "";
    const option = el("option", { value: table.name }, table.name + mark);
    groups.get(title).items.append(el("li", linkTo(table)));
    groups.get(title).options.append(option);
  }
}

const links = () => [...byId("list").querySelectorAll("a")];
const found = () => links().filter((link) => !link.parentNode.hidden);
const current = () => byId("list").querySelector("[aria-current]");

// One link takes part in the tab order; the arrows lead to the others.
function rove() {
  const stop = found().includes(current()) ? current() : found()[0];
  for (const link of links()) link.tabIndex = link === stop ? 0 : -1;
}

function search() {
  const words = plain(byId("query").value).split(/\s+/).filter(Boolean);
  for (const link of links()) {
    const text = tables.get(link.dataset.name).search;
    link.parentNode.hidden = !words.every((word) => text.includes(word));
  }
  for (const group of byId("list").children) {
    group.hidden = !group.querySelector("li:not([hidden])");
  }
  const some = words.length ? `${found().length} of ` : "";
  byId("count").textContent = `${some}${tables.size} tables`;
  rove();
}

function markCurrent() {
  current()?.removeAttribute("aria-current");
  const link = links().find((each) => each.dataset.name === view.table.name);
  link.setAttribute("aria-current", "page");
  rove();
  // Only the list scrolls to it, not the page.
  const finder = byId("finder");
  const offset = link.getBoundingClientRect().top - finder.getBoundingClientRect().top;
  const seen = offset > 120 && offset < finder.clientHeight - 60;
  if (!seen) finder.scrollTop += offset - finder.clientHeight / 2;
}

// On a narrow screen the list and the table take turns.
const narrow = () => getComputedStyle(byId("toggle")).display !== "none";

function openList(open) {
  document.body.classList.toggle("listing", open);
  byId("toggle").setAttribute("aria-expanded", open);
}

function listKeys(event) {
  const all = found();
  const at = all.indexOf(document.activeElement);
  const inSearch = event.target === byId("query");
  const steps = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: all.length - 1 };
  const named = (link) => plain(link.dataset.name).includes(plain(byId("query").value.trim()));
  if (inSearch && event.key === "Enter") (all.find(named) ?? all[0])?.click();
  else if (inSearch && event.key === "ArrowDown") all.find((link) => link.tabIndex === 0)?.focus();
  else if (inSearch || at < 0 || !(event.key in steps)) return;
  else (all[Math.min(steps[event.key], all.length - 1)] ?? byId("query")).focus();
  event.preventDefault();
}
