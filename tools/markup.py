"""What the texts of the register of sources are written in: a little of Markdown."""

import html
import re


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
