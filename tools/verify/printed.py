"""What readers hand over: the figures that a document prints, as decimals."""

import re
from dataclasses import dataclass, field
from decimal import Context, Decimal
from typing import Any

FIGURE = re.compile(r"\d+(\.\d+)?")
HIGHEST_AGE = 130
# The decimal digits that every double keeps, and that spreadsheets show: 0.010946 is sometimes
# stored as the double beside its own.
DOUBLE = Context(prec=15)


# What documents are opened to: the lines of pages, the rows of sheets.
type Pages = list[list[str]]
type Sheets = dict[str, list[list[Any]]]


class UnreadableError(Exception):
    """A document, or a figure in it, cannot be read; says where."""


@dataclass
class Printed:
    """One list of rates as a document prints it."""

    table: str
    column: str  # the key of the column; after a dot the duration or the calendar year
    place: str  # where in the document, such as "annex 1.1"
    computed: bool = False  # from printed figures, rather than printed
    figures: dict[int, Decimal] = field(default_factory=dict)  # by age
    decimals: int | None = None  # to which figures are rounded, where they have more than the held
    # An example that the document works out: what it is, and of which year; see compare.py.
    worked: tuple[str, str, int] | None = None

    def add(self, age: int, figure: Decimal, where: str) -> None:
        if age in self.figures:
            raise UnreadableError(f"{where}: {self.table} {self.column} has age {age} twice")
        self.figures[age] = figure


def figure_of(text: str, where: str) -> Decimal:
    """The decimal that a text writes with a point."""
    if not FIGURE.fullmatch(text.strip()):
        raise UnreadableError(f"{where}: {text!r} is not a figure")
    return Decimal(text.strip())


def age_of(text: str, where: str) -> int:
    if not (text.isascii() and text.isdigit() and int(text) <= HIGHEST_AGE):
        raise UnreadableError(f"{where}: {text!r} is not an age")
    return int(text)


def whole_age(value: object, where: str) -> int:
    """The age that a number stands for, in a workbook or from R."""
    age = number_of(value, where)
    if age != int(age) or not 0 <= age <= HIGHEST_AGE:
        raise UnreadableError(f"{where}: {value!r} is not an age")
    return int(age)


def number_of(value: object, where: str) -> Decimal:
    """The decimal that a double stands for, in a workbook or from R."""
    if isinstance(value, bool) or not isinstance(value, int | float):
        raise UnreadableError(f"{where}: {value!r} is not a number")
    number = DOUBLE.create_decimal(repr(value))
    if not number.is_finite():
        raise UnreadableError(f"{where}: {value!r} is not a number")
    return number.normalize()
