"""The atlas: its logic by node against figures from here, and the ways that people go."""

# ./dev adds: browser npm
import io
import json
import math
import os
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

import life
from columns import SYNTHETIC, lists_of
from marlune.tables.data_tables import REPO_TABLES
from tools import TOP, export
from tools.atlas.browser import PICTURES, browser, open_view
from tools.atlas.contents import contents
from tools.atlas.page import page

RECONSTRUCTED = ["IASS90", "SS90TOT", "SS90ABS"]

# ---- the logic, by node ----

# Published, or computed in another way by tests of the examples: address, life, what, digits,
# figure. The trends of DAV 2004 R and the five rates are those of the workbook.
LIVES = [
    ("table=PER2020_Ind_1o&year=2026&age=65&interest=2", "f", "annuity", 6, "22.503445"),
    ("table=PER2020_Ind_1o&born=1961&age=65&interest=2", "f", "annuity", 6, "22.503445"),
    # A guide of the University of Málaga: PER2020, females, here per mille.
    ("table=PER2020_Ind_2o&year=2025&age=0", "f", "rate", 3, "1.381"),
    ("table=PER2020_Ind_2o&year=2030&age=0", "f", "rate", 3, "1.159"),
    ("table=PER2020_Ind_2o&year=2025&age=1", "f", "rate", 3, "0.092"),
    ("table=PER2020_Ind_2o&born=2000&age=81", "f", "rate", 1, "4.8"),
    ("table=PER2020_Ind_2o&born=1990&age=82", "f", "rate", 1, "7.4"),
    ("table=CB_H_2020&year=2023&age=65", "m", "death", 2, "86.62"),
    ("table=RV_M_2020&year=2023&age=60", "f", "death", 2, "90.80"),
    ("table=CB_H_2020&year=2022&age=65", "m", "rate", 9, "0.008526031"),
    ("table=AM92_AF92&age=40&interest=4", "m.selected", "annuity", 3, "20.009"),
    ("table=AM92_AF92&age=40&interest=4", "m", "annuity", 3, "20.005"),
    ("table=AM92_AF92&year=2026&age=40&interest=4", "m", "period", 3, "20.005"),
    ("table=DAV2004R_Agg_2o&year=2026&interest=1.25", "m", "annuity", 2, "20.55"),
    ("table=DAV2004R_SelUlt_1o&year=2005&age=60", "m.selected", "rate", 12, "0.004175509843"),
    ("table=DAV2004R_Agg_1o&year=2005&age=60", "m", "rate", 12, "0.004566485462"),
    ("table=DAV2004R_SelUlt_2o&year=2005&age=60", "m.selected", "rate", 12, "0.005025836501"),
    ("table=DAV2004R_Agg_2o&year=2005&age=60", "m", "rate", 12, "0.005496501965"),
    ("table=AM92_AF92&age=40&interest=4", "m.selected", "assurance", 5, "0.23041"),
]
# What is typed, what is found: only that, that first, or that among others.
CHILE = ["CB_H_2020", "MI_H_2020", "RV_M_2020", "B_M_2020", "MI_M_2020"]
PER = ["PER2020_Col_2o", "PER2020_Col_1o", "PER2020_Ind_2o", "PER2020_Ind_1o"]
TERM = ["PASEM2020_Gen_2o", "PASEM2020_Rel_1o", "PASEM2020_NoRel_1o"]
FOUND = [
    ("USA", ["GAM71", "GAM83", "GAM94_AA"], "only"),
    ("uk", ["AM92_AF92"], "only"),
    ("switz", ["GRMF80", "GRMF95", "GKMF80", "GKMF95"], "only"),
    ("Spain disability 2007", ["PEAI2007_IAP_Ind", "PEAI2007_IAP_Col"], "only"),
    ("CB-H-2020", ["CB_H_2020"], "only"),
    ("17154 premium", ["PER2020_Col_1o", "PER2020_Ind_1o", "PASEM2020_Rel_1o",
                       "PASEM2020_NoRel_1o", "PASEM2020_Dec_1o"], "only"),
    ("individual PER2020", ["PER2020_Ind_2o", "PER2020_Ind_1o"], "first"),
    ("annuity chile", CHILE, "only"),
    ("rentas female", ["RV_M_2020", "B_M_2020", "GAM94_AA", "PER2020_Ind_1o"], "among"),
    ("mortalidad de INVALIDOS", ["IASS90"], "among"),
    ("unisex", [*RECONSTRUCTED, "DummyLIFE_Unisex", "DummySD_Unisex", "DummyEXIT_Unisex"], "only"),
    ("reconstructed", RECONSTRUCTED, "only"),
    ("invented", SYNTHETIC, "only"),
    ("projected improvement published", CHILE, "only"),
    ("select durations DE", ["DAV2004R_SelUlt_2o", "DAV2004R_SelUlt_1o"], "only"),
    ("funeral", ["PASEM2020_Dec_2o", "PASEM2020_Dec_1o"], "only"),
    ("continuous mortality investigation", ["AM92_AF92"], "only"),
    ("GRM95", ["GRMF95"], "only"),
    ("GRF80", ["GRMF80"], "only"),
    ("PERM 2020", PER, "only"),
    ("sterbetafel", ["DAV2004R_Agg_2o"], "first"),
    ("rentenversicherung", ["DAV2004R_Agg_1o", "PER2020_Ind_1o"], "among"),
    ("term assurance", [*TERM, "PASEM2010"], "first"),
    ("term insurance", [*TERM, "PASEM2010"], "first"),
    ("spanish annuitant", PER, "first"),
    ("incapacidad permanente", ["PEAI2007_IAP_Ind", "PEAI2007_IAP_Col"], "first"),
    ("IPA", ["PEAI2007_IAP_Ind", "PEAI2007_IAP_Col"], "first"),
    ("jubilacion", PER, "first"),
    ("planes de pensiones", ["PER2020_Col_1o", "PASEM2020_Rel_1o"], "first"),
    ("tabla suiza", ["GRMF80", "GRMF95", "GKMF80", "GKMF95"], "only"),
    ("tablas chilenas", CHILE, "only"),
    ("gruppenleben", ["GKMF80", "GKMF95"], "only"),
    ("assured lives", ["AM92_AF92"], "only"),
    ("mortality improvement", PER, "first"),
    ("misprint", ["GRMF80", "GKMF80"], "only"),
    ("superseded", ["PASEM2010", "GRMF95", "GKMF95"], "among"),
    ("nothing like this", [], "only"),
]  # fmt: skip


