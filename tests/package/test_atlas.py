# ./dev adds: browser npm
"""The atlas in a browser: it shows the module's values, draws them, and says what is doubtful."""

import json
import subprocess
import sys
from pathlib import Path

import pytest
from columns import PUBLISHED, SYNTHETIC, lists_of
from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

import marlune.tables.data_tables as module
from marlune.tables.data_tables import REPO_TABLES

TOOLS = Path(__file__).resolve().parents[2] / "tools"
SOURCES = Path(module.__file__).with_name("data_tables_sources.json")
TOLD = json.loads(SOURCES.read_text("utf-8"))["tables"]
RECONSTRUCTED = ["IASS90", "SS90TOT", "SS90ABS"]
FLAGS = (
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
)  # fmt: skip


class Atlas:
    """The page in a browser."""

    def __init__(self, driver, url):
        self.driver, self.url = driver, url
        self.js = driver.execute_script

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        script = "return [...document.querySelectorAll(arguments[0])].map(e => e.textContent)"
        return self.js(script, selector)

    def until(self, condition, *arguments):
        holds = f"return {condition}"
        wait = WebDriverWait(self.driver, 20)
        return wait.until(lambda _: self.js(holds, *arguments), condition)

    def open(self, view=""):
        """A view by its link, as in a new tab."""
        self.driver.get("about:blank")
        self.driver.get(self.url + ("#" + view if view else ""))
        self.until("Object.values(plots).every(plot => plot.status === 1)")

    def go(self, table, view=""):
        """Another view on the page that is open."""
        self.js("location.hash = arguments[0]", f"table={table}{view}")
        self.until(
            "document.title.startsWith(arguments[0] + ' ')"
            " && Object.values(plots).every(plot => plot.status === 1)",
            table,
        )

    def width(self, pixels=None):
        if pixels is None:
            return self.driver.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})
        metrics = {"width": pixels, "height": 740, "deviceScaleFactor": 1, "mobile": True}
        return self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)

    def errors(self):
        """What the browser has to say about the page, but not about pixels read by these tests."""
        messages = [entry["message"] for entry in self.driver.get_log("browser")]
        return [message for message in messages if "readback" not in message]


@pytest.fixture(scope="module")
def atlas(tmp_path_factory):
    folder = tmp_path_factory.mktemp("atlas")
    command = [sys.executable, str(TOOLS / "atlas.py"), str(folder / "atlas.html")]
    subprocess.run(command, check=True, capture_output=True, text=True)
    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in (*FLAGS, "--window-size=1280,1000", f"--user-data-dir={folder / 'profile'}"):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    options.add_experimental_option("prefs", {"download.default_directory": str(folder)})
    service = webdriver.ChromeService("/usr/bin/chromedriver")
    driver = webdriver.Chrome(options=options, service=service)
    try:
        atlas = Atlas(driver, (folder / "atlas.html").as_uri())
        atlas.folder = folder
        yield atlas
        assert atlas.errors() == []
    finally:
        driver.quit()


def series_of(name):
    """Name of every series of a table, and its values as the interpreter writes them."""
    return {
        ".".join([key, *map(str, path)]): [repr(value) for value in rates]
        for key, column in REPO_TABLES[name]["data"].items()
        for path, rates in lists_of(column)
    }


def rows_of(name):
    """The rows that the page must show of a table, all columns."""
    payload, series = REPO_TABLES[name], series_of(name)
    ages = range(payload["start_age"], payload["omega"] + 1)
    body = zip(map(str, ages), *series.values(), strict=True)
    rows = [["age", *series], *map(list, body)]
    for row in rows:
        if name in SYNTHETIC:
            row.append("invented" if row[0] != "age" else "note")
        elif name in RECONSTRUCTED:
            doubtful = row[0] != "age" and 21 <= int(row[0]) <= 62
            row.append("note" if row[0] == "age" else "reconstructed" if doubtful else "published")
    return rows


SHOWN = """
  const rows = [...document.querySelectorAll("#values tr")].map((row) =>
    [...row.cells].map((cell) => cell.firstChild.textContent));
  return [rows, valuesText(",")];
"""

ENTRIES = """
  return [...document.querySelectorAll("#metadata div")].map((entry) =>
    [entry.children[0].textContent, entry.children[1].textContent, entry.className]);
"""

