"""Build the module for other architectures, import it there under an emulator, and compare digests.

Usage: ./dev arches [ARCHITECTURE...]. Run by the interpreter of a build, which the others are
compared with; the arguments are three for each architecture: its name in Debian, the triplet of its
compiler and the folder with its packages. Each module is imported as it is, and with `zip` and
`round` wrapped, so that nothing is taken as known and every rule runs. As a control the last bit of
one rate is changed: its digest has to differ.
"""

import os
import subprocess
import sys
from pathlib import Path

from marlune.tables import data_tables
from tools import TOP
from tools.digest import digest_of

# Rates are computed in doubles, not in the wider registers that i386 is built for by default.
FLAGS = {"i386": "-msse2 -mfpmath=sse"}
KIND = """
import platform, sys
print(sys.byteorder + "-endian", sys.maxsize.bit_length() + 1, "bits,",
      platform.python_implementation(), platform.python_version())"""
DIGEST = f"""
import builtins, math, sys
sys.path.append({str(TOP)!r})
if sys.argv[1] == "by every rule":
    own = zip, round
    builtins.zip, builtins.round = lambda *lists: own[0](*lists), lambda *rest: own[1](*rest)
from marlune.tables import data_tables
from tools.digest import digest_of
if sys.argv[1] == "control":
    rates = data_tables.PER2020_Ind_1o["data"]["qx_f"]
    rates[65] = math.nextafter(rates[65], 1)
print(digest_of(data_tables)[0])
"""


def run(*command: str | Path) -> str:
    """What the command prints; when it fails, the end of that and of this program."""
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(
            f"failed: {' '.join(map(str, command))}\n{done.stdout[-3000:]}{done.stderr[-3000:]}"
        )
    return done.stdout.strip()


def script(path: Path, line: str) -> Path:
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(f"#!/bin/sh\n{line}\n", encoding="utf-8")
    path.chmod(0o755)
    return path


def built(folder: Path, name: str, triplet: str, system: str) -> Path:
    """The interpreter of an architecture, which imports the module built into the folder."""
    # No root of the architecture is configured: the interpreter is told where its files are.
    python = script(
        folder / "python",
        f'PYTHONPATH="{folder}" PYTHONHOME="{system}/usr" PYTHONDONTWRITEBYTECODE=1 \\\n'
        f'  exec qemu-{name} -L "{system}" "{system}/usr/bin/python3.14" "$@"',
    )
    # CMake asks that interpreter for everything. Debian's headers include some by their triplet.
    run(
        "cmake", "--fresh", "--preset", "release", "-S", TOP, "-B", folder,
        f"-DPython_EXECUTABLE={python}",
        f"-DCMAKE_CXX_COMPILER={triplet}-g++",
        f"-DCMAKE_CXX_FLAGS={FLAGS.get(name, '')} -idirafter {system}/usr/include",
    )  # fmt: skip
    run("cmake", "--build", folder)
    return python


def main(arguments: list[str]) -> None:
    os.chdir(TOP)
    expected = digest_of(data_tables)[0]
    print(f"this machine: {expected}")
    wrong = []
    for name, triplet, system in zip(*[iter(arguments)] * 3, strict=True):
        python = built(TOP / "build" / "arches" / name, name, triplet, system)
        row = [f"{name} ({run(python, '-c', KIND)}):"]
        for way in "as it is", "by every rule", "control":
            equal = run(python, "-c", DIGEST, way) == expected
            row.append(f"{way} {'equal' if equal else 'different'}")
            if equal == (way == "control"):
                wrong.append(f"{name} {way}")
        print(row[0], ", ".join(row[1:]), flush=True)
    sys.exit(f"not as it has to be: {', '.join(wrong)}" if wrong else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
