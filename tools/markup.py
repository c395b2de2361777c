"""A little of Markdown: what the texts of the register of sources have of it, and what we write."""

import html
import re
from collections.abc import Iterable, Sequence
from textwrap import fill


class MarkupError(ValueError):
    """A text with markup that is not known here."""


def as_html(text: str, where: str) -> str:
    """Emphasis, code and the text of links; other Markdown is refused."""
    pieces = re.split(r"(`[^`]+`|\*\*.+?\*\*|\*[^*]+\*|\[[^\]]+\]\([^)]+\))", text)
    for number, piece in enumerate(pieces):
        if number % 2 == 0:  # what is between the marked pieces
            if re.search(r"[`*<>]", piece):
                raise MarkupError(f"{where}: unknown markup in {piece!r}")
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


def plain(text: str) -> str:
    """The text without its markup."""
    return html.unescape(re.sub("<[^>]+>", "", as_html(text, "a text")))


def markdown(head: Sequence[str], rows: Iterable[Sequence[str]], code: int = 1) -> str:
    """A table; the first cells of each row are code."""
    shown = [head, *([*(f"`{cell}`" for cell in row[:code]), *row[code:]] for row in rows)]
    widths = [max(map(len, column)) for column in zip(*shown)]
    lines = [
        "| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |"
        for row in shown
    ]
    lines.insert(1, "|" + "|".join("-" * (width + 2) for width in widths) + "|")
    return "\n".join(lines)


def wrapped(text: str) -> str:
    """An item of a list."""
    return fill(text, 100, subsequent_indent="  ", break_on_hyphens=False, break_long_words=False)
