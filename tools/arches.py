"""Build the module for other architectures, import it there under an emulator, and compare digests.

Usage: ./dev arches [ARCHITECTURE...]. Run by the interpreter of a build, which the others are
compared with; the arguments are three for each architecture: its name in Debian, the triplet of its
compiler and the folder with its packages. Each module is imported as it is, and with `zip` and
`round` wrapped, so that nothing is taken as known and every rule runs. As a control the last bit of
one rate is changed: its digest has to differ. An interpreter that rounds twice what it computes, as
that of i386 does, has to give by every rule what it gives as it is, but for its own products. Rows
are printed as docs/portability.md has them.
"""

import os
import subprocess
import sys
from pathlib import Path

from marlune.tables import data_tables
from tools import TOP, wasm
from tools.digest import digest_of

# The module computes in doubles, not in the wider registers that i386 is built for by default; the
# interpreter there computes in those.
FLAGS = {"i386": "-msse2 -mfpmath=sse"}
COMMIT = "git -c safe.directory=\"$PWD\" describe --always --dirty --exclude='*' || echo no clone"
KIND = """
import platform, sys
print(f"{sys.maxsize.bit_length() + 1} bits, {sys.byteorder}-endian |",
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
changed = 0
if sys.argv[1] == "own products":
    for table in data_tables.DAV2004R_SelUlt_1o, data_tables.DAV2004R_SelUlt_2o:
        for rates in table["data"]["qx_m"], table["data"]["qx_f"]:
            for duration in range(1, 6):
                *selected, factor = rates[duration]
                own = [rate * factor for rate in rates["ult"][:-1]]
                changed += sum(map(float.__ne__, own, selected))
                rates[duration][:-1] = own
print(digest_of(data_tables)[0], changed, 1.0 + (2.0**-53 + 2.0**-64) == 1.0)
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


def configure(folder: Path) -> list[str | Path]:
    return ["cmake", "--fresh", "--preset", "release", "-S", TOP, "-B", folder]


def emulated(path: Path, name: str, system: str, modules: Path) -> Path:
    """A program that is the interpreter of an architecture, and finds modules in that folder."""
    # No root of the architecture is configured: the interpreter is told where its files are, and
    # that it is this program, which it is to start where it starts itself.
    return script(
        path,
        f'PYTHONPATH="{modules}" PYTHONHOME="{system}/usr" PYTHONDONTWRITEBYTECODE=1 \\\n'
        f'  exec qemu-{name} -0 "$0" -L "{system}" "{system}/usr/bin/python3.14" "$@"',
    )


def built(folder: Path, name: str, triplet: str, system: str) -> Path:
    """The interpreter of an architecture, which imports the module built into the folder."""
    if name == "wasm32":
        python = script(folder / "python", f'PYTHONPATH="{folder}" {wasm.command(system)} "$@"')
        run(*configure(folder), *wasm.options(folder, python, run))
        run("cmake", "--build", folder)
        return python
    python = emulated(folder / "python", name, system, folder)
    # CMake asks that interpreter for everything. Debian's headers include some by their triplet.
    run(
        *configure(folder),
        f"-DPython_EXECUTABLE={python}",
        f"-DCMAKE_CXX_COMPILER={triplet}-g++",
        f"-DCMAKE_CXX_FLAGS={FLAGS.get(name, '')} -idirafter {system}/usr/include",
    )  # fmt: skip
    run("cmake", "--build", folder)
    return python


def compared(python: Path, expected: str) -> tuple[list[str], list[str]]:
    """What is found in each way, and the ways in which that is not as it has to be."""
    found, wrong = [], []
    for way in "as it is", "by every rule", "control":
        digest, _, rounds_twice = run(python, "-c", DIGEST, way).split()
        found.append("equal" if digest == expected else "different")
        right = found[-1] == ("different" if way == "control" else "equal")
        if way == "by every rule" and rounds_twice == "True":
            own, count, _ = run(python, "-c", DIGEST, "own products").split()
            right = digest == own
            if right:
                found[-1] = f"equal but for {count} of the interpreter's own products"
        wrong += [] if right else [way]
    return found, wrong


def main(arguments: list[str]) -> None:
    os.chdir(TOP)
    commit = run("sh", "-c", COMMIT)
    expected = digest_of(data_tables)[0]
    print(f"this machine, {commit}: {expected}")
    print("| architecture | | | as it is | by every rule | control | commit |")
    wrong = []
    for name, triplet, system in zip(*[iter(arguments)] * 3, strict=True):
        python = built(TOP / "build" / "arches" / name, name, triplet, system)
        found, not_right = compared(python, expected)
        print("|", " | ".join([name, run(python, "-c", KIND), *found, commit]), "|", flush=True)
        wrong += [f"{name} {way}" for way in not_right]
    sys.exit(f"not as it has to be: {', '.join(wrong)}" if wrong else 0)


if __name__ == "__main__":
    main(sys.argv[1:])
