"""Opens a document of any format that publishers use, within bounds that no publication reaches."""

import gzip
import io
import os
import subprocess
import tempfile
import xml.etree.ElementTree as ElementTree
import zipfile
from collections.abc import Callable, Iterable, Iterator
from pathlib import Path
from typing import Any

from tools.verify.printed import Pages, Printed, Sheets, UnreadableError, number_of, whole_age

MIB = 1 << 20
LARGEST_FILE = 64 * MIB
LARGEST_CONTENT = 256 * MIB  # unpacked
ROWS, CELLS = 400, 64  # what is read of a sheet
SUFFIXES = (".pdf", ".xlsx", ".xls", ".xml", ".csv", ".rda")


def read_file(path: Path) -> bytes:
    if not path.is_file():
        raise UnreadableError("no such file")
    with open(path, "rb") as file:
        content = file.read(LARGEST_FILE + 1)
    if len(content) > LARGEST_FILE:
        raise UnreadableError(f"larger than {LARGEST_FILE // MIB} MiB")
    return content


def open_document(content: bytes) -> tuple[str, Any]:
    """The format of a document, known by how it begins, and what is in it."""
    formats: tuple[tuple[bytes, str, Callable[[bytes], Any]], ...] = (
        (b"%PDF-", "pdf", pdf_lines),
        (b"PK\x03\x04", "workbook", xlsx_sheets),
        (b"\xd0\xcf\x11\xe0", "workbook", xls_sheets),
        (b"\x1f\x8b", "rda", r_frames),
        (b"\xef\xbb\xbf<", "xml", xml_root),
        (b"<", "xml", xml_root),
        (b"", "csv", csv_rows),
    )
    _, name, opener = next(each for each in formats if content.startswith(each[0]))
    # Whatever a parser that others wrote raises, the file is at fault.
    try:
        return name, opener(content)
    except UnreadableError:
        raise
    except Exception as error:
        reason = "".join(filter(str.isprintable, str(error) or type(error).__name__))
        raise UnreadableError(f"damaged, or not what it seems to be: {reason}") from error


def pdf_lines(content: bytes) -> Pages:
    """The pages of a PDF, each a list of lines that keep the columns of the page apart."""
    with tempfile.TemporaryDirectory() as folder:
        source, text = Path(folder, "source.pdf"), Path(folder, "text")
        source.write_bytes(content)
        limits = ["prlimit", "--cpu=60", f"--as={2048 * MIB}", f"--fsize={LARGEST_CONTENT}"]
        command = ["pdftotext", "-layout", "-enc", "UTF-8", str(source), str(text)]
        done = subprocess.run(limits + command, capture_output=True, check=False, timeout=300)
        if done.returncode or not text.exists():
            errors = done.stderr.decode(errors="replace").strip().splitlines()
            raise ValueError(f"pdftotext says {errors[-1] if errors else 'nothing'}")
        pages = text.read_text(encoding="utf-8", errors="replace").split("\f")
    if not any(page.strip() for page in pages):
        raise UnreadableError("there is no text in it: a scan cannot be compared")
    return [page.splitlines() for page in pages]


def xlsx_sheets(content: bytes) -> Sheets:
    import openpyxl

    with zipfile.ZipFile(io.BytesIO(content)) as archive:
        if sum(member.file_size for member in archive.infolist()) > LARGEST_CONTENT:
            raise UnreadableError(f"unpacks to more than {LARGEST_CONTENT // MIB} MiB")
    book = openpyxl.load_workbook(io.BytesIO(content), read_only=True, data_only=True)
    return {sheet.title: list(xlsx_rows(sheet)) for sheet in book.worksheets}


def xlsx_rows(sheet: Any) -> Iterator[list[Any]]:
    """The rows of a sheet, all of one width; what is beyond has to be empty."""
    sheet.reset_dimensions()  # a sheet may say that it is smaller than it is
    for number, row in enumerate(sheet.iter_rows(values_only=True), 1):
        filled = max((cell for cell, value in enumerate(row, 1) if value is not None), default=0)
        expect_small(sheet.title, number if filled else 0, filled)
        if number <= ROWS:
            yield [*row[:CELLS], *[None] * (CELLS - len(row))]


