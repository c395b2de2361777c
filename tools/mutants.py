"""Break what decides figures on purpose, one way after the other, and see which test notices.

Usage: ./dev mutants [--sample N] [--seeds N ...] [--jobs N] [--areas NAME ...] [WORD ...]

Breaks by hand first, those of tools/mutants.toml, then for each seed (1) a sample of N (20) of each
area that rules make: operators swapped, conditions negated, numbers moved by one, statements
dropped. Equal seeds give equal samples. With words only breaks whose description holds one of them
are tried. Each job (2) works in a copy of the tree of its own, in build/mutants, and rebuilds what
has changed. Without words and areas the result is written to docs/mutants.md. Fails when a break by
hand is not noticed, or fewer of an area's sample than it aims at.
"""

import argparse
import os
import random
import re
import signal
import subprocess
import sys
import tomllib
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from queue import SimpleQueue

from tools import TOP

COPIES = TOP / "build" / "mutants"
RESULT = TOP / "docs/mutants.md"


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
        text = (TOP / each["file"]).read_text("utf-8")
        if (count := text.count(each["old"])) != 1:
            sys.exit(f"mutants: {each['what']}: {each['file']} has {each['old']!r} {count} times")
        yield Mutant(start=text.index(each["old"]), **each)


# ---- breaks by rules ----

SWAPS = {
    "<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "===": "!==", "!==": "===",
    "and": "or", "or": "and",
}  # fmt: skip
# The formatter puts blanks around operators and none around the brackets of templates.
OPERATOR = re.compile(rf"(?<=[\w)\]] )({'|'.join(map(re.escape, SWAPS))})(?= [\w(*&!-])")
CONDITION = re.compile(r"(?<=\bif )\((.*)\)(?= \{$)|(?<=^if ).*(?=:$)")
NUMBER = re.compile(r"(?<![\w.\"'])\d+(?:\.\d+)?(?:e-?\d+)?(?![\w.\"'])")
STATEMENT = re.compile(r"(?:[\w:.\]\[]|->)+\(.*\);|[\w.\->]+ [-+|]?= .*;|\+\+\w+;")
ROW_OF_DIGITS = re.compile(r"[ 0-9.,e-]+(//.*)?")
TEXT = re.compile(r'"""(?s:.)*?"""|"(?:\\.|[^"\\\n])*"' + r"|'(?:\\.|[^'\\\n])*'|`(?:\\.|[^`\\])*`")


def moved(number):
    """The number with its last digit moved by one."""
    digits, power, exponent = number.partition("e")
    last = str((int(digits[-1]) + 1) % 10)
    whole = digits[:-1] + last if "." in digits else str(int(digits) + 1)
    return whole + power + exponent


IGNORED = ("#", "static_assert", "using", "import", "from", "export {", "assert", "*", "/*")


def code_lines(text, suffix):
    """The lines with code, each with where it starts, without what is a comment or a text."""
    start = 0
    quoted = re.compile(r'"(?:\\.|[^"\\\n])*"') if suffix in (".cpp", ".hpp") else TEXT
    blanked = quoted.sub(lambda each: re.sub(r"[^\n]", "~", each[0]), text)
    for line in blanked.splitlines(keepends=True):
        code = line.split("#" if suffix == ".py" else "//")[0].rstrip()
        if code.strip(" ~") and not code.lstrip().startswith(IGNORED):
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
    indent = len(code) - len(code.lstrip())
    for found in CONDITION.finditer(code.lstrip()):
        yield "condition negated", indent + found.start(), found[0], "not"
    for found in NUMBER.finditer(code):
        yield "number moved by one", found.start(), found[0], moved(found[0])
    statement = code.strip()
    if STATEMENT.fullmatch(statement) and statement.count("(") == statement.count(")"):
        yield "statement dropped", code.index(statement), statement, ";"


def by_rules(area):
    for path in sorted(path for pattern in AREAS[area].ruled for path in TOP.glob(pattern)):
        file = str(path.relative_to(TOP))
        if path.name in ("docstring.hpp", "cxx_runtime.cpp"):  # no code; what never runs
            continue
        text = path.read_text("utf-8")
        for start, code in code_lines(text, path.suffix):
            for rule, column, old, new in changes_of(code):
                at = start + column
                # Texts are blanked out in `code`, and are part of what a whole statement replaces.
                old = text[at : at + len(old)]
                if rule == "condition negated":
                    new = f"not ({old})" if path.suffix == ".py" else f"(!{old})"
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
    with subprocess.Popen(
        command, cwd=copy, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
        env=os.environ | environment, errors="replace", start_new_session=True,
    ) as process:  # fmt: skip
        try:
            output, _ = process.communicate(timeout=seconds)
        except subprocess.TimeoutExpired:
            # With all that it has begun, which would keep the pipe open.
            os.killpg(process.pid, signal.SIGKILL)
            return None, ""
    return process.returncode, output


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
MODULE = (
    ("release", [f"tests/{name}.py" for name in QUICK]),
    ("release", ["tests/reliability", "--ignore=tests/reliability/test_out_of_memory.py"]),
    ("debug", ["tests/test_dav2004r.py", "tests/reliability/test_leaks.py",
               "tests/reliability/test_hostile_surroundings.py"]),
    ("release", ["tests/reliability/test_out_of_memory.py"]),
)  # fmt: skip


