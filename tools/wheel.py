"""Build the source distribution and, from nothing but that, the wheel; then prove both.

Usage: ./dev wheel [FOLDER]. Both, the atlas and all tables as files (what ./dev export writes) go
to FOLDER, dist unless named. Nothing is fetched. Run by the interpreter of a build: the wheel has
to hold that very module, the one that the tests have tested. Its name tells for which systems it
is: those with the C library that the symbols of the module ask for, or a newer one. Both are built
twice, and have to come out the same to the byte.

./dev wheel --for ARCHITECTURE [FOLDER] makes the wheel for another one, from a source distribution
of its own that is not kept. There is no tested module to compare with: it is imported under the
emulator, as ./dev arches does, and kept if the digests are as they have to be. That for wasm32 is
installed by the loader of Pyodide, for whose Python it is.
"""

import importlib.util
import os
import re
import shutil
import subprocess
import sys
import tarfile
import tomllib
import venv
from email import message_from_bytes
from hashlib import sha256
from pathlib import Path
from tempfile import TemporaryDirectory
from zipfile import ZipFile

import scikit_build_core

from marlune.tables import data_tables
from tools import TOP, arches, export, wasm
from tools.digest import digest_of

# Where Python finds what builds the wheel.
BACK_END = Path(scikit_build_core.__file__).parent.parent

# The rest of the package, as far as data_tables can tell.
STAND_IN = TOP / "tests" / "package" / "stand_in"

IMPORT = """
import json, pathlib, sys
import marlune.tables.data_tables as module
assert module.__file__.startswith(sys.prefix)
sources = pathlib.Path(module.__file__).with_name("data_tables_sources.json").read_text("utf-8")
assert list(json.loads(sources)["tables"]) == list(module.REPO_TABLES)
"""
ALONE = (
    IMPORT
    + """
import marlune.tables
assert marlune.__file__ is None and marlune.tables.__file__ is None
"""
)
# As the README documents it.
BESIDE = (
    IMPORT
    + """
from marlune import TableBuilder
for name, table in module.REPO_TABLES.items():
    payload = dict(table)
    data = payload.pop("data")
    built = TableBuilder(data, **payload)
    assert built.data is table["data"] and built.table_name == table["table_name"]
    assert getattr(module, name) is table
"""
)
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


def pip(*arguments: str | Path, python: str | Path = sys.executable) -> None:
    options = ("--isolated", "--quiet", "--disable-pip-version-check")
    run(python, "-m", "pip", *options, *arguments)


def git(*arguments: str) -> str:
    return run("git", "-c", f"safe.directory={TOP}", *arguments)


def system_tag(wheel: Path) -> tuple[str, list[str]]:
    """The systems that a wheel is for, and what it takes from the newest C library among them."""
    with TemporaryDirectory() as folder, ZipFile(wheel) as archive:
        (module,) = (name for name in archive.namelist() if name.endswith(".so"))
        shown = run("readelf", "-dSVrW", "--dyn-syms", archive.extract(module, folder))
    needed = re.findall(r"\(NEEDED\) +Shared library: \[(\S+)\]", shown)
    assert needed and all(re.match(r"(libc|ld-linux[-\w]*)\.so", name) for name in needed), needed
    by_version: dict[tuple[int, int], list[str]] = {}
    for name, version in re.findall(r" UND (\S+)@GLIBC_(\S+)", shown):
        # A version that is no number is the C library's own affair, and the newest systems'.
        assert re.fullmatch(r"[0-9.]+", version), f"{name} needs GLIBC_{version}"
        major, minor = map(int, version.split(".")[:2])
        by_version.setdefault((major, minor), []).append(name)
    assert "ABI_DT_RELR" not in shown
    # Storage of a thread that is allocated when it is first used: without memory, the process ends.
    on_demand = re.findall(r".*(?:DTPMOD|DTPREL|DTPOFF|TLSDESC).*", shown)
    assert not on_demand, on_demand
    assert ".symtab" not in shown, f"{module} is not stripped"
    (major, minor), names = max(by_version.items())
    machine = wheel.stem.partition("linux_")[2]
    return f"manylinux_{major}_{minor}_{machine}", sorted(names)


