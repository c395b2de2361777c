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


def load_json(library):
    """The payloads of a JSON document: shared columns by their number, mappings with their keys."""
    with open(sys.argv[3], "rb") as file:
        document = library.loads(file.read())
    columns = []
    for column in document["columns"]:
        if type(column) is dict:
            column = {k if k == "ult" else int(k): columns[i] for k, i in column.items()}
        columns.append(column)
    for payload in document["tables"].values():
        payload["data"] = {key: columns[i] for key, i in payload["data"].items()}
    return document["tables"]


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


def describe(load):
    """A digest of what is held, and how many objects and slots of each kind there are."""
    loaded = load()
    from tools.digest import digest, shape_of

    tables = loaded if type(loaded) is dict else loaded.REPO_TABLES
    if loaded is not tables:
        for name, payload in tables.items():
            assert getattr(loaded, name) is payload, name
    return digest([tables])[0], shape_of(tables)


LOADS = {"module": load_module, "pickle": load_pickle, "json": load_json, "orjson": load_json}


def main(mode, kind):
    # Beside the module itself nothing that it is loaded with belongs to the cost.
    library = __import__("marlune.tables" if kind == "module" else kind)
    # The collector stays on, but what was before does not decide whether it runs during the load.
    gc.collect()
    if mode in ("idle", "run"):  # for counts: nothing but the load, and no farewell
        if mode == "run":
            LOADS[kind](library)
        os._exit(0)
    print(repr({"measure": measure, "describe": describe}[mode](lambda: LOADS[kind](library))))


if __name__ == "__main__":
    main(*sys.argv[1:3])
