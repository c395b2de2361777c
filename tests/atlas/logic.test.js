// The atlas without a browser: its files that need no document, against figures from Python. Run by
// tests/package/test_atlas.py, which names in ATLAS_FIGURES what is embedded and what is expected.

import assert from "node:assert/strict";
import { readFileSync } from "node:fs";
import { test } from "node:test";

import { readAddress, writeAddress } from "../../tools/atlas/address.js";
import { drawingOf, notesOf } from "../../tools/atlas/drawing.js";
import { pricedLives } from "../../tools/atlas/lives.js";
import { readAs } from "../../tools/atlas/numbers.js";
import { pictureOf } from "../../tools/atlas/picture.js";
import { rateAt, timeAs } from "../../tools/atlas/projection.js";
import { find, indexOf, nearest } from "../../tools/atlas/search.js";
import { csvOf, fileName, sheetOf } from "../../tools/atlas/sheet.js";
import { readAtlas } from "../../tools/atlas/tables.js";

const { contents, rates, lives, priced, found, rows } = JSON.parse(
  readFileSync(process.env.ATLAS_FIGURES),
);
const atlas = readAtlas(contents);
const NOTES = { p: "published", R: "reconstructed" };
const viewOf = (address) => readAddress(address, atlas.tables).view;
const near = (got, want, what) =>
  assert.ok(
    want === null ? got === null : Math.abs(got - want) <= 1e-11 * Math.abs(want),
    `${what}: ${got}, not ${want}`,
  );

test("every series is projected as Python does it, year by year", () => {
  for (const [name, series, age, year, want] of rates) {
    const one = atlas.tables.get(name).series.find((each) => each.name === series);
    near(rateAt(one, age, year), want, `${name} ${series} at ${age} in ${year}`);
  }
  const far = atlas.tables.get("DummyLIFE_LinearGen").series;
  const least = far.map((one) => Math.min(...one.numbers.map((_, age) => rateAt(one, age, 9999))));
  assert.equal(Math.min(...least), 0, "a linear rate ends at 0");
});

test("lives are priced as published, and as Python does it", () => {
  const lifeOf = (address, key) => {
    const view = viewOf(address);
    const called = `${view.sides[0].table.name}.${key}`;
    return pricedLives(view).find(({ life, words }) =>
      words ? words === key : life.key === called,
    );
  };
  for (const [address, key, what, digits, want] of lives) {
    const { own, period, ...of } = lifeOf(address, key);
    const values = { ...of, ...own, period: period?.annuity };
    assert.equal(values[what].toFixed(digits), want, address);
  }
  for (const [address, key, kind, want] of priced) {
    const got = lifeOf(address, key)[kind];
    for (const what of Object.keys(want)) near(got[what], want[what], `${what}: ${key} ${address}`);
  }
  const [early] = pricedLives(viewOf("table=CB_H_2020&year=2019"));
  assert.deepEqual([early.rate, early.own, early.period], [null, null, null]);
  // GAM71 has ages 5 to 110, where 1 of 1000000 stays alive; who is outside has no price, nor has a
  // pair of which one is.
  const pair = "table=GAM71&with=PER2020_Ind_1o&lives=PER2020_Ind_1o.m,GAM71.m";
  for (const [age, inside] of [
    [4, false],
    [5, true],
    [110, true],
    [111, false],
  ]) {
    const all = pricedLives(viewOf(`${pair}&age=60&age2=${age}`));
    const priced = all.map(({ own }) => own !== null);
    assert.deepEqual(priced, [true, inside, inside, inside], `at ${age}`);
    assert.equal(all[1].left.toFixed(8), age === 110 ? "0.00000100" : "0.00000000");
  }
  const { view, problems } = readAddress(`${pair}.selected`, atlas.tables);
  assert.deepEqual([view.pair, problems], [null, ["There is no life GAM71.m.selected here."]]);
});

