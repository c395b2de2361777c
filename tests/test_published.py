"""Published tables: telling values, text, and the digests of the register of sources."""

import hashlib
import json
from pathlib import Path

import pytest
from columns import differences, lists_of

import marlune.tables.data_tables as module
from marlune.tables.data_tables import REPO_TABLES

# Table, path to the list, first age, values from there on.
TELLING = [
    *((f"PER2020_{kind}_2o", "qx_f", age, values) for kind in ("Col", "Ind") for age, values in
      ((0, [2.176, 0.145, 0.124]), (116, [856.585, 924.679, 1000.0]))),
    *((f"PER2020_{kind}_2o", "qx_m", age, values) for kind in ("Col", "Ind") for age, values in
      ((0, [2.193, 0.139, 0.12]), (116, [951.161, 991.409, 1000.0]))),
    *((f"PER2020_{kind}_1o", "qx_f", age, values) for kind in ("Col", "Ind") for age, values in
      ((0, [1.96384, 0.1308625, 0.11191]), (117, [864.574865, 935.0, 1000.0]))),
    *((f"PER2020_{kind}_1o", "qx_m", age, values) for kind in ("Col", "Ind") for age, values in
      ((0, [1.9791825, 0.1254475, 0.1083]), (117, [922.01037, 930.0, 1000.0]))),
    *((f"PER2020_{kind}_{order}", "mi_f", 0, [plateau] * 8 + [then])
      for kind in ("Col", "Ind") for order, plateau, then in
      (("2o", 0.035, 0.0345), ("1o", 0.04, 0.0395))),
    *((f"PER2020_{kind}_{order}", "mi_m", 0, [plateau] * ages + [then])
      for kind, ages in (("Col", 41), ("Ind", 42)) for order, plateau, then in
      (("2o", 0.035, 0.0342), ("1o", 0.04, 0.0392))),
    *((f"PER2020_{kind}_{order}", key, age, [last] + [0.0] * zeros)
      for kind in ("Col", "Ind") for order, more in (("2o", 0), ("1o", 1))
      for key, age, last, zeros in (("mi_f", 109, 0.0001, 9 + more), ("mi_m", 106, 0.0005, 12 + more))),
    ("PASEM2020_Gen_2o", "qx_f", 0, [1.5915, 0.1135, 0.0935]),
    ("PASEM2020_Gen_2o", "qx_f", 108, [870.5414, 942.3699, 1000.0]),
    ("PASEM2020_Gen_2o", "qx_m", 0, [1.8185, 0.1309, 0.1093]),
    ("PASEM2020_Gen_2o", "qx_m", 108, [876.8119, 947.4271, 1000.0]),
    ("PASEM2020_Dec_2o", "qx_f", 0, [2.5464, 0.1816, 0.1495]),
    ("PASEM2020_Dec_2o", "qx_f", 109, [950.753, 980.373, 1000.0]),
    ("PASEM2020_Dec_2o", "qx_m", 0, [2.9096, 0.2094, 0.1749]),
    ("PASEM2020_Dec_2o", "qx_m", 109, [951.3929, 980.5922, 1000.0]),
    ("PASEM2020_Rel_1o", "qx_f", 0, [1.7537, 0.1251, 0.103]),
    ("PASEM2020_Rel_1o", "qx_f", 107, [848.5048, 959.2278, 1000.0]),
    ("PASEM2020_Rel_1o", "qx_m", 0, [2.0038, 0.1442, 0.1204]),
    ("PASEM2020_Rel_1o", "qx_m", 107, [856.7691, 966.1372, 1000.0]),
    ("PASEM2020_NoRel_1o", "qx_f", 0, [1.8382, 0.1311, 0.1079]),
    ("PASEM2020_NoRel_1o", "qx_f", 106, [755.7483, 889.414, 1000.0]),
    ("PASEM2020_NoRel_1o", "qx_m", 0, [2.1004, 0.1512, 0.1262]),
    ("PASEM2020_NoRel_1o", "qx_m", 106, [765.4579, 898.0767, 1000.0]),
    ("PASEM2020_Dec_1o", "qx_f", 0, [2.8059, 0.2001, 0.1648]),
    ("PASEM2020_Dec_1o", "qx_f", 106, [872.7325, 942.1507, 1000.0]),
    ("PASEM2020_Dec_1o", "qx_m", 0, [3.206, 0.2308, 0.1927]),
    ("PASEM2020_Dec_1o", "qx_m", 106, [876.4365, 944.5689, 1000.0]),
    ("PEAI2007_IAP_Ind", "ix_f", 18, [5.4e-05, 6e-05, 6.5e-05]),
    ("PEAI2007_IAP_Ind", "ix_f", 62, [0.004364, 0.004824, 0.005332]),
    ("PEAI2007_IAP_Ind", "ix_m", 18, [6.4e-05, 7.1e-05, 8e-05]),
    ("PEAI2007_IAP_Ind", "ix_m", 62, [0.007241, 0.008063, 0.008977]),
    ("PEAI2007_IAP_Col", "ix_f", 18, [9e-05, 0.0001, 0.0001]),
    ("PEAI2007_IAP_Col", "ix_f", 62, [0.00701, 0.00774, 0.00856]),
    ("PEAI2007_IAP_Col", "ix_m", 18, [0.0001051, 0.0001164, 0.0001292]),
    ("PEAI2007_IAP_Col", "ix_m", 62, [0.0117917, 0.0131293, 0.0146161]),
    ("PASEM2010", "qx_m", 0, [0.005807, 0.000418, 0.000349]),
    ("PASEM2010", "qx_m", 110, [0.942245, 0.987609, 1.0]),
    ("PASEM2010", "qx_f", 0, [0.004744, 0.000376, 0.000307]),
    ("PASEM2010", "qx_f", 110, [0.927507, 0.973152, 1.0]),
    *((name, "ix_m", age, values) for name in ("IASS90", "SS90ABS") for age, values in
      ((18, [0.1386, 0.1521, 0.1669]), (63, [15.056, 14.367, 0.0]))),
    ("SS90TOT", "ix_m", 18, [0.1074, 0.122, 0.1382]),
    ("SS90TOT", "ix_m", 63, [5.917, 3.678, 0.0]),
    ("GAM71", "qx_m", 5, [0.000456, 0.000424, 0.000403]),
    ("GAM71", "qx_m", 108, [0.687444, 0.785555, 0.999999]),
    ("GAM71", "qx_f", 5, [0.000234, 0.000193, 0.000162]),
    ("GAM71", "qx_f", 108, [0.716944, 0.806309, 0.999999]),
    ("GAM83", "qx_m", 5, [0.000342, 0.000318, 0.000302]),
    ("GAM83", "qx_m", 108, [0.665268, 0.760215, 1.0]),
    ("GAM83", "qx_f", 5, [0.000171, 0.00014, 0.000118]),
    ("GAM83", "qx_f", 108, [0.694885, 0.789474, 1.0]),
    ("GAM94_AA", "qx_m", 1, [0.000592, 0.0004, 0.000332]),
    ("GAM94_AA", "qx_m", 104, [0.387855]),
    ("GAM94_AA", "qx_m", 110, [0.486745, 0.496356] + [0.5] * 8 + [1.0]),
    ("GAM94_AA", "qx_f", 1, [0.000531, 0.000346, 0.000258]),
    ("GAM94_AA", "qx_f", 110, [0.482325, 0.49511] + [0.5] * 8 + [1.0]),
    ("GAM94_AA", "mi_m", 1, [0.02] * 13 + [0.019]),
    ("GAM94_AA", "mi_m", 98, [0.001] * 3 + [0.0] * 20),
    ("GAM94_AA", "mi_f", 1, [0.02] * 13 + [0.018]),
    ("GAM94_AA", "mi_f", 97, [0.001] * 4 + [0.0] * 20),
    ("GRMF80", "qx_m", 15, [0.000748, 0.000755, 0.000764]),
    ("GRMF80", "qx_m", 115, [0.610368, 0.622085, 1]),
    ("GRMF80", "qx_f", 15, [0.000471, 0.000484, 0.0005]),
    ("GRMF80", "qx_f", 115, [0.566837, 0.576773, 1]),
    ("GRMF95", "qx_m", 15, [0.0012879, 0.001289, 0.0012902]),
    ("GRMF95", "qx_m", 124, [0.6073906, 0.6320028, 1.0]),
    ("GRMF95", "qx_f", 15, [0.0003179, 0.0003199, 0.0003219]),
    ("GRMF95", "qx_f", 124, [0.5165595, 0.5403065, 1.0]),
    ("GKMF80", "qx_m", 15, [0.001079, 0.001091, 0.001103]),
    ("GKMF80", "qx_m", 115, [0.622077, 0.630517, 1]),
    ("GKMF80", "qx_f", 15, [0.000994, 0.001006, 0.001018]),
    ("GKMF80", "qx_f", 115, [0.543677, 0.557036, 1]),
    ("GKMF95", "qx_m", 15, [0.0015785, 0.0015951, 0.0016006]),
    ("GKMF95", "qx_m", 119, [0.6244598] + [1.0] * 7),
    ("GKMF95", "qx_f", 15, [0.0002959, 0.0003317, 0.0003427]),
    ("GKMF95", "qx_f", 124, [0.6075788, 0.63005, 1.0]),
    ("CB_H_2020", "qx_m", 0, [0.00615389, 0.00033059, 0.00020027]),
    ("CB_H_2020", "qx_m", 108, [0.54647008, 0.57871949, 1.0]),
    ("MI_H_2020", "qx_m", 0, [0.00615389, 0.00129894, 0.00078692]),
    ("MI_H_2020", "qx_m", 108, [0.5497674, 0.58094291, 1.0]),
    ("RV_M_2020", "qx_f", 20, [0.00029952, 0.00030583, 0.00031556]),
    ("RV_M_2020", "qx_f", 108, [0.43208425, 0.45059694, 1.0]),
    ("B_M_2020", "qx_f", 0, [0.00520685, 0.00026788, 0.0001825]),
    ("B_M_2020", "qx_f", 108, [0.44213301, 0.46020387, 1.0]),
    ("MI_M_2020", "qx_f", 0, [0.00520685, 0.00297972, 0.00202994]),
    ("MI_M_2020", "qx_f", 108, [0.44378124, 0.46223956, 1.0]),
    *(("CB_H_2020", f"mi_m {year}", age, values) for year, young, old in (
        (2021, [0.039574, 0.03917, 0.038647], 0.009386),
        (2028, [0.022355, 0.022189, 0.021971], 0.009741),
        (2035, [0.010255, 0.010251, 0.010247], 0.009995),
        (2036, [0.01] * 91, 0.01)) for age, values in ((0, young), (90, [old]))),
    *(("B_M_2020", f"mi_f {year}", age, values) for year, young, old in (
        (2021, [0.039118, 0.037961, 0.036682], 0.012775),
        (2028, [0.022171, 0.021688, 0.021153], 0.011153),
        (2035, [0.010251, 0.010241, 0.01023], 0.010024),
        (2036, [0.01] * 91, 0.01)) for age, values in ((0, young), (90, [old]))),
    ("RV_M_2020", "mi_f 2036", 90, [0.01, 0.009333, 0.008667]),
    ("RV_M_2020", "mi_f 2036", 104, [0.000667] + [0.0] * 6),
    *(("AM92_AF92", path, age, values) for path, young, old, last in (
        ("qx_m 0", [0.000427, 0.000426, 0.000425], [0.10399, 0.184714], [0.797477, 0.817225, 1.0]),
        ("qx_m 1", [0.000552, 0.000548, 0.000544], [0.104031, 0.110052], [0.797477, 0.817225, 1.0]),
        ("qx_m ult", [0.0006, 0.000594, 0.000587], [0.170247, 0.184714], [0.797477, 0.817225, 1.0]),
        ("qx_f 0", [0.000113, 0.000117, 0.000121], [0.053854, 0.112964], [0.85305, 0.880579, 1.0]),
        ("qx_f 1", [0.000132, 0.000138, 0.000143], [0.060631, 0.066594], [0.85305, 0.880579, 1.0]),
        ("qx_f ult", [0.000172, 0.000178, 0.000185], [0.102533, 0.112964], [0.85305, 0.880579, 1.0]),
    ) for age, values in ((17, young), (90, old), (118, last))),
]  # fmt: skip