def backwards(payload, sex, path, index):
    """By what a rate of the base year is multiplied 150 years before it: the formula reversed."""
    rates = payload["data"].get(f"mi_{sex}") or payload["data"].get(f"MI_{sex}")
    paths = dict(lists_of(rates))
    mi = paths.get(path, next(iter(paths.values())))[index]  # the first list, before its year too
    return {
        "exponential_improvement": math.exp(150 * mi),
        "discrete_improvement": (1 - mi) ** -150,
        "linear_improvement": 1 + 150 * mi,
        "projected_improvement": None,
    }[payload["generational_formula_type"]]


def projected_rates():
    """Table, series, age, year and projected rate, for every series that improves."""
    for name, payload in REPO_TABLES.items():
        scale = payload["decrement_scale_factor"]
        for key, column in payload["data"].items():
            if not payload["generational"] or key.lower().startswith("mi_"):
                continue
            decrement, sex = key.split("_")
            for since, (path, rates) in enumerate(lists_of(column)):
                series, select = ".".join([key, *map(str, path)]), {"since": since} if path else {}
                for age in range(payload["start_age"], payload["omega"] + 1, 7):
                    for year in (payload["base_year"] + after for after in (0, 1, 6, 45)):
                        q = life.rate(payload, sex, age, year, decrement=decrement, **select)
                        yield name, series, age, year, min(q, 1) * scale
                    before = backwards(payload, sex, path, age - payload["start_age"])
                    q = before and min(rates[age - payload["start_age"]] * before, scale)
                    yield name, series, age, payload["base_year"] - 150, q