def make_wheel(
    source: Path, folder: Path, python: str | Path = sys.executable, *settings: str
) -> Path:
    """The wheel that pip builds from a source distribution or a folder, and fetches nothing."""
    with TemporaryDirectory() as made:
        options = ("--no-index", "--no-build-isolation", "--wheel-dir", made, *settings)
        pip("wheel", *options, source, python=python)
        (wheel,) = Path(made).iterdir()
        if "linux_" in wheel.stem:
            systems, names = system_tag(wheel)
            run(
                sys.executable, "-m", "wheel",
                "tags", "--remove", "--platform-tag", systems, wheel,
            )  # fmt: skip
            (wheel,) = Path(made).iterdir()
            print(f"The wheel is for {systems}, because of {', '.join(names)}.")
        folder.mkdir(parents=True, exist_ok=True)
        (folder / wheel.name).write_bytes(wheel.read_bytes())
    return folder / wheel.name


def make_source_distribution(folder: Path) -> Path:
    """All that git holds, as it is in the working tree, and nothing else."""
    held = set(git("ls-files", "-z").rstrip("\0").split("\0"))
    backend = "import sys, scikit_build_core.build as b; print('\\n' + b.build_sdist(sys.argv[1]))"
    with TemporaryDirectory() as copy:
        for name in held:
            (Path(copy) / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(TOP / name, Path(copy) / name, follow_symlinks=False)
        made = run(sys.executable, "-c", backend, folder, cwd=Path(copy)).split()[-1]
    with tarfile.open(folder / made) as archive:
        packed = {name.partition("/")[2] for name in archive.getnames()}
    assert packed == held | {"PKG-INFO"}, packed ^ held
    return folder / made


def prove_contents(wheel: Path, built: Path) -> list[str]:
    """The files that the wheel installs, beside its metadata; they are what they have to be."""
    project = tomllib.loads((TOP / "pyproject.toml").read_text("utf-8"))["project"]
    with ZipFile(wheel) as archive:
        files = [name for name in archive.namelist() if ".dist-info/" not in name]
        installed = built.parents[2]
        assert set(files) == {
            str(path.relative_to(installed)) for path in installed.rglob("*") if path.is_file()
        }, files
        for name in files:
            same = archive.read(name) == (installed / name).read_bytes()
            assert same, f"{name} is not the one in {installed}"
        (place,) = (name for name in archive.namelist() if name.endswith("/METADATA"))
        metadata = message_from_bytes(archive.read(place))
    assert (metadata["Name"], metadata["Version"]) == (project["name"], project["version"])
    assert set(metadata["Requires-Python"].split(",")) == set(project["requires-python"].split(","))
    assert "Requires-Dist" not in metadata, metadata["Requires-Dist"]
    # It is shown where the files of the project are not.
    assert not re.search(r"\]\((?!https:)", str(metadata.get_payload())), (
        "the description has relative links"
    )
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
        # Elsewhere on the path, as where the rest is installed editable or to a folder of its own.
        elsewhere, unaware = site / "elsewhere.pth", home / "unaware"
        elsewhere.write_text(str(STAND_IN), "utf-8")
        prove(BESIDE)
        for file in STAND_IN.glob("marlune/**/__init__.py"):
            text = "".join(re.split(r".*extend_path.*\n", file.read_text("utf-8")))
            copy = unaware / file.relative_to(STAND_IN)
            copy.parent.mkdir(parents=True)
            copy.write_text(text, "utf-8")
        elsewhere.write_text(str(unaware), "utf-8")
        prove(WITHOUT)
        elsewhere.unlink()
        change(*uninstall, "marlune-data-tables")
        left = [path for path in site.rglob("*") if not path.is_dir()]
        assert not left, f"left behind: {left}"


def make_and_load(name: str, system: str, home: Path) -> tuple[Path, Path]:
    """The wheel for another architecture, and an interpreter of that one which finds it."""
    source = make_source_distribution(home)
    if name != "wasm32":
        # There, too, the back end and what it needs are those of this machine.
        python = arches.emulated(home / "build" / "python", name, system, BACK_END)
        wheel = make_wheel(source, home / "wheel", python)
        with ZipFile(wheel) as archive:
            archive.extractall(home / "installed")
        return wheel, arches.emulated(home / "python", name, system, home / "installed")
    # Pyodide's interpreter starts no processes: this machine's runs pip and the back end.
    os.environ["_PYTHON_HOST_PLATFORM"] = wasm.platform(system)
    asked = arches.script(home / "asked", f'{wasm.command(system)} "$@"')
    told = ";".join(wasm.options(home, asked, arches.run))
    wheel = make_wheel(source, home / "wheel", sys.executable, f"-Ccmake.args={told}")
    loaded = f'DATA_TABLES_WHEEL="{wheel}" {wasm.command(system)} "$@"'
    return wheel, arches.script(home / "python", loaded)


def make_for(name: str, system: str, folder: Path) -> None:
    """The wheel for another architecture, built with the compiler and flags of the environment."""
    expected = digest_of(data_tables)[0]
    with TemporaryDirectory() as made:
        wheel, python = make_and_load(name, system, Path(made).resolve())
        found, wrong = arches.compared(python, expected)
        print(f"As it is, by every rule, control: {', '.join(found)}.")
        if wrong:
            sys.exit(f"not kept; not as it has to be: {', '.join(wrong)}")
        folder.mkdir(parents=True, exist_ok=True)
        print(sha256(wheel.read_bytes()).hexdigest(), shutil.copy(wheel, folder))


def make_for_this_machine(folder: Path) -> None:
    folder.mkdir(parents=True, exist_ok=True)
    spec = importlib.util.find_spec("marlune.tables.data_tables")
    assert spec and spec.origin, "run by ./dev wheel, with a build to compare with"
    source = make_source_distribution(folder)
    wheel = make_wheel(source, folder)
    with TemporaryDirectory() as again:
        source_again = make_source_distribution(Path(again))
        wheel_again = make_wheel(source_again, Path(again))
        for first, second in (source, source_again), (wheel, wheel_again):
            assert first.name == second.name and first.read_bytes() == second.read_bytes(), first
            print(sha256(first.read_bytes()).hexdigest(), first)
    print("Built twice, each came out the same. The first holds what git holds and nothing else.")
    print("Built from that distribution alone, it holds the tested module, byte for byte:")
    print(*prove_contents(wheel, Path(spec.origin)), sep="\n")
    page = folder / "atlas.html"
    page.write_bytes((TOP / "docs" / "atlas.html").read_bytes())
    print("To look at the tables:", page)
    print("All of them without Python:", export.write(folder))
    with TemporaryDirectory() as made:
        prove_installation(wheel, make_wheel(STAND_IN, Path(made)))
    print(
        "In a new environment it works alone and beside a package marlune, whichever is first and"
    )
    print("wherever that is; uninstalling either leaves the other working, both leaves no file.")


def main() -> None:
    arguments = sys.argv[1:]
    # What is packed is as old as the commit, whenever it is packed.
    os.environ["SOURCE_DATE_EPOCH"] = git("log", "-1", "--format=%ct").strip()
    other = arguments[1:3] if arguments[:1] == ["--for"] else []
    (folder,) = arguments[3 if other else 0 :] or [str(TOP / "dist")]
    if other:
        name, system = other
        make_for(name, system, Path(folder).resolve())
    else:
        make_for_this_machine(Path(folder).resolve())


if __name__ == "__main__":
    main()
