// The list of tables, and the search in it.

import { byId, button, el, svg } from "./dom.js";
import { find, indexOf, nearest } from "./search.js";
import { atlas, openTable, state } from "./state.js";

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
  const { from, to } = table.reconstructed ?? {};
  const flag = table.reconstructed
    ? el("span.flag.warn", `⚠ ${from}–${to} reconstructed`)
    : table.invented
      ? el("span.flag.made", "invented")
      : null;
  // What is said in the purpose is not said again.
  const decrement = table.purpose.startsWith("death") ? "" : `${table.decrement}, `;
  const type = el("span.type", `${decrement}${table.start}–${table.end} `, flag);
  const what = el("span.what", el("strong", table.name), el("span.for", table.purpose), type);
  const link = el("a", { href: `#table=${table.name}` }, what, sparkline(table));
  link.dataset.name = table.name;
  return link;
}

const groups = new Map(); // title to its section, in the order of the module
const invented = el("details"); // those of tests are folded, unless one is open or looked for
const items = new Map(); // name to its item

const listOf = ({ family }) => groups.get(family).querySelector("ul");

function buildList() {
  for (const table of atlas.tables.values()) {
    const { family, country } = table;
    if (!groups.has(family)) {
      const place = el("small", country ?? "invented, for tests only");
      const [head, list] = [el("h2", family, " ", place), el("ul")];
      if (!country) invented.append(el("summary", head), list);
      groups.set(family, el("section", country ? [head, list] : invented));
    }
    const item = el("li", linkTo(table));
    items.set(table.name, item);
    listOf(table).append(item);
  }
  byId("list").append(...groups.values());
}

const links = () => [...byId("list").querySelectorAll("a")];
const folded = (link) => link.closest("details:not([open])");
const found = () => links().filter((link) => !link.parentNode.hidden && !folded(link));
const current = () => byId("list").querySelector("[aria-current]");

// One link takes part in the tab order; the arrows lead to the others.
function rove() {
  const stop = found().includes(current()) ? current() : found()[0];
  for (const link of links()) link.tabIndex = link === stop ? 0 : -1;
}

const index = indexOf(atlas.tables);
const SUGGESTED = ["annuity Spain", "term assurance", "DAV 2004 R", "invalidez", "select"];

// What is found stands in the order of how well it fits, its groups in that of their best.
function search() {
  const query = byId("query").value.trim();
  const names = query ? find(index, query) : [...items.keys()];
  for (const [name, item] of items) item.hidden = !names.includes(name);
  const order = [...names, ...[...items.keys()].filter((name) => !names.includes(name))];
  for (const name of order) listOf(atlas.tables.get(name)).append(items.get(name));
  const families = new Set(order.map((name) => atlas.tables.get(name).family));
  for (const family of families) byId("list").append(groups.get(family));
  for (const group of groups.values()) group.hidden = !group.querySelector("li:not([hidden])");
  const offered = query ? (names.length ? [] : nearest(index, query)) : SUGGESTED;
  const lead = query ? (names.length ? "" : "Nothing is found. ") : "For example: ";
  const ask = (text) => () => {
    byId("query").value = text;
    search();
    byId("query").focus();
  };
  byId("hints").replaceChildren(lead, ...offered.map((text) => button(text, ask(text))));
  byId("count").textContent = `${query ? `${names.length} of ` : ""}${atlas.tables.size} tables`;
  invented.open = Boolean(query || invented.contains(current()));
  rove();
}

export function markCurrent() {
  current()?.removeAttribute("aria-current");
  const link = items.get(state.view.sides[0].table.name).firstChild;
  link.setAttribute("aria-current", "page");
  if (invented.contains(link)) invented.open = true;
  rove();
  // Only the list scrolls to it, not the page.
  const finder = byId("finder");
  const offset = link.getBoundingClientRect().top - finder.getBoundingClientRect().top;
  const seen = offset > 120 && offset < finder.clientHeight - 60;
  if (!seen) finder.scrollTop += offset - finder.clientHeight / 2;
}

// On a phone the list and the table take turns.
export const narrow = () => getComputedStyle(byId("toggle")).display !== "none";

export function openList(open) {
  document.body.classList.toggle("listing", open);
  byId("toggle").setAttribute("aria-expanded", open);
}

function listKeys(event) {
  const all = found();
  const at = all.indexOf(document.activeElement);
  const inSearch = event.target === byId("query");
  const steps = { ArrowDown: at + 1, ArrowUp: at - 1, Home: 0, End: all.length - 1 };
  if (inSearch && event.key === "Enter") all[0]?.click();
  else if (inSearch && event.key === "ArrowDown") all[0]?.focus();
  else if (inSearch || at < 0 || !(event.key in steps)) return;
  else (all[Math.min(steps[event.key], all.length - 1)] ?? byId("query")).focus();
  event.preventDefault();
}

export function startList() {
  buildList();
  search();
  byId("query").addEventListener("input", search);
  invented.addEventListener("toggle", rove);
  byId("finder").addEventListener("keydown", listKeys);
  byId("toggle").addEventListener("click", () => {
    openList(!document.body.classList.contains("listing"));
    if (document.body.classList.contains("listing")) byId("query").focus();
  });
  byId("list").addEventListener("click", (event) => {
    const link = event.target.closest("a");
    if (!link || event.ctrlKey || event.metaKey || event.shiftKey) return;
    event.preventDefault();
    openList(false);
    openTable(atlas.tables.get(link.dataset.name));
    if (narrow()) byId("name").focus();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key !== "/" || event.target.matches("input, select, textarea")) return;
    event.preventDefault();
    openList(true);
    byId("query").focus();
  });
}