def price(alive, interest, term, deferred, paid):
    """By the example for a life, and by the usual approximation on top of it."""
    late = paid.endswith("arrears")
    pay = life.annuity_immediate if late else life.annuity_due
    annuity, assurance = (f(alive, interest, term, deferred) for f in (pay, life.assurance))
    endowed = life.pure_endowment(alive, interest, deferred + term) if term else 0.0
    if paid.startswith("monthly"):
        less = 11 / 24 * (life.pure_endowment(alive, interest, deferred) - endowed)
        annuity += less if late else -less
    priced = {"expectation": life.expectation(alive), "annuity": annuity, "assurance": assurance}
    return priced | {"endowment": assurance + endowed if term else None}


PLANS = [(None, 0, "advance"), (None, 12, "monthly"), (20, 0, "arrears"), (7, 3, "monthly-arrears"),
         (90, 1, "advance"), (1, 90, "monthly")]  # fmt: skip


def priced_lives():
    """Address, life, whether by the rates of one year alone, and figures."""
    for term, deferred, paid in PLANS:
        plan = f"interest=2.5&deferred={deferred}&paid={paid}" + (f"&term={term}" if term else "")
        told = {"interest": 0.025, "term": term, "deferred": deferred, "paid": paid}
        dav, agg = (REPO_TABLES[f"DAV2004R_{kind}_2o"] for kind in ("SelUlt", "Agg"))
        of = "table=DAV2004R_SelUlt_2o&with=DAV2004R_Agg_2o&year=2026&age=55"
        start = {"selected": 55 + deferred, "before": agg}
        his = life.survival(life.rates(dav, "m", 55, 2026, **start))
        hers = life.survival(life.rates(agg, "f", 62, 2026))
        keys = "DAV2004R_SelUlt_2o.m.selected", "DAV2004R_Agg_2o.f"
        pair = f"{of}&{plan}&lives={','.join(keys)}&age2=62"
        yield pair, "m.selected", "own", price(his, **told)
        yield pair, "while both live", "own", price(life.joint(his, hers), **told)
        yield pair, "while one of both lives", "own", price(life.last_survivor(his, hers), **told)
        at_40 = f"&age=40&{plan}"
        am92 = life.survival(life.rates(REPO_TABLES["AM92_AF92"], "f", 40, selected=40))
        yield "table=AM92_AF92" + at_40, "f.selected", "own", price(am92, **told)
        unisex = life.survival(life.rates(REPO_TABLES["DummyLIFE_Unisex"], "f", 40))
        yield "table=DummyLIFE_Unisex" + at_40, "u", "own", price(unisex, **told)
        per = REPO_TABLES["PER2020_Ind_1o"]
        then = life.survival(life.rate(per, "m", age, 2026) for age in range(65, per["omega"] + 1))
        of = f"table=PER2020_Ind_1o&year=2026&{plan}"
        yield of, "m", "period", price(then, **told)


def rows_of(payload):
    """Age and every value, as the interpreter writes them."""
    series = [rates for column in payload["data"].values() for _, rates in lists_of(column)]
    ages = range(payload["start_age"], payload["omega"] + 1)
    return [list(map(repr, row)) for row in zip(ages, *series, strict=True)]


def test_logic(tmp_path):
    figures = tmp_path / "figures.json"
    content = {
        "contents": contents(),
        "rates": list(projected_rates()),
        "lives": LIVES,
        "priced": list(priced_lives()),
        "found": FOUND,
        "rows": {name: rows_of(payload) for name, payload in REPO_TABLES.items()},
    }
    assert len(content["rates"]) > 5000
    figures.write_text(json.dumps(content), encoding="utf-8")
    command = ["node", "--test", "--test-reporter=tap", str(TOP / "tests/atlas/logic.test.js")]
    environment = os.environ | {"ATLAS_FIGURES": str(figures)}
    done = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout
    print(*done.stdout.splitlines()[-8:], sep="\n")
    assert "# pass 9" in done.stdout and "# skipped 0" in done.stdout


# ---- the page, by browser ----


