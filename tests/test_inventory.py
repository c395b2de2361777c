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
# every value's type and bits: `./dev python -m tools.digest --tables` prints them.
TABLES = """
    PER2020_Col_2o cf7b8e2d PER2020_Col_1o 8f1309af PER2020_Ind_2o 42f58838
    PER2020_Ind_1o dc00bf91 PASEM2020_Gen_2o 482b6584 PASEM2020_Dec_2o 6d6071b0
    PASEM2020_Rel_1o 854d0b83 PASEM2020_NoRel_1o a3c29e4e PASEM2020_Dec_1o 9f242489
    PEAI2007_IAP_Ind 7c2ec887 PEAI2007_IAP_Col a010083b PASEM2010 3d1a4572
    DAV2004R_Agg_2o 83318186 DAV2004R_Agg_1o 5751fc2e DAV2004R_SelUlt_2o 34d9fe36
    DAV2004R_SelUlt_1o 7040c622 GAM71 c9af20c2 GAM83 29005b91
    GAM94_AA 76654e1d GRMF80 075e5e18 GRMF95 a459c729
    GKMF80 efdf25bf GKMF95 4edebff2 IASS90 13105d54
    SS90TOT f1de1230 SS90ABS e8e73506 CB_H_2020 f2aa45f0
    MI_H_2020 bfb013da RV_M_2020 fd5f6dbf B_M_2020 9e6263a4
    MI_M_2020 576c0c3b AM92_AF92 3919f7cf DummySD2015 7274e29a
    DummySD2015Gen 24cd86be DummyEXIT 4b69143b DummyEXIT_Gen 6f543142
    Dummy_qx0 70267a8f DummyLIFE_1Sm a6fb84d7 DummyLIFE_1Sf aeed525b
    DummyLIFE_LinearGen ec6afd93 DummyLIFE_DiscreteGen be12b9bf DummyLIFE_ProjectedGen 47f7dbb8
    DummyLIFE_Select 4773bc20 DummyLIFE_Unisex cb8f709c DummySD_LinearGen ddb3634a
    DummySD_DiscreteGen 6eee3b4c DummySD_ProjectedGen 16964a95 DummySD_Select f29666da
    DummySD_Unisex d66129a6 DummyEXIT_LinearGen 02355f01 DummyEXIT_DiscreteGen 1665064f
    DummyEXIT_ProjectedGen be2da4a4 DummyEXIT_Select fffd1512 DummyEXIT_Unisex 7561d121
    DummySD_Gen2o eb8b6eb5 DummyEXIT_Gen2o ef1f0db6 DummySD_SelectGen_a 2d341efd
    DummyEXIT_SelectGen_a 4db92e8a DummySD_SelectGen_b c7937649 DummyEXIT_SelectGen_b 7607ab79
    DummyLIFE_SelectGen_c 87f8e027 DummySD_SelectGen_c 3b2ef119 DummyEXIT_SelectGen_c a9d2967b
    DummyLIFE_SelectGen_d 03870011 DummySD_SelectGen_d ce7ef160 DummyEXIT_SelectGen_d 0e6da2d9
""".split()
# Of all attributes in the order of their binding, the docstring, and who holds which list and dict.
EVERYTHING = "b439866b8de033d2fde9889f2349c1e69c9d3c185368d868150a676976ff9354"


def test_inventory_holds_the_attributes_in_its_own_order():
    assert list(REPO_TABLES) == TABLES[::2]
    assert all(payload is getattr(module, name) for name, payload in REPO_TABLES.items())


def test_every_table_is_as_it_was():
    wanted = dict(zip(TABLES[::2], TABLES[1::2]))
    found = digests_of(REPO_TABLES)
    assert {name for name in wanted if found[name] != wanted[name]} == set()


def test_everything_is_as_it_was():
    """Where only this fails, it is the docstring, an attribute, their order, or what is shared."""
    printed = run("from tools import digest; digest.main()")
    assert printed.split() == [EVERYTHING]


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
