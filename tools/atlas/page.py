"""The page as one text, of its template, style, scripts and contents."""

import base64
import hashlib
import html
import json
import os
import re
import subprocess
import sys
from pathlib import Path

from tools import TOP, provenance
from tools.atlas.contents import ShapeError, contents

PARTS = Path(__file__).resolve().parent
INSIDE = ("fflate", "uplot")  # packages from npm that are in the page


def read(path):
    return path.read_text(encoding="utf-8").strip()


def npm(pattern):
    """A file of the packages from npm."""
    modules = os.environ.get("DATA_TABLES_NPM") or sys.exit("atlas: DATA_TABLES_NPM is not set")
    found = list(Path(modules).glob(pattern))
    return found[0] if len(found) == 1 else sys.exit(f"atlas: npm has {len(found)} of {pattern}")


def script():
    """page.js and what it imports as one text, by the program that esbuild's package brings."""
    command = [
        npm("@esbuild/*/bin/esbuild"), PARTS / "page.js", "--bundle", "--minify", "--format=iife",
        "--charset=utf8", "--log-level=warning",
    ]  # fmt: skip
    environment = os.environ | {"NODE_PATH": str(npm("uplot").parent)}
    done = subprocess.run(command, env=environment, capture_output=True, text=True, check=False)
    if done.returncode or done.stderr:
        raise ShapeError(f"esbuild: {done.stderr}")
    return done.stdout.strip()


def plain_list(tables):
    """The tables as rows, for browsers without JavaScript."""
    for table in tables:
        meta = dict(table["meta"])
        unit = "per mille" if meta["decrement_scale_factor"] == 1000 else "decimal"
        warning = provenance.warnings_of(table["name"])
        use = table["purpose"] + (f"; {warning}" if warning else "")
        cells = (
            table["name"], use, table["country"] or "invented",
            f"{meta['start_age']}–{meta['omega']}", str(meta.get("base_year") or ""), unit,
        )  # fmt: skip
        yield "<tr>" + "".join(f"<td>{html.escape(cell)}</td>" for cell in cells) + "</tr>"


def page():
    """The text of the page."""
    style = read(npm("uplot/dist/uPlot.min.css")) + "\n" + read(PARTS / "page.css")
    code = script()
    notice = read(TOP / "NOTICE")
    for name in INSIDE:
        if read(npm(f"{name}/LICENSE")).strip() not in notice:
            raise ShapeError(f"NOTICE does not hold the licence of {name} as npm has it")
    shown = contents()
    data = json.dumps(shown, ensure_ascii=False, separators=(",", ":"))
    assert "-->" not in notice and "</script" not in code

    def allow(text):
        return f"'sha256-{base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()}'"

    # Nothing may be fetched, and nothing run but these texts.
    policy = "; ".join(
        [
            "default-src 'none'",
            f"script-src {allow(code)}",
            f"style-src {allow(style)}",
            "img-src data:",
            "base-uri 'none'",
            "form-action 'none'",
        ]
    )
    parts = {
        "style": style,
        "script": code,
        "notice": notice.replace("---- ", "").replace(" ----", ":"),
        "data": data.replace("<", "\\u003c"),  # a text must not end the element that it is in
        "policy": policy,
        "made": f"data_tables {shown['version']} of {shown['date']}, catalogue {shown['digest']}",
        "list": "\n".join(plain_list(shown["tables"])),
    }
    template = read(PARTS / "page.html")
    return re.sub(r"\{\{(\w+)\}\}", lambda match: parts[match[1]], template) + "\n"
