// The embedded tables, and the view that is open; whoever shows it is told of changes.

import { readAddress, shownAtFirst, sideOf, writeAddress } from "./address.js";
import { byId } from "./dom.js";
import { MOST_TABLES, readAtlas } from "./tables.js";

export const atlas = readAtlas(JSON.parse(byId("atlas-data").textContent));
export const state = { view: null, problems: [] };
export const thisYear = new Date().getFullYear();
const FIRST = `table=PER2020_Ind_1o&year=${thisYear}`; // what a first visit shows

const listeners = { tables: [], choice: [] };
export const on = (what, listener) => listeners[what].push(listener);
const tell = (what) => {
  for (const listener of listeners[what]) listener(state.view);
};

// The view of the address: as when the page is opened, or the way back is taken.
export function openAddress() {
  Object.assign(state, readAddress(location.hash || FIRST, atlas.tables));
  if (location.hash) history.replaceState(null, "", writeAddress(state.view));
  tell("tables");
}

// A step within a view: the link follows, the way back does not grow.
export function change(choice) {
  Object.assign(state.view, choice);
  history.replaceState(null, "", writeAddress(state.view));
  tell("choice");
}

// Other tables: a step that the browser can take back.
function go(sides) {
  const scale = { ...state.view.scale };
  if (sides.length < 2 && scale.rates === "ratio") scale.rates = "log";
  const address = writeAddress({ ...state.view, sides, scale, ages: null });
  if (location.hash === address) openAddress();
  else location.hash = address;
}

// Another first table; those that are laid over it stay.
export function openTable(table) {
  const others = state.view.sides.slice(1).filter((side) => side.table !== table);
  go([sideOf(table), ...others]);
}

export function layOver(table) {
  const { sides } = state.view;
  if (sides.length < MOST_TABLES) go([...sides, sideOf(table, shownAtFirst(table))]);
}

export const takeAway = (table) => go(state.view.sides.filter((side) => side.table !== table));

export function putFirst(table) {
  const isIt = (side) => side.table === table;
  const { sides } = state.view;
  go([...sides.filter(isIt), ...sides.filter((side) => !isIt(side))]);
}
