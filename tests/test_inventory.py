"""What the module holds, to the bit: the inventory, every table, every list, all together."""

import hashlib
import json
from pathlib import Path

import marlune.tables.data_tables as module
from columns import lists_of
from marlune.tables.data_tables import REPO_TABLES
from snippets import run
from tools.digest import digests_of

# The inventory in its order, each table with a digest of its keys and their order, its texts, and
# every value's type and bits. The last one is of all attributes in the order of their binding, the
# docstring, and who holds which list and dict.
DIGESTS = Path(__file__).with_name("digests.txt").read_text("utf-8").splitlines()
RECORDED = dict(map(str.split, DIGESTS))


def test_inventory_holds_the_attributes_in_its_own_order():
    assert [*REPO_TABLES, "everything"] == list(RECORDED)
    assert all(payload is getattr(module, name) for name, payload in REPO_TABLES.items())


def test_every_table_is_as_it_was():
    found = digests_of(REPO_TABLES)
    assert {name for name in found if found[name] != RECORDED[name]} == set()


def test_everything_is_as_it_was():
    """Where only this fails, it is the docstring, an attribute, their order, or what is shared."""
    printed = run("from tools import digest; digest.main()")
    assert printed.split() == [RECORDED["everything"]]


def test_the_register_has_the_digest_of_every_list():
    path = Path(module.__file__).with_name("data_tables_sources.json")
    register = json.loads(path.read_text("utf-8"))
    assert list(register["tables"]) == list(REPO_TABLES)
    for name, table in register["tables"].items():
        data, told = REPO_TABLES[name]["data"], []
        for column, entry in table["columns"].items():
            labels = entry["labels"]
            whole = data[entry["key"]]
            lists = [whole] if labels is None else [whole[label] for label in labels]
            printed = "".join(f"{value!r}\n" for rates in lists for value in rates)
            digest = hashlib.sha256(printed.encode()).hexdigest()[:16]
            assert entry["digest"] == digest, (name, column)
            told += map(id, lists)
        assert told == [id(each) for column in data.values() for _, each in lists_of(column)], name