def expect_small(sheet: str, rows: int, cells: int) -> None:
    if rows > ROWS or cells > CELLS:
        raise UnreadableError(f"sheet {sheet}: has more than {ROWS} rows of {CELLS} cells")


def xls_sheets(content: bytes) -> Sheets:
    import xlrd

    with open(os.devnull, "w", encoding="utf-8") as silence:
        book = xlrd.open_workbook(file_contents=content, logfile=silence)
    for sheet in book.sheets():
        expect_small(sheet.name, sheet.nrows, sheet.ncols)
    return {
        sheet.name: [
            [xls_value(xlrd, cell) for cell in sheet.row(row)[:CELLS]]
            for row in range(min(sheet.nrows, ROWS))
        ]
        for sheet in book.sheets()
    }


def xls_value(xlrd: Any, cell: Any) -> Any:
    """A text or a number. What else a cell may hold is given as its text, which is neither."""
    if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK) or cell.value == "":
        return None
    if cell.ctype in (xlrd.XL_CELL_TEXT, xlrd.XL_CELL_NUMBER):
        return cell.value
    kinds = {xlrd.XL_CELL_BOOLEAN: "boolean", xlrd.XL_CELL_DATE: "date"}
    return f"the {kinds.get(cell.ctype, 'error')} {cell.value}"


class _NoDoctype(ElementTree.TreeBuilder):
    """Entities can only be declared in a document type, and no table has one."""

    def doctype(self, name: str, pubid: str | None, system: str | None) -> None:
        raise UnreadableError("declares a document type")


def xml_root(content: bytes) -> ElementTree.Element:
    return ElementTree.fromstring(content, ElementTree.XMLParser(target=_NoDoctype()))


def r_frames(content: bytes) -> dict[str, Any]:
    import rdata  # imported here, for it takes a second

    with gzip.open(io.BytesIO(content)) as packed:
        unpacked = packed.read(LARGEST_FILE + 1)
    if len(unpacked) > LARGEST_FILE:
        raise UnreadableError(f"unpacks to more than {LARGEST_FILE // MIB} MiB")
    frames = rdata.conversion.convert(rdata.parser.parse_data(unpacked))
    return {name: frame.to_dict("list") for name, frame in frames.items()}


def csv_rows(content: bytes) -> list[list[str]]:
    text = content.decode("utf-8-sig")
    return [[cell.strip() for cell in line.split(",")] for line in text.splitlines() if line]


# ---- sheets ----


def cell_name(sheet: str, row: int, cell: int) -> str:
    letters = ""
    cell += 1
    while cell:
        cell, letter = divmod(cell - 1, 26)
        letters = chr(ord("A") + letter) + letters
    return f"{sheet}!{letters}{row + 1}"


def text_of(value: object) -> str:
    return "" if value is None else str(value).strip()


def expect_heads(
    sheets: Sheets, sheet: str, first_row: int, first_cell: int, heads: Iterable[list[str]]
) -> None:
    """Refuses a sheet that has other words there: heads say what the figures below are."""
    for row, words in enumerate(heads, first_row):
        found = list(map(text_of, sheets[sheet][row][first_cell : first_cell + len(words)]))
        if found != words:
            where = cell_name(sheet, row, first_cell)
            raise UnreadableError(f"{where}: the heads from there are {found}, not {words}")


def read_columns(
    sheets: Sheets, sheet: str, first_row: int, age_cell: int, columns: dict[int, Printed]
) -> list[Printed]:
    """Fills columns, each printed under its cell, from the rows whose age cell holds a number."""
    for number, row in enumerate(sheets[sheet][first_row:], first_row):
        age = row[age_cell] if age_cell < len(row) else None
        if age is None or isinstance(age, str):
            beside = [cell for cell in columns if cell < len(row) and row[cell] is not None]
            if beside:
                where = cell_name(sheet, number, beside[0])
                raise UnreadableError(f"{where}: a figure of no age: beside it is {age!r}")
            continue  # a heading or a footnote
        age_name = cell_name(sheet, number, age_cell)
        age = whole_age(age, age_name)
        for cell, printed in columns.items():
            if cell < len(row) and row[cell] is not None:
                where = cell_name(sheet, number, cell)
                printed.add(age, number_of(row[cell], where), where)
    return list(columns.values())
