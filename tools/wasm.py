"""The module for WebAssembly, built with Emscripten for the CPython that Pyodide is.

Pyodide's package for npm brings an interpreter and no headers. The headers are those of this
machine's CPython; the settings in them (pyconfig.h), and the options of the compiler, are what that
interpreter says of itself.
"""

import json
import os
import shutil
import sysconfig
from collections.abc import Callable
from pathlib import Path

from tools import TOP

# A side module is loaded into the interpreter's program; what it does not export is dropped.
LINKED = "-sSIDE_MODULE=2 -sEXPORTED_FUNCTIONS=_PyInit_data_tables"
SAID = "import json, sysconfig; print(json.dumps(sysconfig.get_config_vars()))"

type Run = Callable[..., str]


def command(pyodide: str) -> str:
    """What Pyodide's interpreter is run by, before its arguments."""
    settings = "PYTHONUNBUFFERED=1 PYTHONDONTWRITEBYTECODE=1"
    return f'{settings} exec node "{TOP}/tools/pyodide.mjs" "{pyodide}"'


def headers(folder: Path, settings: dict[str, object]) -> Path:
    """This machine's headers of CPython, with these settings in place of its own."""
    own = Path(sysconfig.get_path("include"))
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(own, folder)
    # Debian has several, by their triplets; which names there are is the same in all.
    names: dict[str, object] = {}
    for file in (own / "pyconfig.h", *own.parent.glob(f"*/{own.name}/pyconfig.h")):
        with file.open(encoding="utf-8") as text:
            names |= sysconfig.parse_config_h(text)
    lines = [f"#define {name} {settings[name]}" for name in sorted(names) if settings.get(name)]
    assert "#define SIZEOF_VOID_P 4" in lines, lines
    (folder / "pyconfig.h").write_text("\n".join(("#pragma once", *lines, "")), "utf-8")
    return folder


def platform(pyodide: str) -> str:
    """What the packages for that interpreter are tagged with."""
    said = json.loads((Path(pyodide) / "pyodide-lock.json").read_text("utf-8"))["info"]
    return f"pyemscripten-{said['abi_version']}-{said['arch']}"


def options(folder: Path, python: Path, run: Run) -> list[str]:
    """What CMake is told in order to build for that interpreter."""
    # Emscripten's libraries are made once.
    os.environ["EM_CACHE"] = str(TOP / "build" / "emscripten")
    toolchain = run("em-config", "EMSCRIPTEN_ROOT") + "/cmake/Modules/Platform/Emscripten.cmake"
    settings = json.loads(run(python, "-c", SAID))
    return [
        f"-DCMAKE_TOOLCHAIN_FILE={toolchain}",
        f"-DCMAKE_CROSSCOMPILING_EMULATOR={shutil.which('node')}",
        f"-DPython_EXECUTABLE={python}",
        f"-DPython_INCLUDE_DIR={headers(folder / 'include', settings)}",
        f"-DCMAKE_CXX_FLAGS={settings['CONFIGURE_CFLAGS']}",
        f"-DCMAKE_MODULE_LINKER_FLAGS={LINKED}",
    ]
