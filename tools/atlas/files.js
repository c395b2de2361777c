// All tables as the files that ./dev export writes, in one ZIP: rates.csv from the lists, the others
// as the page holds them.

import { strFromU8, strToU8, unzlibSync, zipSync } from "fflate";

import { markAt } from "./tables.js";

const KINDS = { q: "death", i: "disability", o: "exit", m: "improvement" };
const SEXES = { m: "male", f: "female", u: "unisex" };

const quoted = (text) => (/[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text);

function* rowsOf(one) {
  const { table, column, label, shape, sex, texts } = one;
  const duration = shape === "durations" ? label : "";
  const year = shape === "years" ? label : "";
  const unit = one.permille ? "per mille" : "decimal";
  const named = [table.name, table.meta.get("table_name"), KINDS[column[0].toLowerCase()], column];
  for (const [index, text] of texts.entries()) {
    const age = table.start + index;
    const grade = markAt(one, age)?.kind ?? one.grade;
    yield [...named, SEXES[sex], age, duration, year, text, unit, one.order, grade];
  }
}

function ratesOf({ tables, rates }) {
  const rows = [...tables.values()].flatMap(({ series }) =>
    series.flatMap((one) => [...rowsOf(one)]),
  );
  return [rates, ...rows].map((row) => `${row.map(String).map(quoted).join()}\r\n`).join("");
}

// The name of the ZIP and its bytes, the same whenever and wherever it is made.
export function zipOf(atlas) {
  const folder = `data_tables-${atlas.version}`;
  const bytes = Uint8Array.from(atob(atlas.files), (char) => char.charCodeAt(0));
  const files = { ...JSON.parse(strFromU8(unzlibSync(bytes))), "rates.csv": ratesOf(atlas) };
  const packed = Object.entries(files).map(([name, text]) => [`${folder}/${name}`, strToU8(text)]);
  const mtime = new Date(1980, 0, 1); // the first day that ZIP knows
  return { name: `${folder}.zip`, bytes: zipSync(Object.fromEntries(packed), { mtime }) };
}
