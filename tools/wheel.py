"""Build the source distribution and, from nothing but that, the wheel; then prove the wheel.

Usage: ./dev wheel [FOLDER]. Both end up in FOLDER, by default dist. Nothing is fetched. Run by the
interpreter of a build: the wheel has to hold that very module, the one that the tests have tested.
"""

import importlib.util
import os
import subprocess
import sys
import tomllib
import venv
from email import message_from_bytes
from pathlib import Path
from tempfile import TemporaryDirectory
from zipfile import ZipFile

TOP = Path(__file__).resolve().parent.parent
# The rest of the package, as far as data_tables can tell.
STAND_IN = TOP / "tests" / "package" / "stand_in"

IMPORT = """
import json, pathlib, sys
import marlune.tables.data_tables as module
assert module.__file__.startswith(sys.prefix)
sources = pathlib.Path(module.__file__).with_name("data_tables_sources.json").read_text("utf-8")
assert list(json.loads(sources)["tables"]) == list(module.REPO_TABLES)
"""
ALONE = IMPORT + """
import marlune.tables
assert marlune.__file__ is None and marlune.tables.__file__ is None
"""
# As the README documents it.
BESIDE = IMPORT + """
from marlune import TableBuilder
for name, table in module.REPO_TABLES.items():
    payload = dict(table)
    data = payload.pop("data")
    built = TableBuilder(data, **payload)
    assert built.data is table["data"] and built.table_name == table["table_name"]
    assert getattr(module, name) is table
"""
WITHOUT = """
import importlib.util, marlune
assert marlune.TableBuilder and importlib.util.find_spec("marlune.tables.data_tables") is None
"""


def run(*command: str | Path, cwd: Path = TOP) -> str:
    """What the command prints. It sees no other build of the module, nor settings of the caller."""
    environment = {key: value for key, value in os.environ.items() if not key.startswith("PYTHON")}
    done = subprocess.run(
        command, cwd=cwd, env=environment, capture_output=True, text=True, check=False
    )
    if done.returncode != 0:
        print(done.stdout, done.stderr, sep="", file=sys.stderr)
        sys.exit(f"failed: {' '.join(map(str, command))}")
    return done.stdout


def pip(*arguments: str | Path) -> None:
    options = ("--isolated", "--quiet", "--disable-pip-version-check")
    run(sys.executable, "-m", "pip", *options, *arguments)


def make_wheel(source: Path, folder: Path) -> Path:
    """The wheel that pip builds from a source distribution or a folder, and fetches nothing."""
    with TemporaryDirectory() as made:
        pip("wheel", "--no-index", "--no-build-isolation", "--wheel-dir", made, source)
        (wheel,) = Path(made).iterdir()
        folder.mkdir(parents=True, exist_ok=True)
        (folder / wheel.name).write_bytes(wheel.read_bytes())
    return folder / wheel.name


def make_source_distribution(folder: Path) -> Path:
    backend = "import sys, scikit_build_core.build as b; print('\\n' + b.build_sdist(sys.argv[1]))"
    return folder / run(sys.executable, "-c", backend, folder).split()[-1]


def prove_contents(wheel: Path) -> list[str]:
    """The files that the wheel installs, beside its metadata; they are what they have to be."""
    spec = importlib.util.find_spec("marlune.tables.data_tables")
    assert spec and spec.origin, "run by ./dev wheel, with a build to compare with"
    built = Path(spec.origin)
    project = tomllib.loads((TOP / "pyproject.toml").read_text("utf-8"))["project"]
    with ZipFile(wheel) as archive:
        files = [name for name in archive.namelist() if ".dist-info/" not in name]
        assert sorted(files) == [
            f"marlune/tables/{name}"
            for name in (built.name, "data_tables.pyi", "data_tables_sources.json", "py.typed")
        ], files
        for name in files:
            same = archive.read(name) == built.with_name(Path(name).name).read_bytes()
            assert same, f"{name} is not the one in {built.parent}"
        (metadata,) = (name for name in archive.namelist() if name.endswith("/METADATA"))
        told = message_from_bytes(archive.read(metadata))
    assert (told["Name"], told["Version"]) == (project["name"], project["version"])
    assert set(told["Requires-Python"].split(",")) == set(project["requires-python"].split(","))
    assert "Requires-Dist" not in told, told["Requires-Dist"]
    return files


def prove_installation(wheel: Path, rest: Path) -> None:
    """In a new environment the wheel works alone and beside the rest, and each leaves the other."""
    with TemporaryDirectory() as folder:
        home = Path(folder).resolve()
        venv.create(home)
        python = home / "bin" / "python"
        (site,) = home.glob("lib/python*/site-packages")

        def change(*arguments: str | Path) -> None:
            pip("--python", python, *arguments)

        def prove(snippet: str) -> None:
            run(python, "-I", "-c", snippet, cwd=home)

        install, uninstall = ("install", "--no-index"), ("uninstall", "--yes")
        change(*install, wheel)
        prove(ALONE)
        change(*install, rest)
        prove(BESIDE)
        change(*uninstall, "marlune-data-tables")
        prove(WITHOUT)
        change(*install, wheel)
        prove(BESIDE)
        change(*uninstall, "marlune")
        prove(ALONE)
        change(*uninstall, "marlune-data-tables")
        left = [path for path in site.rglob("*") if not path.is_dir()]
        assert not left, f"left behind: {left}"


def main() -> None:
    folder = Path(sys.argv[1] if len(sys.argv) > 1 else TOP / "dist").resolve()
    folder.mkdir(parents=True, exist_ok=True)
    source = make_source_distribution(folder)
    wheel = make_wheel(source, folder)
    print(source, wheel, sep="\n")
    print("The wheel, built from that distribution alone, holds the tested module, byte for byte:")
    print(*prove_contents(wheel), sep="\n")
    with TemporaryDirectory() as made:
        prove_installation(wheel, make_wheel(STAND_IN, Path(made)))
    print("In a new environment it works alone and beside a package marlune, whichever is first;")
    print("uninstalling either leaves the other working, uninstalling both leaves no file.")


if __name__ == "__main__":
    main()
