// All of it together.

import { describe } from "./about.js";
import { showControls, startControls } from "./controls.js";
import { writeAddress } from "./address.js";
import { byId } from "./dom.js";
import { showLives } from "./figures.js";
import { buildLegend, checkLegend, readLegend } from "./legend.js";
import { markCurrent, startList } from "./list.js";
import { drawPlots, startPlots } from "./plots.js";
import { on, openAddress, state } from "./state.js";
import { copyText, showValues, startValues } from "./values.js";

function showChoice(view) {
  byId("linked").textContent = "";
  showControls(view);
  drawPlots(view);
  checkLegend(view);
  readLegend(view.age);
  showLives(view);
  showValues(view);
}

function showTables(view) {
  byId("welcome").hidden = Boolean(location.hash);
  byId("problem").hidden = !state.problems.length;
  byId("problem").textContent = state.problems.join(" ");
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
byId("link").addEventListener("click", () => {
  const address = new URL(writeAddress(state.view), location.href);
  copyText(address.href, byId("link"), byId("linked"));
});
on("tables", showTables);
on("choice", showChoice);
addEventListener("hashchange", openAddress);
openAddress();
