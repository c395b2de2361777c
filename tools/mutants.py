"""Break the module on purpose, one way after the other, and see which test notices.

Usage: ./dev mutants [--sample N] [--seed N] [--jobs N] [--sample-only] [WORD ...]

Breaks by hand first, those of tools/mutants.toml, then a sample of N (60) that rules make of all of
tables/: operators swapped, conditions negated, numbers moved by one, statements dropped. Equal
seeds give equal samples. With words only breaks whose description holds one of them are tried. Each
job (2) works in a copy of the tree of its own, in build/mutants, and rebuilds what has changed.
Fails when a break by hand is not noticed, or more than one in twenty of the sample. The result of
the last full run stands in docs/reliability.md.
"""

import argparse
import os
import random
import re
import subprocess
import sys
import tomllib
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from queue import SimpleQueue

from tools import TOP

COPIES = TOP / "build" / "mutants"
ENOUGH = 0.95  # of a sample


@dataclass(frozen=True)
class Mutant:
    what: str
    file: str
    start: int  # where in the file what is replaced begins
    old: str
    new: str
    build: str = "release"
    rule: str = "by hand"


# ---- breaks by hand ----


def by_hand():
    for each in tomllib.loads((TOP / "tools/mutants.toml").read_text("utf-8"))["mutant"]:
        start = (TOP / each["file"]).read_text("utf-8").find(each["old"])
        if start < 0:
            sys.exit(f"mutants: {each['what']}: {each['file']} has no {each['old']!r}")
        yield Mutant(start=start, **each)


# ---- breaks by rules ----

SWAPS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=",
}  # fmt: skip
# The formatter puts blanks around operators and none around the brackets of templates.
OPERATOR = re.compile(rf"(?<=[\w)\]] )({'|'.join(map(re.escape, SWAPS))})(?= [\w(*&!-])")
CONDITION = re.compile(r"(?<=\bif )\((.*)\)(?= \{$)")
NUMBER = re.compile(r"(?<![\w.\"'])\d+(?:\.\d+)?(?:e-?\d+)?(?![\w.\"'])")
STATEMENT = re.compile(r"(?:[\w:.\]\[]|->)+\(.*\);|[\w.\->]+ [-+|]?= .*;|\+\+\w+;")
ROW_OF_DIGITS = re.compile(r"[ 0-9.,e-]+(//.*)?")


def moved(number):
    """The number with its last digit moved by one."""
    digits, power, exponent = number.partition("e")
    last = str((int(digits[-1]) + 1) % 10)
    whole = digits[:-1] + last if "." in digits else str(int(digits) + 1)
    return whole + power + exponent


def code_lines(text):
    """The lines with code, each with where it starts, without what is a comment or a text."""
    start = 0
    for line in text.splitlines(keepends=True):
        code = re.sub(
            r'"(?:\\.|[^"\\])*"', lambda quoted: '"' + "~" * (len(quoted[0]) - 2) + '"', line
        )
        code = code.split("//")[0].rstrip()
        if code.strip() and not code.lstrip().startswith(("#", "static_assert", "using")):
            yield start, code
        start += len(line)


def changes_of(code):
    """Rule, column, old and new of all that the rules make of a line."""
    if ROW_OF_DIGITS.fullmatch(code):
        for found in NUMBER.finditer(code):
            yield "digit of a page", found.start(), found[0], moved(found[0])
        return
    for found in OPERATOR.finditer(code):
        yield "operator swapped", found.start(), found[0], SWAPS[found[0]]
    for found in CONDITION.finditer(code):
        yield "condition negated", found.start(), found[0], f"(!{found[0]})"
    for found in NUMBER.finditer(code):
        yield "number moved by one", found.start(), found[0], moved(found[0])
    statement = code.strip()
    if STATEMENT.fullmatch(statement) and statement.count("(") == statement.count(")"):
        yield "statement dropped", code.index(statement), statement, ";"


def by_rules():
    for path in sorted(TOP.glob("tables/**/*.[ch]pp")):
        file = str(path.relative_to(TOP))
        if path.name in ("docstring.hpp", "cxx_runtime.cpp"):  # no code; what never runs
            continue
        text = path.read_text("utf-8")
        for start, code in code_lines(text):
            for rule, column, old, new in changes_of(code):
                at = start + column
                # Texts are blanked out in `code`, and are part of what a whole statement replaces.
                old = text[at : at + len(old)]
                new = f"(!{old})" if rule == "condition negated" else new
                line = text.count("\n", 0, at) + 1
                yield Mutant(f"{file}:{line}: {old} → {new}", file, at, old, new, rule=rule)


def sample_of(mutants, size, seed):
    """As many of each rule, drawn from all files alike."""
    dice, rules = random.Random(seed), {}
    for each in mutants:
        rules.setdefault(each.rule, []).append(each)
    for group in rules.values():
        dice.shuffle(group)
    drawn = []
    while len(drawn) < size and any(rules.values()):
        drawn += [group.pop() for group in rules.values() if group][: size - len(drawn)]
    return drawn


# ---- trying them ----


def refresh(copy):
    """Make the copy equal to the tree; writes only what differs, for the build looks at times."""
    command = ["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"]
    listed = subprocess.run(command, cwd=TOP, capture_output=True, text=True, check=True)
    files = [file for file in listed.stdout.split("\0") if file and (TOP / file).is_file()]
    for file in files:
        source, target = TOP / file, copy / file
        if not target.exists() or target.read_bytes() != source.read_bytes():
            target.parent.mkdir(parents=True, exist_ok=True)
            target.write_bytes(source.read_bytes())
            target.chmod(source.stat().st_mode)


