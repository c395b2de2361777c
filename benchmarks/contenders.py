"""What the module is compared with: made in build/bench, from the module itself."""

import json
import os
import pickle
import py_compile
import re
import subprocess
import sys
import sysconfig
from collections import Counter
from dataclasses import dataclass
from pathlib import Path

from child import shape, walk

HERE = Path(__file__).resolve().parent
PROJECT = HERE.parent
MODULE_FILE = Path("marlune", "tables", "data_tables")
EXTENSION = MODULE_FILE.with_suffix(sysconfig.get_config_var("EXT_SUFFIX"))


@dataclass
class Contender:
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
    parts = [part for found in walk(tables) if type(found) is dict for part in found.values()]
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


def floats_by_rules(own):
    """How many floats the module makes where it follows its rules at import, and every number that
    they give is an object of its own: with builtins that are not the interpreter's."""
    count = """
import builtins
builtins.zip = lambda *each, zip=zip: zip(*each)
from child import shape
from marlune.tables import data_tables
parts = {name: part for name, part in vars(data_tables).items() if name[:2] != "__"}
print(shape(parts)["float"])"""
    path = os.pathsep.join([str(own.parents[2]), str(HERE)])
    env = os.environ | {"PYTHONPATH": path}
    command = [sys.executable, "-c", count]
    return int(subprocess.run(command, env=env, capture_output=True, check=True).stdout)


def shape_header(held, floats):
    """What the floor is to ask the interpreter for, in C."""
    found = walk(held)
    texts = [each.encode() for each in found if type(each) is str]
    arrays = {
        "long ints": [each for each in found if type(each) is int],
        "char text_bytes": [byte - 256 * (byte > 127) for byte in b"".join(texts)],
        "short text_sizes": [len(text) for text in texts],
        "short list_sizes": [len(each) for each in found if type(each) is list],
        "short dict_sizes": sorted(len(each) for each in found if type(each) is dict),
    }
    lines = [f"static const {name}[] = {{{str(array)[1:-1]}}};" for name, array in arrays.items()]
    return "\n".join([f"enum {{ floats = {floats} }};", *lines]) + "\n"


def limit_header(held):
    """The constants of the limit, and its program, in C."""
    found = walk(held)
    of_kind = {
        kind: list(dict.fromkeys(each for each in found if type(each) is kind))
        for kind in (float, str, int)
    }
    constants = [None, False, True, *of_kind[str], *of_kind[int]]
    number = {(type(each), each): place for place, each in enumerate(constants)}
    float_number = {each: place for place, each in enumerate(of_kind[float])}
    slots, ranges, program, made = [], {}, [], {}

    def of(part):
        return make(part) if type(part) in (list, dict) else number[type(part), part]

    def make(container):
        if id(container) in made:
            return made[id(container)]
        if type(container) is list:
            last = 0 if type(container[-1]) is float else of(container[-1])
            # What stands there is not looked at where the list ends in an int.
            filled = tuple(float_number.get(each, 0) for each in container)
            if filled not in ranges:
                ranges[filled] = len(slots)
                slots.extend(filled)
            step = [0, ranges[filled], len(container), last]
        else:
            step = [1, len(container), *(of(each) for entry in container.items() for each in entry)]
        program.extend(step)
        made[id(container)] = len(constants) + len(made)
        return made[id(container)]

    # Every text starts at an even place, as the wide ones must.
    units, texts = bytearray(), []
    for text in of_kind[str]:
        width = 1 if max(text) < "\u0100" else 2
        kind = 0 if text.isascii() and text.isidentifier() else width
        texts += [kind, len(units), len(text)]
        units += text.encode("latin-1" if width == 1 else "utf-16-le") + bytes(2)
        units += bytes(len(units) % 2)

    bindings = [of(each) for entry in held.items() if not callable(entry[1]) for each in entry]
    arrays = {
        "ints": of_kind[int],
        "units": units,
        "texts": texts,
        "slots": slots,
        "program": program,
        "bindings": bindings,
    }
    types = ("unsigned char", "unsigned short", "int")
    lines = [
        f"enum {{ containers = {len(made)} }};",
        f"static const double values[] = {{{', '.join(map(float.hex, of_kind[float]))}}};",
    ]
    for name, array in arrays.items():
        kind = types[(max(array) > 0xFF) + (max(array) > 0xFFFF)]
        lines.append(f"_Alignas(2) static const {kind} {name}[] = {{{str(list(array))[1:-1]}}};")
    return "\n".join(lines) + "\n"


def imported(file):
    """The module in this file, also when another one of its name has been imported before."""
    for name in [name for name in sys.modules if name.split(".")[0] in ("marlune", "data_tables")]:
        del sys.modules[name]
    sys.path.insert(0, str(file.parents[2]))
    from marlune.tables import data_tables

    sys.path.pop(0)
    assert Path(data_tables.__file__) == file
    return data_tables


