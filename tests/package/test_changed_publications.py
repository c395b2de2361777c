"""Every figure, age and heading of the publications at hand is changed, and has to be missed.

What is changed is an opened document: words of a page's text, cells of a sheet or a line, texts of
XML. The figures of a column go up by one in their last place together, and each is to be named.
Ages, and words of headings, are changed in their last place one by one; then words are exchanged.
"""

# ./dev adds: verify

import os
import re
from decimal import Decimal
from pathlib import Path

import pytest

import tools.verify.__main__ as verify
from tools.verify import formats, printed
from tools.verify.compare import compare

FACTS = verify.record.load()
FOLDERS = filter(None, os.environ.get("DATA_TABLES_SOURCES", "").split(":"))
DOCUMENTS = sorted(p for f in FOLDERS for p in Path(f).rglob("*") if p.suffix in formats.SUFFIXES)
TOLD = (verify.provenance.TOP / "docs/verifying.md").read_text("utf-8")
WORD, CELL = re.compile(r"[^\W_]+"), re.compile(r"\S+")
MARGIN = re.compile(r"\W*|.*(cve:|Verificable|BOLETÍN|Núm\. 338).*")
# Of a PDF: where a heading begins that goes on to the figures, lines that are headings, and rows.
PAGES = {
    "BOE-A-2020-17154.pdf": (r".*Anexo \d\.\d\.? +P\w+_", "-", r" *\d+()((?: +[\d.]+,\d+%?)+) *"),
    "PASEM2010-study.pdf": (
        "-", r".*Anexo – Tablas finales|.* GKM95 +GKF95", r" *\d+()((?: +[01],\d{6})+) *",
    ),
    "PER2020-spreadsheet-guide.pdf": (
        r" *Tabla ([2-9]|1[01]): (?!.*\.\.\.)", "-", r" *\d+ +\d+()((?: +\d+,\d+| +\d\d\b)+) *",
    ),
}  # fmt: skip
TITLES = "TableIdentity TableName TableDescription ContentType ScalingFactor AxisName"
EXCHANGED = (
    "Mujeres Hombres,MUJERES HOMBRES,Mujer Hombre,hombre mujer,Männer Frauen,Male Female,qx λ,"
    "males females,AM92 AF92,GKM GKF,GRM GRF,2012 2022,2019 2012,2020 2014,1999 2004,80 95,"
    "1971 1983,mil cien,1er 2ndo,1. 2.,General Decesos,Rel NoRel,Col Ind,RV CB,ind col,"
    "Starttrend Zieltrend,Selektionstafel Aggregattafel,F_1 F_2,Duration Durations"
)
# What may go unnoticed: ages that a description tells, for the axes are compared; loadings that the
# rates beneath contain; loadings where the improvement exceeds what they lead to by up to 0.0001.
NAMED = (
    r"\.xml heading: .*Age: \[\d+\]",
    r"PERMF\w+\.xlsx heading: (\[?Recargo\]? \[?(volatilidad|nivel|modelo)\]?|\[\]0\.\d+)$",
    r"PERMF\w+\.xlsx: PER2020_Ind_1o loading of mi_[fm] 9[1-6]$",
)


class Place:
    """A value of a list, a dict or an element of XML, or a word of it."""

    def __init__(self, inside, key, span=None):
        self.inside, self.key, self.span = inside, key, span

    def __str__(self):
        text, (start, end) = str(self.get()), self.span or (0, 0)
        return f"{text[:start]}[{text[start:end]}]{text[end:]}"

    def get(self):
        return self.inside.text if self.key == "text" else self.inside[self.key]

    def put(self, value):
        if self.key == "text":
            self.inside.text = value
        else:
            self.inside[self.key] = value

    def words(self):
        text = self.get()
        if not isinstance(text, str):
            return [self]
        return [Place(self.inside, self.key, word.span()) for word in WORD.finditer(text)]

    def change(self, figure=False, step=None):
        """Changes the last place, and returns how to undo it."""
        old = self.get()
        if isinstance(old, str):
            start, end = self.span or (0, len(old))
            self.put(old[:start] + other(old[start:end], figure, step) + old[end:])
        else:
            new = higher(printed.DOUBLE.create_decimal(repr(old)).normalize(), step)
            self.put(type(old)(new) if new == int(new) else float(new))
        return lambda: self.put(old)

    def exchange(self, one, another):
        old = self.get()
        if not isinstance(old, str):
            return None
        swap = {one: another, another: one}
        either = re.compile("|".join(map(re.escape, sorted(swap, key=len, reverse=True))))
        self.put(either.sub(lambda found: swap[found[0]], old))
        return (lambda: self.put(old)) if self.get() != old else None


