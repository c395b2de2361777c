// The values: shown, copied, written to a file.

import { tablesOf } from "./address.js";
import { byId, el, save } from "./dom.js";
import { zipOf } from "./files.js";
import { csvOf, fileName, sheetOf, tabbed } from "./sheet.js";
import { atlas, change, state } from "./state.js";

export function showValues(view) {
  const { columns, head, body } = sheetOf(view, atlas);
  byId("all").checked = view.all;
  byId("csv").value = view.comma ? "comma" : "point";
  byId("copied").textContent = "";
  byId("fallback").hidden = true;
  const names = tablesOf(view).map(({ name }) => name);
  const count = `${columns.length} ${columns.length === 1 ? "column" : "columns"}`;
  const heads = head.map((text, at) => {
    const column = columns[at - 1];
    return el("th", { scope: "col" }, column?.head ?? text, column && el("small", column.unit));
  });
  const rows = body.map(([age, ...texts]) => {
    const cells = texts.map((text, at) => el(at < columns.length ? "td" : "td.note", text));
    const notes = texts.slice(columns.length).join();
    const mark = /reconstructed|doubtful/.test(notes)
      ? "tr.doubtful"
      : notes.includes("completed")
        ? "tr.completed"
        : "tr";
    return el(mark, el("th", { scope: "row" }, age), cells);
  });
  byId("values").replaceChildren(
    el("caption", `${names.join(" and ")}, ${count}`),
    el("thead", el("tr", heads)),
    el("tbody", rows),
  );
}

// Where the browser refuses one way it may allow the older one; else the text can be taken by hand,
// from a field after the button.
export async function copyText(text, button, status) {
  const box = byId("fallback");
  let copied = true;
  try {
    await navigator.clipboard.writeText(text);
  } catch {
    button.parentNode.append(box);
    box.hidden = false;
    box.value = text;
    box.select();
    copied = document.execCommand("copy");
    box.hidden = copied;
  }
  if (copied) button.focus();
  status.textContent = copied
    ? "Copied."
    : "The browser does not let the page copy: take it from the field, where it is selected.";
}

const copy = () => copyText(tabbed(sheetOf(state.view, atlas)), byId("copy"), byId("copied"));

function download() {
  const { view } = state;
  save(fileName(view, "csv"), "text/csv", csvOf(sheetOf(view, atlas), view.comma));
}

function downloadAll() {
  const { name, bytes } = zipOf(atlas);
  save(name, "application/zip", new Blob([bytes], { type: "application/zip" }));
}

export function startValues() {
  byId("everything").addEventListener("click", downloadAll);
  byId("all").addEventListener("change", (event) => change({ all: event.target.checked }));
  byId("csv").addEventListener("change", (event) =>
    change({ comma: event.target.value === "comma" }),
  );
  byId("copy").addEventListener("click", copy);
  byId("download").addEventListener("click", download);
}