test("a ratio is that of the same sex and duration, in one unit, projected", () => {
  const valueAt = (address, called, age) => {
    const drawing = drawingOf(viewOf(address), "rates");
    return drawing.lines.find((line) => line.called === called).values[age - drawing.ages[0]];
  };
  const ratioAt = (first, name, of, age, more = "") => {
    const address = `table=${first}&with=${name.split(" ")[0]}&rates=ratio${more}`;
    return valueAt(address, `${name} as % of ${first} ${of}`, age);
  };
  const storedAt = (name, series, age) => {
    const { series: all, start, permille } = atlas.tables.get(name);
    const value = all.find((one) => one.name === series).numbers[age - start];
    return permille ? value / 1000 : value;
  };
  const rel = (age) => ratioAt("PASEM2020_Gen_2o", "PASEM2020_Rel_1o qx_f", "qx_f", age);
  assert.equal(rel(65).toFixed(2), "110.19"); // the law 1.101875 of the provenance
  assert.equal(rel(110), null); // past the last age of Rel
  // Decimal and per mille; a duration that the first table has, has not; both sexes in one column.
  for (const [first, name, series, of, age, more] of [
    ["PER2020_Ind_1o", "AM92_AF92", "qx_f.0", "qx_f", 65],
    ["PER2020_Ind_1o", "AM92_AF92", "qx_f.0", "qx_f", 65, "&year=2012"],
    ["DAV2004R_SelUlt_2o", "DAV2004R_SelUlt_1o", "qx_m.2", "qx_m.2", 70, "&series2=qx_m.2"],
    ["DAV2004R_SelUlt_2o", "AM92_AF92", "qx_m.0", "qx_m.ult", 70],
    ["AM92_AF92", "DAV2004R_SelUlt_2o", "qx_f.1", "qx_f.1", 70, "&series2=qx_f.1"],
    ["DummyLIFE_Unisex", "GAM71", "qx_f", "qx_m", 50],
    ["GAM71", "DummyLIFE_Unisex", "qx_m", "qx_m", 50],
  ]) {
    const want = (100 * storedAt(name, series, age)) / storedAt(first, of, age);
    near(ratioAt(first, `${name} ${series}`, of, age, more), want, `${name} of ${first}`);
  }
  const per = atlas.tables.get("PER2020_Ind_1o").series[0];
  near(
    ratioAt("PER2020_Ind_1o", "AM92_AF92 qx_f.0", "qx_f", 65, "&year=2026"),
    (100 * storedAt("AM92_AF92", "qx_f.0", 65)) / (rateAt(per, 65, 2026) / 1000),
    "projected",
  );
  const mixed = "table=GAM71&with=PER2020_Ind_1o";
  for (const [name, series] of [
    ["GAM71", "qx_f"],
    ["PER2020_Ind_1o", "qx_f"],
  ]) {
    near(valueAt(mixed, `${name} ${series}`, 65), storedAt(name, series, 65), "units in one plot");
  }
  assert.deepEqual(timeAs("born", { kind: "year", year: 2026 }, 65, 2020), {
    kind: "born",
    year: 1961,
  });
  assert.deepEqual(timeAs("year", { kind: "born", year: 1961 }, 65, 2020), {
    kind: "year",
    year: 2026,
  });
  assert.deepEqual(timeAs("born", { kind: "stored" }, 65, 2020), { kind: "born", year: 1955 });
});

test("what must be known about the years of a comparison is said", () => {
  const notes = (address) => notesOf(viewOf(address)).join(" ");
  const both = "table=PER2020_Ind_1o&with=DAV2004R_Agg_2o";
  assert.match(notes(both), /Not projected.*PER2020_Ind_1o \(2012\), DAV2004R_Agg_2o \(1999\)\./);
  assert.equal(notes(`${both}&year=2026`), "");
  const text = notes("table=GAM71&with=CB_H_2020,GAM94_AA,DummyLIFE_ProjectedGen&born=1960&age=30");
  assert.equal(notes("table=GAM94_AA&born=1960"), ""); // past 1994 at the age of the life
  assert.match(text, /the same in every year: GAM71\..*taken backwards: GAM94_AA \(1994\)\./);
  assert.match(text, /left out: CB_H_2020 \(2020\), DummyLIFE_ProjectedGen \(2020\)\./);
  assert.match(text, /not spelt out by the table: DummyLIFE_ProjectedGen \(2020\)\./);
});

