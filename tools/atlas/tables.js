"use strict";
// What the page is made of: elements, and the embedded tables with their series.

const byId = (id) => document.getElementById(id);

// el("p.lead", { title: "…" }, "text", node, null): attributes may be missing, null is left out.
function el(tagAndClasses, ...rest) {
  const [tag, ...classes] = tagAndClasses.split(".");
  const node = document.createElement(tag);
  const given = rest[0]?.constructor === Object ? rest.shift() : {};
  node.classList.add(...classes);
  for (const [key, value] of Object.entries(given)) node.setAttribute(key, value);
  node.append(...rest.flat().filter((child) => child !== null && child !== undefined));
  return node;
}

function svg(tag, attributes, ...children) {
  const node = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [key, value] of Object.entries(attributes)) node.setAttribute(key, value);
  node.append(...children);
  return node;
}

// For texts of the provenance: the generator has escaped what is in them.
function markup(tag, text) {
  const node = el(tag);
  node.innerHTML = text;
  return node;
}

// ---- tables and series ----

const atlas = JSON.parse(byId("atlas-data").textContent);
const KINDS = ["rates", "improvement"];
const DECREMENTS = { life: "death", disability: "disability", exit: "exit" };
const SEXES = { m: "males", f: "females", u: "both sexes" };

const lists = atlas.lists.map((joined) => {
  const texts = joined.split(" ");
  return { texts, numbers: texts.map(Number) };
});

// Without accents and capitals.
const plain = (text) => text.normalize("NFD").replace(/\p{M}/gu, "").toLowerCase();

function seriesFrom(table, [column, label, list, computed]) {
  const kind = column.toLowerCase().startsWith("mi_") ? "improvement" : "rates";
  const name = label === null ? column : `${column}.${label}`;
  const sex = table.meta.get("sex_independent") ? "u" : column.slice(-1);
  const permille = kind === "rates" && table.permille;
  return { table, column, label, name, kind, sex, permille, computed, ...lists[list] };
}

function searchTextOf({ name, meta, group, reconstructed }) {
  const words = [name, meta.get("table_name"), meta.get("table_type"), meta.get("description")];
  words.push(group ? `${group.title} ${group.country} published` : "synthetic invented");
  words.push(meta.get("generational_formula_type") ?? "static");
  if (meta.get("select")) words.push("select");
  if (reconstructed) words.push("reconstructed");
  return plain(words.join(" "));
}

function tableFrom(given) {
  const meta = new Map(given.meta);
  const table = { ...given, meta, start: meta.get("start_age"), end: meta.get("omega") };
  table.permille = meta.get("decrement_scale_factor") === 1000;
  table.decrement = DECREMENTS[meta.get("table_type")];
  table.group = given.family === null ? null : atlas.families[given.family];
  table.invented = table.group === null;
  table.series = given.series.map((parts) => seriesFrom(table, parts));
  table.columns = new Map(); // key of the column to its series
  for (const one of table.series) {
    table.columns.set(one.column, [...(table.columns.get(one.column) ?? []), one]);
  }
  for (const all of table.columns.values()) {
    all.forEach((one, index) => Object.assign(one, { index, of: all.length }));
  }
  table.search = searchTextOf(table);
  return table;
}

const tables = new Map(atlas.tables.map((given) => [given.name, tableFrom(given)]));

const textAt = (one, age) => one.texts[age - one.table.start];
const unitOf = (one) => (one.permille ? "per mille" : "decimal");
const reconstructedAt = ({ reconstructed: ages }, age) => ages && age >= ages[0] && age <= ages[1];
const agesOf = (ages) => `ages ${ages[0]}–${ages[1]}`;