def test_telling_values_of_the_publications():
    wrong = []
    for name, path, age, values in TELLING:
        table = REPO_TABLES[name]
        rates = table["data"]
        for key in path.split():
            rates = rates[int(key) if key.isdigit() else key]
        first = age - table["start_age"]
        wrong += differences(name, path, age, rates[first : first + len(values)], values)
    assert not wrong, "\n".join(wrong)


def test_the_register_has_the_digest_of_every_list():
    path = Path(module.__file__).with_name("data_tables_sources.json")
    register = json.loads(path.read_text("utf-8"))
    assert list(register["tables"]) == list(REPO_TABLES)
    for name, table in register["tables"].items():
        data, told = REPO_TABLES[name]["data"], []
        for column, entry in table["columns"].items():
            labels = entry["labels"]
            lists = [data[entry["key"]]] if labels is None else [data[entry["key"]][e] for e in labels]
            printed = "".join(f"{value!r}\n" for rates in lists for value in rates)
            digest = hashlib.sha256(printed.encode()).hexdigest()[:16]
            assert entry["digest"] == digest, (name, column)
            told += map(id, lists)
        assert told == [id(each) for column in data.values() for _, each in lists_of(column)], name


# Published name, base year, ages, and a digest of the description.
METADATA = {
    "PER2020_Col_2o": ("PER2020_Col_2ndo.orden", 2012, 0, 118, "52351cae3a106f09"),
    "PER2020_Col_1o": ("PER2020_Col_1er.orden", 2012, 0, 119, "e7432fd05858caa6"),
    "PER2020_Ind_2o": ("PER2020_Ind_2ndo.orden", 2012, 0, 118, "11fc7ef20d3a365f"),
    "PER2020_Ind_1o": ("PER2020_Ind_1er.orden", 2012, 0, 119, "997a69a56680f60c"),
    "PASEM2020_Gen_2o": ("PASEM2020_General_2ndo.orden", None, 0, 110, "ef3ee54343aa6075"),
    "PASEM2020_Dec_2o": ("PASEM2020_Decesos_2ndo.orden", None, 0, 111, "8eb20c9fcebadcd3"),
    "PASEM2020_Rel_1o": ("PASEM2020_Rel_1er.orden", None, 0, 109, "7116b7bd7b9c3e6a"),
    "PASEM2020_NoRel_1o": ("PASEM2020_NoRel_1er.orden", None, 0, 108, "05e0cdcd5b9f05e3"),
    "PASEM2020_Dec_1o": ("PASEM2020_Decesos_1er.orden", None, 0, 108, "4979710406c1d787"),
    "PEAI2007_IAP_Ind": ("PEAI2007_Invalidez_Individual", None, 18, 64, "4667f207ee10cc7e"),
    "PEAI2007_IAP_Col": ("PEAI2007_Invalidez_Colectivo", None, 18, 64, "415027b015a50554"),
    "PASEM2010": ("PASEM2010", None, 0, 112, "09239666954ac584"),
    "IASS90": ("IASS-90", None, 18, 65, "d13d270fb8ef2c55"),
    "SS90TOT": ("SS90-TOT", None, 18, 65, "9f652f53722dbaf1"),
    "SS90ABS": ("SS90-ABS", None, 18, 65, "445aa086fedda59d"),
    "GAM71": ("GAM71", None, 5, 110, "58125d0d66b02351"),
    "GAM83": ("GAM83", None, 5, 110, "4b47635db539db64"),
    "GAM94_AA": ("GAM94_AA", 1994, 1, 120, "9751308401ae42bc"),
    "GRMF80": ("GRMF80", None, 15, 117, "1fa232f48fab2b90"),
    "GRMF95": ("GRMF95", None, 15, 126, "ee73a27e9f49b90b"),
    "GKMF80": ("GKMF80", None, 15, 117, "7839b471df263ef2"),
    "GKMF95": ("GKMF95", None, 15, 126, "9bc0f9b5d2b42817"),
    "CB_H_2020": ("CB-H-2020 HOMBRES", 2020, 0, 110, "ec612c25c2535e9a"),
    "MI_H_2020": ("MI-H-2020 HOMBRES", 2020, 0, 110, "9513e63a9eaa516d"),
    "RV_M_2020": ("RV-M-2020 MUJERES", 2020, 20, 110, "f743340a62c992cf"),
    "B_M_2020": ("B-M-2020 MUJERES", 2020, 0, 110, "5d5c656f8568fdba"),
    "MI_M_2020": ("MI-M-2020 MUJERES", 2020, 0, 110, "687dc6cddd4740a7"),
    "DAV2004R_Agg_2o": ("DAV 2004 R Aggregattafel, 2. Ordnung", 1999, 0, 121, "7bc1b61868504947"),
    "DAV2004R_Agg_1o": ("DAV 2004 R Aggregattafel, 1. Ordnung", 1999, 0, 121, "35bafca72d6428b6"),
    "DAV2004R_SelUlt_2o": ("DAV 2004 R Selektionstafel Ultimate, 2. Ordnung", 1999, 0, 121, "3ffacacffedc0175"),
    "DAV2004R_SelUlt_1o": ("DAV 2004 R Selektionstafel Ultimate, 1. Ordnung", 1999, 0, 121, "ba8c225c940daabe"),
    "AM92_AF92": ("92 Series Combined (AM92 & AF92) Select-Ultimate Mortality Table", None, 17, 120, "a104684db5e402cc"),
}  # fmt: skip


@pytest.mark.parametrize("name", METADATA)
def test_metadata_and_text_of_the_published_tables(name):
    table = REPO_TABLES[name]
    published, base_year, start_age, omega, text = METADATA[name]
    assert table["table_name"] == published
    assert (table.get("base_year"), table["start_age"], table["omega"]) == (
        base_year, start_age, omega
    )  # fmt: skip
    description = table["description"]
    assert hashlib.sha256(description.encode()).hexdigest()[:16] == text, description


def test_key_lookups_that_find_nothing():
    for name, key in (
        ("GAM71", "mi_scale_factor"), ("GAM83", "mi_scale_factor"), ("GRMF80", "base_year"),
        ("PASEM2010", "base_year"), ("DAV2004R_Agg_1o", "select_period"),
        ("CB_H_2020", "sex_independent"),
    ):  # fmt: skip
        assert key not in REPO_TABLES[name], name
    assert module.PASEM2010["mi_scale_factor"] is None
    assert 2 not in module.AM92_AF92["data"]["qx_m"] and "0" not in module.AM92_AF92["data"]["qx_m"]
    assert {2020, 2037}.isdisjoint(module.CB_H_2020["data"]["mi_m"])
