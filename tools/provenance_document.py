"""docs/provenance.md: what the register says of every family, and a row for each column."""

from collections.abc import Iterator

from tools import TOP
from tools.markup import markdown, wrapped
from tools.provenance import MEANING, Entry, age_ranges, expect, published_rows, register

DOCUMENT = TOP / "docs" / "provenance.md"
MARK = "<!-- What follows is written by `./dev python -m tools.documents --write`. -->\n"
HEAD = (
    "table", "column", "place", "unit", "order", "basis", "ages", "not published", "closing",
    "decimals", "verified", "digest",
)  # fmt: skip


def items_of(family: Entry) -> Iterator[tuple[str, str]]:
    """What is said about a family, name and text."""
    yield "Issuer", family["issuer"] + (f", {family['country']}." if family["country"] else ".")
    yield "Publication", family["publication"] + "."
    for name in family["documents"]:
        it = register()["documents"][name]
        agreed = family["agreed"].get(name)
        copy = it.get("copy", "not recorded")
        text = f"`{name}`, {it['what']}. Copy: {copy}; read {it['read']}; sha256 `{it['sha256']}`."
        yield "Document", text + (f" Equal: {agreed}." if agreed else "")
    for kind in MEANING:
        for text, names in once(family["tables"], kind):
            yield titled(kind), f"{names}: {text}." if names else f"{text}."
    yield from family["facts"].items()


def titled(kind: str) -> str:
    return kind.replace("_", " ").capitalize()


def once(names: list[str], key: str) -> Iterator[tuple[str, str]]:
    """What the register says of tables under a key, each text once: the text, the tables or ""."""
    found: dict[str, list[str]] = {}
    for name in names:
        text = register()["tables"][name][key]
        if isinstance(text, dict):
            text = text["text"] + (f" ({text['source']})" if text["source"] else "")
        found.setdefault(text, []).append(f"`{name}`")
    for text, tables in found.items():
        if text:
            yield text, ", ".join(tables) if len(found) > 1 else ""


def doubts_of(family: Entry) -> Iterator[tuple[str, str, str]]:
    """The doubts about a family, each once: grade, text, and what it is about."""
    found: dict[tuple[str, str], dict[str, list[str]]] = {}
    for name in family["tables"]:
        table = register()["tables"][name]
        for doubt in table["doubts"]:
            by_ages = found.setdefault((doubt["grade"], doubt["text"]), {})
            columns = doubt["columns"]
            if not any(columns.values()) and columns.keys() == table["columns"].keys():
                by_ages.setdefault("", []).append(f"`{name}`")
                continue
            for column, ages in columns.items():
                by_ages.setdefault(age_ranges(ages or []), []).append(f"`{name} {column}`")
    for (grade, text), by_ages in found.items():
        parts = [", ".join(of) + (f" at {ages}" if ages else "") for ages, of in by_ages.items()]
        yield grade, text, "; ".join(parts)


def cells_of(name: str, column: str, entry: Entry) -> tuple[str, ...]:
    ages = f"{entry['ages'][0]}-{entry['ages'][1]}"
    kinds = ("reconstructed", "doubtful", "completed")
    marks = [f"{age_ranges(entry[kind])} {kind}" for kind in kinds if entry[kind]]
    verified = [
        f"{each['document']} {each['equal']} of {each['cells']}"
        + (" computed" if each["computed"] else "")
        + (f", {sum(each['declared'].values())} declared" if each["declared"] else "")
        for each in entry["verified"]
    ]
    return (
        name, column, entry["place"], entry["unit"], entry["order"], entry["basis"], ages,
        f"**{'; '.join(marks)}**" if marks else "-", entry["closing"], str(entry["decimals"]),
        "; ".join(verified) or "-", f"`{entry['digest']}`",
    )  # fmt: skip


def document_text() -> str:
    """docs/provenance.md: what stands above the mark is kept."""
    above, mark, _ = DOCUMENT.read_text("utf-8").partition(MARK)
    expect(mark, DOCUMENT.name, "the comment is gone below which it is written")
    written = [above + MARK.rstrip()]
    for family in register()["families"].values():
        parts = [wrapped(f"- **{name}**: {text}") for name, text in items_of(family)]
        parts += [
            wrapped(f"- **Doubt ({grade})**: {text} About {about}.")
            for grade, text, about in doubts_of(family)
        ]
        rows = [cells_of(*row) for row in published_rows() if row[0] in family["tables"]]
        written += [f"## {family['title']}", "\n".join(parts)]
        if rows:
            written.append(markdown(HEAD, rows, 2))
    return "\n\n".join(written) + "\n"
