"""What the module is compared with: made in build/bench, from the module itself."""

import json
import pickle
import py_compile
import re
import subprocess
import sys
import sysconfig
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

from tools import TOP
from tools.digest import attributes_of, objects_of

HERE = TOP / "benchmarks"
MODULE_FILE = Path("marlune", "tables", "data_tables")
EXTENSION = MODULE_FILE.with_suffix(sysconfig.get_config_var("EXT_SUFFIX"))


@dataclass
class Alternative:
    name: str
    kind: str  # how child.py loads it
    file: Path  # what an installation would hold
    folder: Path  # what child.py has on its path


def say(text):
    print(f"bench: {text}", file=sys.stderr)


def run(*command):
    done = subprocess.run([*map(str, command)], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"bench: {' '.join(map(str, command))}\n{done.stdout}{done.stderr}")


def write(path, content):
    """Only where it changes anything, so that nothing is built again without need."""
    content = content if isinstance(content, bytes) else content.encode()
    path.parent.mkdir(parents=True, exist_ok=True)
    if not path.exists() or path.read_bytes() != content:
        path.write_bytes(content)
    return path


def compiled(target, *sources):
    newest = max(source.stat().st_mtime for source in sources)
    if not target.exists() or target.stat().st_mtime < newest:
        target.parent.mkdir(parents=True, exist_ok=True)
        include = "-I" + sysconfig.get_path("include")
        run("gcc", "-O2", "-DNDEBUG", "-s", "-shared", "-fPIC", include, sources[0], "-o", target)
    return target


def python_source(tables):
    """The tables as a plain module; a list or dict that several places hold gets a name."""
    parts = [part for found in objects_of(tables) if type(found) is dict for part in found.values()]
    uses = Counter(id(part) for part in parts if type(part) in (list, dict))
    names, lines = {}, []

    def display(found):
        if id(found) in names:
            return names[id(found)]
        text = repr(found)
        if type(found) is dict:
            text = "{" + ", ".join(f"{key!r}: {display(each)}" for key, each in found.items()) + "}"
        if uses[id(found)] < 2:
            return text
        names[id(found)] = f"_SHARED_{len(names)}"
        lines.append(f"{names[id(found)]} = {text}")
        return names[id(found)]

    for name, payload in tables.items():
        lines.append(f"{name} = {display(payload)}")
    lines.append("REPO_TABLES = {" + ", ".join(f"{name!r}: {name}" for name in tables) + "}")
    return "\n".join(lines) + "\n"


def json_document(tables):
    """The tables with their columns by number, so that a shared one stands once."""
    columns, numbers = [], {}

    def place(column):
        if id(column) not in numbers:
            mapping = type(column) is dict
            columns.append({k: place(v) for k, v in column.items()} if mapping else column)
            numbers[id(column)] = len(columns) - 1
        return numbers[id(column)]

    placed = {
        name: payload | {"data": {key: place(column) for key, column in payload["data"].items()}}
        for name, payload in tables.items()
    }
    return json.dumps(
        {"columns": columns, "tables": placed}, ensure_ascii=False, separators=(",", ":")
    )


def limit_header(held):
    """The constants of the limit, and its program, in C."""
    found = objects_of(held)
    floats = list(dict.fromkeys(each for each in found if type(each) is float))
    texts = list(dict.fromkeys(each for each in found if type(each) is str))
    ints = list(dict.fromkeys(each for each in found if type(each) is int))
    constants = [None, False, True, *texts, *ints]
    number = {(type(each), each): place for place, each in enumerate(constants)}
    float_number = {each: place for place, each in enumerate(floats)}
    slots: list[int] = []
    program: list[int] = []
    ranges: dict[tuple[int, ...], int] = {}
    made: dict[int, int] = {}

    def of(part):
        """The number of a constant, or of a list or dict, which the program then has made."""
        if type(part) not in (list, dict):
            return number[type(part), part]
        if id(part) in made:
            return made[id(part)]
        if type(part) is list:
            last = 0 if type(part[-1]) is float else of(part[-1])
            # What stands there is not looked at where the list ends in an int.
            filled = tuple(float_number.get(each, 0) for each in part)
            if filled not in ranges:
                ranges[filled] = len(slots)
                slots.extend(filled)
            step = [0, ranges[filled], len(part), last]
        else:
            step = [1, len(part), *(of(each) for entry in part.items() for each in entry)]
        program.extend(step)
        made[id(part)] = len(constants) + len(made)
        return made[id(part)]

    # Every text starts at an even place, as the wide ones must.
    units, places = bytearray(), []
    for text in texts:
        width = 1 if max(text) < "\u0100" else 2
        kind = 0 if text.isascii() and text.isidentifier() else width
        places += [kind, len(units), len(text)]
        units += text.encode("latin-1" if width == 1 else "utf-16-le") + bytes(2)
        units += bytes(len(units) % 2)

    bindings = [of(each) for entry in held.items() if not callable(entry[1]) for each in entry]
    lines = [
        f"enum {{ containers = {len(made)} }};",
        f"static const double values[] = {{{', '.join(map(float.hex, floats))}}};",
    ]
    for name, array in (
        ("ints", ints), ("units", list(units)), ("texts", places), ("slots", slots),
        ("program", program), ("bindings", bindings),
    ):  # fmt: skip
        most = max(array)
        c_type = "unsigned char" if most < 1 << 8 else "unsigned short" if most < 1 << 16 else "int"
        lines.append(f"_Alignas(2) static const {c_type} {name}[] = {{{str(array)[1:-1]}}};")
    return "\n".join(lines) + "\n"


