"""Look for links of the documents that lead nowhere: files, and headings of files, of this tree."""

import re
import sys
from pathlib import Path

from tools import TOP

LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ +(.*)$", re.MULTILINE)
CODE = re.compile(r"^```.*?^```", re.MULTILINE | re.DOTALL)


def anchor_of(heading: str) -> str:
    """As the usual viewers of Markdown make it."""
    words = re.sub(r"[^\w\- ]", "", heading.strip().lower())
    return words.replace(" ", "-")


def anchors(document: Path) -> set[str]:
    text = CODE.sub("", document.read_text("utf-8"))
    return {anchor_of(heading) for heading in HEADING.findall(text)}


def dead_links(document: Path) -> list[str]:
    dead = []
    for target in LINK.findall(CODE.sub("", document.read_text("utf-8"))):
        name, _, anchor = target.partition("#")
        if ":" in name:  # elsewhere
            continue
        path = document.parent / name if name else document
        if not path.exists():
            dead.append(f"{document.relative_to(TOP)}: there is no {target}")
        elif anchor and path.suffix == ".md" and anchor not in anchors(path):
            dead.append(f"{document.relative_to(TOP)}: there is no heading for {target}")
    return dead


def main() -> None:
    documents = sorted([*TOP.glob("*.md"), *TOP.glob("docs/*.md")])
    if not documents:
        sys.exit("links: there are no documents")
    if dead := [line for document in documents for line in dead_links(document)]:
        sys.exit("\n".join(dead))


if __name__ == "__main__":
    main()
