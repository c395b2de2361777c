// All of it together.

import { describe } from "./about.js";
import { showControls, startControls } from "./controls.js";
import { byId } from "./dom.js";
import { showLives } from "./figures.js";
import { buildLegend, checkLegend, readLegend } from "./legend.js";
import { markCurrent, openList, startList } from "./list.js";
import { drawPlots, startPlots } from "./plots.js";
import { on, openAddress, state } from "./state.js";
import { showValues, startValues } from "./values.js";

function showChoice(view) {
  showControls(view);
  drawPlots(view);
  checkLegend(view);
  readLegend(view.age);
  showLives(view);
  showValues(view);
}

function showTables(view) {
  byId("problem").hidden = !state.said.length;
  byId("problem").textContent = state.said.join(" ");
  markCurrent();
  describe(view);
  buildLegend(view);
  showChoice(view);
}

document.documentElement.classList.add("drawn");
startList();
startControls();
startPlots();
startValues();
on("tables", showTables);
on("choice", showChoice);
addEventListener("hashchange", openAddress);
// On a phone the list is what is seen first, unless a link leads to a table.
openList(!location.hash);
openAddress();
