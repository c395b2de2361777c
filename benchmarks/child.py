"""Load the tables one way, in this fresh interpreter, and print what that costs.

Run by bench.py:  child.py MODE KIND [FILE]

Little is imported at the top: memory that other imports have given back would hide a part of what
the tables need.
"""

import gc
import os
import sys
from time import perf_counter_ns


def load_module(_packages):
    from marlune.tables import data_tables

    return data_tables


def load_pickle(pickle):
    with open(sys.argv[3], "rb") as file:
        return pickle.load(file)


def rebuilt(document):
    """The payloads of a JSON document: shared columns by their number, mappings with their keys."""
    columns = []
    for column in document["columns"]:
        if type(column) is dict:
            column = {k if k == "ult" else int(k): columns[i] for k, i in column.items()}
        columns.append(column)
    for payload in document["tables"].values():
        payload["data"] = {key: columns[i] for key, i in payload["data"].items()}
    return document["tables"]


def load_json(json):
    with open(sys.argv[3], encoding="utf-8") as file:
        return rebuilt(json.load(file))


def load_orjson(orjson):
    with open(sys.argv[3], "rb") as file:
        return rebuilt(orjson.loads(file.read()))


def walk(root):
    """Every object that the root reaches through lists and dicts, once, in a fixed order."""
    seen = {}
    stack = [root]
    while stack:
        found = stack.pop()
        if id(found) in seen:
            continue
        seen[id(found)] = found
        if type(found) is list:
            stack += reversed(found)
        elif type(found) is dict:
            stack += [part for entry in reversed(found.items()) for part in reversed(entry)]
    return list(seen.values())


def digest(tables):
    """Covers values, types, orders, and which slots hold the same list or dict."""
    containers = [found for found in walk(tables) if type(found) in (list, dict)]
    number = {id(container): index for index, container in enumerate(containers)}

    def text(part):
        return f"@{number[id(part)]}" if id(part) in number else f"{type(part).__name__} {part!r}"

    import hashlib

    whole = hashlib.sha256()
    for each in containers:
        parts = each if type(each) is list else [part for entry in each.items() for part in entry]
        whole.update(repr((type(each).__name__, *map(text, parts))).encode())
    return whole.hexdigest()


def shape(root):
    """How many objects of each kind there are, and how many references the lists and dicts hold."""
    found = walk(root)
    counts = {
        kind.__name__: sum(type(each) is kind for each in found)
        for kind in (float, int, str, list, dict)
    }
    counts["list slots"] = sum(len(each) for each in found if type(each) is list)
    counts["dict entries"] = sum(len(each) for each in found if type(each) is dict)
    return counts


def memory():
    """Resident and, of that, private dirty memory, in KiB."""
    with open("/proc/self/smaps_rollup", "rb") as file:
        lines = [line.split() for line in file]
    return [int(line[1]) for line in lines if line[0] in (b"Rss:", b"Private_Dirty:")]


def peak():
    with open("/proc/self/status", "rb") as file:
        return next(int(line.split()[1]) for line in file if line.startswith(b"VmHWM:"))


def measure(load):
    from resource import RUSAGE_SELF, getrusage

    memory(), peak(), perf_counter_ns()
    with open("/proc/self/clear_refs", "w") as file:
        file.write("5")  # the peak is now what is resident
    high, blocks, (resident, private) = peak(), sys.getallocatedblocks(), memory()
    faults = getrusage(RUSAGE_SELF).ru_minflt
    start = perf_counter_ns()
    held = load()
    end = perf_counter_ns()
    faults = getrusage(RUSAGE_SELF).ru_minflt - faults
    after, blocks, high = memory(), sys.getallocatedblocks() - blocks, peak() - high
    del held
    return {
        "import": end - start,
        "faults": faults,
        "resident": after[0] - resident,
        "private": after[1] - private,
        "peak": high,
        "kept": blocks,
    }


def count(load):
    from ctypes import PyDLL, c_long

    counter = PyDLL(os.environ["LD_PRELOAD"])
    asked, called = (c_long.in_dll(counter, name) for name in ("asked", "called"))
    counter.start()
    load()
    return {"made": asked.value, "malloc": called.value}


def tables_of(loaded):
    return loaded if type(loaded) is dict else loaded.REPO_TABLES


def check(load):
    loaded = load()
    tables = tables_of(loaded)
    if loaded is not tables:
        for name, payload in tables.items():
            assert getattr(loaded, name) is payload, name
    return digest(tables)


def check_shape(load):
    return shape(tables_of(load()))


LOADS = {"module": load_module, "pickle": load_pickle, "json": load_json, "orjson": load_orjson}
MODES = {"measure": measure, "count": count, "check": check, "shape": check_shape}


def main(mode, kind):
    # Beside the module itself nothing that it is loaded with belongs to the cost.
    library = __import__("marlune.tables" if kind == "module" else kind)
    # The collector stays on, but what was before does not decide whether it runs during the load.
    gc.collect()
    if mode == "idle":
        os._exit(0)
    if mode == "run":  # for instruction counts: nothing but the load, and no farewell
        LOADS[kind](library)
        os._exit(0)
    print(repr(MODES[mode](lambda: LOADS[kind](library))))


if __name__ == "__main__":
    main(*sys.argv[1:3])
