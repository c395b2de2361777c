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

# What the facts of a family are. A name that is not here is refused: it could be a doubt.
KINDS = {
    "Publisher": "fact",
    "Document": "fact",
    "Tables": "fact",
    "Base year": "fact",
    "Select": "fact",
    "Closing": "fact",
    "Checked": "fact",
    "Published": "fact",
    "Published columns": "fact",
    "First-order rates are products": "fact",
    "Laws in the data": "fact",
    "Odd": "odd",
    "Computed at import, not published": "odd",
    "Completed, not published": "odd",
    "Factors above age 90": "odd",
    "Reconstructed": "doubt",
    "Open": "doubt",
}
# By a word of the line "Publisher".
COUNTRIES = {
    "Spain": "Spain",
    "Germany": "Germany",
    "United States": "United States",
    "Swiss": "Switzerland",
    "Chile": "Chile",
    "United Kingdom": "United Kingdom",
}
# The basis of a column that is not published as a whole.
RECONSTRUCTED = re.compile(r"\*\*(\d+)-(\d+) reconstructed\*\*")
# The view that the documentation shows: two countries, per mille beside decimal.
PICTURE_VIEW = "table=PER2020_Ind_1o&with=DAV2004R_Agg_2o"
PICTURE_SIZE = "1200,900"
# The browser is to paint and nothing else.
BROWSER = (
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync",
)  # fmt: skip


class ShapeError(Exception):
    """The provenance document is not what is read here."""


def expect(holds, where, what):
    if not holds:
        raise ShapeError(f"docs/provenance.md, {where}: {what}")


# ---- the provenance document ----


def as_html(text, where):
    """Emphasis, code and the text of links; other Markdown is refused."""
    pieces = re.split(r"(`[^`]+`|\*\*.+?\*\*|\*[^*]+\*|\[[^\]]+\]\([^)]+\))", text)
    for number, piece in enumerate(pieces):
        if number % 2 == 0:  # what is between the marked pieces
            expect(not re.search(r"[`*\[\]<>]", piece), where, f"unknown markup in {piece!r}")
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


def blocks_of(lines):
    """The blocks between blank lines, each with its kind."""
    marks = {">": "quote", "-": "list", "|": "table"}
    for block in "\n".join(lines).strip("\n").split("\n\n"):
        yield marks.get(block[:1], "text"), block.strip("\n").split("\n")


def quote_of(lines, where):
    """The paragraphs of a quotation."""
    expect(all(line.startswith(">") for line in lines), where, "a quotation that breaks off")
    paragraphs = "\n".join(line[1:].strip() for line in lines).split("\n\n")
    return [as_html(paragraph.replace("\n", " "), where) for paragraph in paragraphs]


def facts_of(lines, where):
    """Name, kind and text of every item of a list."""
    items = []
    for line in lines:
        if line.startswith("- "):
            items.append(line[2:])
        else:
            expect(items and line.startswith("  "), where, f"not an item of the list: {line!r}")
            items[-1] += " " + line.strip()
    for item in items:
        match = re.fullmatch(r"\*\*(.+?)\*\*: (.+)", item)
        expect(match, where, f"an item that does not start with a name: {item!r}")
        name, text = match.groups()
        expect(name in KINDS, where, f"what kind of fact is {name!r}? KINDS does not say")
        yield name, KINDS[name], as_html(text, where)


def rows_of(lines, where):
    """The rows of a table, each a dict by the names of the head."""
    cells = [[cell.strip() for cell in line.strip("|").split("|")] for line in lines]
    expect(tuple(cells[0]) == provenance.HEAD, where, f"the head of the table is {cells[0]}")
    expect(len(cells) > 2 and set("".join(cells[1])) == {"-"}, where, "no rows under the head")
    for row in cells[2:]:
        expect(len(row) == len(cells[0]), where, f"a row of {len(row)} cells: {row}")
        yield dict(zip(provenance.HEAD, row))


