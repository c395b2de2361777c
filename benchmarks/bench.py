"""What an import of the module costs, beside other ways to have the same tables.

docs/performance.md says what is measured and how.
"""

import argparse
import ast
import concurrent.futures
import functools
import json
import os
import py_compile
import re
import shutil
import subprocess
import sys
from pathlib import Path
from statistics import median

import contenders
from contenders import PROJECT, say

BENCH = PROJECT / "build" / "bench"

# What the module is to reach: medians, as ours / theirs.
AIMS = {
    ("import", "byte code"): 0.28,
    ("import", "Cython"): 0.65,
    ("import", "floor"): 0.80,
    ("import", "limit"): 1.25,
    ("private", "byte code"): 0.85,
    ("private", "Cython"): 0.85,
}
LARGEST_EXTENSION = 300_000
SIZES = (1, 2, 4)


def child(mode, each, *before, **settings):
    """Runs child.py on a contender in a fresh interpreter."""
    env = os.environ | {"PYTHONPATH": str(each.folder), "PYTHONDONTWRITEBYTECODE": "1"} | settings
    command = [*before, sys.executable, BENCH / "child.pyc", mode, each.kind, each.file]
    done = subprocess.run(command, env=env, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"bench: {each.name}, {mode}:\n{done.stdout}{done.stderr}")
    return done


def answer(mode, each, *before, **settings):
    return ast.literal_eval(child(mode, each, *before, **settings).stdout)


@functools.cache
def undisturbed():
    """What keeps other processes off the core that measures, where the kernel grants it."""
    command = ("chrt", "--fifo", "1")
    granted = (
        shutil.which(command[0])
        and subprocess.run([*command, "true"], capture_output=True, check=False).returncode == 0
    )
    if not granted:
        say("measuring without real-time priority, which takes root or CAP_SYS_NICE")
    return command if granted else ()


def verify(found, shape):
    """All hold the same values, of the same types, in the same orders, shared in the same way; of
    the floor, which has values of its own, it is enough to hold as much, and as many floats as the
    rules make."""
    shape = shape | {"float": contenders.floats_by_rules(found[0].file)}
    wanted = answer("check", found[0])
    for each in found:
        floor = each.name == "floor"
        if answer("shape" if floor else "check", each) != (shape if floor else wanted):
            sys.exit(f"bench: {each.name} does not hold what the module holds")


def measure(found, rounds):
    """Every contender once a round, in an order that rotates; the first round only warms up."""
    os.sync()  # a file just written has dirty pages, which would count as private
    measured = [[] for _ in found]
    for turn in range(rounds + 1):
        for place in range(len(found)):
            index = (turn + place) % len(found)
            result = answer("measure", found[index], *undisturbed())
            if turn > 0:
                measured[index].append(result)
    return measured


def median_ratios(ours, theirs):
    """The medians of the ratios, round by round."""
    return {key: median(a[key] / b[key] for a, b in zip(ours, theirs)) for key in ours[0]}


def instructions(each):
    def count(mode):
        tool = ("valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null")
        report = child(mode, each, *tool, PYTHONHASHSEED="0").stderr
        return int(re.search(r"Collected : (\d+)", report)[1])

    return count("run") - count("idle")


def costs(each, results, counter):
    """Medians, and what one process is enough for."""
    return {key: median(result[key] for result in results) for key in results[0]} | {
        "minimum": min(result["import"] for result in results),
        "instructions": instructions(each),
        "bytes": each.file.stat().st_size,
        "float": answer("shape", each)["float"],
        **answer("count", each, LD_PRELOAD=str(counter)),
    }


def compare(found, rounds):
    counter = contenders.compiled(BENCH / "counter.so", contenders.HERE / "counter.c")
    measured = measure(found, rounds)
    table = []
    for each, results in zip(found, measured):
        cost = costs(each, results, counter)
        ours = table[0]["cost"] if table else cost
        ratio = {key: ours[key] / cost[key] for key in ("minimum", "instructions", "bytes")}
        ratio |= median_ratios(measured[0], results)
        table.append({"name": each.name, "cost": cost, "ratio": ratio})
    return table


def growth(grown, rounds):
    """What each contender costs, as multiples of its own cost with the smallest catalogue."""
    of_size = [
        contenders.contenders(BENCH / f"grown-{size}", file, cython=False)
        for size, file in zip(SIZES, grown)
    ]
    for found, shape in of_size:
        verify(found, shape)
    measured = measure([each for found, _ in of_size for each in found], rounds)
    smallest = of_size[0][0]
    rows = {}
    for index, each in enumerate(smallest):
        series = measured[index :: len(smallest)]
        fastest = [min(result["import"] for result in results) for results in series]
        rows[each.name] = [
            median_ratios(results, series[0]) | {"minimum": minimum / fastest[0]}
            for results, minimum in zip(series, fastest)
        ]
    return {"shapes": [shape for _, shape in of_size], "rows": rows}


