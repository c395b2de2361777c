// The values: shown, copied, written to a file.

// Where a value could be taken for a published one, a last column says what it is.
function noteOf(table, age) {
  if (age < table.start || age > table.end) return "";
  if (table.invented) return "invented";
  return reconstructedAt(table, age) ? "reconstructed" : "published";
}

// Head and rows, as texts.
function valuesTable() {
  const sides = sidesOf();
  const columns = view.all ? sides.flatMap((table) => table.series) : chosenSeries();
  const noted = sides.filter((table) => table.reconstructed || table.invented);
  const head = ["age"];
  for (const one of columns) {
    head.push(view.other ? `${fullName(one)} [${unitOf(one)}]` : one.name);
  }
  for (const table of noted) head.push(view.other ? `${table.name} note` : "note");
  const body = [];
  const [first, last] = allAges();
  for (let each = first; each <= last; each += 1) {
    const values = columns.map((one) => textAt(one, each) ?? "");
    body.push([String(each), ...values, ...noted.map((table) => noteOf(table, each))]);
  }
  return { columns, head, body };
}

function showValues() {
  const { columns, head, body } = valuesTable();
  byId("all").checked = view.all;
  byId("copied").textContent = "";
  byId("fallback").hidden = true;
  const names = sidesOf().map((table) => table.name);
  const count = `${columns.length} ${columns.length === 1 ? "column" : "columns"}`;
  const heads = head.map((text, at) => {
    const unit = at && columns[at - 1] && !view.other ? unitOf(columns[at - 1]) : null;
    return el("th", { scope: "col" }, text, unit && el("small", unit));
  });
  const rows = body.map(([each, ...texts]) => {
    const cells = texts.map((text, at) => el(at < columns.length ? "td" : "td.note", text));
    const doubtful = texts.includes("reconstructed");
    return el(doubtful ? "tr.doubtful" : "tr", el("th", { scope: "row" }, each), cells);
  });
  byId("values").replaceChildren(
    el("caption", `${names.join(" and ")}, ${count}`),
    el("thead", el("tr", heads)),
    el("tbody", rows),
  );
}

function valuesText(separator) {
  const { head, body } = valuesTable();
  return [head, ...body].map((row) => `${row.join(separator)}\n`).join("");
}

async function copy() {
  const box = byId("fallback");
  let done = "Copied.";
  try {
    await navigator.clipboard.writeText(valuesText("\t"));
  } catch {
    box.hidden = false;
    box.value = valuesText("\t");
    box.select();
    if (document.execCommand("copy")) {
      box.hidden = true;
      byId("copy").focus();
    } else done = "The browser does not let the page copy: the values are selected below.";
  }
  byId("copied").textContent = done;
}

// No text in the table holds a comma or a quote.
function download() {
  const names = sidesOf().map((table) => {
    return (
      table.name + (table.invented ? "-invented" : table.reconstructed ? "-reconstructed" : "")
    );
  });
  const url = URL.createObjectURL(new Blob([valuesText(",")], { type: "text/csv" }));
  el("a", { href: url, download: `${names.join("-")}.csv` }).click();
  setTimeout(() => URL.revokeObjectURL(url), 60000);
}