def imported(file):
    """The module of this file, also when another one of its name has been imported before."""
    for name in [name for name in sys.modules if name.split(".")[0] in ("marlune", "data_tables")]:
        del sys.modules[name]
    sys.path.insert(0, str(file.parents[2]))
    from marlune.tables import data_tables

    sys.path.pop(0)
    assert data_tables.__file__ == str(file)
    return data_tables


def alternatives(folder, own, cython=False):
    """All of them, the extension `own` first; made in the folder from what that holds."""
    module = imported(own)
    tables = module.REPO_TABLES
    source = write(folder / "bytecode" / MODULE_FILE.with_suffix(".py"), python_source(tables))
    byte_code = Path(str(py_compile.compile(str(source), doraise=True)))
    found = [
        Alternative("ours", "module", own, own.parents[2]),
        Alternative("byte code", "module", byte_code, folder / "bytecode"),
    ]
    if cython:
        plain = write(folder / "cython/source/data_tables.py", source.read_bytes())
        c_file, target = plain.with_suffix(".c"), folder / "cython" / EXTENSION
        if not c_file.exists() or c_file.stat().st_mtime < plain.stat().st_mtime:
            say("compiling with Cython (some minutes, once)")
            run("cython3", "-3", plain, "-o", c_file)
        found.append(Alternative("Cython", "module", compiled(target, c_file), folder / "cython"))
    pickled = write(folder / "tables.pickle", pickle.dumps(tables, protocol=5))
    document = write(folder / "tables.json", json_document(tables))
    found.append(Alternative("pickle", "pickle", pickled, folder))
    found += [Alternative(kind, kind, document, folder) for kind in ("json", "orjson")]

    limit = folder / "limit"
    c_file = write(limit / "source" / "limit.c", (HERE / "limit.c").read_bytes())
    header = write(limit / "source" / "tables.h", limit_header(attributes_of(module)))
    target = compiled(limit / EXTENSION, c_file, header)
    return [*found, Alternative("limit", "module", target, limit)]


def scaled(folder, factor):
    """The module built from a copy of its sources that binds every table `factor` times."""
    sources = {
        path.relative_to(TOP).as_posix(): path.read_text("utf-8")
        for path in [TOP / "CMakeLists.txt", *TOP.glob("tables/**/*.*p*")]
    }
    sources["tables/scaled.hpp"] = (HERE / "scaled.hpp").read_text("utf-8")

    def change(name, pattern, replacement):
        sources[name], count = re.subn(pattern, replacement, sources[name], flags=re.MULTILINE)
        if count == 0:
            sys.exit(f"bench: {name} no longer holds what the growth replaces: {pattern}")

    body, inventory = "tables/body.hpp", "tables/inventory.hpp"
    plans = "tables/payload/plans.hpp"
    copies, bindings = [], []
    names = re.findall(r'^    "(.*)",$', sources[inventory], re.MULTILINE)
    bound = re.findall(r"^    (table|call)\((.*)\),$", sources[body], re.MULTILINE)
    for copy in range(1, factor):
        for use, name in bound:
            if use == "call":
                bindings.append("    call(" + name.replace('",', f'_{copy}",', 1) + "),")
                continue
            own = name.split("::")[1] + f"_{copy}"
            copies.append(
                f"inline constexpr Payload {own} = scaled::copy_of<{name}, {copy}>("
                f'"{own}", "_DAV2004R_DATA_{copy}");'
            )
            bindings.append(f"    table({own}),")
    change(body, r"^namespace", '#include "scaled.hpp"\n\nnamespace')
    change(body, r"^inline constexpr Binding body", "\n".join([*copies, "", r"\g<0>"]))
    change(body, r"^    inventory\(", "\n".join([*bindings, "    inventory("]))
    names += [f"{name}_{copy}" for copy in range(1, factor) for name in names]
    change(inventory, r'(^    ".*",\n)+', "".join(f'    "{name}",\n' for name in names))
    # Room for more; indices of 32 bits, because 16 do not reach.
    change(plans, "tables = 100;", f"tables = {factor} * 100;")
    change(plans, "using Index = std::uint16_t", "using Index = std::uint32_t")

    for name, text in sources.items():
        write(folder / "source" / name, text)
    build = folder / "build"
    if not (build / "build.ninja").exists():
        # More than the compiler grants the module itself.
        flags = "-DCMAKE_CXX_FLAGS=-fconstexpr-ops-limit=1000000000"
        options = ("-G", "Ninja", "-DCMAKE_BUILD_TYPE=Release", flags)
        run("cmake", "-S", folder / "source", "-B", build, *options)
    run("cmake", "--build", build)
    return build / EXTENSION
