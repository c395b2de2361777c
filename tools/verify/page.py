"""Lays out printed figures as a page of literals, as the sources have it."""

from collections.abc import Iterator
from decimal import Decimal

from tools.verify.printed import Printed


def page_of(printed: Printed) -> Iterator[str]:
    texts = {age: literal(figure) for age, figure in sorted(printed.figures.items())}
    width = max(map(len, texts.values()))
    name = f"{printed.table}_{printed.column.replace('.', '_')}"
    yield f"// {printed.place}"
    yield f"inline constexpr Number {name}[] = {{"
    yield "    //" + "".join(str(digit).rjust(width + 2) for digit in range(10))[4:]
    for decade in range(min(texts) // 10 * 10, max(texts) + 1, 10):
        cells = (texts.get(age, "") for age in range(decade, decade + 10))
        row = " ".join(f"{cell:>{width}}{',' if cell else ' '}" for cell in cells)
        yield f"    {row} // {decade}"
    yield "};"


def literal(figure: Decimal) -> str:
    """The shortest decimal. Whether a table closes with 1 or 1.0 is for its author to say."""
    text = f"{figure.normalize():f}"
    return text if "." in text else f"{text}.0"
