"""Compare what is written about the tables with the module and provenance/; silent where it agrees.

--write   write it: the rows of docs/provenance.md, the lists of docs/catalogue.md, the tables of
          the stub, and the register of sources
"""

import sys
from difflib import unified_diff

from tools import catalogue, provenance, provenance_document, stub

WRITTEN = {
    provenance_document.DOCUMENT: provenance_document.document_text,
    provenance.REGISTER: provenance.register_text,
    catalogue.DOCUMENT: catalogue.document_text,
    stub.STUB: stub.stub_text,
}


def main(options):
    if set(options) - {"--write"}:
        sys.exit(__doc__)
    differences = []
    for path, text in WRITTEN.items():
        try:
            wanted = text()
        except provenance.ProvenanceError as error:
            sys.exit(f"provenance/: {error}")
        found = path.read_text("utf-8") if path.exists() else ""
        if "--write" in options:
            path.write_text(wanted, "utf-8")
        elif found != wanted:
            lines = (each.splitlines() for each in (found, wanted))
            differences += unified_diff(*lines, path.name, "what it has to be", n=0, lineterm="")
    differences += [
        f"{where}: changed since it was verified; see docs/verifying.md"
        for where in provenance.changed_since()
    ]
    if differences:
        sys.exit("\n".join(differences))


if __name__ == "__main__":
    main(sys.argv[1:])