def family_of(title, lines):
    kinds, contents = zip(*blocks_of(lines))
    expect(kinds in (("list", "table"), ("quote", "list", "table")), title, f"holds {kinds}")
    facts = list(facts_of(contents[-2], title))
    names = [name for name, _, _ in facts]
    for needed in ("Publisher", "Checked"):
        expect(names.count(needed) == 1, title, f"{needed} is not there once")
    publisher = facts[names.index("Publisher")][2]
    countries = [country for word, country in COUNTRIES.items() if word in publisher]
    expect(len(countries) == 1, title, f"the publisher names {countries or 'no country'}")
    return {
        "title": title,
        "country": countries[0],
        "warning": quote_of(contents[0], title) if kinds[0] == "quote" else [],
        "facts": facts,
        "rows": list(rows_of(contents[-1], title)),
    }


def read_provenance():
    """The families, the warning at the top, and what is said about the tables without a row."""
    lines = provenance.PROVENANCE.read_text(encoding="utf-8").splitlines()
    starts = [number for number, line in enumerate(lines) if line.startswith("## ")]
    ends = starts[1:] + [len(lines)]
    sections = [(lines[a][3:], lines[a + 1 : b]) for a, b in zip(starts, ends)]
    titles = [title for title, _ in sections]
    expect(titles[:1] == ["How to read a row"], "the sections", "the first is not the one on rows")
    expect(titles[-1:] == ["Not published"], "the sections", "the last is not the one on the rest")

    top = list(blocks_of(lines[: starts[0]]))
    kinds = [kind for kind, _ in top]
    expect(kinds == ["text", "quote", "text"], "the top", f"holds {kinds}")
    warning = quote_of(top[1][1], "the top")
    families = [family_of(*section) for section in sections[1:-1]]
    rest = list(blocks_of(sections[-1][1]))
    expect([kind for kind, _ in rest] == ["text"], titles[-1], "is not one paragraph")
    return families, warning, as_html(" ".join(rest[0][1]), titles[-1])


# ---- what the page holds ----


def series_of(payload):
    """The lists of a payload: key of the column, label in it or None, list."""
    for key, column in payload["data"].items():
        if isinstance(column, list):
            yield key, None, column
        else:
            for label, rates in column.items():
                yield key, str(label), rates


def contents():
    """All that the page shows, with every distinct list once."""
    families, warning, invented = read_provenance()
    disagreements = provenance.disagreements()
    expect(not disagreements, "the rows", "; ".join(disagreements))

    by_column = {}  # table and column to the row and the number of its family
    for number, family in enumerate(families):
        for row in family.pop("rows"):
            by_column[row["table"].strip("`"), row["column"].strip("`")] = row, number
    sources = {}  # the rows of a list: DAV tables of an order share the lists of their trends
    for table, column, shared in provenance.published_columns():
        for rates in shared:
            sources.setdefault(id(rates), []).append((table, column))

    lists, tables, warned = {}, [], []
    for name, payload in REPO_TABLES.items():
        synthetic = name.startswith("Dummy")
        series, rows, numbers = [], {}, set()
        for key, label, rates in series_of(payload):
            number = lists.setdefault(" ".join(map(repr, rates)), len(lists))
            places = sorted(sources.get(id(rates), []), key=lambda place: place[0] != name)
            series.append([key, label, number, not synthetic and not places])
            if places:
                rows[places[0]], family = by_column[places[0]]
                numbers.add(family)
        expect(len(numbers) == (not synthetic), name, f"is in {len(numbers)} families")
        marks = (RECONSTRUCTED.fullmatch(row["basis"]) for row in rows.values())
        reconstructed = next(([int(mark[1]), int(mark[2])] for mark in marks if mark), None)
        if reconstructed:
            warned.append(name)
        tables.append({
            "name": name,
            "family": numbers.pop() if numbers else None,
            "meta": [[key, value] for key, value in payload.items() if key != "data"],
            "series": series,
            "reconstructed": reconstructed,
            "rows": [[as_html(cell, name) for cell in row.values()] for row in rows.values()],
        })
    named = re.findall("<code>(.+?)</code>", warning[0])
    expect(named == warned, "the warning", f"names {named}; the rows say so of {warned}")
    return {
        "keys": list(dict.fromkeys(key for table in tables for key, _ in table["meta"])),
        "head": provenance.HEAD,
        "families": families,
        "warning": warning,
        "invented": invented,
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
    policy = "; ".join([
        "default-src 'none'",
        f"script-src {' '.join(map(allow, scripts.values()))}",
        f"style-src {allow(style)}",
        "img-src data:",
        "base-uri 'none'",
        "form-action 'none'",
    ])
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
