"""Who holds which list and dict: the aliasing of the whole module against a declared map."""

import gc
import re
import sys

import pytest

import marlune.tables.data_tables as module
from columns import PUBLISHED, SYNTHETIC
from marlune.tables.data_tables import REPO_TABLES
from tools.digest import attributes_of, objects_of

# They hold what the base vectors hold, in lists of their own.
OWN_LISTS = {"DummyLIFE_1Sm", "DummyLIFE_1Sf", "DummyEXIT_Gen"}


def holders():
    """For every list and dict of the module, the paths that lead to it: 'table key key'."""
    found = {}

    def walk(path, value):
        if isinstance(value, (dict, list)):
            found.setdefault(id(value), []).append(path)
        if isinstance(value, dict):
            for key, item in value.items():
                walk(f"{path} {key}", item)

    for name, value in attributes_of(module).items():
        if name not in ("REPO_TABLES", "__test__"):
            walk(name, value)
    return {frozenset(paths) for paths in found.values() if len(paths) > 1}


def declared():
    """The objects that have more than one holder, as they should be."""
    shared = []
    for order in ("1o", "2o"):
        aggregate, select = f"DAV2004R_Agg_{order}", f"DAV2004R_SelUlt_{order}"
        for table in (aggregate, select):
            inner = table.removeprefix("DAV2004R_")
            shared.append({f"_DAV2004R_DATA {inner}", f"{table} data"})
            for key, column in REPO_TABLES[table]["data"].items():
                if key.startswith("MI"):
                    continue
                shared += [
                    {f"_DAV2004R_DATA {inner} {path}", f"{table} data {path}"}
                    for path in (key, *(f"{key} {label}" for label in column if table is select))
                ]
        for key in ("MI_m", "MI_f"):
            years = range(2004, 2025) if order == "2o" else ()
            tables = [f"{table} data" for table in (aggregate, select)]
            built = [f"_DAV2004R_DATA {kind}_{order}" for kind in ("Agg", "SelUlt")]
            starts = [f"{start} {key}" for start in tables + built]
            grids = ["", *(f" {year}" for year in years)]
            shared += [{start + grid for start in starts} for grid in grids]
    for base, kinds in (
        ("_QX_LIFE", ("LIFE qx_m", "LIFE qx_f")), ("_IX_M_BASE", ("SD ix_m",)),
        ("_IX_F_BASE", ("SD ix_f",)),
        ("_OX_M_BASE", ("EXIT ox_m",)), ("_OX_F_BASE", ("EXIT ox_f",)),
    ):  # fmt: skip
        paths = {base}
        for kind, key in (each.split() for each in kinds):
            for name in set(SYNTHETIC) - OWN_LISTS:
                if name.startswith(f"Dummy{kind}_") and not (
                    "Unisex" in name and key.endswith("f")
                ):
                    paths.add(f"{name} data {key}" + (" ult" if "Select" in name else ""))
        shared.append(paths)
    return set(map(frozenset, shared))


def test_nothing_is_shared_but_what_is_declared():
    got, want = holders(), declared()
    assert got - want == set(), "shared, but not declared"
    assert want - got == set(), "declared, but not shared"
    assert len(want) > 60


def test_collector_knows_every_list():
    """A list may hold what leads back to it: one that the collector did not know would leak."""
    blended = module._dav_mi_linear([0.5], [0.25])
    built = module._build_dav2004r_data()["SelUlt_2o"]["qx_m"]
    columns = [column for table in REPO_TABLES.values() for column in table["data"].values()]
    for column in [blended, built, *columns]:
        for rates in column.values() if isinstance(column, dict) else [column]:
            assert gc.is_tracked(rates)


LITERALS = {
    "published": [REPO_TABLES[name] for name in PUBLISHED if not name.startswith("DAV2004R")],
    "synthetic": [REPO_TABLES[name] for name in SYNTHETIC],
    "all": [REPO_TABLES],
}


@pytest.mark.parametrize(
    ("where", "kind", "number"),
    [("published", float, 6_000), ("all", str, 80), ("all", int, 30), ("synthetic", float, 2)],
)
def test_a_literal_is_one_object(where, kind, number):
    """Wherever it stands; in synthetic tables this is said of the ends of their columns."""
    values = [each for each in objects_of(LITERALS[where]) if type(each) is kind]
    if (where, kind) == ("synthetic", float):
        values = [each for each in values if each in (0.0, 1.0)]
    assert len(set(values)) == len(values) >= number


def test_texts_like_names_are_interned_and_no_others():
    for text in filter(lambda each: type(each) is str, objects_of(REPO_TABLES)):
        assert sys._is_interned(text) == bool(re.fullmatch(r"[A-Za-z0-9_]+", text)), text
