"""Write the tables, where they come from and a plot of every column as one HTML page.

atlas.py [--screenshot PNG] [FILE]     FILE is build/atlas.html unless it is named

The page needs nothing but itself. Values are embedded as the texts that repr() gives, because the
browser writes the same numbers in another way; it makes numbers of them for drawing only.
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
from pathlib import Path

import provenance  # beside this file
from marlune.tables.data_tables import REPO_TABLES

TOP = Path(__file__).resolve().parent.parent
PARTS = Path(__file__).resolve().parent / "atlas"
# One script, in this order.
SCRIPTS = ("tables", "address", "list", "lines", "plots", "legend", "values", "about", "page")

# The view that the documentation shows: two countries, per mille beside decimal.
PICTURE_VIEW = "table=PER2020_Ind_1o&with=DAV2004R_Agg_2o"
PICTURE_SIZE = "1200,900"
# The browser is to paint and nothing else.
BROWSER = (
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
)  # fmt: skip


class ShapeError(Exception):
    """A text of the register is not what is read here."""


# ---- the register of sources ----


def as_html(text, where):
    """Emphasis, code and the text of links; other Markdown is refused."""
    pieces = re.split(r"(`[^`]+`|\*\*.+?\*\*|\*[^*]+\*|\[[^\]]+\]\([^)]+\))", text)
    for number, piece in enumerate(pieces):
        if number % 2 == 0:  # what is between the marked pieces
            if re.search(r"[`*<>]", piece):
                raise ShapeError(f"{where}: unknown markup in {piece!r}")
            pieces[number] = html.escape(piece)
        elif piece.startswith("`"):
            pieces[number] = f"<code>{html.escape(piece[1:-1])}</code>"
        elif piece.startswith("**"):
            pieces[number] = f"<strong>{as_html(piece[2:-2], where)}</strong>"
        elif piece.startswith("*"):
            pieces[number] = f"<em>{as_html(piece[1:-1], where)}</em>"
        else:
            pieces[number] = as_html(piece[1 : piece.index("](")], where)
    return "".join(pieces)


def family_of(family):
    items = provenance.items_of(family)
    return {
        "title": family["title"],
        "country": family["country"],
        "facts": [[name, "fact", as_html(text, family["title"])] for name, text in items],
    }


def doubts_of(name, table):
    """Grade, kind and text of every doubt about a table, with the ages that it is about."""
    for doubt in table["doubts"]:
        ages = dict.fromkeys(provenance.told(each) for each in doubt["columns"].values() if each)
        text = doubt["text"] + (f" Ages {'; '.join(ages)}." if ages else "")
        kind = "doubt" if doubt["grade"] == "value" else "odd"
        yield [doubt["grade"], kind, as_html(text, name)]


# ---- what the page holds ----


def series_of(payload):
    """The lists of a payload: key of the column, label in it or None, list."""
    for key, column in payload["data"].items():
        if isinstance(column, list):
            yield key, None, column
        else:
            for label, rates in column.items():
                yield key, label, rates


def contents():
    """All that the page shows, with every distinct list once."""
    register = provenance.register()
    families = [each for each in register["families"].values() if each["country"]]
    lists, tables = {}, []
    for name, payload in REPO_TABLES.items():
        said = register["tables"][name]
        rows = {key: each for key, each in said["columns"].items() if each["published"]}
        published = {
            (each["key"], label) for each in rows.values() for label in each["labels"] or [None]
        }
        series = []
        for key, label, rates in series_of(payload):
            number = lists.setdefault(" ".join(map(repr, rates)), len(lists))
            computed = not said["invented"] and (key, label) not in published
            series.append([key, None if label is None else str(label), number, computed])
        (family,) = [n for n, each in enumerate(families) if name in each["tables"]] or [None]
        marks = [each["reconstructed"][0] for each in rows.values() if each["reconstructed"]]
        tables.append(
            {
                "name": name,
                "family": family,
                "meta": [[key, value] for key, value in payload.items() if key != "data"],
                "series": series,
                "reconstructed": marks[0] if marks else None,
                "doubts": list(doubts_of(name, said)),
                "rows": [
                    [as_html(cell, name) for cell in provenance.cells_of(name, *row)]
                    for row in rows.items()
                ],
            }
        )
    return {
        "keys": list(dict.fromkeys(key for table in tables for key, _ in table["meta"])),
        "head": provenance.HEAD,
        "families": [family_of(each) for each in families],
        "invented": as_html(register["families"]["synthetic"]["publication"] + ".", "synthetic"),
        "tables": tables,
        "lists": list(lists),
    }


def page():
    """The text of the page."""
    modules = os.environ.get("DATA_TABLES_NPM") or sys.exit("atlas: DATA_TABLES_NPM is not set")
    uplot = Path(modules) / "uplot"

    def read(path):
        return path.read_text(encoding="utf-8").strip()

    style = read(uplot / "dist/uPlot.min.css") + "\n" + read(PARTS / "page.css")
    scripts = {
        "uplot": read(uplot / "dist/uPlot.iife.min.js"),
        "script": "\n\n".join(read(PARTS / f"{name}.js") for name in SCRIPTS),
    }
    licence = read(uplot / "LICENSE")
    data = json.dumps(contents(), ensure_ascii=False, separators=(",", ":"))
    assert "--" not in licence and not any("</script" in text for text in scripts.values())

    def allow(text):
        return f"'sha256-{base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()}'"

    # Nothing may be fetched, and nothing run but these texts.
    policy = "; ".join(
        [
            "default-src 'none'",
            f"script-src {' '.join(map(allow, scripts.values()))}",
            f"style-src {allow(style)}",
            "img-src data:",
            "base-uri 'none'",
            "form-action 'none'",
        ]
    )
    parts = scripts | {
        "style": style,
        "licence": licence,
        "data": data.replace("<", "\\u003c"),  # a text must not end the element that it is in
        "policy": policy,
    }
    template = read(PARTS / "page.html")
    return re.sub(r"\{\{(\w+)\}\}", lambda match: parts[match[1]], template) + "\n"


def picture(file, png):
    """Have the browser paint the view for the documentation."""
    with tempfile.TemporaryDirectory() as profile:
        command = ["chromium", *BROWSER, "--hide-scrollbars", f"--user-data-dir={profile}"]
        command += [f"--window-size={PICTURE_SIZE}", f"--screenshot={png.resolve()}"]
        command.append(f"{file.resolve().as_uri()}#{PICTURE_VIEW}")
        subprocess.run(command, check=True, stderr=subprocess.DEVNULL)


def main():
    parser = argparse.ArgumentParser(prog="atlas", description=__doc__.partition("\n")[0])
    parser.add_argument("file", nargs="?", type=Path, default=TOP / "build" / "atlas.html")
    parser.add_argument("--screenshot", type=Path, metavar="PNG", help="also paint the page")
    options = parser.parse_args()
    for path in filter(None, (options.file, options.screenshot)):
        # In the cached root other folders are not those of the machine: the file would be lost.
        seen = {Path.cwd(), TOP, Path("/tmp")} - {Path("/")}
        if "DATA_TABLES_ROOT" in os.environ and not any(map(path.resolve().is_relative_to, seen)):
            sys.exit(f"atlas: {path} is not below this folder, the project or /tmp")
    try:
        text = page()
    except ShapeError as error:
        sys.exit(f"atlas: {error}")
    options.file.parent.mkdir(parents=True, exist_ok=True)
    options.file.write_text(text, encoding="utf-8")
    print(f"atlas: {options.file}, {len(text.encode()) // 1024} KiB")
    if options.screenshot:
        picture(options.file, options.screenshot)


if __name__ == "__main__":
    main()
