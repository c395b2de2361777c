"""What holds for all 66 tables: inventory, keys and their order, columns, lengths, ends."""

import math
from collections import Counter

import pytest
from columns import DECREMENT, PUBLISHED, SYNTHETIC, all_lists

import marlune.tables.data_tables as module
from marlune.tables.data_tables import REPO_TABLES

ORDER = "PER2020_Col_2o PER2020_Col_1o PER2020_Ind_2o PER2020_Ind_1o PASEM2020_Gen_2o PASEM2020_Dec_2o PASEM2020_Rel_1o PASEM2020_NoRel_1o PASEM2020_Dec_1o PEAI2007_IAP_Ind PEAI2007_IAP_Col PASEM2010 DAV2004R_Agg_2o DAV2004R_Agg_1o DAV2004R_SelUlt_2o DAV2004R_SelUlt_1o GAM71 GAM83 GAM94_AA GRMF80 GRMF95 GKMF80 GKMF95 IASS90 SS90TOT SS90ABS CB_H_2020 MI_H_2020 RV_M_2020 B_M_2020 MI_M_2020 AM92_AF92 DummySD2015 DummySD2015Gen DummyEXIT DummyEXIT_Gen Dummy_qx0 DummyLIFE_1Sm DummyLIFE_1Sf DummyLIFE_LinearGen DummyLIFE_DiscreteGen DummyLIFE_ProjectedGen DummyLIFE_Select DummyLIFE_Unisex DummySD_LinearGen DummySD_DiscreteGen DummySD_ProjectedGen DummySD_Select DummySD_Unisex DummyEXIT_LinearGen DummyEXIT_DiscreteGen DummyEXIT_ProjectedGen DummyEXIT_Select DummyEXIT_Unisex DummySD_Gen2o DummyEXIT_Gen2o DummySD_SelectGen_a DummyEXIT_SelectGen_a DummySD_SelectGen_b DummyEXIT_SelectGen_b DummyLIFE_SelectGen_c DummySD_SelectGen_c DummyEXIT_SelectGen_c DummyLIFE_SelectGen_d DummySD_SelectGen_d DummyEXIT_SelectGen_d".split()

