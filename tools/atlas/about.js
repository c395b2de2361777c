// What is said about a table: warnings, doubts, sources, payload.

import { tablesOf } from "./address.js";
import { byId, button, el, markup } from "./dom.js";
import { atlas } from "./state.js";
import { SEXES, agesOf } from "./tables.js";

const GRADES = {
  value: "A value may be wrong or is not published",
  completion: "Completed by a rule",
  "paper trail": "Paper trail",
};

function chipsOf(table) {
  const { meta } = table;
  const sexes = [...new Set(table.series.map(({ sex }) => SEXES[sex]))].join(" and ");
  const chips = [
    table.reconstructed && el("li.warn", `⚠ ${agesOf(table.reconstructed)} reconstructed`),
    table.invented && el("li.made", "invented, for tests only"),
    table.country && el("li", table.country),
    ...table.orders.map((text) => el("li", text)),
    el("li", sexes),
    el("li", `ages ${table.start}–${table.end}`),
    el("li", table.permille ? "per mille" : "decimal"),
    table.base && el("li", `base year ${table.base}`),
    meta.get("select") && el("li", `select period ${meta.get("select_period")}`),
    el("li", table.formula?.replace("_", " ") ?? "static"),
  ].filter(Boolean);
  for (const grade of new Set(table.doubts.map((doubt) => doubt.grade))) {
    const count = table.doubts.filter((doubt) => doubt.grade === grade).length;
    const words = {
      value: "doubt about values",
      completion: "completion",
      "paper trail": "paper trail",
    };
    const see = button(`${words[grade]}${count > 1 ? ` (${count})` : ""} ↓`, () => {
      byId("doubts-title").scrollIntoView();
      byId("doubts-title").focus();
    });
    chips.push(el(grade === "value" ? "li.doubt" : "li", see));
  }
  return chips;
}

function bannerOf(table, first) {
  if (table.invented) {
    const lead = `${table.name} is synthetic: its rates are invented, for tests only.`;
    return el("div.banner.made", { role: "note" }, el("p.lead", lead));
  }
  const lead = `⚠ ${table.name}: ${table.warning.replace(/(\d)-(?=\d)/g, "$1–")}`;
  // The long text once, also where two such tables are compared.
  const texts = table.doubts
    .filter(({ grade }) => grade === "value")
    .map(({ text }) => markup("p", text));
  const more = first ? el("details", el("summary", "What that means"), texts) : null;
  return el("div.banner.warn", { role: "note" }, el("p.lead", `${lead}.`), more);
}

const python = (value) => ({ null: "None", true: "True", false: "False" })[value] ?? String(value);

// The keys in their order; None and what is absent look different.
function payloadOf({ meta, columns }) {
  const shapes = [...columns].map(([column, all]) => {
    return `${column} (${all[0].label === null ? "flat" : all.map((one) => one.label).join(" ")})`;
  });
  const entry = (kind, key, text) => el(kind, el("dt", el("code", key)), el("dd", text));
  return [
    ...[...meta].map(([key, value]) =>
      entry(value === null ? "div.none" : "div", key, python(value)),
    ),
    entry("div", "data", shapes.join(", ")),
    ...atlas.keys.filter((key) => !meta.has(key)).map((key) => entry("div.absent", key, "absent")),
  ];
}

function doubtsOf(table) {
  if (!table.doubts.length) return [];
  const items = table.doubts.map(({ grade, text }) =>
    el(grade === "value" ? "div.doubt" : "div.odd", el("dt", GRADES[grade]), markup("dd", text)),
  );
  return [el("h4", table.name), el("dl.facts", items)];
}

function sourcesOf(table) {
  const title = el("h4", `${table.name}: ${table.family}`);
  if (table.invented) return [title, markup("p", atlas.invented)];
  const read = Object.entries({
    "To project": table.projection,
    "Select rates go by": table.select,
  });
  const facts = [
    ...read.filter(([, text]) => text).map(([name, text]) => [name, el("dd", `${text}.`)]),
    ...table.facts.map(([name, text]) => [name, markup("dd", text)]),
  ].map(([name, dd]) => el("div", el("dt", name), dd));
  const heads = atlas.heads.map((text) => el("th", { scope: "col" }, text));
  const rows = table.rows.map((cells) =>
    el(
      "tr",
      cells.map((text) => markup("td", text)),
    ),
  );
  const name = { tabindex: 0, role: "region", "aria-label": `Published columns of ${table.name}` };
  const caption = el("caption", "The published columns");
  const computed = table.series.filter((one) => one.computed).map((one) => one.name);
  return [
    title,
    el("dl.facts", facts),
    el("div.scroll", name, el("table", caption, el("thead", el("tr", heads)), el("tbody", rows))),
    computed.length ? el("p.computed", `Computed, not published: ${computed.join(", ")}.`) : null,
  ].filter(Boolean);
}

export function describe(view) {
  const tables = tablesOf(view);
  const [table] = tables;
  const published = table.meta.get("table_name");
  document.title = `${table.name} – Atlas of decrement tables`;
  byId("name").textContent = table.name;
  byId("published").textContent = published === table.name ? "" : published;
  byId("purpose").textContent = table.purpose;
  byId("standing").hidden = table.invented;
  byId("standing").textContent = `Standing: ${table.standing.text}. Age: ${table.age_basis.text}.`;
  byId("description").textContent = table.meta.get("description");
  byId("chips").replaceChildren(...chipsOf(table));
  const warned = tables.filter((one) => one.invented || one.warning);
  const first = warned.find((one) => one.warning);
  byId("warnings").replaceChildren(...warned.map((one) => bannerOf(one, one === first)));
  byId("computed-mark").hidden = !tables.some(({ series }) => series.some((one) => one.computed));
  byId("metadata").replaceChildren(...payloadOf(table));
  const doubts = tables.flatMap(doubtsOf);
  byId("doubts").hidden = !doubts.length;
  byId("doubts-list").replaceChildren(...doubts);
  byId("provenance").replaceChildren(...tables.flatMap(sourcesOf));
}
