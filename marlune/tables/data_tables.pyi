"""Actuarial decrement tables (mortality, disability, exit) as plain dicts and lists.

A payload is the metadata of a table and, under "data", its columns. Rates are per year of age:
`omega - start_age + 1` entries, the first for `start_age`. Decrement rates are per mille where
`decrement_scale_factor` is 1000 and decimal where it is 1; improvement rates are decimal.

All containers are shared between the tables that hold them. Copy before you change.

Importing raises ImportError in a second interpreter of the process. The source of every column is in
docs/provenance.md of the project.
"""

from typing import Any, Literal, NotRequired, TypedDict, type_check_only

__test__: dict[str, Any]

# One entry per age. A few last entries are the ints 1 or 0.
type _Rates = list[float]
# Select durations ascending, then "ult".
type _SelectMapping = dict[int | Literal["ult"], _Rates]
# Calendar years ascending.
type _YearGrid = dict[int, _Rates]

@type_check_only
class _TableData(TypedDict, total=False):
    qx_m: _Rates | _SelectMapping
    qx_f: _Rates | _SelectMapping
    ix_m: _Rates | _SelectMapping
    ix_f: _Rates | _SelectMapping
    ox_m: _Rates | _SelectMapping
    ox_f: _Rates | _SelectMapping
    mi_m: _Rates | _SelectMapping | _YearGrid
    mi_f: _Rates | _SelectMapping | _YearGrid
    MI_m: _Rates | _YearGrid
    MI_f: _Rates | _YearGrid

@type_check_only
class _TablePayload(TypedDict):
    table_name: str
    table_type: Literal["life", "disability", "exit"]
    base_year: NotRequired[int | None]
    generational: bool
    select: NotRequired[bool]
    select_period: NotRequired[int]
    sex_independent: NotRequired[bool]
    decrement_scale_factor: int
    mi_scale_factor: NotRequired[int | None]
    omega: int
    start_age: int
    generational_formula_type: NotRequired[
        Literal[
            "exponential_improvement",
            "linear_improvement",
            "discrete_improvement",
            "projected_improvement",
        ]
    ]
    description: str
    data: _TableData

# The tables by attribute name, published before synthetic.
REPO_TABLES: dict[str, _TablePayload]

# Spain
PER2020_Col_2o: _TablePayload
PER2020_Col_1o: _TablePayload
PER2020_Ind_2o: _TablePayload
PER2020_Ind_1o: _TablePayload
PASEM2020_Gen_2o: _TablePayload
PASEM2020_Dec_2o: _TablePayload
PASEM2020_Rel_1o: _TablePayload
PASEM2020_NoRel_1o: _TablePayload
PASEM2020_Dec_1o: _TablePayload
PEAI2007_IAP_Ind: _TablePayload
PEAI2007_IAP_Col: _TablePayload
PASEM2010: _TablePayload
IASS90: _TablePayload
SS90TOT: _TablePayload
SS90ABS: _TablePayload

# Germany
DAV2004R_Agg_2o: _TablePayload
DAV2004R_Agg_1o: _TablePayload
DAV2004R_SelUlt_2o: _TablePayload
DAV2004R_SelUlt_1o: _TablePayload

# United States
GAM71: _TablePayload
GAM83: _TablePayload
GAM94_AA: _TablePayload

# Chile
CB_H_2020: _TablePayload
MI_H_2020: _TablePayload
RV_M_2020: _TablePayload
B_M_2020: _TablePayload
MI_M_2020: _TablePayload

# United Kingdom
AM92_AF92: _TablePayload

# Synthetic, with lists of their own
DummySD2015: _TablePayload
DummySD2015Gen: _TablePayload
DummyEXIT: _TablePayload
DummyEXIT_Gen: _TablePayload
Dummy_qx0: _TablePayload
DummyLIFE_1Sm: _TablePayload
DummyLIFE_1Sf: _TablePayload

# Synthetic, over the base vectors
_QX_LIFE: _Rates
_OX_M_BASE: _Rates
_OX_F_BASE: _Rates
_IX_M_BASE: _Rates
_IX_F_BASE: _Rates
DummyLIFE_LinearGen: _TablePayload
DummyLIFE_DiscreteGen: _TablePayload
DummyLIFE_ProjectedGen: _TablePayload
DummyLIFE_Select: _TablePayload
DummyLIFE_Unisex: _TablePayload
DummySD_LinearGen: _TablePayload
DummySD_DiscreteGen: _TablePayload
DummySD_ProjectedGen: _TablePayload
DummySD_Select: _TablePayload
DummySD_Unisex: _TablePayload
DummyEXIT_LinearGen: _TablePayload
DummyEXIT_DiscreteGen: _TablePayload
DummyEXIT_ProjectedGen: _TablePayload
DummyEXIT_Select: _TablePayload
DummyEXIT_Unisex: _TablePayload
DummySD_Gen2o: _TablePayload
DummyEXIT_Gen2o: _TablePayload
DummySD_SelectGen_a: _TablePayload
DummyEXIT_SelectGen_a: _TablePayload
DummySD_SelectGen_b: _TablePayload
DummyEXIT_SelectGen_b: _TablePayload
DummyLIFE_SelectGen_c: _TablePayload
DummySD_SelectGen_c: _TablePayload
DummyEXIT_SelectGen_c: _TablePayload
DummyLIFE_SelectGen_d: _TablePayload
DummySD_SelectGen_d: _TablePayload
DummyEXIT_SelectGen_d: _TablePayload

# Switzerland
GRMF80: _TablePayload
GRMF95: _TablePayload
GKMF80: _TablePayload
GKMF95: _TablePayload

# The data of the DAV 2004 R tables: "Agg_1o", "Agg_2o", "SelUlt_1o", "SelUlt_2o".
_DAV2004R_DATA: dict[str, _TableData]

# Improvement rates by calendar year, 2004 to 2024: 2004 is a copy of `mi_start`, 2024 one of
# `mi_ziel`, between them linear, up to the end of the shorter list. TypeError for anything but lists.
def _dav_mi_linear(mi_start: _Rates, mi_ziel: _Rates) -> _YearGrid: ...

# The value of _DAV2004R_DATA, built anew.
def _build_dav2004r_data() -> dict[str, _TableData]: ...