# The short names of metadata keys, for the table below.
N, T, B, G, S, P, X, D, M, O, A, F, I = (
    "table_name table_type base_year generational select select_period sex_independent"
    " decrement_scale_factor mi_scale_factor omega start_age generational_formula_type description"
).split()
SYNTHETIC_GEN = [
    *(f"Dummy{kind}_{formula}Gen" for kind in ("LIFE", "SD", "EXIT")
      for formula in ("Linear", "Discrete", "Projected")),
    "DummySD_Gen2o", "DummyEXIT_Gen2o",
]  # fmt: skip
SELECT_GEN = [name for name in ORDER if "_SelectGen_" in name]
CMF = ["CB_H_2020", "MI_H_2020", "RV_M_2020", "B_M_2020", "MI_M_2020"]
SS90 = ["IASS90", "SS90TOT", "SS90ABS"]
PER = ORDER[:4]
KEY_ORDERS = [
    ([N, T, G, D, M, O, A, I],
     [*ORDER[4:12], "DummySD2015", "DummyEXIT", "Dummy_qx0", "DummyLIFE_1Sm", "DummyLIFE_1Sf",
      "GRMF80", "GRMF95", "GKMF80", "GKMF95"]),
    ([N, T, G, D, M, O, A, X, I], SS90),
    ([N, T, X, G, D, M, O, A, I], ["DummyLIFE_Unisex", "DummySD_Unisex", "DummyEXIT_Unisex"]),
    ([N, T, B, G, D, O, A, I], ["GAM71", "GAM83"]),
    ([N, T, G, S, P, D, M, O, A, I], ["AM92_AF92"]),
    ([N, T, S, P, G, D, M, O, A, I], ["DummyLIFE_Select", "DummySD_Select", "DummyEXIT_Select"]),
    ([N, T, B, G, D, M, O, A, F, I], [*PER, "DAV2004R_Agg_2o", "DAV2004R_Agg_1o", "GAM94_AA"]),
    ([N, T, B, G, S, P, D, M, O, A, F, I], ["DAV2004R_SelUlt_2o", "DAV2004R_SelUlt_1o"]),
    ([N, T, G, F, B, D, M, A, O, I], CMF),
    ([N, T, G, D, M, O, A, B, F, I], ["DummySD2015Gen", "DummyEXIT_Gen"]),
    ([N, T, G, F, B, D, M, O, A, I], SYNTHETIC_GEN),
    ([N, T, G, F, S, P, B, D, M, O, A, I], SELECT_GEN),
]  # fmt: skip
COLUMN_ORDERS = {
    "qx_f mi_f qx_m mi_m": PER,
    "qx_f qx_m": ORDER[4:9],
    "ix_f ix_m": ["PEAI2007_IAP_Ind", "PEAI2007_IAP_Col"],
    "qx_m qx_f": ["PASEM2010", "GAM71", "GAM83", "AM92_AF92", "GRMF80", "GRMF95", "GKMF80",
                  "GKMF95", "Dummy_qx0", "DummyLIFE_Select"],
    "qx_m mi_m qx_f mi_f": ["GAM94_AA"],
    "qx_m mi_m": ["CB_H_2020", "MI_H_2020"],
    "qx_f mi_f": ["RV_M_2020", "B_M_2020", "MI_M_2020"],
    "qx_m qx_f MI_m MI_f": ORDER[12:16],
    "ix_m": [*SS90, "DummySD_Unisex"],
    "ix_m ix_f": ["DummySD2015", "DummySD_Select"],
    "ox_m ox_f": ["DummyEXIT", "DummyEXIT_Select"],
    "qx_m": ["DummyLIFE_1Sm", "DummyLIFE_Unisex"],
    "qx_f": ["DummyLIFE_1Sf"],
    "ox_m": ["DummyEXIT_Unisex"],
    "ix_m ix_f mi_m mi_f": ["DummySD2015Gen", *(n for n in SYNTHETIC_GEN + SELECT_GEN if "SD" in n)],
    "ox_m ox_f mi_m mi_f": ["DummyEXIT_Gen", *(n for n in SYNTHETIC_GEN + SELECT_GEN if "EXIT" in n)],
    "qx_m qx_f mi_m mi_f": [n for n in SYNTHETIC_GEN + SELECT_GEN if "LIFE" in n],
}  # fmt: skip


def test_inventory_holds_the_attributes_in_its_own_order():
    assert list(REPO_TABLES) == ORDER
    for name, payload in REPO_TABLES.items():
        assert payload is getattr(module, name), name
    assert not any(name.startswith("Dummy") for name in PUBLISHED)
    assert all(name.startswith("Dummy") for name in SYNTHETIC) and len(SYNTHETIC) == 34


def test_counts_by_type_formula_and_unit():
    tables = REPO_TABLES.values()
    assert Counter(t["table_type"] for t in tables) == {"life": 37, "disability": 17, "exit": 12}
    formulas = Counter(t.get("generational_formula_type", "") for t in tables)
    assert formulas == {
        "": 29, "exponential_improvement": 19, "linear_improvement": 3, "discrete_improvement": 4,
        "projected_improvement": 11,
    }  # fmt: skip
    assert Counter(t["decrement_scale_factor"] for t in tables) == {1000: 12, 1: 54}
    assert sum("select" in t for t in tables) == 16
    assert sum("sex_independent" in t for t in tables) == 6


def test_every_table_has_the_key_order_of_its_family():
    seen = []
    for keys, names in KEY_ORDERS:
        for name in names:
            assert list(REPO_TABLES[name]) == [*keys, "data"], name
        seen += names
    assert sorted(seen) == sorted(ORDER)