test("the search finds what people type", () => {
  const index = indexOf(atlas.tables);
  for (const [query, want, how] of found) {
    const names = find(index, query);
    if (how === "only") assert.deepEqual([...names].sort(), [...want].sort(), query);
    if (how === "first") assert.deepEqual(names.slice(0, want.length), want, query);
    for (const name of want) assert.ok(names.includes(name), `${query}: ${name} not in ${names}`);
  }
  assert.equal(nearest(index, "spain anuity")[0], "annuity");
  assert.deepEqual(nearest(index, "annuity"), []);
});

test("the address holds everything chosen", () => {
  const full =
    "#table=CB_H_2020&with=PER2020_Ind_1o,GAM83,AM92_AF92&series=qx_m,mi_m.2030&series4=qx_f.0" +
    "&born=1961&rates=ratio&improvement=log&age=72&interest=1.25&term=20&deferred=3&paid=monthly&lives=CB_H_2020.m,AM92_AF92.f.selected&age2=60&ages=20-90&values=all&csv=comma";
  assert.equal(writeAddress(viewOf(full)), full);
  for (const bare of ["#GAM94_AA", "#gam94_aa", "#table=GAM94_AA"]) {
    assert.equal(writeAddress(viewOf(bare)), "#table=GAM94_AA");
  }
  const wrong = readAddress(
    "#table=GAM95&with=GAM83&age=3&interest=99&ages=90-20&rates=ratio&year=12&paid=daily&term=0&lives=GAM83.m",
    atlas.tables,
  );
  assert.deepEqual(wrong.problems, [
    "There is no table GAM95.",
    "Nothing is paid “daily” here. Shown: yearly in advance.",
    "A year is 1800 to 2200 here, not 12. Shown: rates as stored.",
    "An age is 5 to 110 here, not 3. Shown: 5.",
    "Interest is -5 to 50 % here, not 99. Shown: 2.",
    "A term is 1 to 130 years here, not 0. Shown: for life.",
    "Lives are two.",
  ]);
  assert.equal(writeAddress(wrong.view), "#table=GAM83&age=5");
  assert.equal(viewOf("table=GAM83&interest=1,5%25").interest, 1.5);
  assert.equal(writeAddress(readAddress("#%", atlas.tables).view), "#table=PER2020_Col_2o");
});

test("a number is read as it is meant, or not at all", () => {
  for (const text of ["1,5", "1.5", " 1,5 % ", "+1.50%", "1,5\u202f%"]) {
    assert.deepEqual(readAs("interest", text), { value: 1.5 }, text);
  }
  assert.equal(readAs("interest", "\u22120,25").value, -0.25);
  assert.equal(readAs("interest", ",5").value, 0.5);
  assert.equal(readAs("year", "2 026").value, 2026);
  for (const text of [
    "",
    "x",
    "1.5.0",
    "1,234.5",
    "1 5",
    "1e1",
    "0x10",
    "%",
    "1,5 ‰",
    "Infinity",
  ]) {
    assert.match(readAs("interest", text).problem, /is not a number/, text);
  }
  assert.match(readAs("age", "65 %", [0, 120]).problem, /is not a number/);
  assert.match(readAs("age", "65,5", [0, 120]).problem, /An age is a whole number/);
  assert.match(readAs("year", "2.026").problem, /A year is a whole number/);
  const nearests = (kind) =>
    ["-1", "0", "1", "130", "131"].map((text) => readAs(kind, text).nearest);
  assert.deepEqual(nearests("term"), [1, 1, undefined, undefined, 130]);
  assert.deepEqual(nearests("deferred"), [0, undefined, undefined, undefined, 130]);
});

