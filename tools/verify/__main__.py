"""Compare publications with the module, digit by digit: every figure that a document prints.

usage: ./dev verify [--cells | --json] [--all | --record] DOCUMENT…
       ./dev verify --write TABLE DOCUMENT…

DOCUMENT   a file, or a folder with files, as the publisher issued them: docs/verifying.md
--cells    name every cell that differs, not only those that differ undeclared
--json     print the answer for machines, with every cell that differs
--all      fail as well when a document on record is not among them, or when provenance tells
           another result of the last verification
--record   write the result into provenance/verified.json, where all is well
--write    print the figures of a table as pages of literals, and compare nothing

Exit status: 0 when every figure is equal or differs as declared, 1 when one does not, 2 for all
else: a document cannot be read, is none of those known, or lacks what it should hold.
"""

import hashlib
import io
import json
import multiprocessing
import resource
import signal
import sys
from collections import Counter
from collections.abc import Iterable, Iterator
from pathlib import Path
from typing import Any, cast

from tools import provenance
from tools.verify import (
    chile,
    cmi,
    germany_dav,
    page,
    record,
    second_sources,
    society_of_actuaries,
    spain_boe,
    spain_dgsfp,
    spain_guide,
    spain_studies,
)
from tools.verify.compare import Cell, Compared, compare
from tools.verify.formats import SUFFIXES, open_document, read_file
from tools.verify.printed import Printed, UnreadableError

# The digest of a file, the document that it is, what is printed in it.
type Read = tuple[str, str, list[Printed]]
type Answer = dict[str, Any]  # as the answer for machines has it

READERS = (
    spain_boe, spain_dgsfp, spain_guide, spain_studies, germany_dav, society_of_actuaries, cmi,
    chile, second_sources,
)  # fmt: skip
SECONDS, MEMORY = 60, 2 << 30  # of processor time, and of memory, for one document
# What a reader runs into where a document of a known form lacks what the form has.
MALFORMED = (ArithmeticError, AttributeError, LookupError, TypeError, ValueError)


def files_of(arguments: Iterable[str]) -> Iterator[str | Path]:
    """The files that are named, and those of named folders that may be documents."""
    for argument in arguments:
        if not argument or not Path(argument).is_dir():
            yield argument
            continue
        inside = sorted(Path(argument).rglob("*"))
        # What cannot be a document is passed over, but for what would hide one.
        documents: list[str | Path] = [
            path
            for path in inside
            if path.suffix.lower() in SUFFIXES or not (path.is_file() or path.is_dir())
            or (path.is_symlink() and path.is_dir())
        ]  # fmt: skip
        yield from documents or [argument]


def read(path: str | Path) -> Read:
    """The digest of a file, the document that it is, and the columns that are printed in it."""
    if not str(path):
        raise UnreadableError("no name is given")
    path = Path(path)
    if path.is_dir():
        why = "a link to a folder is not followed" if path.is_symlink() else "no document is in it"
        raise UnreadableError(why)
    try:
        content = read_file(path)
        digest = hashlib.sha256(content).hexdigest()
        form, content = open_document(content)
        for reader in READERS:
            if name := reader.identify(form, content, path.name):
                return digest, name, list(reader.read(name, content))
    except OSError as error:
        raise UnreadableError(error.strerror) from error
    except MALFORMED as error:
        reason = f"{type(error).__name__}: {error}"
        raise UnreadableError(f"not in the form that is known ({reason})") from error
    raise UnreadableError("not a publication that values of the module were read from")


def bounded_read(path: str | Path) -> Read:
    """Reads in a process of its own, which ends where a publication's would long have ended."""
    receiver, sender = multiprocessing.Pipe(duplex=False)

    def work() -> None:
        resource.setrlimit(resource.RLIMIT_CPU, (SECONDS, SECONDS))
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))
        try:
            sender.send(read(path))
        except UnreadableError as error:
            sender.send(error)
        except MemoryError:
            sender.send(UnreadableError(f"takes more than {MEMORY >> 20} MiB of memory"))

    process = multiprocessing.get_context("fork").Process(target=work, daemon=True)
    process.start()
    sender.close()
    try:
        answer = receiver.recv() if receiver.poll(5 * SECONDS) else None
    except EOFError:
        answer = None
    process.kill() if answer is None and process.is_alive() and process.exitcode is None else None
    process.join()
    if not isinstance(answer, tuple):
        raise answer or UnreadableError(f"takes more than {SECONDS} s, or ends its reader")
    return answer


def verify(path: str | Path, facts: record.Record, recording: bool = False) -> Answer:
    """What one file says, as the answer for machines has it."""
    try:
        digest, name, printed = bounded_read(path)
    except UnreadableError as error:
        return {"file": str(path), "document": None, "unreadable": str(error)}
    compared, problems = compare(facts, name, printed)
    if not recording:
        problems += fewer_cells(name, printed, facts.rows)
    return {
        "file": str(path),
        "sha256": digest,
        "document": name,
        "on_record": facts.digests[name] == digest,
        "columns": [line_of(column, facts.rows) for column in compared],
        "problems": problems,
    }


