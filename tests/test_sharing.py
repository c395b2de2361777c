"""Who holds which list and dict: the aliasing of the whole module, as it is declared."""

import gc
import re
import sys
from collections import Counter

import pytest

import marlune.tables.data_tables as module
from columns import PUBLISHED, SYNTHETIC
from marlune.tables.data_tables import REPO_TABLES
from tools.digest import attributes_of, objects_of

# Which attributes share lists and dicts, and how many.
DAV1, DAV2 = "DAV2004R_{}_1o _DAV2004R_DATA", "DAV2004R_{}_2o _DAV2004R_DATA"
BASE = "Dummy{0}_DiscreteGen {1}Dummy{0}_LinearGen Dummy{0}_ProjectedGen Dummy{0}_Select {2} {3}"
SELECT = " ".join(f"Dummy{{0}}_SelectGen_{letter}" for letter in "abcd")
SHARED = {
    DAV1.format("Agg"): 3, DAV1.format("SelUlt"): 15, f"DAV2004R_Agg_1o {DAV1.format('SelUlt')}": 2,
    DAV2.format("Agg"): 3, DAV2.format("SelUlt"): 15,
    f"DAV2004R_Agg_2o {DAV2.format('SelUlt')}": 44,
    BASE.format("LIFE", "", "DummyLIFE_SelectGen_c DummyLIFE_SelectGen_d DummyLIFE_Unisex",
                "_QX_LIFE"): 1,
    **{
        BASE.format(kind, f"Dummy{kind}_Gen2o ", SELECT.format(kind) + unisex, base): 1
        for kind, initial in (("EXIT", "O"), ("SD", "I"))
        for unisex, base in (("", f"_{initial}X_F_BASE"),
                             (f" Dummy{kind}_Unisex", f"_{initial}X_M_BASE"))
    },
}  # fmt: skip


def test_nothing_is_shared_but_what_is_declared():
    holders = {}

    def walk(name, value):
        if isinstance(value, (dict, list)):
            holders.setdefault(id(value), []).append(name)
        for item in value.values() if isinstance(value, dict) else ():
            walk(name, item)

    for name, value in attributes_of(module).items():
        if name not in ("REPO_TABLES", "__test__"):
            walk(name, value)
    shared = Counter(" ".join(sorted(set(names))) for names in holders.values() if len(names) > 1)
    assert shared == SHARED


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
