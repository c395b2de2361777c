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

from benchmarks.alternatives import HERE, alternatives, say, scaled
from tools import TOP

BENCH = TOP / "build" / "bench"

# What the module is to reach: medians, as ours / theirs.
AIMS = {
    ("import", "byte code"): 0.28,
    ("import", "Cython"): 0.65,
    ("import", "limit"): 1.25,
    ("private", "byte code"): 0.85,
    ("private", "Cython"): 0.85,
}
LARGEST_EXTENSION = 300_000
SIZES = (1, 2, 4)


def child(mode, each, *before, **settings):
    """Runs child.py on an alternative in a fresh interpreter."""
    # What is measured has nothing else on its path.
    path = f"{each.folder}:{TOP}" if mode == "describe" else str(each.folder)
    env = os.environ | {"PYTHONPATH": path, "PYTHONDONTWRITEBYTECODE": "1"} | settings
    command = [*before, sys.executable, BENCH / "child.pyc", mode, each.kind, each.file]
    done = subprocess.run(command, env=env, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"bench: {each.name}, {mode}:\n{done.stdout}{done.stderr}")
    return done


def answer(mode, each, *before):
    return ast.literal_eval(child(mode, each, *before).stdout)


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


def shapes(found):
    """How much each holds; all have to hold the same values, of the same types, in the same orders,
    shared in the same way."""
    described = [answer("describe", each) for each in found]
    for each, (digest, _) in zip(found, described):
        if digest != described[0][0]:
            sys.exit(f"bench: {each.name} does not hold what the module holds")
    return [shape for _, shape in described]


def measure(found, rounds):
    """Every alternative once a round, in an order that rotates; the first round only warms up."""
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


def counted(each, pattern, *options, **settings):
    """What a tool of Valgrind counts with the load, less what it counts without."""

    def count(mode):
        command = ("valgrind", *options)
        report = child(mode, each, *command, PYTHONHASHSEED="0", **settings).stderr
        return int(re.search(pattern, report)[1].replace(",", ""))

    return count("run") - count("idle")


def costs(each, results, shape):
    """Medians, and what one process is enough for."""
    allocations = (r"total heap usage: ([\d,]+) allocs", "--leak-check=no")
    callgrind = ("--tool=callgrind", "--callgrind-out-file=/dev/null")
    return {key: median(result[key] for result in results) for key in results[0]} | {
        "minimum": min(result["import"] for result in results),
        "instructions": counted(each, r"Collected : (\d+)", *callgrind),
        "bytes": each.file.stat().st_size,
        "float": shape["float"],
        # Of all three allocators of the interpreter, which by itself takes small blocks from pools.
        "made": counted(each, *allocations, PYTHONMALLOC="malloc"),
        "malloc": counted(each, *allocations),
    }


def compare(found, rounds):
    measured = measure(found, rounds)
    table = []
    for each, results, shape in zip(found, measured, shapes(found)):
        cost = costs(each, results, shape)
        ours = table[0]["cost"] if table else cost
        ratio = {key: ours[key] / cost[key] for key in ("minimum", "instructions", "bytes")}
        ratio |= median_ratios(measured[0], results)
        table.append({"name": each.name, "cost": cost, "ratio": ratio})
    return table


def growth(modules, rounds):
    """What each alternative costs, as multiples of its own cost with the smallest catalogue."""
    of_size = [alternatives(BENCH / f"times-{size}", file) for size, file in zip(SIZES, modules)]
    held = [shapes(found)[0] for found in of_size]
    measured = measure([each for found in of_size for each in found], rounds)
    rows = {}
    for index, each in enumerate(of_size[0]):
        series = measured[index :: len(of_size[0])]
        fastest = [min(result["import"] for result in results) for results in series]
        rows[each.name] = [
            median_ratios(results, series[0]) | {"minimum": minimum / fastest[0]}
            for results, minimum in zip(series, fastest)
        ]
    return {"shapes": held, "rows": rows}