def fewer_cells(
    document: str, printed: list[Printed], rows: dict[tuple[str, str], str]
) -> Iterator[str]:
    """Columns that are printed in other places, or at other ages, than when it was verified."""
    found: Counter[tuple[str, bool]] = Counter()
    recorded: dict[tuple[str, bool], int] = {}
    for column in printed:
        where = f"{column.table} {rows.get((column.table, column.column))}"
        found[where, column.computed] += len(column.figures)
    for where, entries in provenance.last_verified().items():
        for entry in entries:
            if entry["document"] == document:
                recorded[where, entry["computed"]] = entry["cells"]
    for each in sorted(recorded):
        if found[each] != recorded[each]:
            yield f"{each[0]}: {found[each]} figures, where {recorded[each]} are on record"


def line_of(compared: Compared, rows: dict[tuple[str, str], str]) -> Answer:
    """A compared column, as the answer for machines has it."""
    printed = compared.printed
    return {
        "table": printed.table,
        "column": printed.column,
        "row": rows[printed.table, printed.column],
        "place": printed.place,
        "computed": printed.computed,
        "cells": len(printed.figures),
        "equal": compared.equal,
        "declared": {why: shown(cells) for why, cells in compared.declared.items()},
        "not_printed": {why: shown(cells) for why, cells in compared.not_printed.items()},
        "differences": shown(compared.differences),
    }


def shown(cells: list[Cell]) -> list[Answer]:
    return [
        {
            "age": age,
            "printed": None if figure is None else f"{figure:f}",
            "held": None if rate is None else f"{rate:f}",
        }
        for age, figure, rate in cells
    ]


def summed(columns: list[Answer]) -> Answer:
    """Cells, equal ones, declared ones by reason, of several columns."""
    sums: Answer = {name: sum(column[name] for column in columns) for name in ("cells", "equal")}
    for name in ("declared", "not_printed"):
        counts: Counter[str] = Counter()
        for column in columns:
            counts.update({reason: len(cells) for reason, cells in column[name].items()})
        sums[name] = dict(counts)
    return sums | {"undeclared": sum(len(column["differences"]) for column in columns)}


def grouped(columns: list[Answer], *by: str) -> Iterable[tuple[tuple[Any, ...], list[Answer]]]:
    groups: dict[tuple[Any, ...], list[Answer]] = {}
    for column in columns:
        groups.setdefault(tuple(column[name] for name in by), []).append(column)
    return groups.items()


def verified_of(answers: list[Answer]) -> provenance.Verified:
    """What provenance tells of every column: an entry for each document, what it prints and what
    follows from that apart."""
    verified: provenance.Verified = {}
    on_record = (answer for answer in answers if answer.get("on_record"))
    for answer in sorted(on_record, key=lambda answer: answer["document"]):
        for (table, row, computed), columns in grouped(
            answer["columns"], "table", "row", "computed"
        ):
            sums = summed(columns)
            verified.setdefault(f"{table} {row}", []).append(
                {
                    "document": answer["document"],
                    "computed": computed,
                    "digest": provenance.register()["tables"][table]["columns"][row]["digest"],
                    **{name: sums[name] for name in ("cells", "equal", "declared")},
                }
            )
    return verified


# ---- what a person reads ----


def plain(text: str) -> str:
    """A name or a text of a document, with what a terminal would obey or not show escaped."""
    shown = (c if c.isprintable() else c.encode("unicode_escape").decode() for c in text)
    return "".join(shown)


def tell(answer: Answer, all_cells: bool) -> Iterator[str]:
    """The lines about one document."""
    if "unreadable" in answer:
        yield f"{plain(answer['file'])}: {plain(answer['unreadable'])}"
        return
    yield plain(answer["file"])
    if not answer["on_record"]:
        yield f"  NOT the {answer['document']} on record: its SHA-256 is {answer['sha256']}"
    for (table, row, place), columns in grouped(answer["columns"], "table", "row", "place"):
        sums = summed(columns)
        parts = [f"{table} {row}, {place}: {sums['equal']} of {sums['cells']} equal"]
        parts += [f"{count} {reason}" for reason, count in sums["declared"].items()]
        parts += [f"{count} more held: {reason}" for reason, count in sums["not_printed"].items()]
        yield "  " + "; ".join(parts)
        for column in columns:
            yield from tell_cells("DIFFERS", column, column["differences"])
            for why, cells in (column["declared"] | column["not_printed"]).items():
                yield from tell_cells("declared", column, cells, f": {why}") if all_cells else ()
    for problem in answer["problems"]:
        yield f"  WRONG {problem}"