class Atlas:
    """The page in a browser."""

    def __init__(self, driver, file):
        self.driver, self.file = driver, file
        self.js, self.cdp = driver.execute_script, driver.execute_cdp_cmd

    def one(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def texts(self, selector):
        script = "return [...document.querySelectorAll(arguments[0])].map(e => e.textContent)"
        return self.js(script, selector)

    def until(self, condition, *arguments):
        wait = WebDriverWait(self.driver, 20)
        return wait.until(lambda _: self.js(f"return {condition}", *arguments), condition)

    def open(self, view="", size=(1400, 900), dark=False):
        scheme = "dark" if dark else "light"
        open_view(self.driver, self.file, view, size, scheme)
        self.until("document.title.includes(' – ')")

    def press(self, *keys):
        ActionChains(self.driver).send_keys(*keys).perform()
        return self.js("return document.activeElement.id || document.activeElement.dataset.name")

    def box(self, selector):
        script = "const b = document.querySelector(arguments[0]).getBoundingClientRect();"
        return self.js(script + "return [b.left, b.top, b.right, b.bottom]", selector)

    def saved(self, name):
        file = self.file.with_name(name)
        WebDriverWait(self.driver, 20).until(lambda _: file.exists() and file.stat().st_size)
        return file.read_bytes()

    def errors(self):
        return [entry["message"] for entry in self.driver.get_log("browser")]


@pytest.fixture(scope="module")
def atlas(tmp_path_factory):
    file = tmp_path_factory.mktemp("atlas") / "atlas.html"
    pictures = file.parent / "made" / "on the way"
    command = [sys.executable, "-m", "tools.atlas", str(file), "--pictures", str(pictures)]
    subprocess.run(command, check=True, capture_output=True)
    assert {picture.name for picture in pictures.iterdir()} == set(PICTURES)
    assert file.read_text("utf-8") == page()  # built twice, the same
    driver = browser(file.parent)
    try:
        atlas = Atlas(driver, file)
        yield atlas
        assert atlas.errors() == []
    finally:
        driver.quit()


def test_from_search_to_a_projected_annuity_by_keyboard(atlas):
    atlas.open()
    # What a first visit shows, and the link to it.
    assert atlas.js("return document.title").startswith("PER2020_Ind_1o ")
    assert atlas.one("#time").get_property("value") == "year"
    assert atlas.one("#welcome").is_displayed()
    assert not atlas.one("#list details").get_property("open")
    assert atlas.press("/") == "query"
    assert atlas.press("per2020 ind 1o", Keys.ARROW_DOWN) == "PER2020_Ind_1o"
    atlas.press(Keys.ENTER)
    atlas.until("document.title.startsWith('PER2020_Ind_1o ')")
    Select(atlas.one("#time")).select_by_value("year")
    atlas.one("#year").clear()
    atlas.one("#year").send_keys("2026")
    assert "22.503445" in atlas.texts("#lives-table td")
    assert "2.868621527" in atlas.texts("#rates .value")
    atlas.one("#rates .plot").click()
    link = atlas.js("return location.hash")
    assert link.startswith("#table=PER2020_Ind_1o&year=2026&age=")
    atlas.one("#rates .plot").send_keys(Keys.ARROW_RIGHT)
    age = int(link.rpartition("=")[2]) + 1
    assert atlas.one("#age").get_property("value") == str(age)
    reading = atlas.one("#reading").get_property("textContent")
    assert reading.startswith(f"Age {age}: qx_f ")
    # A decimal comma is one; what cannot be meant is said beside the field, and changes nothing.
    for text, interest, said in (
        ("1,5 %", "1.5", ""),
        ("1,5,0", "1.5", "“1,5,0” is not a number. Shown: 1.5."),
        ("99", "9", "Interest is -5 to 50 % here, not 99. Shown: 9."),
        ("2", "2", ""),
    ):
        atlas.one("#interest").clear()
        atlas.one("#interest").send_keys(text)
        assert f"annuity-due at {interest}\u00a0%" in " ".join(atlas.texts("#lives-table summary"))
        assert atlas.texts("#interest-problem") == [said]
    # The link shows the same in another tab.
    atlas.open(f"table=PER2020_Ind_1o&year=2026&age={age}")
    assert f"qx_f {atlas.texts('#rates .value')[0]}" in reading


def test_comparing_and_taking_it_away(atlas):
    atlas.open("PASEM2020_Gen_2o")
    Select(atlas.one("#other")).select_by_value("PASEM2020_Rel_1o")
    atlas.until("document.querySelectorAll('#laid li').length === 1")
    atlas.one("#rates [value=ratio] + span").click()
    assert "110.19 %" in atlas.texts("#rates .value")
    name = "PASEM2020_Gen_2o-PASEM2020_Rel_1o"
    for button in atlas.driver.find_elements(By.CSS_SELECTOR, "#rates .save button"):
        button.click()
    assert "PASEM2020_Rel_1o qx_f as % of" in atlas.saved(f"{name}.rates.svg").decode()
    assert atlas.saved(f"{name}.rates.png").startswith(b"\x89PNG")
    Select(atlas.one("#csv")).select_by_value("comma")
    atlas.one("#download").click()
    assert "\n65;3,2227;7,2544;" in atlas.saved(f"{name}.csv").decode()
    atlas.cdp("Browser.grantPermissions", {"permissions": ["clipboardReadWrite"]})
    read = "navigator.clipboard.readText().then(arguments[0], () => arguments[0]('refused'))"
    link = atlas.js("return location.href")
    for button, said, taken in (
        ("#copy", "copied", "\n65\t3.2227\t7.2544\t"),
        ("#link", "linked", link),
    ):
        atlas.one(button).click()
        atlas.until(f"document.getElementById('{said}').textContent === 'Copied.'")
        assert taken in atlas.driver.execute_async_script(read)
    # All tables, as ./dev export writes them.
    version = contents()["version"]
    atlas.one("#everything").click()
    with zipfile.ZipFile(io.BytesIO(atlas.saved(f"data_tables-{version}.zip"))) as packed:
        got = {name.partition("/")[2]: packed.read(name) for name in packed.namelist()}
    assert got == export.contents()
    # The way back leads to the table alone, on a scale that it has.
    atlas.js("history.back()")
    atlas.until("!document.querySelector('#laid li')")
    assert atlas.js("return document.querySelector('#rates [value=log]').checked")


def test_reconstructed_ages_are_seen_everywhere(atlas):
    atlas.open("table=DummySD_Unisex&with=SS90TOT&age=40")
    assert atlas.texts("a:has(.flag.warn) strong") == RECONSTRUCTED
    assert atlas.texts("a:has(.flag.made) strong") == SYNTHETIC
    lead = "⚠ SS90TOT: ages 21–62 are reconstructed, not published; what the rates measure"
    assert any(text.startswith(lead) for text in atlas.texts(".lead"))
    assert len(atlas.texts("#values tr.doubtful")) == 42
    atlas.one("#rates .plot").send_keys(Keys.ARROW_RIGHT)
    assert "(reconstructed, not published)" in atlas.one("#reading").get_property("textContent")
    # Hatched: no pixel of the ages is without paint, in a strip below the line.
    painted = """
      const canvas = document.querySelector("#rates canvas"), { width, height } = canvas;
      const strip = [width * 0.3, height * 0.75, width * 0.3, height * 0.05];
      const { data } = canvas.getContext("2d").getImageData(...strip);
      return data.every((value, at) => at % 4 !== 3 || value > 0);"""
    assert atlas.js(painted)
    atlas.open("GAM71")
    assert not atlas.texts("#chips .doubt") and not atlas.js(painted)


@pytest.mark.parametrize("size", [(1400, 900), (768, 1024), (390, 844), (360, 740)])
def test_plot_is_what_one_sees_first(atlas, size):
    for view in ("PER2020_Ind_1o", "table=DAV2004R_SelUlt_2o&with=CB_H_2020,GAM71&values=all"):
        atlas.open(view, size)
        assert atlas.js("const e = document.documentElement; return e.scrollWidth <= e.clientWidth")
        left, top, right, bottom = atlas.box("#rates .plot")
        assert top < size[1] * 0.7 and (bottom < size[1] or size[0] < 500)
        assert right - left > size[0] * 0.55
    if size[0] == 390:
        atlas.open("", size)
        atlas.one("#toggle").click()
        atlas.one("#query").send_keys("gam83", Keys.ENTER)
        atlas.until("document.title.startsWith('GAM83 ')")
        assert not atlas.one("#finder").is_displayed() and atlas.one("#rates .plot").is_displayed()


def test_pointer_tells_age_and_each_curve_from_the_highest_down(atlas):
    atlas.open("table=GAM83&with=GRMF95&ages=60-70")
    plot = atlas.one("#rates .u-over")
    tip = "document.querySelector('#rates .tip')"
    assert atlas.js(f"return {tip}.hidden")
    ActionChains(atlas.driver).move_to_element(plot).perform()
    atlas.until(f"!{tip}.hidden")
    held = {}
    for name in ("GAM83", "GRMF95"):
        for column, rates in REPO_TABLES[name]["data"].items():
            held[f"{name} {column}"] = rates[65 - REPO_TABLES[name]["start_age"]]
    expected = sorted(held.items(), key=lambda item: -item[1])
    rows = atlas.js(f"return [...{tip}.querySelectorAll('tr')].map((row) => row.innerText)")
    cells = [row.split() for row in rows]
    assert atlas.js(f"return {tip}.querySelector('b').innerText") == "Age 65"
    assert [(f"{table} {column}", float(value)) for table, column, _, value in cells] == expected
    assert {(column[-1], sex) for _, column, sex, _ in cells} == {("m", "males"), ("f", "females")}
    left, _, right, _ = atlas.box("#rates .tip")
    assert left >= 0 and right <= 1400
    atlas.one("#rates .plot").send_keys(Keys.ARROW_LEFT)  # by keys as well
    atlas.until(f"{tip}.querySelector('b')?.innerText === 'Age 64'")


AXE = """
  const seen = ({ violations }) => violations.map((v) => [v.id, v.nodes.map((node) => node.html)]);
  axe.run().then((result) => arguments[0](seen(result)), (error) => arguments[0](String(error)));
"""
VIEWS = [
    ("", (390, 844), False),
    ("table=IASS90&with=PER2020_Ind_1o,AM92_AF92", (1400, 900), False),
    (
        "table=DAV2004R_SelUlt_2o&with=DummySD_Unisex&year=2026&term=9&deferred=5&paid=monthly"
        "&lives=DAV2004R_SelUlt_2o.m.selected,DAV2004R_SelUlt_2o.f&age2=60",
        (1400, 900),
        True,
    ),
]


@pytest.mark.parametrize("view", VIEWS)
def test_axe_finds_nothing(atlas, view):
    atlas.open(*view)
    axe = Path(os.environ["DATA_TABLES_NPM"]) / "axe-core" / "axe.min.js"
    # Like an extension: the policy of the page does not let it in otherwise.
    atlas.cdp("Runtime.evaluate", {"expression": axe.read_text(encoding="utf-8")})
    atlas.driver.set_script_timeout(60)
    for details in atlas.driver.find_elements(By.CSS_SELECTOR, "details"):
        atlas.js("arguments[0].open = true", details)
    assert atlas.driver.execute_async_script(AXE) == []


def test_printed_and_without_javascript(atlas):
    atlas.open("table=PER2020_Ind_1o&year=2026&ages=60-90", dark=True)
    atlas.cdp("Page.printToPDF", {})
    assert atlas.texts("#rates .paper svg text")[0] == "PER2020_Ind_1o: Rates of death"
    assert atlas.js("return document.querySelectorAll('#values tbody tr').length") == 120
    atlas.cdp("Emulation.setScriptExecutionDisabled", {"value": True})
    try:
        atlas.driver.get("about:blank")
        atlas.driver.get(atlas.file.as_uri())
        assert atlas.one("noscript strong").text.startswith("JavaScript is switched off")
        rows = atlas.driver.find_elements(By.CSS_SELECTOR, "noscript tbody tr")
        assert len(rows) == len(REPO_TABLES)
        assert not atlas.one(".layout").is_displayed()
    finally:
        atlas.cdp("Emulation.setScriptExecutionDisabled", {"value": False})


def test_page_cannot_fetch(atlas):
    atlas.open()
    assert atlas.errors() == []
    stopped = """const done = arguments[0];
        addEventListener("securitypolicyviolation", (event) => done(event.effectiveDirective));
        fetch("https://fetched.invalid/").catch(() => {});"""
    assert atlas.driver.execute_async_script(stopped) == "connect-src"
    assert len(atlas.errors()) > 0
