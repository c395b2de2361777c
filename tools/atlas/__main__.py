"""Write the tables, where they come from and a plot of every column as one HTML page.

atlas.py [--check] [--pictures FOLDER] [FILE]

FILE is build/atlas.html unless it is named. --check compares docs/atlas.html with what would be
written, --pictures also paints those of the documentation. The page needs nothing but itself, and
building it twice gives the same bytes. Values are embedded as the texts that repr() gives, because
the browser writes the same numbers in another way.
"""

import argparse
import base64
import hashlib
import html
import json
import os
import re
import subprocess
import sys
import tempfile
import zlib
from pathlib import Path

from marlune.tables import data_tables
from tools import TOP, digest, export, provenance
from tools.markup import MarkupError, as_html, plain

PARTS = Path(__file__).resolve().parent
COMMITTED = TOP / "docs" / "atlas.html"
# What the documentation shows: view, size, colour scheme, and from which element on.
PICTURES = {
    "atlas.png": (
        "table=PER2020_Ind_1o&with=DAV2004R_Agg_2o&year=2026",
        (1400, 1140),
        "light",
        "body",
    ),
    "atlas-ratio.png": (
        "table=PASEM2020_Gen_2o&with=PASEM2020_Rel_1o,PASEM2020_NoRel_1o&rates=ratio&ages=0-105",
        (1400, 900),
        "light",
        "body",
    ),
    "atlas-phone.png": ("table=CB_H_2020&year=2023", (390, 844), "dark", "body"),
    "atlas-life.png": (
        "table=DAV2004R_SelUlt_1o&year=2026&age=55&deferred=10&paid=monthly"
        "&lives=DAV2004R_SelUlt_1o.m.selected,DAV2004R_SelUlt_1o.f.selected&age2=52",
        (390, 844),
        "light",
        "#lives",
    ),
}
# The table that holds for a life until its annuity starts, from when the other one counts.
BEFORE = {f"DAV2004R_SelUlt_{order}": f"DAV2004R_Agg_{order}" for order in ("1o", "2o")}
INSIDE = ("fflate", "uplot")  # packages from npm that are in the page
BROWSER = (
    "--headless", "--hide-scrollbars", "--no-sandbox", "--disable-gpu", "--disable-quic",
    "--no-first-run", "--disable-background-networking", "--disable-component-update",
    "--disable-sync",
)  # fmt: skip


class ShapeError(Exception):
    """A text or a file is not what is read here."""


# ---- what the page holds ----


def decrement_of(record):
    """What the rates of a table are rates of."""
    return {"life": "death"}.get(record["type"], record["type"])


def orders_of(record):
    """The orders that the columns of a table are stated to have."""
    orders = dict.fromkeys(each["order"] for each in record["columns"].values())
    named = {"first": "first order", "second": "second order"}
    return [named.get(each, each) for each in orders if each not in ("not stated", "-")]


def series_of(name, record):
    """The lists of a table.

    Column, label in it or None, list, whether computed, what is marked, order, grade of what is not
    marked. What holds of a whole column is in the warnings of the table.
    """
    for entry in record["columns"].values():
        marks = [
            {"kind": kind, "from": first, "to": last}
            for kind in ("reconstructed", "doubtful", "completed")
            for first, last in entry[kind]
            if [first, last] != entry["ages"]
        ]
        unmarked = {**entry, **{mark["kind"]: [] for mark in marks}}
        grade = export.grade_of(unmarked, entry["ages"][0])
        column = data_tables.REPO_TABLES[name]["data"][entry["key"]]
        for label in entry["labels"] or [None]:
            rates = column if label is None else column[label]
            shown = None if label is None else str(label)
            yield entry["key"], shown, rates, bool(entry["computed"]), marks, entry["order"], grade


def doubts_of(name, record):
    """Every doubt about a table: its grade and its text, with the ages that it is about."""
    for doubt in record["doubts"]:
        ages = [f"{key} {provenance.age_ranges(of)}" for key, of in doubt["columns"].items() if of]
        text = doubt["text"] + (f" Ages: {'; '.join(ages)}." if ages else "")
        yield {"grade": doubt["grade"], "text": as_html(text, name)}


def facts_of(name, family):
    """The facts about a family, name and text."""
    for heading, text in provenance.items_of(family):
        yield heading, as_html(text, name)