def tell_cells(word: str, column: Answer, cells: list[Answer], why: str = "") -> Iterator[str]:
    for cell in cells:
        where = f"{column['table']} {column['column']} age {cell['age']}"
        printed, held = cell["printed"] or "nothing", cell["held"] or "nothing"
        yield f"    {word} {where}: printed {printed}, held {held}{why}"


def tell_totals(totals: Answer) -> Iterator[str]:
    for kind, what in (("printed", "figures"), ("computed", "rates computed from figures")):
        sums = totals[kind]
        yield (
            f"{sums['cells']} {what}: {sums['equal']} equal, {sum(sums['declared'].values())} "
            f"different as declared, {sums['undeclared']} undeclared"
        )
        for name, word in (("declared", "declared"), ("not_printed", "held, not printed")):
            yield from (f"  {word}: {count} {why}" for why, count in sums[name].items())


def write(table: str, paths: Iterable[str | Path]) -> None:
    """Prints the pages of a table; the sources are for people to change."""
    printed = [
        column for path in paths for column in bounded_read(path)[2] if column.table == table
    ]
    pages = [page.page_of(column) for column in printed if column.figures and not column.computed]
    if not pages:
        raise UnreadableError(f"no figures of {table} in there")
    for lines in pages:
        print(*lines, sep="\n")


def settle(options: set[str], facts: record.Record, answers: list[Answer], well: bool) -> list[str]:
    """What is wrong with all documents together; records the result, or compares it."""
    problems = [] if answers else ["no document is named"]
    if not options & {"--all", "--record"}:
        return problems
    here = {answer["document"] for answer in answers if answer.get("on_record")}
    absent = sorted(facts.digests.keys() - here)
    problems += [f"on record, but not here: {name}" for name in absent]
    if problems or not well:
        return problems
    verified = verified_of(answers)
    if "--record" in options:
        told = {provenance.DECLARED: provenance.declared_digest(), **verified}
        lines = (f"{json.dumps(column)}: {json.dumps(of)}" for column, of in told.items())
        provenance.VERIFIED.write_text("{\n" + ",\n".join(lines) + "\n}\n", encoding="utf-8")
    elif verified != provenance.last_verified():
        problems.append("provenance tells another result of the last verification: --record")
    return problems


def main(arguments: list[str]) -> int:
    if arguments[:1] == ["--write"] and len(arguments) > 2:
        try:
            write(arguments[1], files_of(arguments[2:]))
            return 0
        except UnreadableError as error:
            print(f"--write: {error}", file=sys.stderr)
            return 2
    options = {argument for argument in arguments if argument.startswith("--")}
    paths = [argument for argument in arguments if argument not in options]
    if options - {"--cells", "--json", "--all", "--record"} or not paths:
        print(__doc__, file=sys.stderr)
        return 2
    try:
        facts = record.load()
        provenance.last_verified()
    except (provenance.ProvenanceError, *MALFORMED) as error:
        print(f"provenance/ is damaged: {plain(str(error))}", file=sys.stderr)
        return 2
    by_file: dict[Any, Answer] = {}  # a file that is named twice counts once
    for answer in (verify(path, facts, "--record" in options) for path in files_of(paths)):
        key = answer["file"] if "unreadable" in answer else (answer["sha256"], answer["document"])
        by_file.setdefault(key, answer)
    answers = list(by_file.values())
    columns = [column for answer in answers for column in answer.get("columns", [])]
    totals = {
        "printed": summed([column for column in columns if not column["computed"]]),
        "computed": summed([column for column in columns if column["computed"]]),
    }
    unreadable = any("unreadable" in answer for answer in answers)
    wrong = any(answer.get("problems") for answer in answers)
    wrong = wrong or any(sums["undeclared"] for sums in totals.values())
    problems = settle(options, facts, answers, well=not (wrong or unreadable))
    if "--json" in options:
        answer = {"documents": answers, "totals": totals, "problems": problems}
        answer["without_document"] = facts.without
        print(json.dumps(answer, ensure_ascii=False, indent=1))
    else:
        for answer in answers:
            print(*tell(answer, "--cells" in options), sep="\n")
        print(f"\ndocuments: {len(answers)}", *tell_totals(totals), sep="\n")
        print(f"columns without a document: {', '.join(facts.without) or 'none'}")
        print(*(f"WRONG {problem}" for problem in problems), sep="\n", end="\n" if problems else "")
    if any(sums["undeclared"] for sums in totals.values()):
        return 1
    return 2 if wrong or unreadable or problems else 0


if __name__ == "__main__":
    signal.signal(signal.SIGPIPE, signal.SIG_DFL)  # whoever reads may stop
    cast(io.TextIOWrapper, sys.stdout).reconfigure(errors="backslashreplace")
    sys.exit(main(sys.argv[1:]))
