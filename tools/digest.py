"""Print one digest of all that the imported module holds, to compare builds with each other.

Usage: ./dev python -m tools.digest [--floats] [--tables]. The digest covers every attribute in its
order, the docstring, every value's type and bits, every order of keys, and which lists and dicts
are one object. With --floats a second line tells how many float objects there are and digests which
slots share one: that may differ between builds which hold the same. With --tables every table
follows with a digest of its own, as tests/test_inventory.py has them.
"""

import hashlib
import struct
import sys

from marlune.tables import data_tables


class Digest:
    """Reads values into a hash; an object that was met before is named by its number."""

    def __init__(self):
        self.hash, self.floats = hashlib.sha256(), hashlib.sha256()
        self.containers, self.float_objects = {}, {}

    def add(self, text):
        self.hash.update(f"{len(text)} {text}".encode())

    def read(self, value):
        kind = type(value)
        if kind in (dict, list):
            met = id(value) in self.containers
            number = self.containers.setdefault(id(value), len(self.containers))
            self.add(f"{kind.__name__} {number} of {len(value)}")
            if met:
                return
            for item in value.items() if kind is dict else value:
                for each in item if kind is dict else (item,):
                    self.read(each)
        elif kind is float:
            self.add(f"float {struct.pack('<d', value).hex()}")
            number = self.float_objects.setdefault(id(value), len(self.float_objects))
            self.floats.update(b"%d " % number)
        elif kind in (int, bool, str, type(None)):
            self.add(f"{kind.__name__} {value}")
        else:
            self.add(f"{kind.__name__} {value.__name__} {value.__module__} {value.__doc__}")


def digest_of(module):
    """The digest of what the module holds, and the number and the digest of its float objects."""
    digest = Digest()
    digest.read(module.__doc__)
    for name, value in vars(module).items():
        if not name.startswith("__") or name == "__test__":
            digest.read(name)
            digest.read(value)
    return digest.hash.hexdigest(), len(digest.float_objects), digest.floats.hexdigest()


def digests_of(tables):
    """A short digest of each table by itself."""
    digests = {}
    for name, payload in tables.items():
        digest = Digest()
        digest.read(payload)
        digests[name] = digest.hash.hexdigest()[:8]
    return digests


def main(*options):
    values, floats, sharing = digest_of(data_tables)
    print(values)
    if "--floats" in options:
        print(f"{floats} float objects, shared as {sharing}")
    if "--tables" in options:
        cells = [f"{name} {digest}" for name, digest in digests_of(data_tables.REPO_TABLES).items()]
        for start in range(0, len(cells), 3):
            print("    " + " ".join(cells[start : start + 3]))


if __name__ == "__main__":
    main(*sys.argv[1:])