# A series is painted when its ink is where one of its values is, or where a later one covers it.
PAINTED = """
  const plot = plots[arguments[0]], ctx = plot.ctx;
  const rgb = (ink) => {
    const dot = new OffscreenCanvas(1, 1).getContext("2d");
    dot.fillStyle = ink;
    dot.fillRect(0, 0, 1, 1);
    return dot.getImageData(0, 0, 1, 1).data;
  };
  return plot.series.slice(1).map((series, at) => {
    const values = plot.data[at + 1], ink = rgb(series.stroke());
    const painted = plot.data[0].some((age, i) => {
      if (values[i] === null) return false;
      const x = Math.round(plot.valToPos(age, "x", true)) - 3;
      const y = Math.round(plot.valToPos(values[i], "y", true)) - 3;
      const patch = ctx.getImageData(x, y, 6, 6).data;
      for (let p = 0; p < patch.length; p += 4)
        if ([0, 1, 2, 3].every((c) => Math.abs(patch[p + c] - ink[c]) < 12)) return true;
      return false;
    });
    const covered = plot.data.slice(at + 2).some((later) =>
      values.every((value, i) => value === null || Math.abs(later[i] - value) <= 0.01 * value));
    return [series.label, painted || covered || values.every((value) => value === null)];
  });
"""


def test_page_reports_no_error_and_fetches_nothing(atlas):
    # From here on only the page is loaded: the browser's own first page is gone.
    atlas.driver.get("about:blank")
    atlas.driver.get_log("performance")
    atlas.open()
    atlas.go("IASS90", "&with=AM92_AF92&values=all")
    log = [json.loads(entry["message"]) for entry in atlas.driver.get_log("performance")]
    events = [entry["message"] for entry in log]
    fetched = {
        event["params"]["request"]["url"].partition("#")[0]
        for event in events
        if event["method"] == "Network.requestWillBeSent"
    }
    assert {url for url in fetched if not url.startswith(("data:", "about:"))} == {atlas.url}
    assert atlas.errors() == []
    # And it could not: the policy stops a request before it is made.
    stopped = atlas.driver.execute_async_script(
        """const done = arguments[0];
        addEventListener("securitypolicyviolation", (event) => done(event.effectiveDirective));
        fetch("https://fetched.invalid/").catch(() => {});"""
    )
    assert stopped == "connect-src"
    assert len(atlas.errors()) > 0


def test_every_value_and_key_is_the_module_s(atlas):
    atlas.open()
    for name, payload in REPO_TABLES.items():
        atlas.go(name, "&values=all")
        rows, csv = atlas.js(SHOWN)
        assert rows == rows_of(name), name
        assert csv == "".join(",".join(row) + "\n" for row in rows), name
        # Texts as they are, all else as the interpreter writes it; None stands out.
        want = [
            [key, value if isinstance(value, str) else repr(value), "none" if value is None else ""]
            for key, value in payload.items()
            if key != "data"
        ]
        shown = atlas.js(ENTRIES)
        assert shown[: len(want)] == want, name
        assert shown[len(want)][0] == "data"
        keys = {key for each in REPO_TABLES.values() for key in each}
        assert {tuple(row) for row in shown[len(want) + 1 :]} == {
            (key, "absent", "absent") for key in keys - set(payload)
        }, name


def test_every_table_is_drawn(atlas):
    atlas.open()
    for name in REPO_TABLES:
        series = series_of(name)
        atlas.go(name, f"&series={','.join(series)}")
        kinds = atlas.js("return Object.keys(plots)")
        drawn = dict(line for kind in kinds for line in atlas.js(PAINTED, kind))
        assert list(drawn) == sorted(series, key=lambda one: one.lower().startswith("mi_")), name
        assert all(drawn.values()), (name, drawn)
        numbers = atlas.js("return Object.values(plots).flatMap(plot => plot.data.slice(1))")
        for one, values in zip(drawn, numbers, strict=True):
            log = not one.lower().startswith("mi_")
            want = [None if log and float(value) == 0 else float(value) for value in series[one]]
            assert values == want, (name, one)


def test_what_a_log_scale_leaves_out_is_said(atlas):
    atlas.open("table=Dummy_qx0&series=qx_m")
    note = "#rates .leftout"
    assert atlas.one(note).text == (
        "Left out: 200 values of zero, which a log scale does not have (qx_m at ages 0–199)."
    )
    atlas.one("#rates [value=linear] + span").click()
    assert atlas.one(note).text == ""
    assert atlas.js("return plots.rates.data[1][0]") == 0
    assert atlas.js("return location.hash") == "#table=Dummy_qx0&series=qx_m&rates=linear"


