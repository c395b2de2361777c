"""Compare what is written about the tables with the module and provenance/; silent where it agrees.

--write   write it: the rows of docs/provenance.md, the lists of docs/catalogue.md, the tables of
          the stub, and the register of sources
"""

import sys
from collections.abc import Sequence
from difflib import unified_diff

from tools import catalogue, provenance, provenance_document, stub

WRITTEN = {
    provenance_document.DOCUMENT: provenance_document.document_text,
    provenance.REGISTER: provenance.register_text,
    catalogue.DOCUMENT: catalogue.document_text,
    stub.STUB: stub.stub_text,
}


def main(options: Sequence[str]) -> None:
    if set(options) - {"--write"}:
        sys.exit(__doc__)
    differences: list[str] = []
    for path, text in WRITTEN.items():
        try:
            wanted = text()
        except provenance.ProvenanceError as error:
            sys.exit(f"provenance/: {error}")
        found = path.read_text("utf-8") if path.exists() else ""
        if "--write" in options:
            path.write_text(wanted, "utf-8")
        elif found != wanted:
            was, is_now = found.splitlines(), wanted.splitlines()
            named = path.name, "what it has to be"
            differences += unified_diff(was, is_now, *named, n=0, lineterm="")
    differences += [
        f"{where}: changed since it was verified; see docs/verifying.md"
        for where in provenance.changed_since()
    ]
    if differences:
        sys.exit("\n".join(differences))


if __name__ == "__main__":
    main(sys.argv[1:])
