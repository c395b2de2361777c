"""Build the module for other architectures, import it there under an emulator, and compare digests.

Usage: ./dev arches [ARCHITECTURE...]. Run by the interpreter of a build, which the others are
compared with; the arguments are three for each architecture: its name in Debian, the triplet of its
compiler and the folder with its packages. Each module is imported twice: as it is, and with `zip`
and `round` wrapped, so that nothing is taken as known and every rule runs. As a control the module
for arm64 is built with products and sums contracted as well: there the rules must give other bits.
"""

import os
import subprocess
import sys
from pathlib import Path

from digest import digest_of

from marlune.tables import data_tables

TOP = Path(__file__).resolve().parent.parent
# Rates are computed in doubles, not in the wider registers that i386 is built for by default.
FLAGS = {"i386": "-msse2 -mfpmath=sse"}
CONTRACTED = "-ffp-contract=fast"
KIND = """
import platform, sys
print(sys.byteorder + "-endian", sys.maxsize.bit_length() + 1, "bits,",
      platform.python_implementation(), platform.python_version())"""
DIGEST = f"""
import builtins, sys
sys.path.append({str(TOP / "tools")!r})
if sys.argv[1:]:
    own = zip, round
    builtins.zip, builtins.round = lambda *lists: own[0](*lists), lambda *rest: own[1](*rest)
from digest import data_tables, digest_of
print(digest_of(data_tables)[0])
"""


def run(*command):
    """What the command prints; when it fails, the end of that and of this program."""
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(
            f"failed: {' '.join(map(str, command))}\n{done.stdout[-3000:]}{done.stderr[-3000:]}"
        )
    return done.stdout.strip()


def script(path, line):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(f"#!/bin/sh\n{line}\n", encoding="utf-8")
    path.chmod(0o755)
    return path


def built(folder, name, triplet, system, last_flags=""):
    """The interpreter of an architecture, which imports the module built into the folder."""
    # No root of the architecture is configured: the interpreter is told where its files are.
    python = script(
        folder / "python",
        f'PYTHONPATH="{folder}" PYTHONHOME="{system}/usr" PYTHONDONTWRITEBYTECODE=1 \\\n'
        f'  exec qemu-{name} -L "{system}" "{system}/usr/bin/python3.14" "$@"',
    )
    compiler = script(folder / "c++", f'exec {triplet}-g++ "$@" {last_flags}')
    # CMake asks that interpreter for everything. Debian's headers include some by their triplet.
    run(
        "cmake", "--preset", "release", "-S", TOP, "-B", folder, f"-DPython_EXECUTABLE={python}",
        f"-DCMAKE_CXX_COMPILER={compiler}",
        f"-DCMAKE_CXX_FLAGS={FLAGS.get(name, '')} -idirafter {system}/usr/include",
    )  # fmt: skip
    run("cmake", "--build", folder)
    return python


def main(arguments):
    os.chdir(TOP)
    expected = digest_of(data_tables)[0]
    print(f"this machine: {expected}")
    wrong = []
    architectures = list(zip(*[iter(arguments)] * 3, strict=True))
    for name, triplet, system in architectures:
        python = built(TOP / "build" / "arches" / name, name, triplet, system)
        as_it_is, by_rule = run(python, "-c", DIGEST), run(python, "-c", DIGEST, "wrapped")
        if (as_it_is, by_rule) != (expected, expected):
            wrong.append(name)
        verdict = "WRONG" if name in wrong else "equal, as it is and by every rule"
        print(f"{name}: {verdict} ({run(python, '-c', KIND)})", flush=True)
    for name, triplet, system in architectures:
        if name == "arm64":
            folder = TOP / "build" / "arches" / "control"
            python = built(folder, name, triplet, system, CONTRACTED)
            if run(python, "-c", DIGEST, "wrapped") == expected:
                wrong.append("the control")
            verdict = "EQUAL" if "the control" in wrong else "other bits, as it must be"
            print(f"{name} with {CONTRACTED}: {verdict}")
    sys.exit(f"not as it has to be: {', '.join(wrong)}" if wrong else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
