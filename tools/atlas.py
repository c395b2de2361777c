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
# The view that the documentation shows: two countries, per mille and decimal, two orders of years.
PICTURE_VIEW = "table=PER2020_Ind_1o&with=DAV2004R_Agg_2o"
PICTURE_SIZE = "1280,1180"


class ShapeError(Exception):
    """The provenance document is not what is read here."""


def expect(holds, where, what):
    if not holds:
        raise ShapeError(f"docs/provenance.md, {where}: {what}")


# ---- the provenance document ----


def as_html(text, where):
    """Emphasis, code and the text of links; other Markdown is refused."""
    done = ""
    for piece in re.split(r"(`[^`]+`|\*\*.+?\*\*|\*[^*]+\*|\[[^\]]+\]\([^)]+\))", text):
        if piece.startswith("`"):
            done += f"<code>{html.escape(piece[1:-1])}</code>"
        elif piece.startswith("**"):
            done += f"<strong>{as_html(piece[2:-2], where)}</strong>"
        elif piece.startswith("*"):
            done += f"<em>{as_html(piece[1:-1], where)}</em>"
        elif piece.startswith("["):
            done += as_html(piece[1 : piece.index("](")], where)
        else:
            expect(not re.search(r"[`*\[\]<>]", piece), where, f"unknown markup in {piece!r}")
            done += html.escape(piece)
    return done


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
        expect(match[1] in KINDS, where, f"what kind of fact is {match[1]!r}? See KINDS in tools/atlas.py")
        yield match[1], KINDS[match[1]], as_html(match[2], where)


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
    rows = list(rows_of(contents[-1], title))
    warning = quote_of(contents[0], title) if kinds[0] == "quote" else []
    return {"title": title, "country": countries[0], "warning": warning, "facts": facts, "rows": rows}


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
    expect([kind for kind, _ in top] == ["text", "quote", "text"], "the top", "no title and warning")
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

    rows = [row | {"family": number} for number, family in enumerate(families) for row in family.pop("rows")]
    by_column = {(row["table"].strip("`"), row["column"].strip("`")): row for row in rows}
    sources = {}  # the rows of a list; DAV tables share theirs
    for table, column, lists in provenance.published_columns():
        for rates in lists:
            sources.setdefault(id(rates), []).append((table, column))

    lists, tables, warned = {}, [], []
    for name, payload in REPO_TABLES.items():
        synthetic = name.startswith("Dummy")
        own = [row for (table, _), row in by_column.items() if table == name]
        table = {
            "name": name,
            "family": None if synthetic else own[0]["family"],
            "meta": [[key, value] for key, value in payload.items() if key != "data"],
            "series": [],
            "rows": [],
            "reconstructed": None,
        }
        expect(len({row["family"] for row in own}) == (not synthetic), name, "not in one family")
        for key, label, rates in series_of(payload):
            number = lists.setdefault(" ".join(map(repr, rates)), len(lists))
            places = sources.get(id(rates), [])
            place = next((place for place in places if place[0] == name), *places[:1] or [None])
            table["series"].append([key, label, number, not synthetic and place is None])
            if place and by_column[place] not in table["rows"]:
                table["rows"].append(by_column[place])
        for row in table["rows"]:
            if found := re.fullmatch(r"\*\*(\d+)-(\d+) reconstructed\*\*", row["basis"]):
                table["reconstructed"] = [int(found[1]), int(found[2])]
                warned.append(name)
        table["rows"] = [[as_html(row[head], name) for head in provenance.HEAD] for row in table["rows"]]
        tables.append(table)
    named = re.findall("<code>(.+?)</code>", warning[0])
    expect(named == warned, "the warning", f"names {named}, but the rows {warned} are reconstructed")
    keys = dict.fromkeys(key for table in tables for key, _ in table["meta"])
    return {
        "keys": list(keys),
        "head": provenance.HEAD,
        "families": families,
        "warning": warning,
        "invented": invented,
        "tables": tables,
        "lists": list(lists),
    }


def page():
    """The text of the page."""
    modules = os.environ.get("DATA_TABLES_NPM") or sys.exit("atlas: DATA_TABLES_NPM names no folder")
    uplot = Path(modules) / "uplot"
    read = lambda path: path.read_text(encoding="utf-8").strip()  # noqa: E731
    style = read(uplot / "dist/uPlot.min.css") + "\n" + read(PARTS / "page.css")
    scripts = {"uplot": read(uplot / "dist/uPlot.iife.min.js"), "script": read(PARTS / "page.js")}
    licence = read(uplot / "LICENSE")
    data = json.dumps(contents(), ensure_ascii=False, separators=(",", ":")).replace("<", "\\u003c")
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
    parts = scripts | {"style": style, "licence": licence, "data": data, "policy": policy}
    return re.sub(r"\{\{(\w+)\}\}", lambda match: parts[match[1]], read(PARTS / "page.html")) + "\n"


def picture(file, png):
    """Have the browser paint the view for the documentation."""
    with tempfile.TemporaryDirectory() as profile:
        command = ["chromium", "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic"]
        command += ["--no-first-run", "--disable-background-networking", "--disable-component-update"]
        command += ["--disable-sync", "--hide-scrollbars", f"--user-data-dir={profile}"]
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
        seen = [Path.cwd(), TOP, Path(tempfile.gettempdir())]
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
