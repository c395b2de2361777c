"""`./dev verify` over documents made here: the module's values in the form of each publication."""

# ./dev adds: verify

import gzip
import io
import json
import os
import struct
import zipfile
from decimal import ROUND_HALF_UP, Decimal
from fnmatch import fnmatchcase
from typing import Any

import openpyxl
import pytest
import xlwt

import tools.verify.__main__ as verify
from tools.verify import chile, compare, formats, record, spain_boe
from tools.verify.compare import HELD
from tools.verify.printed import Printed

FACTS = record.load()
AGES = range(121)
SUMS = "annex 1.1 plus the loading of annex 2.1"


def as_printed(document):
    """The figures of a document by column and age: held values, but for declared differences."""
    columns = {}
    for table, column in sorted(FACTS.claims[document]):
        held = HELD[table, column]
        figures = columns[table, column] = dict(held)
        for declared in FACTS.declared:
            name = f"{table} {column}"
            if document not in declared.documents or not fnmatchcase(name, declared.columns):
                continue
            if declared.place == SUMS:
                continue
            if declared.kind == "rounded":
                digits = Decimal((0, (1,), -(declared.decimals or 0)))
                figures |= {a: rate.quantize(digits, ROUND_HALF_UP) for a, rate in held.items()}
            for age, figure in declared.cells.items():
                if declared.kind == "not_printed":
                    del figures[age]
                else:
                    repeated = held[max(held)] if declared.kind == "repeats" else Decimal("0.5")
                    figures[age] = repeated if figure is None else figure
    return columns


# ---- forms: a text or the bytes of a document, from its figures ----


def pdf(pages):
    font = "<</Type/Font/Subtype/Type1/BaseFont/Courier/Encoding"
    font += "<</BaseEncoding/WinAnsiEncoding/Differences[1/lambda/endash]>>>>"
    objects = ["<</Type/Catalog/Pages 2 0 R>>", "", font]
    for page in pages:
        text = "".join(f"({line}) Tj T*\n" for line in page)
        text = text.replace("λ", "\\1").replace("–", "\\2")
        stream = f"BT /F1 5 Tf 6 TL 20 800 Td\n{text}ET"
        objects.append(
            f"<</Type/Page/Parent 2 0 R/MediaBox[0 0 842 842]/Contents {len(objects) + 2} 0 R"
            "/Resources<</Font<</F1 3 0 R>>>>>>"
        )
        objects.append(f"<</Length {len(stream)}>>stream\n{stream}\nendstream")
    kids = " ".join(f"{number} 0 R" for number in range(4, len(objects) + 1, 2))
    objects[1] = f"<</Type/Pages/Kids[{kids}]/Count {len(pages)}>>"
    # Readers do without the table of contents at the end of a file.
    body = "".join(f"{number} 0 obj{each}endobj\n" for number, each in enumerate(objects, 1))
    return f"%PDF-1.4\n{body}trailer<</Root 1 0 R>>\n%%EOF".encode("latin-1")


def named(text):
    """Columns by table and key, from "TABLE KEY KEY, TABLE KEY"."""
    return [(of.split()[0], key) for of in text.split(", ") for key in of.split()[1:]]


def spanish(figure, decimals):
    return "" if figure is None else f"{figure:.{decimals}f}".replace(".", ",")


RATE, LAMBDA = "qx base 2012 en tanto por mil", "λ = factor de mejora"
DEATHS = "qx base 2019 en tanto por mil"
LOADED = f"Recargo técnico qx base|{RATE}|Recargo técnico factor de mejora|{LAMBDA}"
FIRST = "load.qx_f qx_f load.mi_f mi_f load.qx_m qx_m load.mi_m mi_m"
# Names, heads of the columns of a sex, columns. The first two annexes stand side by side.
GAZETTE = (
    ("Anexo 1.1 PER2020_Col_2ndo.orden   Anexo 1.1 PER2020_Ind_2ndo.orden", f"{RATE}|{LAMBDA}",
     "PER2020_Col_2o qx_f mi_f qx_m mi_m, PER2020_Ind_2o qx_f mi_f qx_m mi_m"),
    ("Anexo 1.2 PASEM2020_General_2ndo.orden   Anexo 1.3 PASEM2020_Decesos_2ndo.orden", DEATHS,
     "PASEM2020_Gen_2o qx_f qx_m, PASEM2020_Dec_2o qx_f qx_m"),
    ("Anexo 2.1 PER2020_Col_1er.orden", LOADED, f"PER2020_Col_1o {FIRST}"),
    ("Anexo 2.1 PER2020_Ind_1er.orden", LOADED, f"PER2020_Ind_1o {FIRST}"),
    ("Anexo 2.2. PASEM2020_Rel_1er. Anexo 2.3. PASEM2020_NoRel_1er. Anexo 2.4. PASEM2020_|orden "
     "orden Decesos_1er.orden", DEATHS,
     "PASEM2020_Rel_1o qx_f qx_m, PASEM2020_NoRel_1o qx_f qx_m, PASEM2020_Dec_1o qx_f qx_m"),
)  # fmt: skip