def contenders(folder, own, cython):
    """All of them, made in the folder from the extension `own`; and the shape of what it holds."""
    module = imported(own)
    tables = module.REPO_TABLES
    held = {
        name: value
        for name, value in vars(module).items()
        if name == "__test__" or not name.startswith("__")
    }

    source = write(folder / "bytecode" / MODULE_FILE.with_suffix(".py"), python_source(tables))
    byte_code = Path(py_compile.compile(str(source), doraise=True))
    found = [
        Contender("ours", "module", own, own.parents[2]),
        Contender("byte code", "module", byte_code, folder / "bytecode"),
    ]

    if cython:
        plain = write(folder / "cython/source/data_tables.py", source.read_bytes())
        c_file, target = folder / "cython/source/data_tables.c", folder / "cython" / EXTENSION
        if not c_file.exists() or c_file.stat().st_mtime < plain.stat().st_mtime:
            say("compiling with Cython (some minutes, once)")
            run("cython3", "-3", plain, "-o", c_file)
        found.append(Contender("Cython", "module", compiled(target, c_file), folder / "cython"))

    pickled = write(folder / "tables.pickle", pickle.dumps(tables, protocol=5))
    document = write(folder / "tables.json", json_document(tables))
    found += [
        Contender("pickle", "pickle", pickled, folder),
        Contender("json", "json", document, folder),
        Contender("orjson", "orjson", document, folder),
    ]

    for name, header, content in (
        ("limit", "tables.h", limit_header(held)),
        ("floor", "shape.h", shape_header(held, floats_by_rules(own))),
    ):
        c_file = write(folder / name / f"source/{name}.c", (HERE / f"{name}.c").read_bytes())
        header = write(folder / name / "source" / header, content)
        target = compiled(folder / name / EXTENSION, c_file, header)
        found.append(Contender(name, "module", target, folder / name))
    return found, shape(held)


def replaced(text, pattern, replacement):
    text, count = re.subn(pattern, replacement, text, flags=re.MULTILINE)
    if count == 0:
        sys.exit(f"bench: the sources no longer hold what the growth replaces: {pattern}")
    return text


def grown(folder, factor):
    """The module built from a copy of its sources that binds every table `factor` times."""
    sources = {
        path.relative_to(PROJECT).as_posix(): path.read_text()
        for path in [PROJECT / "CMakeLists.txt", *PROJECT.glob("tables/**/*.*p*")]
    }
    sources["tables/grown.hpp"] = (HERE / "grown.hpp").read_text()

    def change(name, pattern, replacement):
        sources[name] = replaced(sources[name], pattern, replacement)

    body, inventory = "tables/body.hpp", "tables/inventory.hpp"
    recipes = "tables/payload/recipes.hpp"
    copies, statements = [], []
    names = re.findall(r'^    "(.*)",$', sources[inventory], re.MULTILINE)
    bound = re.findall(r"^    (table|call)\((.*)\),$", sources[body], re.MULTILINE)
    for copy in range(1, factor):
        for use, name in bound:
            if use == "call":
                statements.append("    call(" + name.replace('",', f'_{copy}",', 1) + "),")
                continue
            own = name.split("::")[1] + f"_{copy}"
            copies.append(
                f"inline constexpr Payload {own} = grown::copy_of<{name}, {copy}>("
                f'"{own}", "_DAV2004R_DATA_{copy}");'
            )
            statements.append(f"    table({own}),")
    change(body, r"^namespace", '#include "grown.hpp"\n\nnamespace')
    change(body, r"^inline constexpr Statement body", "\n".join([*copies, "", r"\g<0>"]))
    change(body, r"^    inventory\(", "\n".join([*statements, "    inventory("]))
    change(
        inventory,
        r'(^    ".*",\n)+',
        "".join(
            f'    "{name}{suffix}",\n'
            for suffix in ["", *(f"_{n}" for n in range(1, factor))]
            for name in names
        ),
    )
    # Room for more; indices of 32 bits, because 16 do not reach.
    change(recipes, "tables = 100;", f"tables = {factor} * 100;")
    change(recipes, "using Index = std::uint16_t", "using Index = std::uint32_t")

    for name, text in sources.items():
        write(folder / "source" / name, text)
    build = folder / "build"
    if not (build / "build.ninja").exists():
        run(
            "cmake",
            "-S",
            folder / "source",
            "-B",
            build,
            "-G",
            "Ninja",
            "-DCMAKE_BUILD_TYPE=Release",
            # More than the compiler grants the module itself.
            "-DCMAKE_CXX_FLAGS=-fconstexpr-ops-limit=1000000000",
        )
    run("cmake", "--build", build)
    return build / EXTENSION