def print_columns(title, head, rows):
    print(f"\n{title}")
    widths = [max(map(len, column)) for column in zip(head, *rows)]
    for first, *others in [head, *rows]:
        cells = (cell.rjust(width) for cell, width in zip(others, widths[1:]))
        print("  ".join([first.ljust(widths[0]), *cells]))


def print_comparison(table):
    """Three tables, of columns: a head, a key, the unit, its decimals, whether a ratio follows."""
    for title, *columns in (
        (
            "Import; ratios are ours / theirs",
            ("ms, minimum", "minimum", 1e6, 3, True), ("median", "import", 1e6, 3, True),
            ("instructions", "instructions", 1, 0, True), ("page faults", "faults", 1, 0, False),
        ), (
            "Memory added, in KiB; ratios are ours / theirs",
            *((key, key, 1, 0, True) for key in ("resident", "private", "peak")),
        ), (
            "Allocations and size",
            ("floats held", "float", 1, 0, False), ("allocations", "made", 1, 0, False),
            ("kept", "kept", 1, 0, False), ("malloc calls", "malloc", 1, 0, False),
            ("bytes on disk", "bytes", 1, 0, False),
        ),
    ):  # fmt: skip
        shown = [["", *(row["name"] for row in table)]]
        for head, key, unit, digits, compared in columns:
            shown.append([head, *(f"{row['cost'][key] / unit:.{digits}f}" for row in table)])
            if compared:
                shown.append(["ratio", *(f"{row['ratio'][key]:.2f}" for row in table)])
        heads, *rows = zip(*shown)
        print_columns(title, heads, rows)


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


def print_growth(measured):
    keys = {"minimum": "import", "resident": "resident", "faults": "faults"}
    print_columns(
        "Growth, as multiples of the smallest catalogue; the import by its minimum",
        ["", *(f"{title} x{size}" for title in keys.values() for size in SIZES)],
        [
            [name, *(f"{row[key]:.2f}" for key in keys for row in series)]
            for name, series in measured["rows"].items()
        ],
    )
    print_columns(
        "What these catalogues hold, as multiples",
        ["", *(f"x{size}" for size in SIZES)],
        [
            [kind, *(f"{shape[kind] / smallest:.2f}" for shape in measured["shapes"])]
            for kind, smallest in measured["shapes"][0].items()
        ],
    )


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--rounds", type=int, help="fresh processes of each alternative (40)")
    parser.add_argument("--json", type=Path, metavar="FILE", help="write all results there as well")
    parser.add_argument(
        "--quick",
        action="store_true",
        help="5 rounds unless told, neither growth nor what is long to compile",
    )
    options = parser.parse_args()
    rounds = options.rounds or (5 if options.quick else 40)

    from marlune.tables import data_tables

    py_compile.compile(str(HERE / "child.py"), str(BENCH / "child.pyc"), doraise=True)
    with concurrent.futures.ThreadPoolExecutor() as pool:
        sizes = () if options.quick else SIZES
        building = [pool.submit(scaled, BENCH / f"times-{size}", size) for size in sizes]
        found = alternatives(BENCH, Path(data_tables.__file__), not options.quick)
        modules = [each.result() for each in building]
    shape = shapes(found[:1])[0]
    say(f"{rounds} rounds of {len(found)} alternatives")
    results = {"rounds": rounds, "shape": shape, "alternatives": compare(found, rounds)}
    if modules:
        say(f"{rounds} rounds of catalogues of {len(SIZES)} sizes")
        results["growth"] = growth(modules, rounds)

    print("The module holds", ", ".join(f"{n} {kind}" for kind, n in shape.items()))
    print_comparison(results["alternatives"])
    print_aims(results["alternatives"])
    if modules:
        print_growth(results["growth"])
    if options.json:
        options.json.write_text(json.dumps(results, indent=1) + "\n")


if __name__ == "__main__":
    main()