def test_two_tables_are_compared_in_one_unit(atlas):
    atlas.open("table=GAM71")
    Select(atlas.one("#other")).select_by_value("PER2020_Ind_1o")
    atlas.until("plots.rates.series.length === 5 && plots.rates.status === 1")
    assert "the per mille of PER2020_Ind_1o divided by 1000" in atlas.one("#rates .axis").text
    ages, gam_m, _, per_f, _ = atlas.js("return plots.rates.data")
    assert (ages[0], ages[-1]) == (0, 119)
    assert gam_m == [None] * 5 + REPO_TABLES["GAM71"]["data"]["qx_m"] + [None] * 9
    rates = REPO_TABLES["PER2020_Ind_1o"]["data"]["qx_f"]
    assert per_f == pytest.approx([rate / 1000 for rate in rates], rel=1e-15)
    # The values stay those of the module, each with its unit.
    assert "PER2020_Ind_1o qx_f [per mille]" in atlas.texts("#values th")
    assert repr(rates[65]) in atlas.texts("#rates .value")
    # The link shows the same in another tab, and the way back leads to the table alone.
    link = atlas.js("return location.hash.slice(1)")
    atlas.js("history.back()")
    atlas.until("plots.rates.series.length === 3")
    atlas.open(link)
    assert link == "table=GAM71&with=PER2020_Ind_1o"
    assert len(atlas.js("return plots.rates.series")) == 5


def test_chosen_series_are_drawn_and_stand_in_the_link(atlas):
    atlas.open("table=CB_H_2020")
    atlas.one("#improvement input[value='mi_m.2030']").click()
    names = atlas.js("return plots.improvement.series.slice(1).map(series => series.label)")
    assert names == ["mi_m.2021", "mi_m.2030", "mi_m.2036"]
    assert atlas.js("return location.hash").endswith("series=qx_m,mi_m.2021,mi_m.2030,mi_m.2036")
    # Pointing at an age shows the values of all series at that age.
    ActionChains(atlas.driver).move_to_element(atlas.one("#improvement .u-over")).perform()
    age = int(atlas.one("#age").get_property("value"))
    want = [rates[age] for rates in series_of("CB_H_2020").values()]
    assert age != 65 and atlas.texts(".legend .value") == want
    # Dragging enlarges the ages in both plots.
    drag = ActionChains(atlas.driver).move_to_element(atlas.one("#improvement .u-over"))
    drag.click_and_hold().move_by_offset(150, 0).release().perform()
    atlas.until("view.ages && Object.values(plots).every(plot => plot.status === 1)")
    ages = atlas.js("return view.ages")
    assert ages[0] == age and ages[1] > age + 10
    assert atlas.js("return [plots.rates.scales.x.min, plots.rates.scales.x.max]") == ages
    assert atlas.js("return location.hash").endswith("&ages={}-{}".format(*ages))
    atlas.one("#allages").click()
    atlas.until("plots.rates.scales.x.min === 0 && plots.rates.scales.x.max === 110")


def test_search_finds_by_name_country_type_and_description(atlas):
    atlas.open()
    found = {
        "united kingdom": ["AM92_AF92"],
        "switz": ["GRMF80", "GRMF95", "GKMF80", "GKMF95"],
        "Spain disability 2007": ["PEAI2007_IAP_Ind", "PEAI2007_IAP_Col"],
        "CB-H-2020": ["CB_H_2020"],
        "mortalidad de INVALIDOS": ["IASS90"],
        "reconstructed": RECONSTRUCTED,
        "invented": SYNTHETIC,
        "nothing like this": [],
    }
    for words, names in found.items():
        atlas.one("#query").clear()
        atlas.one("#query").send_keys(words)
        assert atlas.texts("section:not([hidden]) > ul > li:not([hidden]) strong") == names, words
        assert atlas.one("#count").text == f"{len(names)} of 66 tables"


def test_keyboard_alone_leads_to_a_value(atlas):
    def press(*keys):
        ActionChains(atlas.driver).send_keys(*keys).perform()
        return atlas.js("return document.activeElement.id || document.activeElement.dataset.name")

    atlas.open()
    assert press("/") == "query"
    assert press("gkmf", Keys.ARROW_DOWN) == "GKMF80"
    assert press(Keys.ARROW_DOWN) == "GKMF95"
    assert press(Keys.ARROW_DOWN) == "GKMF95"
    press(Keys.ENTER)
    atlas.until("view.table.name === 'GKMF95' && plots.rates.status === 1")
    assert press(Keys.HOME) == "GKMF80" and press(Keys.ARROW_UP) == "query"
    for _ in range(20):
        press(Keys.TAB)
        if atlas.js("return document.activeElement.matches('#rates .plot')"):
            break
    press(Keys.ARROW_RIGHT)
    qx_m, qx_f = (rates[66 - 15] for rates in series_of("GKMF95").values())
    assert atlas.one("#reading").get_property("textContent") == f"Age 66: qx_m {qx_m}, qx_f {qx_f}"
    assert atlas.js("return getComputedStyle(document.activeElement).outlineStyle") == "solid"