test("a file says unit, source, version and what is not published", () => {
  const csv = (address, comma = false) => csvOf(sheetOf(viewOf(address), atlas), comma).split("\n");
  assert.match(
    csv("#GAM94_AA")[2],
    /^# GAM94_AA: q\(x\) in year t is q\(x\) · \(1 − mi\(x\)\)\^\(t − 1994\)$/,
  );
  const [about, meant, made, head] = csv("#GAM71");
  assert.ok(about.startsWith(`# GAM71: ${atlas.tables.get("GAM71").source}`));
  assert.match(meant, /^# GAM71: for group annuities.*standing: not stated; age: not stated$/);
  assert.match(made, new RegExp(`${atlas.version} of ${atlas.date}, catalogue ${atlas.digest}`));
  assert.equal(head, "age,qx_m [decimal],qx_f [decimal]");
  for (const [name, want] of Object.entries(rows)) {
    const lines = csv(`table=${name}&values=all`).filter((line) => /^\d/.test(line));
    assert.deepEqual(
      lines.map((line) => line.split(",").slice(0, want[0].length)),
      want,
      name,
    );
  }
  const per = csv("table=PER2020_Ind_1o&with=GAM71&year=2026", true).map((line) =>
    line.replace("\ufeff", ""),
  );
  assert.match(
    per.find((line) => line.startsWith("age;")),
    /;PER2020_Ind_1o qx_f in 2026 \[per mille\];.*;GAM71 qx_m \[decimal\];/,
  );
  assert.match(
    per.find((line) => line.startsWith("65;")),
    /^65;2,868621527;/,
  );
  const notes = Object.fromEntries(
    csv("table=GAM71&with=IASS90").map((line) => [line.split(",")[0], line.split(",").at(-1)]),
  );
  assert.deepEqual(
    ["age", 17, 18, 20, 21, 62, 63, 65, 66].map((age) => notes[age]),
    ["IASS90 note", "", ...[..."ppRRpp"].map((each) => NOTES[each]), ""],
  );
  // What is compared has columns of its own, in percent.
  const gen = csv("table=PASEM2020_Gen_2o&with=PASEM2020_Rel_1o&rates=ratio");
  const [heads, row] = ["age", "65"].map((at) =>
    gen.find((line) => line.startsWith(`${at},`)).split(","),
  );
  const ratio = heads.indexOf("PASEM2020_Rel_1o qx_f of PASEM2020_Gen_2o qx_f [%]");
  assert.equal(Number(row[ratio]).toFixed(2), "110.19");
  assert.equal(heads.filter((head) => head.endsWith("[%]")).length, 2);
  assert.match(
    csv("#AM92_AF92").find((line) => line.startsWith("91,")),
    /completed: qx_m.0 qx_f.0$/,
  );
  assert.match(csv("#DummySD_Unisex")[5], /invented$/);
  const cells = { about: ['a "b"; c'], head: ["x"], body: [["7.5e-07", 'a "b"', "1;2", "1,2"]] };
  assert.equal(csvOf(cells, false), '# a "b"; c\nx\n7.5e-07,"a ""b""","1;2","1,2"\n');
  assert.equal(csvOf(cells, true), '\ufeff"# a ""b""; c"\nx\n7,5e-07;"a ""b""";"1;2";"1,2"\n');
  const names = fileName(viewOf("table=SS90ABS&with=GAM71,Dummy_qx0&year=2026"), "csv");
  assert.equal(names, "SS90ABS-reconstructed-GAM71-Dummy_qx0-invented-year-2026.csv");
});

test("a picture has every line, says what it is and hatches what is not published", () => {
  const view = viewOf("table=IASS90&with=CB_H_2020,DAV2004R_SelUlt_1o");
  const drawing = drawingOf(view, "rates");
  const svg = pictureOf(drawing, "A & B", ["source <1>"]);
  assert.equal(drawing.lines.length, 1 + 1 + 4);
  for (const { called } of drawing.lines) assert.ok(svg.includes(`>${called}<`), called);
  assert.match(svg, /A &#38; B.*21–62 reconstructed, not published.*source &#60;1&#62;/s);
  assert.ok(!/NaN|undefined|Infinity/.test(svg));
  assert.equal(
    drawing.leftOut.split(" (")[0],
    "Left out: 1 value of zero, which a log scale does not have",
  );
});