def higher(number, step=None):
    return number + (step or Decimal((0, (1,), min(0, number.as_tuple().exponent))))


def other(word, figure, step):
    if not figure:
        last = word[-1]
        return word[:-1] + (str((int(last) + 1) % 10) if last.isdigit() else "ae"[last == "a"])
    text = word.rstrip("%")
    if "," not in text:
        return f"{higher(Decimal(text), step):f}"
    number = higher(Decimal(text.replace(".", "").replace(",", ".")), step)
    return f"{number:f}".replace(".", ",") + word[len(text) :]


def judged(form, content, file_name):
    """All that is wrong, or that the document is refused; and the cells that differ."""
    try:
        names = ((each, each.identify(form, content, file_name)) for each in verify.READERS)
        reader, name = next(each for each in names if each[1])
        columns = list(reader.read(name, content))
    except (StopIteration, verify.UnreadableError, *verify.MALFORMED):
        return ["refused"], set()
    compared, problems = compare(FACTS, name, columns)
    cells = {
        (each.printed.table, each.printed.column, each.printed.place, age)
        for each in compared
        for age, _, _ in each.differences
    }
    return [*map(str, cells), *problems, *verify.fewer_cells(name, columns, FACTS.rows)], cells


def places_of(form, content, name, figures_at, ages_at):
    """The figures in the order in which they are read, the ages, the words of the headings."""
    if form == "pdf":
        return places_of_pages(content, *map(re.compile, PAGES[name]))
    if form == "workbook":
        figures, ages = ([cell_of(content, each) for each in at] for at in (figures_at, ages_at))
        return figures, ages, list(words_above(content.values(), figures, ages))
    if form == "csv":
        figures = [Place(row, at) for row in content[1:] for at in range(1, len(row))]
        heads = [Place(content[0], at) for at in range(len(content[0]))]
        ages = [Place(row, 0) for row in content[1:]]
    elif form == "rda":
        (frame,) = content.values()
        figures, ages = ([Place(frame[key], at) for at in range(len(frame[key]))] for key in "qx")
        heads = []
    else:
        rates = [each for each in content.iter("Y") if each.text]
        axes = [each for each in content.iter("Axis") if "t" in each.attrib]
        figures, ages = (
            [Place(e, "text") for e in rates],
            [Place(e.attrib, "t") for e in axes + rates],
        )
        tags = [*TITLES.split(), "MinScaleValue", "MaxScaleValue"]
        heads = [Place(each, "text") for tag in tags for each in content.iter(tag)]
    return figures, ages, [word for head in heads for word in head.words()]


def words_above(sheets, figures, ages):
    for sheet in sheets:
        rows = {id(row) for row in sheet}
        cells = [each.key for each in figures + ages if id(each.inside) in rows]
        filled = {id(each.inside) for each in figures}
        for row in sheet if cells else ():
            if id(row) in filled:
                break
            for cell in range(min(cells), max(cells) + 1):
                yield from Place(row, cell).words() if row[cell] is not None else ()


def places_of_pages(pages, begins, alone, row):
    figures, ages, words = [], [], []
    for page in pages:
        heading = False
        for at, line in enumerate(page):
            heading = heading or bool(begins.match(line))
            if found := row.fullmatch(line):
                heading, start = False, found.start(2)
                ages += [Place(page, at, each.span()) for each in WORD.finditer(line, 0, start)]
                figures += [Place(page, at, each.span()) for each in CELL.finditer(line, start)]
            elif (heading or alone.match(line)) and not MARGIN.fullmatch(line):
                words += Place(page, at).words()
    return figures, ages, words