# The part of the canvas that is painted between two ages, in a strip without a line or a word.
INKED = """
  const plot = plots.rates, { top, height } = plot.bbox;
  const [from, to] = [arguments[0], arguments[1]].map((age) => plot.valToPos(age, "x", true));
  const strip = [from + 2, top + height * 0.3, to - from - 4, height * 0.1];
  const alpha = plot.ctx.getImageData(...strip).data.filter((value, at) => at % 4 === 3);
  return alpha.filter((value) => value > 0).length / alpha.length;
"""


def test_doubts_are_marked(atlas):
    atlas.open()
    assert atlas.texts("a:has(.flag.warn) strong") == RECONSTRUCTED
    assert atlas.texts("a:has(.flag.made) strong") == SYNTHETIC
    for name in PUBLISHED:
        atlas.go(name)
        doubts = atlas.texts("#provenance .doubt dt")
        values = [each for each in TOLD[name]["doubts"] if each["grade"] == "value"]
        assert doubts == ["⚠ Doubt (value)"] * len(values)
        chips = [text.split()[0] for text in atlas.texts("#chips .doubt")]
        assert chips == [str(len(doubts))] * bool(doubts)
        assert bool(atlas.texts(".banner.warn")) == (name in RECONSTRUCTED)
    for view in ("table=SS90TOT", "table=DummySD_Unisex&with=SS90TOT"):
        atlas.open(view)
        assert atlas.texts(".banner.warn .lead") == [
            "⚠ SS90TOT: ages 21–62 are reconstructed, not published."
        ]
        assert len(atlas.texts("#values tr.doubtful")) == 42
        assert atlas.js(INKED, 22, 40) == 1
        assert atlas.js(INKED, 63, 64) < 0.5
    assert atlas.texts(".banner.made .lead") == [
        "DummySD_Unisex is synthetic: its rates are invented, for tests only."
    ]


def test_values_can_be_copied_and_downloaded(atlas):
    atlas.open("table=IASS90")
    granted = {"permissions": ["clipboardReadWrite"]}
    atlas.driver.execute_cdp_cmd("Browser.grantPermissions", granted)
    text = "".join("\t".join(row) + "\n" for row in rows_of("IASS90"))
    atlas.one("#copy").click()
    atlas.until("document.getElementById('copied').textContent === 'Copied.'")
    read = "navigator.clipboard.readText().then(arguments[0], () => arguments[0]('refused'))"
    assert atlas.driver.execute_async_script(read) == text
    # Where the browser refuses, the text is there to be taken by hand.
    atlas.js("navigator.clipboard.writeText = () => Promise.reject()")
    atlas.js("document.execCommand = () => false")
    atlas.one("#copy").click()
    atlas.until("!document.getElementById('fallback').hidden")
    assert atlas.one("#fallback").get_property("value") == text
    atlas.one("#download").click()
    file = atlas.folder / "IASS90-reconstructed.csv"
    WebDriverWait(atlas.driver, 20).until(lambda _: file.exists())
    assert file.read_text() == text.replace("\t", ",")


VIEWS = [
    "",
    "table=SS90ABS",
    "table=CB_H_2020",
    "table=DAV2004R_SelUlt_2o&with=PER2020_Ind_1o&values=all",
    "table=DummyLIFE_SelectGen_d&with=PASEM2020_NoRel_1o",
]


@pytest.mark.parametrize("view", VIEWS)
def test_page_fits_a_phone(atlas, view):
    atlas.width(360)
    try:
        atlas.open(view)
        assert atlas.one("#finder").is_displayed() != bool(view)
        assert atlas.js("return document.documentElement.scrollWidth") == 360
        if not view:
            atlas.one("#query").send_keys("gam83", Keys.ENTER)
            atlas.until("view.table.name === 'GAM83' && plots.rates.status === 1")
            assert not atlas.one("#finder").is_displayed()
            assert atlas.js("return document.documentElement.scrollWidth") == 360
        assert 200 < atlas.js("return plots.rates.width") <= 360
    finally:
        atlas.width()