def print_columns(title, head, rows):
    print(f"\n{title}")
    widths = [max(map(len, column)) for column in zip(head, *rows)]
    for first, *others in [head, *rows]:
        cells = (cell.rjust(width) for cell, width in zip(others, widths[1:]))
        print("  ".join([first.ljust(widths[0]), *cells]))


def print_comparison(table):
    def cost(key, scale=1, digits=0):
        return [f"{row['cost'][key] / scale:.{digits}f}" for row in table]

    def ratio(key):
        return [f"{row['ratio'][key]:.2f}" for row in table]

    def show(title, *columns):
        heads, cells = zip(("", [row["name"] for row in table]), *columns)
        print_columns(title, heads, list(zip(*cells)))

    show(
        "Import; ratios are ours / theirs",
        ("ms, minimum", cost("minimum", 1e6, 3)),
        ("ratio", ratio("minimum")),
        ("median", cost("import", 1e6, 3)),
        ("ratio", ratio("import")),
        ("instructions", cost("instructions")),
        ("ratio", ratio("instructions")),
        ("page faults", cost("faults")),
    )
    memory = ("resident", "private", "peak")
    show(
        "Memory added, in KiB; ratios are ours / theirs",
        *(
            (head, cells)
            for key in memory
            for head, cells in ((key, cost(key)), ("ratio", ratio(key)))
        ),
    )
    show(
        "Allocations and size",
        ("floats held", cost("float")),
        ("allocations", cost("made")),
        ("kept", cost("kept")),
        ("malloc calls", cost("malloc")),
        ("bytes on disk", cost("bytes")),
    )


def print_aims(table):
    ratios = {row["name"]: row["ratio"] for row in table}
    found = [
        (f"{key}, ours / {name}", ratios[name][key], aim, ".2f")
        for (key, name), aim in AIMS.items()
        if name in ratios
    ]
    found.append(("bytes of the extension", table[0]["cost"]["bytes"], LARGEST_EXTENSION, ","))
    lines = [
        (what, format(is_now, form), format(aim, form), "reached" if is_now <= aim else "missed")
        for what, is_now, aim, form in found
    ]
    print_columns("Aims, medians", ("", "is", "at most", ""), lines)


def print_growth(grown):
    keys = ("minimum", "resident", "faults")
    rows = [
        [name, *(f"{row[key]:.2f}" for key in keys for row in series)]
        for name, series in grown["rows"].items()
    ]
    titles = ("import", "resident", "faults")
    print_columns(
        "Growth, as multiples of the smallest catalogue; the import by its minimum",
        ["", *(f"{title} x{size}" for title in titles for size in SIZES)],
        rows,
    )
    print_columns(
        "What the grown catalogues hold, as multiples",
        ["", *(f"x{size}" for size in SIZES)],
        [
            [kind, *(f"{shape[kind] / smallest:.2f}" for shape in grown["shapes"])]
            for kind, smallest in grown["shapes"][0].items()
        ],
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--rounds", type=int, help="fresh processes of each contender (40)")
    parser.add_argument("--json", type=Path, metavar="FILE", help="write all results there as well")
    parser.add_argument(
        "--quick",
        action="store_true",
        help="5 rounds unless told, neither growth nor what is long to compile",
    )
    options = parser.parse_args()
    rounds = options.rounds or (5 if options.quick else 40)

    from marlune.tables import data_tables

    py_compile.compile(contenders.HERE / "child.py", BENCH / "child.pyc", doraise=True)
    with concurrent.futures.ThreadPoolExecutor() as pool:
        grown = [
            pool.submit(contenders.grown, BENCH / f"grown-{size}", size)
            for size in SIZES
            if not options.quick
        ]
        found, shape = contenders.contenders(BENCH, Path(data_tables.__file__), not options.quick)
    verify(found, shape)
    say(f"{rounds} rounds of {len(found)} contenders")
    results = {"rounds": rounds, "shape": shape, "contenders": compare(found, rounds)}
    if grown:
        say(f"{rounds} rounds of catalogues of {len(SIZES)} sizes")
        results["growth"] = growth([each.result() for each in grown], rounds)

    print("The module holds", ", ".join(f"{n} {kind}" for kind, n in shape.items()))
    print_comparison(results["contenders"])
    print_aims(results["contenders"])
    if grown:
        print_growth(results["growth"])
    if options.json:
        options.json.write_text(json.dumps(results, indent=1) + "\n")


if __name__ == "__main__":
    main()
