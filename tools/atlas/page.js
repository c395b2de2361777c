// All of it together.

function show() {
  readAddress();
  markCurrent();
  byId("other").value = view.other?.name ?? "";
  byId("swap").disabled = !view.other;
  describe();
  KINDS.forEach(buildLegend);
  drawBoth();
  showValues();
}

function listenToList() {
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
    openList(false);
    const { other, shown } = view;
    go(tables.get(link.dataset.name), other, undefined, other && shown[1]);
    if (narrow()) byId("name").focus();
  });
  document.addEventListener("keydown", (event) => {
    if (event.key !== "/" || event.target.matches("input, select, textarea")) return;
    event.preventDefault();
    openList(true);
    byId("query").focus();
  });
}

function listenToPlot(kind) {
  const figure = byId(kind);
  figure.querySelector(".scale").addEventListener("change", (event) => {
    view.scale[kind] = event.target.value;
    changed();
  });
  figure.querySelector(".plot").addEventListener("keydown", (event) => {
    const steps = { ArrowLeft: -1, ArrowRight: 1, PageDown: -10, PageUp: 10, Home: -999, End: 999 };
    if (!(event.key in steps)) return;
    event.preventDefault();
    showAge(age + steps[event.key]);
    const values = seriesOf(kind).map((one) => `${fullName(one)} ${textAt(one, age) ?? "none"}`);
    byId("reading").textContent = `Age ${age}: ${values.join(", ")}`;
  });
}

function listenToControls() {
  const otherChosen = () => tables.get(byId("other").value) ?? null;
  byId("other").addEventListener("change", () => go(view.table, otherChosen(), view.shown[0]));
  byId("swap").addEventListener("click", () => go(view.other, view.table, ...view.shown.reverse()));
  byId("age").addEventListener("input", (event) => {
    if (event.target.value) showAge(Math.round(Number(event.target.value)));
  });
  byId("age").addEventListener("change", (event) => (event.target.value = age));
  byId("allages").addEventListener("click", () => zoom(null));
  byId("all").addEventListener("change", (event) => {
    view.all = event.target.checked;
    changed();
  });
  byId("copy").addEventListener("click", copy);
  byId("download").addEventListener("click", download);
}

buildList();
search();
listenToList();
listenToControls();
KINDS.forEach(listenToPlot);
addEventListener("hashchange", show);
dark.addEventListener("change", show);
new ResizeObserver(fitPlots).observe(document.querySelector("main"));
show();
// On a narrow screen the list is what is seen first, unless a link leads to a table.
openList(!location.hash);
