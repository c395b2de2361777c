"""Print one digest of all that the imported module holds, to compare builds with each other.

Usage: ./dev python -m tools.digest [--floats] [--record]. The digest covers every attribute in its
order, the docstring, every value's type and bits, every order of keys, and which lists and dicts
are one object. With --floats a second line tells how many float objects there are and digests which
slots share one: that may differ between builds which hold the same. With --record the digest is
written to tests/digests.txt, and with it every table by name with a digest of its own: for whoever
has changed the tables, to look at what else has another digest.
"""

import hashlib
import struct
import sys
from collections import Counter
from collections.abc import Iterable, Iterator
from itertools import chain
from types import ModuleType
from typing import Any

from tools import TOP

RECORDED = TOP / "tests" / "digests.txt"
EVERYTHING = "everything"


def slots_of(value: Any, met: dict[int, int]) -> Iterator[Any]:
    """The value and, in their order, what stands in every slot of it, keys before their values.

    A list or dict is entered where it is met first: `met` numbers them by their id.
    """
    yield value
    if type(value) in (dict, list) and id(value) not in met:
        met[id(value)] = len(met)
        for item in chain.from_iterable(value.items()) if type(value) is dict else value:
            yield from slots_of(item, met)


def objects_of(value: Any) -> list[Any]:
    """Every object that the value holds, itself among them, once."""
    return list({id(each): each for each in slots_of(value, {})}.values())


def shape_of(value: Any) -> dict[str, int]:
    """How many objects of each type there are, and how many slots the lists and dicts have."""
    found = objects_of(value)
    counts = Counter(type(each).__name__ for each in found)
    for kind, slots in (list, "list slots"), (dict, "dict entries"):
        counts[slots] = sum(len(each) for each in found if type(each) is kind)
    return dict(counts)


def attributes_of(module: ModuleType) -> dict[str, Any]:
    """What the module binds, without what every module has."""
    names = [name for name in vars(module) if name == "__test__" or name[:2] != "__"]
    return {name: getattr(module, name) for name in names}


def digest(values: Iterable[Any]) -> tuple[str, int, str]:
    """The digest of the values, and the number and the digest of their float objects."""
    met: dict[int, int] = {}
    float_objects: dict[int, int] = {}
    whole, floats = hashlib.sha256(), hashlib.sha256()
    for value in chain.from_iterable(slots_of(each, met) for each in values):
        kind = type(value)
        text = f"{kind.__name__} "
        if kind in (dict, list):
            text += f"{met.get(id(value), len(met))} of {len(value)}"
        elif kind is float:
            text += struct.pack("<d", value).hex()
            floats.update(b"%d " % float_objects.setdefault(id(value), len(float_objects)))
        elif kind in (int, bool, str, type(None)):
            text += str(value)
        else:
            text += f"{value.__name__} {value.__module__} {value.__doc__}"
        whole.update(f"{len(text)} {text}".encode())
    return whole.hexdigest(), len(float_objects), floats.hexdigest()


def digest_of(module: ModuleType) -> tuple[str, int, str]:
    """The digest of all that the module holds, and those of its float objects."""
    return digest([module.__doc__, *chain.from_iterable(attributes_of(module).items())])


def digests_of(tables: dict[str, Any]) -> dict[str, str]:
    """A short digest of each table by itself."""
    return {name: digest([payload])[0][:8] for name, payload in tables.items()}


def main(*options: str) -> None:
    from marlune.tables import data_tables

    values, floats, sharing = digest_of(data_tables)
    print(values)
    if "--floats" in options:
        print(f"{floats} float objects, shared as {sharing}")
    if "--record" in options:
        tables = digests_of(data_tables.REPO_TABLES)
        lines = [f"{name} {digest}\n" for name, digest in {**tables, EVERYTHING: values}.items()]
        RECORDED.write_text("".join(lines), "utf-8")


if __name__ == "__main__":
    main(*sys.argv[1:])