def run(copy, seconds, *command, **environment):
    """Status and output of a command; None for the status when it takes too long."""
    try:
        done = subprocess.run(
            command, cwd=copy, capture_output=True, text=True, check=False, timeout=seconds,
            env=os.environ | environment, errors="replace", start_new_session=True,
        )  # fmt: skip
    except subprocess.TimeoutExpired:
        return None, ""
    return done.returncode, done.stdout + done.stderr


def reason_of(status, output):
    """What a failed run says: the test, the compiler's sentence, or how the process ended."""
    if status is None:
        return "the time that it takes"
    if failed := re.search(r"^(?:FAILED|ERROR) (?:tests/)?(.+?)(?: - |$)", output, re.MULTILINE):
        return f"`{failed[1]}`"
    if error := re.search(r"error: (.*)", output):
        return f"the compiler: {error[1][:80]}"
    crash = re.search(r"(SEGV|Fatal Python error: [^\n]*|AddressSanitizer: \S+)", output)
    return f"the end of the process: {crash[1] if crash else output[-200:]}"


QUICK = ("test_inventory", "test_module", "test_descriptions", "test_dav2004r", "test_synthetic",
         "test_sharing", "test_laws")  # fmt: skip
STAGES = (
    ("release", [f"tests/{name}.py" for name in QUICK]),
    ("release", ["tests/reliability", "--ignore=tests/reliability/test_out_of_memory.py"]),
    ("debug", ["tests/test_dav2004r.py", "tests/reliability/test_leaks.py",
               "tests/reliability/test_hostile_surroundings.py"]),
    ("release", ["tests/reliability/test_out_of_memory.py"]),
)  # fmt: skip


def tests(copy, build, arguments):
    """The first test that fails on a build of the copy; None when all pass."""
    command = ("./dev", "test", "-x", "-q", *arguments)
    status, output = run(copy, 1200, *command, DATA_TABLES_BUILD=build)
    return None if status == 0 else reason_of(status, output)


def noticed_by(copy, mutant):
    if mutant.file.startswith("tools/atlas"):
        return tests(copy, "release", ["tests/package/test_atlas.py", "-k", "logic"])
    if mutant.file.startswith(("dev", "tools/dev")):
        return tests(copy, "release", ["tests/package/test_dev.py"])
    if mutant.file == "tools/check.sh":
        return tests(copy, "release", ["tests/package/test_check.py"])
    build = mutant.build
    stages = STAGES if build == "release" else [(build, STAGES[2][1])]
    return next(filter(None, (tests(copy, *stage) for stage in stages)), None)


def try_all(mutants, jobs):
    """Each mutant with what noticed it, in the order in which they are done."""
    copies = SimpleQueue()
    for number in range(jobs):
        refresh(COPIES / str(number))
        copies.put(COPIES / str(number))

    def attempt(mutant):
        copy = copies.get()
        try:
            refresh(copy)
            source = (TOP / mutant.file).read_text("utf-8")
            end = mutant.start + len(mutant.old)
            broken = source[: mutant.start] + mutant.new + source[end:]
            (copy / mutant.file).write_text(broken, "utf-8")
            return mutant, noticed_by(copy, mutant)
        finally:
            copies.put(copy)

    # What fails without a break would notice every one.
    for build, arguments in STAGES:
        if failed := tests(COPIES / "0", build, arguments):
            sys.exit(f"mutants: {build}: the tree fails as it is: {failed}")
    with ThreadPoolExecutor(jobs) as pool:
        yield from pool.map(attempt, mutants)


def main():
    parser = argparse.ArgumentParser(prog="./dev mutants", description=__doc__.split("\n")[0])
    parser.add_argument("--sample", type=int, default=60, help="how many of the rules")
    parser.add_argument("--seed", type=int, default=1, help="which ones")
    parser.add_argument("--jobs", type=int, default=2, help="how many at a time")
    parser.add_argument("--sample-only", action="store_true", help="none by hand")
    parser.add_argument("words", nargs="*", help="parts of descriptions")
    options = parser.parse_args()
    mutants = [] if options.sample_only else list(by_hand())
    mutants += sample_of(by_rules(), options.sample, options.seed)
    if options.words:
        mutants = [each for each in mutants if any(word in each.what for word in options.words)]
    tried, missed = Counter(), Counter()
    for mutant, caught in try_all(mutants, options.jobs):
        tried[mutant.rule] += 1
        missed[mutant.rule] += caught is None
        what = mutant.what.replace("\n", " ").replace("|", "\\|")
        print(f"| {mutant.rule} | {what} | {caught or '**nobody**'} |", flush=True)
    for rule, count in tried.items():
        print(f"{rule}: {count - missed[rule]} of {count}")
    by_hand_missed = missed.pop("by hand", 0)
    sampled = tried.total() - tried["by hand"]
    share = 1 - missed.total() / max(sampled, 1)
    print(f"sample of seed {options.seed}: {share:.1%} of {sampled} noticed")
    sys.exit(by_hand_missed > 0 or share < ENOUGH)


if __name__ == "__main__":
    main()