@dataclass(frozen=True)
class Area:
    """A part of the tree: the files in it, those that rules break, its tests by stages."""

    files: str  # a regular expression
    ruled: tuple
    stages: tuple
    aim: float  # the share of a sample that has to be noticed


def of_package(*names):
    return (("release", [f"tests/package/test_{name}.py" for name in names]),)


AREAS = {
    "module": Area("tables/", ("tables/**/*.[ch]pp",), MODULE, 0.95),
    "verify": Area("tools/verify/", ("tools/verify/*.py",), of_package("verify"), 0.85),
    "atlas": Area(
        "tools/atlas/",
        tuple(
            f"tools/atlas/{name}.js"
            for name in ("figures", "lives", "numbers", "projection", "ratio", "sheet", "values")
        ),
        (("release", ["tests/package/test_atlas.py", "-k", "logic"]),),
        0.85,
    ),
    "dev": Area(r"dev$|tools/dev/|tools/check\.sh", (), of_package("dev", "check"), 0.7),
    "tools": Area(
        "tools/|examples/",
        ("tools/provenance.py", "tools/changelog.py", "tools/export.py", "examples/life.py"),
        of_package("provenance", "packaging", "export", "life", "examples", "verify"),
        0.85,
    ),
}


def area_of(mutant):
    return next(name for name, area in AREAS.items() if re.match(area.files, mutant.file))


def tests(copy, build, arguments):
    """The first test that fails on a build of the copy; None when all pass."""
    command = ("./dev", "test", "-x", "-q", *arguments)
    status, output = run(copy, 600, *command, DATA_TABLES_BUILD=build)
    return None if status == 0 else reason_of(status, output)


def noticed_by(copy, mutant):
    stages = AREAS[area_of(mutant)].stages
    if mutant.build != "release":
        stages = [(mutant.build, MODULE[2][1])]
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
    areas = {area_of(mutant) for mutant in mutants}
    for build, arguments in (stage for name in sorted(areas) for stage in AREAS[name].stages):
        if failed := tests(COPIES / "0", build, arguments):
            sys.exit(f"mutants: {build}: the tree fails as it is: {failed}")
    with ThreadPoolExecutor(jobs) as pool:
        yield from pool.map(attempt, mutants)


def tree():
    """What was broken: the commit, and whether the tree is that of the commit."""
    commit = run(TOP, 60, "git", "rev-parse", "--short", "HEAD")[1].strip()
    return f"`{commit}`" + (" and changes" if run(TOP, 60, "git", "diff", "--quiet")[0] else "")


def write(where, seeds, tried, missed, passed):
    """Tells in one file what a whole run has shown."""
    lines = [
        "# What the tests notice",
        "",
        f"Written by `./dev mutants` over {where}; by rules, of seed {', '.join(map(str, seeds))}.",
        "",
        "| area | by hand | noticed | by rules | noticed | aim |",
        "|------|--------:|--------:|---------:|--------:|----:|",
    ]
    for name, area in AREAS.items():
        hand, rules = (tried[name, by] for by in ("by hand", "by rules"))
        seen = [count - missed[name, by] for by, count in (("by hand", hand), ("by rules", rules))]
        aim = f"{area.aim:.0%}" if area.ruled else ""
        lines.append(f"| {name} | {hand} | {seen[0]} | {rules} | {seen[1]} | {aim} |")
    lines += ["", "Not noticed:", "", *(f"- {what}" for what in passed or ["none"]), ""]
    RESULT.write_text("\n".join(lines), "utf-8")


def main():
    parser = argparse.ArgumentParser(prog="./dev mutants", description=__doc__.split("\n")[0])
    parser.add_argument("--sample", type=int, default=20, help="how many of the rules, by area")
    parser.add_argument("--seeds", type=int, nargs="+", default=[1], help="which ones")
    parser.add_argument("--jobs", type=int, default=2, help="how many at a time")
    parser.add_argument("--areas", nargs="+", choices=AREAS, help="no others")
    parser.add_argument("words", nargs="*", help="parts of descriptions")
    options = parser.parse_args()
    where, areas = tree(), options.areas or [*AREAS]
    mutants = [each for each in by_hand() if area_of(each) in areas]
    for area in areas:
        for seed in options.seeds:
            mutants += sample_of(by_rules(area), options.sample, seed)
    if options.words:
        mutants = [each for each in mutants if any(word in each.what for word in options.words)]
    tried, missed, passed = Counter(), Counter(), []
    for mutant, caught in try_all(mutants, options.jobs):
        key = area_of(mutant), "by hand" if mutant.rule == "by hand" else "by rules"
        tried[key] += 1
        missed[key] += caught is None
        what = " ".join(mutant.what.split())
        passed += [] if caught else [f"{key[0]}, {mutant.rule}: `{what}`"]
        print(f"{key[0]}, {mutant.rule}: {what}: {caught or 'NOBODY'}", flush=True)
    for (area, by), count in tried.items():
        print(f"{area}, {by}: {count - missed[area, by]} of {count}")
    if not (options.words or options.areas):
        write(where, options.seeds, tried, missed, passed)
    few = [
        area
        for area in areas
        if missed[area, "by hand"]
        or missed[area, "by rules"] > (1 - AREAS[area].aim) * tried[area, "by rules"]
    ]
    sys.exit(f"mutants: too few are noticed: {', '.join(few)}" if few else 0)


if __name__ == "__main__":
    main()
