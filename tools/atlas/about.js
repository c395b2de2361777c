// What is said about a table: warnings, provenance, payload.

function chipsOf({ meta, ...table }) {
  const chips = [
    table.reconstructed && el("li.warn", `⚠ ${agesOf(table.reconstructed)} reconstructed`),
    table.invented && el("li.made", "invented, for tests only"),
    table.group && el("li", `${table.group.country}, ${table.group.title}`),
    el("li", meta.get("table_type")),
    el("li", agesOf([table.start, table.end])),
    el("li", table.permille ? "per mille" : "decimal"),
    meta.get("base_year") && el("li", `base year ${meta.get("base_year")}`),
    meta.get("select") && el("li", `select period ${meta.get("select_period")}`),
    meta.get("sex_independent") && el("li", "unisex"),
    el("li", (meta.get("generational_formula_type") ?? "static").replace("_", " ")),
  ].filter(Boolean);
  const doubts = table.doubts.filter(([, kind]) => kind === "doubt").length;
  if (doubts) {
    const text = `${doubts} open ${doubts > 1 ? "doubts" : "doubt"} ↓`;
    const button = el("button", { type: "button" }, text);
    button.addEventListener("click", () => byId("provenance-title").focus());
    chips.push(el("li.doubt", button));
  }
  return chips;
}

function bannerOf(table) {
  if (table.invented) {
    const lead = `${table.name} is synthetic: its rates are invented, for tests only.`;
    return el("div.banner.made", { role: "note" }, el("p.lead", lead));
  }
  const lead = `⚠ ${table.name}: ${agesOf(table.reconstructed)} are reconstructed, not published.`;
  // The long text once, also where two such tables are compared.
  const first = table === sidesOf().find((one) => one.reconstructed);
  const texts = first ? table.doubts.slice(0, 1).map(([, , text]) => markup("p", text)) : [];
  return el("div.banner.warn", { role: "note" }, el("p.lead", lead), texts);
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

function provenanceOf(table) {
  const { group } = table;
  const title = el("h4", `${table.name}: ${group ? group.title : "not published"}`);
  if (!group) return [title, markup("p", atlas.invented)];
  const facts = [...group.facts, ...table.doubts].map(([name, kind, text]) => {
    const words = kind === "fact" ? name : `Doubt (${name})`;
    return el(`div.${kind}`, el("dt", kind === "doubt" ? `⚠ ${words}` : words), markup("dd", text));
  });
  const heads = atlas.head.map((text) => el("th", { scope: "col" }, text));
  const rows = table.rows.map((cells) =>
    el(
      "tr",
      cells.map((text) => markup("td", text)),
    ),
  );
  const caption = el("caption", "The published columns");
  const name = { tabindex: 0, role: "region", "aria-label": `Published columns of ${table.name}` };
  const computed = table.series.filter((one) => one.computed).map((one) => one.name);
  return [
    title,
    el("dl.facts", facts),
    el("div.scroll", name, el("table", caption, el("thead", el("tr", heads)), el("tbody", rows))),
    computed.length
      ? el("p.computed", `Computed at import, not published: ${computed.join(", ")}.`)
      : "",
  ];
}

function describe() {
  const { table } = view;
  const published = table.meta.get("table_name");
  document.title = `${table.name} – Atlas of decrement tables`;
  byId("name").textContent = table.name;
  byId("published").textContent = published === table.name ? "" : published;
  byId("description").textContent = table.meta.get("description");
  byId("chips").replaceChildren(...chipsOf(table));
  const warned = sidesOf().filter((one) => one.invented || one.reconstructed);
  byId("warnings").replaceChildren(...warned.map(bannerOf));
  byId("computed-mark").hidden = !sidesOf().some((one) => one.series.some((each) => each.computed));
  byId("metadata").replaceChildren(...payloadOf(table));
  byId("provenance").replaceChildren(...sidesOf().flatMap(provenanceOf));
}