def test_every_table_has_the_column_order_of_its_family():
    seen = []
    for columns, names in COLUMN_ORDERS.items():
        for name in names:
            assert list(REPO_TABLES[name]["data"]) == columns.split(), name
        seen += names
    assert sorted(seen) == sorted(ORDER)


@pytest.mark.parametrize("name", ORDER)
def test_metadata_is_present_and_typed_by_the_rules(name):
    table = REPO_TABLES[name]
    generational = table["generational"]
    assert type(generational) is bool
    assert ("generational_formula_type" in table) == generational
    if name in ("GAM71", "GAM83"):
        assert table["base_year"] is None and "mi_scale_factor" not in table
    else:
        assert ("base_year" in table) == generational
        assert table["mi_scale_factor"] == (1 if generational else None)
    if generational:
        assert type(table["base_year"]) is int and type(table["mi_scale_factor"]) is int
    for key in ("decrement_scale_factor", "omega", "start_age"):
        assert type(table[key]) is int, key
    assert ("select" in table) == ("select_period" in table)
    assert table.get("select", True) is True and table.get("sex_independent", True) is True
    if name in SYNTHETIC:
        assert table["table_name"] == name
    else:
        published_as_named = ("PASEM2010", "GAM71", "GAM83", "GAM94_AA", "GRMF80", "GRMF95",
                              "GKMF80", "GKMF95")  # fmt: skip
        assert (table["table_name"] == name) == (name in published_as_named)


@pytest.mark.parametrize("name", ORDER)
def test_columns_have_the_shape_that_the_metadata_says(name):
    table = REPO_TABLES[name]
    decrement = DECREMENT[table["table_type"]]
    for key, column in table["data"].items():
        symbol, sex = key.split("_")
        assert (symbol in (decrement, "mi", "MI")) and sex in "mf"
        if symbol == decrement:
            assert isinstance(column, dict) == ("select" in table), key
            if "select" in table:
                first = 0 if name == "AM92_AF92" else 1
                numbered = range(first, first + table["select_period"])
                assert list(column) == [*numbered, "ult"]
                assert all(type(duration) is int for duration in numbered)
        elif isinstance(column, dict) and "ult" in column:
            assert name.endswith("_d") and list(column) == [1, 2, "ult"]
        elif isinstance(column, dict):
            years = {
                "projected_improvement": range(2021, 2037 if name in CMF else 2026),
                "exponential_improvement": range(2004, 2025) if "DAV" in name else (2004, 2014, 2024),
            }[table["generational_formula_type"]]
            assert list(column) == list(years)
            assert all(type(year) is int for year in column)


def test_every_list_has_its_length_its_range_and_its_end():
    seen = {}
    for name, table, path, rates in all_lists():
        where = (name, path)
        assert type(rates) is list, where
        assert len(rates) == table["omega"] - table["start_age"] + 1, where
        improvement = path[0][:2] in ("mi", "MI")
        certain = 1 if improvement else table["decrement_scale_factor"]
        assert all(math.isfinite(rate) and 0 <= rate <= certain for rate in rates), where
        assert all(type(rate) is float for rate in rates[:-1]), where
        ends = rates[-1]
        if improvement:
            assert ends == 0, where
        elif name == "GAM71":
            assert ends == 0.999999, where
        elif name in SS90:
            assert ends == 0.0, where
        elif name.startswith("DAV2004R_SelUlt") and path[-1] != "ult":
            assert ends < 1, where
        elif table["table_type"] == "disability":
            assert 0 < ends < certain, where
        else:
            assert ends == certain, where
        integers = name in ("GRMF80", "GKMF80") or name.startswith("DAV2004R")
        computed = path[-1] in (1, 2, 3, 4, 5, *range(2005, 2024))
        assert type(ends) is (int if integers and not computed else float), where
        seen[id(rates)] = len(rates)
    # So that the walk cannot become empty unnoticed.
    assert (len(seen), sum(seen.values())) == (405, 39370)