def cell_of(sheets, where):
    sheet, letters, row = re.fullmatch(r"(.*)!([A-Z]+)(\d+)", where).groups()
    column = 0
    for letter in letters:
        column = column * 26 + ord(letter) - ord("A") + 1
    return Place(sheets[sheet][int(row) - 1], column - 1)


@pytest.mark.skipif(not DOCUMENTS, reason="DATA_TABLES_SOURCES names no folder with publications")
@pytest.mark.parametrize("path", DOCUMENTS, ids=lambda path: path.name)
def test_every_change_is_noticed(path, monkeypatch):
    form, content = formats.open_document(formats.read_file(path))
    document = form, content, path.name
    added, ages_at, unnoticed = [], [], []

    def add(self, age, figure, where, add=printed.Printed.add):
        added.append((self, age, where))
        add(self, age, figure, where)

    def whole_age(value, where):
        ages_at.append(where)
        return printed.whole_age(value, where)

    with monkeypatch.context() as patch:
        patch.setattr(printed.Printed, "add", add)
        patch.setattr(formats, "whole_age", whole_age)
        assert judged(*document) == ([], set())
    figures, ages, words = places_of(*document, [each[2] for each in added], ages_at)
    assert len(figures) == len(added)

    columns = {}
    for place, (column, age, _) in zip(figures, added):
        columns.setdefault(id(column), (column, []))[1].append((place, age))
    for column, cells in columns.values():
        loading = "loading" in column.column
        decimals = 4 if loading and path.suffix == ".xlsx" else column.decimals
        step = decimals and Decimal((0, (1,), -decimals))
        undo = [place.change(True, step) for place, _ in cells]
        with monkeypatch.context() as patch:
            # Rates are compared with the module, not only with the loadings beside them.
            if not loading:
                patch.setattr(verify.spain_dgsfp, "expect_loadings", lambda read: None)
            together = judged(*document)
        for back in undo:
            back()
        # Where one loading has the document refused, each is changed alone.
        for place, age in cells:
            wrong, differing = together
            if loading and wrong == ["refused"]:
                back = place.change(True, step)
                wrong, differing = judged(*document)
                back()
            if not ((loading and wrong == ["refused"]) or missed(column, age, differing, wrong)):
                unnoticed.append(f"{path.name}: {column.table} {column.column} {age}")
    for kind, places in (("age", ages), ("heading", words)):
        for place in places:
            told, back = f"{path.name} {kind}: {place}", place.change()
            unnoticed += [] if judged(*document)[0] else [told]
            back()
    exchanged, heads = 0, {(id(each.inside), each.key): each for each in words}.values()
    for pair in EXCHANGED.split(","):
        done = [back for back in (each.exchange(*pair.split()) for each in heads) if back]
        exchanged += bool(done)
        unnoticed += [f"{path.name}: {pair}"] if done and not judged(*document)[0] else []
        for back in done:
            back()

    assert judged(*document) == ([], set())
    assert not [each for each in unnoticed if not any(re.search(named, each) for named in NAMED)]
    counts = f"{len(figures)} | {len(ages)} | {len(words)} | {exchanged} | {len(unnoticed)} |"
    assert f"| {path.name} | {counts}" in " ".join(TOLD.split())


def missed(column, age, differing, wrong):
    """Whether a changed figure, or what is computed from it, differs, or not as declared."""
    if column.table == "factors":
        return any(each[1] == f"qx_{column.column}.{age}" for each in differing)
    name = column.column.removeprefix("loading of ")
    places = [column.place] if name == column.column else [each[2] for each in differing]
    if any((column.table, name, place, age) in differing for place in places):
        return True
    gone = re.compile(f"{re.escape(f'{column.table} {name}, ')}.*no longer so at age ([0-9, ]*)")
    return any(str(age) in found[1].split(", ") for e in wrong if (found := gone.match(e)))