def gazette(printed, reverse=False):
    pages = []
    for names, heads, columns in GAZETTE:
        keys = named(columns)
        sexes = ["Mujeres", "Hombres"] * (len(keys) // 2 // len(heads.split("|")))
        words = [*heads.split("|")] * len(sexes)
        title = [*names.split("|"), " ".join(["Edad", *sexes]), "cve: BOE-A-2020-17154", *words]
        cells = ([str(age), *(gazette_cell(printed, key, age) for key in keys)] for age in AGES)
        rows = ["   ".join(row) for row in cells if all(row)]
        pages += [[*title, *rows[at : at + 45]] for at in range(0, len(rows), 45)]
    return pdf(pages[::-1] if reverse else pages)


def gazette_cell(printed, key, age):
    table, column = key
    if column.startswith("load."):
        column = column[5:]
        first, second = HELD[table, column], HELD[table.replace("1o", "2o"), column]
        if column.startswith("qx"):
            loaded = age in first and age in second
            return spanish(100 - first[age] * 100 / second[age] if loaded else Decimal(0), 2) + "%"
        sums = first | {
            age: figure
            for declared in FACTS.declared
            if declared.place == SUMS and declared.columns == f"{table} {column}"
            for age, figure in declared.cells.items()
        }
        return spanish((sums.get(age) or Decimal(0)) - second.get(age, Decimal(0)), 4)
    decimals = 3 if table.startswith("PER") and column.startswith("qx") else 4
    return spanish(printed[table, column].get(age), decimals)


def study(printed, reverse=False):
    keys = named("PASEM2010 qx_m qx_f, GKMF95 qx_m qx_f")
    rows = [
        "   ".join([str(age), *(spanish(printed[key].get(age), 6) for key in keys)])
        for age in AGES
        if age in printed[keys[0]]
    ]
    title = "16Anexo – Tablas finales PASEM 2010 Hombres y PASEM 2010 Mujeres."
    pages = [[title, "Edad Hombre qx Mujer qx GKM95 GKF95", *rows[:45]], rows[45:90], rows[90:]]
    return pdf(pages[::-1] if reverse else pages)


def sheet(heads, printed, columns, reverse=False):
    """Rows of age and figures under heads. A column that no table of the module has is left out."""
    keys = named(columns)
    ages = sorted({age for key in keys for age in printed.get(key, ())}, reverse=reverse)
    rows = ([age, *(printed.get(key, {}).get(age) for key in keys)] for age in ages)
    return heads + [
        [float(cell) if isinstance(cell, Decimal) else cell for cell in row]
        for row in rows
        if set(row[1:]) != {None}
    ]


def xlsx(sheets):
    book = openpyxl.Workbook()
    book.remove(book.active)
    for name, rows in sheets.items():
        target = book.create_sheet(name)
        for row in rows:
            target.append(row)
    book.save(packed := io.BytesIO())
    return packed.getvalue()


def dav(printed, reverse=False):
    bases = ", ".join(
        f"DAV2004R_SelUlt_{order} qx_m.ult qx_f.ult, DAV2004R_Agg_{order} qx_m qx_f"
        for order in ("2o", "before 2005", "1o")
    ).replace("_before 2005", " ")
    trends = "DAV2004R_Agg_2o MI_m.2004 MI_f.2004 MI_m.2024 MI_f.2024, - 1 2 3 4, "
    shapes = [*["Selektionstafel"] * 2, *["Aggregattafel"] * 2] * 3
    orders = [*["2. Ordnung"] * 4, *["Bestand"] * 4, *["1. Ordnung"] * 4]
    base_heads = [[None, *shapes], [None, *["qx(1999)"] * 12], [None, *orders]]
    merged = [" 2. Ordnung", None] * 2 + ["Bestand", None] * 2 + ["1. Ordnung", None]
    trend_heads = [
        [None, *["F_1(x)", "F_1(y)", "F_2(x)", "F_2(y)"] * 2, "F(x)", "F(y)"],
        [None, *["Starttrend", None, "Zieltrend", None] * 2, "Trend", None],
        [None, *merged],
    ]
    sexes = ["Alter", *["Männer", "Frauen"] * 6]
    factors = [[n, 0.670538, 0.712823] if n == 1 else [n, 0.876209, 0.79823] for n in range(1, 6)]
    factor_heads = [["Faktoren für Selektionstafel"], [None, "Männer", "Frauen"]]
    trends += "DAV2004R_Agg_1o MI_m MI_f"
    return xlsx(
        {
            "Trends": sheet([*trend_heads, sexes[:11]], printed, trends, reverse),
            "Basistafeln": sheet([*base_heads, sexes], printed, bases, reverse),
            "Selektionsfaktoren": factor_heads + factors,
        }
    )


def supervisor(printed, reverse=False):
    sheets = {}
    for name, left, title, table, sex in (
        ("Vejez-Mujeres", 12, "TABLA RV-2020-MUJERES", "RV_M_2020", "f"),
        ("Invalidez-Mujeres", 8, "TABLA MI-2020-MUJERES", "MI_M_2020", "f"),
        ("Sobrevivencia-Mujeres", 8, "TABLA B-2020-MUJERES", "B_M_2020", "f"),
        ("Vejez-Hombres", 12, "TABLA CB-2020-HOMBRES", "CB_H_2020", "m"),
        ("Invalidez-Hombres", 8, "TABLA MI-2020 - HOMBRES", "MI_H_2020", "m"),
        ("Sobrevivencia-Hombres", 8, "TABLA CB-2020-HOMBRES", "CB_H_2020", "m"),
    ):
        keys = " ".join(f"mi_{sex}.{year}" for year in range(2021, 2037))
        factors = ["Edad", "qx 2020", "Factores de mejoramiento AAx,t"]
        heads = [[title], factors, [None, None, *range(2021, 2036), "2036*"]]
        rows = sheet(heads, printed, f"{table} qx_{sex} {keys}", reverse)
        old = ["TABLA CB-2014-HOMBRES", *[None] * (left - 1)]
        sheets[name] = [(old if row is rows[0] else [None] * left) + row for row in rows]
    return xlsx(sheets)


def cmi(printed, reverse=False):
    book = xlwt.Workbook()
    for name, key, sex in (("AM92", "qx_m", "males"), ("AF92", "qx_f", "females")):
        title = (
            f"Permanent Assurances, {sex}, combined - {name} two years select: values of q[x-t]+t"
        )
        heads = [[title], [], ["Age x", "Duration 0", "Duration 1", "Durations 2+"]]
        rows = sheet(heads, printed, f"AM92_AF92 {key}.0 {key}.1 {key}.ult", reverse)
        target = book.add_sheet(name)
        for at, row in enumerate(rows):
            for cell, value in enumerate(row):
                if value is not None:
                    target.write(at, cell, value)
    book.save(packed := io.BytesIO())
    return packed.getvalue()


def peai(printed, reverse=False):
    heads = [["Ed", "ad ix (Hom", "bres) iy (Mujeres)"]]
    return xlsx({"Sheet1": sheet(heads, printed, "PEAI2007_IAP_Col ix_m ix_f", reverse)})


def xtbml(number, name, about, *columns):
    """Of select rates the first two columns; the last is one by age alone."""

    def form(printed, reverse=False):
        tables = []
        *select, last = (printed[column] for column in named(columns[0]))
        if select:
            cells = '<Axis t="{0}"><Axis><Y t="1">{1}</Y><Y t="2">{2}</Y></Axis></Axis>'
            ages = sorted(select[1], reverse=reverse)
            rows = (cells.format(age, *(rates.get(age, "") for rates in select)) for age in ages)
            tables.append((ages, "1 2", "".join(rows)))
        rows = (f'<Y t="{age}">{rate}</Y>' for age, rate in sorted(last.items(), reverse=reverse))
        tables.append((last, "3 3" if select else "", f"<Axis>{''.join(rows)}</Axis>"))
        told = f"<TableDescription>{about}</TableDescription>"
        inside = ""
        for ages, durations, values in tables:
            axes = [["Age", min(ages), max(ages)]]
            axes += [["Duration", *durations.split()]] if durations else []
            head = f"<ScalingFactor>0</ScalingFactor>{told}"
            for axis in axes:
                names = zip(("AxisName", "MinScaleValue", "MaxScaleValue"), axis)
                cells = "".join(f"<{name}>{value}</{name}>" for name, value in names)
                head += f"<AxisDef>{cells}</AxisDef>"
            inside += f"<Table><MetaData>{head}</MetaData><Values>{values}</Values></Table>"
        head = f"<TableIdentity>{number}</TableIdentity><TableName>{name}</TableName>{told}"
        head += "<ContentType>Annuitant Mortality</ContentType>"
        head = f"<ContentClassification>{head}</ContentClassification>"
        return f"<XTbML>{head}{inside}</XTbML>".encode()

    return form


def text(head, columns, scale=1):
    def form(printed, reverse=False):
        keys = named(columns)
        ages = sorted(printed[keys[0]], reverse=reverse)
        rows = [[age, *(printed[key][age] * scale for key in keys)] for age in ages]
        return "\n".join(",".join(map(str, row)) for row in [head.split(","), *rows]).encode()

    return form


def r_data(printed, reverse=False):
    """A data frame as R saves it: numbers big-endian, each object after its kind."""

    def symbol(name):
        return struct.pack(">iii", 1, 0x40009, len(name)) + name.encode()

    def texts(*names):
        return struct.pack(">ii", 16, len(names)) + b"".join(symbol(name)[4:] for name in names)

    rows = sorted(printed["GAM71", "qx_f"].items(), reverse=reverse)
    numbers = b"".join(
        struct.pack(f">ii{len(rows)}d", 14, len(rows), *map(float, column)) for column in zip(*rows)
    )
    end, entry = struct.pack(">i", 254), struct.pack(">i", 0x402)
    names = entry + symbol("names") + texts("x", "q")
    number = entry + symbol("row.names") + struct.pack(">iiii", 13, 2, -(1 << 31), -len(rows))
    kind = entry + symbol("class") + texts("data.frame")
    frame = struct.pack(">ii", 0x313, 2) + numbers + names + number + kind + end
    head = b"RDX2\nX\n" + struct.pack(">iii", 2, 0x30000, 0x20300)
    return gzip.compress(head + entry + symbol("GAM71F") + frame + end)


GAM83 = "1983 Group Annuity Mortality (GAM) Table – Female. Formerly Table 18-B"
SERIES = "92 Series Mortality Tables for Assured Lives, Annuitants and Pensioners"
AF92 = f"{SERIES}-Permanent Assurances, females, combined"
JUVENILE = "Ultimate Rates with Extension to Juvenile Ages"
SWISS = "edad,GKF_95,GKM_95,GRF_95,GRM_95,GKF_80,GKM_80,GRF_80,GRM_80"
SWISS_COLUMNS = "GKMF95 qx_f qx_m, GRMF95 qx_f qx_m, GKMF80 qx_f qx_m, GRMF80 qx_f qx_m"
PEAI = "Edad,ix ind Hombre,iy ind Mujer,ix col Hombre,iy col Mujer"
FORMS = {  # a cell that no other is computed from
    "BOE-A-2020-17154.pdf": (gazette, "PASEM2020_Dec_2o", "qx_m", 60),
    "PASEM2010-study.pdf": (study, "PASEM2010", "qx_f", 44),
    "PEAIMF-2007G(colect).xlsx": (peai, "PEAI2007_IAP_Col", "ix_f", 40),
    "Germany_Annuities_DAV_2004R.xlsx": (dav, "DAV2004R_Agg_2o", "MI_f.2024", 60),
    "t825.xml": (
        xtbml("825", "1983 GAM Table - Female", GAM83, "GAM83 qx_f"), "GAM83", "qx_f", 108,
    ),
    "t2361.xml": (
        xtbml("2361", SERIES, AF92, "AM92_AF92 qx_f.0 qx_f.1 qx_f.ult"), "AM92_AF92", "qx_f.1", 91,
    ),
    "t2513.xml": (
        xtbml("2513", f"AM92 {JUVENILE}", f"Assured Lives - Male 1991-94 {JUVENILE}",
              "AM92_AF92 qx_m.ult"), "AM92_AF92", "qx_m.ult", 16,
    ),
    "92series.xls": (cmi, "AM92_AF92", "qx_m.0", 60),
    "articles-20210_tablas_mort_hist.xlsx": (supervisor, "MI_M_2020", "mi_f.2030", 60),
    "PASEM2010.csv": (
        text("Edad,Hombre qx,Mujer qx", "PASEM2010 qx_m qx_f"), "PASEM2010", "qx_m", 100,
    ),
    "PEAIMF2007.csv": (
        text(PEAI, "PEAI2007_IAP_Ind ix_m ix_f, PEAI2007_IAP_Col ix_m ix_f"),
        "PEAI2007_IAP_Ind", "ix_f", 18,
    ),
    "GXMF_80_95.csv": (text(SWISS, SWISS_COLUMNS, 1000), "GRMF80", "qx_m", 102),
    "gam_71_male.csv": (text("age,qx", "GAM71 qx_m"), "GAM71", "qx_m", 4),
    "GAM71F.rda": (r_data, "GAM71", "qx_f", 100),
}  # fmt: skip


BOUNDED_READ = verify.bounded_read


@pytest.fixture(autouse=True)
def in_this_process(monkeypatch):
    """The worker of the tests has threads, which a fork does not go well with."""
    monkeypatch.setattr(verify, "bounded_read", verify.read)


@pytest.mark.filterwarnings("ignore:This process")
@pytest.mark.parametrize(
    ("work", "told"),
    [
        ("while True: pass", "takes more than 1 s"),
        ("bytes(4 << 30)", "takes more than 2048 MiB"),
        ("import os; os._exit(3)", "ends its reader"),
    ],
)
def test_no_document_takes_more_than_its_share(work, told, monkeypatch):
    monkeypatch.setattr(verify, "SECONDS", 1)
    monkeypatch.setattr(verify, "read", lambda path: exec(work))
    with pytest.raises(verify.UnreadableError, match=told):
        BOUNDED_READ("any")


def test_what_a_folder_holds_is_read_or_named(tmp_path, capsys, monkeypatch):
    monkeypatch.chdir(tmp_path)
    assert verify.main([""]) == 2 and "no name is given" in capsys.readouterr().out
    assert verify.main(["."]) == 2 and "no document is in it" in capsys.readouterr().out
    content = FORMS["gam_71_male.csv"][0](as_printed("gam_71_male.csv"))
    for name in ("gam_71_male.csv", "gam_71_female.csv"):  # the same digits under both names
        (tmp_path / name).write_bytes(content)
    assert verify.main(["."]) == 1
    (tmp_path / "gam_71_female.csv").unlink()
    assert verify.main(["."]) == 0
    (tmp_path / "\x1b\udcff.xml").symlink_to("nowhere")
    (tmp_path / "folder").symlink_to("/")
    os.mkfifo(tmp_path / "pipe")
    capsys.readouterr()
    assert verify.main(["."]) == 2
    told = capsys.readouterr().out
    assert all(
        each in told for each in ("\\x1b\\udcff.xml: no such file", "folder: a link", "pipe: ")
    )


@pytest.mark.parametrize("damaged", ["{", "\ud800", "[]"])
def test_a_damaged_record_is_told_in_a_sentence(damaged, tmp_path, capsys, monkeypatch):
    (tmp_path / "verified.json").write_bytes(damaged.encode("utf-8", "surrogatepass"))
    monkeypatch.setattr(verify.provenance, "VERIFIED", tmp_path / "verified.json")
    verify.provenance.register.cache_clear()
    try:
        assert verify.main([str(tmp_path)]) == 2
        assert "provenance/ is damaged: " in capsys.readouterr().err
    finally:
        verify.provenance.register.cache_clear()


def run(path, content, capsys):
    path.write_bytes(content)
    status = verify.main(["--json", str(path)])
    answer = json.loads(capsys.readouterr().out)
    return status, answer["documents"][0]


def differences(found):
    return {
        (column["table"], column["column"], each["age"], each["printed"], each["held"])
        for column in found["columns"] for each in column["differences"]
    }  # fmt: skip


@pytest.mark.parametrize("document", FORMS)
def test_each_form_is_read_and_each_fault_found(document, tmp_path, capsys):
    form, table, column, age = FORMS[document]
    path = tmp_path / document
    for reverse in (False, True):  # pages or rows in another order say the same
        status, found = run(path, form(as_printed(document), reverse), capsys)
        assert "unreadable" not in found, found
        assert (status, found["problems"], differences(found)) == (0, [], set())
        assert found["document"] == document and not found["on_record"]
        read = {(each["table"], each["column"]) for each in found["columns"]}
        assert read == FACTS.claims[document]

    changed, held = as_printed(document), HELD[table, column].get(age)
    printed = changed[table, column][age]
    digit = Decimal((0, (1,), printed.as_tuple().exponent))
    changed[table, column][age] += digit
    status, found = run(path, form(changed), capsys)
    assert status == 1
    told = held and f"{held:f}"
    assert differences(found) == {(table, column, age, f"{printed + digit:f}", told)}

    missing = as_printed(document)
    for figures in missing.values():
        figures.pop(age, None)
    status, found = run(path, form(missing), capsys)
    assert status == (2 if held is None else 1) and found["problems"]
    assert held is None or (table, column, age, None, told) in differences(found)
    assert {(age, None)} >= {each[2:4] for each in differences(found)}


# Cells of the ages and of the title, title, columns.
ANNEXES_OF_2019 = (
    (1, 2, "1.1. PER2012_Col_2ndo", "PER2020_Col_2o qx_f mi_f qx_m mi_m"),
    (1, 7, "1.1. PER2012_Ind_2ndo", "PER2020_Ind_2o qx_f mi_f qx_m mi_m"),
    (12, 13, "2.1. PER2012_Col_1er", f"PER2020_Col_1o {FIRST}"),
    (22, 23, "2.1. PER2012_Ind_1er", f"PER2020_Ind_1o {FIRST}"),
    (32, 33, "1.2. PASEM2019_General_2ndo", "PASEM2020_Gen_2o qx_f qx_m"),
    (32, 36, "1.3. PASEM2019_Decesos_2ndo", "PASEM2020_Dec_2o qx_f qx_m"),
    (39, 40, "2.2. PASEM2019_Rel_1er", "PASEM2020_Rel_1o qx_f qx_m"),
    (39, 43, "2.3. PASEM2019_NoRel_1er", "PASEM2020_NoRel_1o qx_f qx_m"),
    (39, 46, "2.4. PASEM2019_Decesos_1er.2", "PASEM2020_Dec_1o qx_f qx_m"),
)


def value_of_2019(printed, key, age):
    """A rate with more decimals, or the loading that leads from the second order to the first."""
    table, column = key
    name = column.removeprefix("load.")
    first, second = (
        printed.get((each, name), {}).get(age, 0) + Decimal("1e-9")
        for each in (table, table.replace("1o", "2o"))
    )
    if name == column:
        return first
    return 1 - first / second if name.startswith("qx") else first - second


def workbook_of_2019(change=lambda rows: None):
    """The supervisor's workbook with the rates that the module holds; where annex 2.1 has others,
    with those."""
    rows: list[list[object]] = [[None] * 48 for _ in range(130)]
    printed = as_printed("PERMF_PASEM_2020.xlsx")
    for ages, cell, title, columns in ANNEXES_OF_2019:
        keys = named(columns)
        heads = {8: LOADED.split("|"), 4: [RATE, LAMBDA], 2: [DEATHS]}[len(keys)]
        rows[5][cell] = f"Anexo {title}{'' if title[-1] == '2' else '.'}orden"
        rows[6][cell], rows[6][cell + len(heads)] = "Mujeres", "Hombres"
        for at, (head, key) in enumerate(zip([*heads, *heads], keys), cell):
            rows[8][at] = head
            for age in AGES:
                rows[9 + age][ages] = age
                rows[9 + age][at] = float(value_of_2019(printed, key, age))
    change(rows)
    return xlsx({"Nuevas tablas": rows})


def test_the_workbook_with_all_decimals_is_compared_rounded(tmp_path, capsys):
    path = tmp_path / "edition.xlsx"
    status, found = run(path, workbook_of_2019(), capsys)
    assert (status, found["problems"], differences(found)) == (0, [], set())
    assert len(found["columns"]) == 26

    def next_place(rows):
        rows[9 + 65][33] += 0.0001  # female rate of PASEM2020_Gen_2o

    status, found = run(path, workbook_of_2019(next_place), capsys)
    assert status == 1
    assert {each[:3] for each in differences(found)} == {("PASEM2020_Gen_2o", "qx_f", 65)}

    for cell, told in ((13, "Col_1o loading of qx_f"), (25, "Ind_1o loading of mi_f")):

        def other_loading(rows, cell=cell):
            rows[9 + 65][cell] += 0.0001

        status, found = run(path, workbook_of_2019(other_loading), capsys)
        assert status == 2 and f"PER2020_{told}, age 65: " in found["unreadable"]

    for row, one, other in ((6, 13, 17), (5, 40, 43), (8, 13, 14), (6, 33, 34), (5, 2, 7)):

        def exchange(rows, row=row, one=one, other=other):
            rows[row][one], rows[row][other] = rows[row][other], rows[row][one]

        status, found = run(path, workbook_of_2019(exchange), capsys)
        assert status == 2 and "the heads from there are" in found["unreadable"]


def test_the_pages_of_the_sources_are_those_of_the_document(tmp_path, capsys):
    document = tmp_path / "t825.xml"
    document.write_bytes(FORMS[document.name][0](as_printed(document.name)))
    assert not verify.main(["--write", "GAM83", str(document)])
    page = capsys.readouterr().out.partition("\n")[2]
    assert page in (verify.provenance.TOP / "tables/published/gam_swiss.hpp").read_text("utf-8")
    assert verify.main(["--write", "GAM71", str(document)]) == 2
    assert "no figures of GAM71 in there" in capsys.readouterr().err


def test_a_column_counts_as_verified_until_it_changes(monkeypatch):
    register, verified = verify.provenance.register(), verify.provenance.last_verified()
    columns = {
        f"{table} {column}": entry["verified"]
        for table, of in register["tables"].items()
        for column, entry in of["columns"].items()
        if entry["published"] and not entry["same_as"]
    }
    without = set(FACTS.without)
    assert without == {name for name, entries in columns.items() if not entries}
    assert list(verify.provenance.changed_since()) == []
    first, last = verified["PASEM2010 qx_m"]  # of another document than the first, which agrees
    last["digest"] = first["digest"][::-1]
    allowed = verify.provenance.declared_digest()
    monkeypatch.setattr(verify.provenance, "recorded_by_verify", lambda: (allowed, verified))
    assert list(verify.provenance.changed_since()) == ["PASEM2010 qx_m"]
    monkeypatch.setattr(verify.provenance, "declared_digest", lambda: "of another file")
    assert list(verify.provenance.changed_since()) == ["declared.toml", "PASEM2010 qx_m"]


D = Decimal
AS_DECLARED = {0: D("0.2"), 1: D("0.3"), 3: D(1), 4: D(1)}  # held: 0.1, 0.25, 1 to omega 2


@pytest.mark.parametrize(
    ("changes", "differing", "told"),
    [
        ({}, [], ["T c, p: declared, but no longer so at age 2: skipped"]),
        ({2: None}, [], []),
        ({2: D("0.9")}, [2], ["no longer so at age 2"]),  # printed, and another
        ({2: None, 0: D("0.3")}, [0], ["no longer so at age 0: other"]),  # any figure
        ({2: None, 0: D("0.1")}, [], ["no longer so at age 0: other"]),  # the held one
        ({2: None, 0: None}, [0], ["no longer so at age 0: other"]),
        ({2: None, 1: D("0.2")}, [1], ["no longer so: rounded"]),  # rounded otherwise
        ({2: None, 1: D(0)}, [1], ["no longer so: rounded"]),  # to fewer decimals
        ({2: None, 3: D("0.9")}, [3], ["no longer so at age 3: again"]),  # any repeat
        ({2: None, 4: None}, [], ["no longer so at age 4: again"]),  # half of it is gone
        ({2: None, 5: D(1)}, [5], []),  # one more
    ],
)
def test_each_kind_of_declaration_allows_what_it_says_and_no_more(
    changes, differing, told, monkeypatch
):
    monkeypatch.setattr(compare, "HELD", {("T", "c"): {0: D("0.1"), 1: D("0.25"), 2: D(1)}})
    common = {"documents": ["d"], "columns": "T *"}
    entries: list[dict[str, Any]] = [
        {**common, "reason": "other", "figures": {"T c": "0: 0.2"}},
        {**common, "reason": "rounded", "rounded": 1},
        {**common, "reason": "skipped", "not_printed": "2"},
        {**common, "reason": "again", "repeats": "3-4"},
    ]
    declared = [each for entry in entries for each in record.declarations(entry)]
    facts = record.Record({}, {}, {"d": {("T", "c")}}, [], declared)
    figures = AS_DECLARED | {2: D(1)} | changes
    figures = {age: figure for age, figure in figures.items() if figure is not None}
    (found,), problems = compare.compare(facts, "d", [Printed("T", "c", "p", figures=figures)])
    assert [cell[0] for cell in found.differences] == differing
    assert all(map(str.__contains__, problems, told, strict=True))
    strange = [Printed("T", name, "p", figures={0: D(1)}) for name in ("x", "c")]
    assert "T x: the module has no such column" in compare.compare(facts, "d", strange)[1]
    facts.declared = [*record.declarations({**common, "reason": "before omega", "repeats": "1"})]
    early = Printed("T", "c", "p", figures={0: D("0.1"), 1: D(1), 2: D(1)})
    assert [cell[0] for cell in compare.compare(facts, "d", [early])[0][0].differences] == [1]
    facts.claims["d"] = {("T", "y")}
    problems = compare.compare(facts, "d", [Printed("T", "c", "p", figures=figures)])[1]
    assert "T y: the document should hold it and does not" in problems
    assert "T c: not on record as read from this document" in problems


def test_only_a_run_without_differences_is_recorded(tmp_path, capsys, monkeypatch):
    path, kept = tmp_path / "t825.xml", tmp_path / "verified.json"
    monkeypatch.setattr(verify.provenance, "VERIFIED", kept)
    form, printed = FORMS["t825.xml"][0], as_printed("t825.xml")
    whole = form(printed)
    printed["GAM83", "qx_f"][60] += D("0.000001")

    def told(content, *options, digest=None):
        path.write_bytes(content)
        digests = {"t825.xml": digest or verify.hashlib.sha256(content).hexdigest()}
        facts = record.Record(digests, FACTS.rows, FACTS.claims, [], FACTS.declared)
        monkeypatch.setattr(record, "load", lambda: facts)
        return verify.main([*options, str(path)])

    assert told(form(printed), "--record") == 1 and not kept.exists()
    assert told(whole, "--record", digest="another") == 2 and not kept.exists()
    assert told(whole, "--record") == 0
    recorded = kept.read_text("utf-8")
    assert json.loads(recorded)["GAM83 qx_f"][0]["equal"] == 106
    assert told(whole, "--all") == 0 and told(whole, "--all", digest="another") == 2
    assert told(form(printed), "--record") == 1 and kept.read_text("utf-8") == recorded
    kept.write_text(recorded.replace('"equal": 106', '"equal": 105'), "utf-8")
    assert told(whole, "--all") == 2
    assert "provenance tells another result" in capsys.readouterr().out


def test_a_computed_rate_that_differs_counts(capsys, monkeypatch):
    figures = HELD["GAM83", "qx_f"] | {60: D("0.5")}
    columns = [Printed("GAM83", "qx_f", "p", computed=True, figures=figures)]
    monkeypatch.setattr(verify, "bounded_read", lambda path: ("digest", "t825.xml", columns))
    assert verify.main(["any"]) == 1 and "age 60: printed 0.5" in capsys.readouterr().out


def rebooked(content, change):
    """A workbook with a change."""
    change(book := openpyxl.load_workbook(io.BytesIO(content)))
    book.save(packed := io.BytesIO())
    return packed.getvalue()


def test_a_table_that_is_printed_twice_is_compared_twice(tmp_path, capsys):
    printed = supervisor(as_printed(chile.NAME))

    def unnamed(book):
        book["Vejez-Mujeres"]["M1"] = None

    def renamed(book):
        book["Sobrevivencia-Hombres"].title = "Sobrevivencia"

    status, found = run(tmp_path / "edition.xlsx", rebooked(printed, unnamed), capsys)
    assert status == 2 and "Vejez-Mujeres!M1: the heads from there are ['']" in found["unreadable"]
    status, found = run(tmp_path / "edition.xlsx", rebooked(printed, renamed), capsys)
    assert status == 2
    assert "CB_H_2020 qx_m: 111 figures, where 222 are on record" in found["problems"]


def test_a_table_that_is_not_there_is_told(tmp_path, capsys):
    printed = supervisor(as_printed(chile.NAME))
    fewer = rebooked(printed, lambda book: book.remove(book["Invalidez-Hombres"]))
    (tmp_path / "edition.xlsx").write_bytes(fewer)
    assert verify.main([str(tmp_path)]) == 2
    told = capsys.readouterr().out
    assert "WRONG MI_H_2020 qx_m: the document should hold it and does not" in told
    assert "NOT the articles-20210_tablas_mort_hist.xlsx on record" in told
    assert "columns without a document: IASS90 ix_m, SS90TOT ix_m, SS90ABS ix_m" in told
    assert verify.main(["--all", "--cells", str(tmp_path)]) == 2
    told = capsys.readouterr().out
    assert "on record, but not here: t825.xml" in told
    assert (
        "declared MI_M_2020 mi_f.2021 age 92: printed 0.011071, held 0.011072: scaled from the "
        "unrounded factor of age 90"
    ) in told
    assert verify.main(["--every", str(tmp_path)]) == 2


def peai_changed(cell, value):
    """A workbook of PEAIM/F with another value at age 40."""
    printed = peai(as_printed("PEAIMF-2007G(colect).xlsx"))
    return rebooked(printed, lambda book: setattr(book.active.cell(24, cell + 1), "value", value))


@pytest.mark.parametrize("value", [True, "0.000427", xlwt.Formula("1/0"), "2013-01-01"])
def test_cells_of_a_workbook_have_to_be_numbers(value, tmp_path, capsys, monkeypatch):
    write = xlwt.Worksheet.write

    def other(sheet, row, cell, written, *style):
        if (row, cell) == (12, 1):
            if value == "2013-01-01":
                written, style = 41275, (xlwt.easyxf(num_format_str="YYYY-MM-DD"),)
            elif not isinstance(value, xlwt.Formula):
                written = value
            else:
                return sheet.row(row).set_cell_error(cell, 0x07)
        return write(sheet, row, cell, written, *style)

    monkeypatch.setattr(xlwt.Worksheet, "write", other)
    status, found = run(tmp_path / "92series.xls", cmi(as_printed("92series.xls")), capsys)
    assert status == 2 and "is not a number" in found["unreadable"]


def test_a_document_that_cannot_be_read_is_told(tmp_path, capsys, monkeypatch):
    monkeypatch.setattr(formats, "LARGEST_CONTENT", 1 << 20)
    bomb = io.BytesIO()
    with zipfile.ZipFile(bomb, "w", zipfile.ZIP_DEFLATED) as archive:
        archive.writestr("xl/workbook.xml", bytes(2 << 20))
    whole, rates = gazette(as_printed(spain_boe.NAME)), FORMS["t825.xml"][0](as_printed("t825.xml"))
    annex = study(as_printed("PASEM2010-study.pdf"))
    for content, reason in (
        (b"", "not a publication"),
        (b"any text", "not a publication"),
        (whole[: len(whole) // 3], "damaged"),
        (whole.replace(b"1,5915", b"1.5915"), "age 0, PASEM2020_Gen_2o qx_f: '1.5915' is not"),
        (whole.replace(b"1,5915", b"1,5915 7"), "page 4, age 0: 5 figures, not 4"),
        (whole.replace(b"Mujeres Hombres", b"Hombres Mujeres"), "the heading is not known"),
        (whole.replace(b"tanto por mil", b"tanto por cien"), "the heading is not known"),
        (annex.replace(b"PASEM 2010 Hombres", b"PASEM 2020 Hombres"), "has not the title"),
        (rates.replace(b"Table - Female", b"Table - Male"), "is '1983 GAM Table - Male', not"),
        (rates.replace(b"(GAM) Table", b"(GAR) Table"), "is '1983 Group Annuity Mortality (GAR)"),
        (rates.replace(b">110</Max", b">111</Max"), "its axes should be"),
        (pdf([[]]), "there is no text in it"),
        (b"PK\x03\x04", "damaged"),
        (bomb.getvalue(), "unpacks to more than 1 MiB"),
        (xlsx({"Tabelle1": [[1]]}), "not a publication"),
        (b"\xd0\xcf\x11\xe0 cut off", "damaged"),
        (gzip.compress(bytes(70 << 20)), "unpacks to more than 64 MiB"),
        (gzip.compress(b"RDX2\n"), "damaged"),
        (rates[:-9], "damaged"),
        (b'<!DOCTYPE a [<!ENTITY b "c">]><a>&b;</a>', "declares a document type"),
        (rates.replace(b"0.694885", b"O.694885"), "age 108: 'O.694885' is not a figure"),
        (rates.replace(b'"108"', b'"107"'), "GAM83 qx_f has age 107 twice"),
        (rates.replace(b"Factor>0<", b"Factor>3<"), "the scaling factor is 3, not 0"),
        (rates.replace(b"</Y>", b"</Y>7", 1), "there is more about a Y than a figure"),
        (rates.replace(b"</Axis>", b'</Axis><Y t="5">1</Y>'), "there is more about a Y than"),
        (peai_changed(0, "40"), "a figure of no age: beside it is '40'"),
        (peai_changed(0, None), "a figure of no age: beside it is None"),
        (peai_changed(0, 40.5), "40.5 is not an age"),
        (peai_changed(1, True), "True is not a number"),
        (xlsx({"Sheet1": [["Ed"], *[[None]] * 399, [1]]}), "has more than 400 rows"),
        (xlsx({"Sheet1": [["Ed"], [*[None] * 64, 1]]}), "has more than 400 rows of 64 cells"),
        (b"Edad,Hombre qx,Mujer qx\n0,0.1,0.2,0.3", "line 2: 3 figures, not 2"),
        (b"Edad,Hombre qx,Mujer qx\n0,0.1,text", "line 2: 'text' is not a figure"),
        (r_data({("GAM71", "qx_f"): {65.9: 1}}), "65.9 is not an age"),
    ):  # fmt: skip
        status, found = run(tmp_path / "document", content, capsys)
        assert status == 2 and reason in found["unreadable"], (reason, found)
    assert verify.main([str(tmp_path / "nothing")]) == 2
    assert "nothing: no such file" in capsys.readouterr().out
