"""Write the tables, where they come from and a plot of every column as one HTML page.

atlas.py [--check] [--pictures FOLDER] [FILE]

FILE is build/atlas.html unless it is named. --check compares docs/atlas.html with what would be
written, --pictures also paints those of the documentation. The page needs nothing but itself, and
building it twice gives the same bytes. Values are embedded as the texts that repr() gives, because
the browser writes the same numbers in another way.
"""

import argparse
import base64
import os
import re
import sys
import zlib
from pathlib import Path

from tools import TOP
from tools.atlas.browser import paint
from tools.atlas.contents import ShapeError
from tools.atlas.page import page
from tools.markup import MarkupError

COMMITTED = TOP / "docs" / "atlas.html"


def unpacked(text):
    """A page with its files as texts: not every library packs them into the same bytes."""
    return re.sub(
        r'(?<="files":")[^"]+',
        lambda found: zlib.decompress(base64.b64decode(found[0])).decode(),
        text,
    )


def arguments():
    parser = argparse.ArgumentParser(prog="atlas", description=__doc__.partition("\n")[0])
    parser.add_argument("file", nargs="?", type=Path, default=TOP / "build" / "atlas.html")
    parser.add_argument("--check", action="store_true", help="compare docs/atlas.html instead")
    parser.add_argument("--pictures", type=Path, metavar="FOLDER", help="also paint the page")
    options = parser.parse_args()
    for path in filter(None, (options.file, options.pictures)):
        # In the cached root other folders are not those of the machine: the file would be lost.
        seen = {Path.cwd(), TOP, Path("/tmp")} - {Path("/")}
        if "DATA_TABLES_ROOT" in os.environ and not any(map(path.resolve().is_relative_to, seen)):
            sys.exit(f"atlas: {path} is not below this folder, the project or /tmp")
    return options


def main():
    options = arguments()
    try:
        text = page()
    except (ShapeError, MarkupError) as error:
        sys.exit(f"atlas: {error}")
    if options.check:
        if not COMMITTED.exists() or unpacked(COMMITTED.read_text("utf-8")) != unpacked(text):
            sys.exit("docs/atlas.html is not up to date: ./dev atlas docs/atlas.html")
        return
    options.file.parent.mkdir(parents=True, exist_ok=True)
    options.file.write_text(text, encoding="utf-8")
    print(f"atlas: {options.file}, {len(text.encode()) // 1024} KiB")
    if options.pictures:
        options.pictures.mkdir(parents=True, exist_ok=True)
        paint(options.file, options.pictures)


if __name__ == "__main__":
    main()