def table_of(name, record, family, lists):
    payload = data_tables.REPO_TABLES[name]
    rows = {key: each for key, each in record["columns"].items() if each["published"]}
    places = dict.fromkeys(each["place"] for each in rows.values() if each["documents"])
    publication = family["publication"] if places else "publication not found"
    source = "; ".join([family["issuer"], publication, *places])
    facts = list(facts_of(name, family))
    return {
        "name": name,
        "purpose": record["use"]["text"],
        "standing": record["standing"],
        "warning": provenance.warnings_of(name),
        "age_basis": record["age_basis"],
        "projection": record["projection"] and plain(record["projection"]),
        "select": record["select"] and plain(record["select"]),
        "before": BEFORE.get(name),
        "decrement": decrement_of(record),
        "family": family["title"],
        "country": family["country"],
        "source": None if record["invented"] else plain(source),
        "orders": orders_of(record),
        "meta": [[key, value] for key, value in payload.items() if key != "data"],
        "series": [
            [key, label, lists.setdefault(" ".join(map(repr, rates)), len(lists)), *more]
            for key, label, rates, *more in series_of(name, record)
        ],
        "doubts": list(doubts_of(name, record)),
        "facts": facts,
        "rows": [
            [as_html(cell, name) for cell in provenance.cells_of(name, *row)]
            for row in rows.items()
        ],
    }


def release_date(version):
    changelog = (TOP / "CHANGELOG.md").read_text(encoding="utf-8")
    dated = re.search(rf"^## {re.escape(version)} \((\d{{4}}-\d\d-\d\d)\)$", changelog, re.M)
    if not dated:
        raise ShapeError(f"CHANGELOG.md has no heading ## {version} (YYYY-MM-DD)")
    return dated[1]


def packed_files():
    """What ./dev export writes, but for the rates, which the page has already."""
    files = {name: each.decode() for name, each in export.contents().items() if name != "rates.csv"}
    text = json.dumps(files, ensure_ascii=False, separators=(",", ":"))
    return base64.b64encode(zlib.compress(text.encode(), 9)).decode()


def contents():
    """All that the page shows, with every distinct list once."""
    register = provenance.register()
    lists = {}
    tables = [
        table_of(name, record, register["families"][record["family"]], lists)
        for name, record in register["tables"].items()
    ]
    invented = register["families"]["synthetic"]["publication"]
    return {
        "version": register["version"],
        "date": release_date(register["version"]),
        "digest": digest.digest_of(data_tables)[0][:16],
        "keys": list(dict.fromkeys(key for table in tables for key, _ in table["meta"])),
        "heads": provenance.HEAD,
        "invented": as_html(f"{invented}.", "synthetic"),
        "tables": tables,
        "lists": list(lists),
        "rates": [each["name"] for each in export.fields_of(export.RATES)],
        "files": packed_files(),
    }


# ---- the page ----


def read(path):
    return path.read_text(encoding="utf-8").strip()


def npm(pattern):
    """A file of the packages from npm."""
    modules = os.environ.get("DATA_TABLES_NPM") or sys.exit("atlas: DATA_TABLES_NPM is not set")
    found = list(Path(modules).glob(pattern))
    return found[0] if len(found) == 1 else sys.exit(f"atlas: npm has {len(found)} of {pattern}")


def script():
    """page.js and what it imports as one text, by the program that esbuild's package brings."""
    command = [
        npm("@esbuild/*/bin/esbuild"), PARTS / "page.js", "--bundle", "--minify", "--format=iife",
        "--charset=utf8", "--log-level=warning",
    ]  # fmt: skip
    environment = os.environ | {"NODE_PATH": str(npm("uplot").parent)}
    done = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
    if done.returncode or done.stderr:
        raise ShapeError(f"esbuild: {done.stderr}")
    return done.stdout.strip()


def plain_list(tables):
    """The tables as rows, for browsers without JavaScript."""
    for table in tables:
        meta = dict(table["meta"])
        unit = "per mille" if meta["decrement_scale_factor"] == 1000 else "decimal"
        warning = provenance.warnings_of(table["name"])
        use = table["purpose"] + (f"; {warning}" if warning else "")
        cells = (
            table["name"], use, table["country"] or "invented",
            f"{meta['start_age']}–{meta['omega']}", str(meta.get("base_year") or ""), unit,
        )  # fmt: skip
        yield "<tr>" + "".join(f"<td>{html.escape(cell)}</td>" for cell in cells) + "</tr>"


def page():
    """The text of the page."""
    style = read(npm("uplot/dist/uPlot.min.css")) + "\n" + read(PARTS / "page.css")
    code = script()
    licences = "\n\n".join(f"{name}:\n\n{read(npm(f'{name}/LICENSE'))}" for name in INSIDE)
    shown = contents()
    data = json.dumps(shown, ensure_ascii=False, separators=(",", ":"))
    assert "--" not in licences and "</script" not in code

    def allow(text):
        return f"'sha256-{base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()}'"

    # Nothing may be fetched, and nothing run but these texts.
    policy = "; ".join(
        [
            "default-src 'none'",
            f"script-src {allow(code)}",
            f"style-src {allow(style)}",
            "img-src data:",
            "base-uri 'none'",
            "form-action 'none'",
        ]
    )
    parts = {
        "style": style,
        "script": code,
        "licences": licences,
        "data": data.replace("<", "\\u003c"),  # a text must not end the element that it is in
        "policy": policy,
        "made": f"data_tables {shown['version']} of {shown['date']}, catalogue {shown['digest']}",
        "list": "\n".join(plain_list(shown["tables"])),
    }
    template = read(PARTS / "page.html")
    return re.sub(r"\{\{(\w+)\}\}", lambda match: parts[match[1]], template) + "\n"


# ---- the pages in a browser ----


def browser(folder):
    """A browser that is to paint and nothing else, with a profile in the folder."""
    from selenium import webdriver  # not needed by who only writes the page

    options = webdriver.ChromeOptions()
    options.binary_location = "/usr/bin/chromium"
    for flag in (*BROWSER, f"--user-data-dir={folder / 'profile'}"):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
    options.add_experimental_option("prefs", {"download.default_directory": str(folder)})
    service = webdriver.ChromeService("/usr/bin/chromedriver")
    return webdriver.Chrome(options=options, service=service)


def open_view(driver, file, view="", size=(1400, 900), scheme="light"):
    """A view of the page by its link, as in a new tab."""
    features = [{"name": "prefers-color-scheme", "value": scheme}]
    driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": features})
    width, height = size
    metrics = {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": width < 500}
    driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)
    driver.get("about:blank")
    driver.get(file.resolve().as_uri() + ("#" + view if view else ""))


def paint(file, folder):
    """The pictures of the documentation."""
    with tempfile.TemporaryDirectory() as profile:
        driver = browser(Path(profile))
        try:
            for name, (view, size, scheme, start) in PICTURES.items():
                open_view(driver, file, view, size, scheme)
                driver.execute_script(f"document.querySelector('{start}').scrollIntoView()")
                driver.save_screenshot(str(folder.resolve() / name))
        finally:
            driver.quit()


def unpacked(text):
    """A page with its files as texts: not every library packs them into the same bytes."""
    return re.sub(
        r'(?<="files":")[^"]+',
        lambda found: zlib.decompress(base64.b64decode(found[0])).decode(),
        text,
    )


def arguments():
    parser = argparse.ArgumentParser(prog="atlas", description=__doc__.partition("\n")[0])
    parser.add_argument("file", nargs="?", type=Path, default=TOP / "build" / "atlas.html")
    parser.add_argument("--check", action="store_true", help="compare docs/atlas.html instead")
    parser.add_argument("--pictures", type=Path, metavar="FOLDER", help="also paint the page")
    options = parser.parse_args()
    for path in filter(None, (options.file, options.pictures)):
        # In the cached root other folders are not those of the machine: the file would be lost.
        seen = {Path.cwd(), TOP, Path("/tmp")} - {Path("/")}
        if "DATA_TABLES_ROOT" in os.environ and not any(map(path.resolve().is_relative_to, seen)):
            sys.exit(f"atlas: {path} is not below this folder, the project or /tmp")
    return options


def main():
    options = arguments()
    try:
        text = page()
    except (ShapeError, MarkupError) as error:
        sys.exit(f"atlas: {error}")
    if options.check:
        if not COMMITTED.exists() or unpacked(COMMITTED.read_text("utf-8")) != unpacked(text):
            sys.exit("docs/atlas.html is not up to date: ./dev atlas docs/atlas.html")
        return
    options.file.parent.mkdir(parents=True, exist_ok=True)
    options.file.write_text(text, encoding="utf-8")
    print(f"atlas: {options.file}, {len(text.encode()) // 1024} KiB")
    if options.pictures:
        paint(options.file, options.pictures)


if __name__ == "__main__":
    main()
