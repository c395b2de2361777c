"""Actuarial decrement tables (mortality, disability, exit) as plain dicts and lists.

A payload is the metadata of a table and, under "data", its columns. Rates are per year of age:
`omega - start_age + 1` entries, the first for `start_age`. Decrement rates are per mille where
`decrement_scale_factor` is 1000 and decimal where it is 1; improvement rates are decimal.

All containers are shared between the tables that hold them. Copy before you change: the payloads
are read-only to type checkers, the lists of rates are not.

Each attribute has the exact type of its table; `REPO_TABLES` maps its literal names to the same
types. Code for any table takes a `TablePayload`, which every exact type is. The types exist for
checkers only: import them under `if TYPE_CHECKING:`.

Importing raises ImportError in a second interpreter of the process. The source of every column,
what is doubtful about it and how it is to be read stand in data_tables_sources.json beside this
file: json.loads(importlib.resources.files("marlune.tables").joinpath(…).read_text("utf-8")).
"""

from collections.abc import Mapping
from typing import (
    Any,
    Literal,
    Never,
    NotRequired,
    ReadOnly,
    Required,
    TypedDict,
    overload,
    type_check_only,
)

__test__: dict[str, Any]

type TableType = Literal["life", "disability", "exit"]
type Formula = Literal[
    "exponential_improvement",
    "linear_improvement",
    "discrete_improvement",
    "projected_improvement",
]
# Death, disability, exit, improvement; of males and females. MI only in DAV 2004 R.
type ColumnName = Literal[
    "qx_m", "qx_f", "ix_m", "ix_f", "ox_m", "ox_f", "mi_m", "mi_f", "MI_m", "MI_f"
]

# One entry per age. A few last entries are the ints 1 or 0.
type Rates = list[float]
# Select durations ascending, then "ult"; also improvement by duration.
type SelectMapping = dict[int | Literal["ult"], Rates]
# Calendar years ascending.
type YearGrid = dict[int, Rates]
type Column = Rates | SelectMapping | YearGrid

@type_check_only
class Columns[Decrement: ColumnName, D: Column, Improvement: ColumnName = Never, I: Column = Never](
    dict[ColumnName, D | I]
):
    """The data of a table: a dict with the keys Decrement and Improvement, of columns D and I."""

    # Narrower than a dict's: the keys of other tables are errors.
    @overload  # type: ignore[override]
    def __getitem__(  # pyright: ignore[reportIncompatibleMethodOverride]
        self, key: Decrement, /
    ) -> D: ...
    @overload
    def __getitem__(self, key: Improvement, /) -> I: ...

@type_check_only
class TablePayload(TypedDict):
    """What all tables have in common."""

    table_name: ReadOnly[str]
    table_type: ReadOnly[TableType]
    base_year: NotRequired[ReadOnly[int | None]]
    generational: ReadOnly[bool]
    select: NotRequired[ReadOnly[bool]]
    select_period: NotRequired[ReadOnly[int]]
    sex_independent: NotRequired[ReadOnly[bool]]
    decrement_scale_factor: ReadOnly[int]
    mi_scale_factor: NotRequired[ReadOnly[int | None]]
    omega: ReadOnly[int]
    start_age: ReadOnly[int]
    generational_formula_type: NotRequired[ReadOnly[Formula]]
    description: ReadOnly[str]
    data: ReadOnly[Mapping[ColumnName, Column]]

@type_check_only
class StaticTable[Data: Mapping[ColumnName, Column]](TablePayload):
    """Rates that hold for every calendar year."""

    data: ReadOnly[Data]

@type_check_only
class SelectTable[Data: Mapping[ColumnName, Column]](StaticTable[Data]):
    """A static table by select duration."""

    select: Required[ReadOnly[bool]]
    select_period: Required[ReadOnly[int]]

@type_check_only
class GenerationalTable[Data: Mapping[ColumnName, Column]](TablePayload):
    """Rates of `base_year`, and how they improve from there."""

    base_year: Required[ReadOnly[int]]
    mi_scale_factor: Required[ReadOnly[int]]
    generational_formula_type: Required[ReadOnly[Formula]]
    data: ReadOnly[Data]

@type_check_only
class SelectGenerationalTable[Data: Mapping[ColumnName, Column]](GenerationalTable[Data]):
    """A generational table by select duration."""

    select: Required[ReadOnly[bool]]
    select_period: Required[ReadOnly[int]]

# The keys of two sexes.
type _QX = Literal["qx_m", "qx_f"]
type _IX = Literal["ix_m", "ix_f"]
type _OX = Literal["ox_m", "ox_f"]
type _Mi = Literal["mi_m", "mi_f"]
type _MI = Literal["MI_m", "MI_f"]

def _dav_mi_linear(mi_start: Rates, mi_ziel: Rates) -> YearGrid:
    """Improvement rates by calendar year, 2004 to 2024, of the second-order DAV 2004 R tables.

    Both arguments are lists of annual improvement rates by age, decimal. The result has a new list
    for each year: 2004 is a copy of `mi_start`, 2024 one of `mi_ziel`; in year t between them the
    rate of an age is start + (t - 2004) * 0.05 * (target - start), neither rounded nor clipped, up
    to the end of the shorter list.

    TypeError for anything but exactly two lists (subclasses of list are refused), and what the
    arithmetic of the elements raises. The blend is the damping of the DAV's workbook with T1 = 5
    and T2 = 25; the workbook itself is kept with T2 = 10.
    """

def _build_dav2004r_data() -> dict[str, Mapping[ColumnName, Column]]:
    """The value of `_DAV2004R_DATA`, built anew: "Agg_1o", "Agg_2o", "SelUlt_1o", "SelUlt_2o".

    Each is the data of a DAV 2004 R table: qx_m, qx_f, MI_m, MI_f by age 0 to 121, all decimal.
    Select durations 1 to 5 are the ultimate rates times the select factors. The blended years of
    the second order come from whatever `_dav_mi_linear` the module holds at the call, and what that
    raises comes out. TypeError for any argument. Source: Deutsche Aktuarvereinigung, DAV 2004 R.
    """

@type_check_only
class _Repository(dict[TableName, TablePayload]):
    # For names that are known at run time only.
    @overload  # type: ignore[override]
    def get(  # pyright: ignore[reportIncompatibleMethodOverride]
        self, name: str, default: None = None, /
    ) -> TablePayload | None: ...
    @overload
    def get[T](self, name: str, default: T, /) -> TablePayload | T: ...

REPO_TABLES: Tables
"""The payloads of all tables by name, published before synthetic; each is the attribute's own.

KeyError for a name that is no table's; `TableName` lists all, `get` takes any text.
"""

# The data of the DAV 2004 R tables.
_DAV2004R_DATA: dict[str, Mapping[ColumnName, Column]]
# What the synthetic tables are made from: ages 0 to 100; 20 to 65 for disability.
_QX_LIFE: Rates
_OX_M_BASE: Rates
_OX_F_BASE: Rates
_IX_M_BASE: Rates
_IX_F_BASE: Rates

# Everything below is written by `./dev python -m tools.documents --write`.

PER2020_Col_2o: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""survival insurance, group: best estimate of technical provisions for solvency; life, ages 0-118,
per mille, exponential improvement from 2012."""
PER2020_Col_1o: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""survival insurance, group: accounting provisions and provisions of the special solvency regime; a
reference for premiums; pension plans, survival benefits; life, ages 0-119, per mille, exponential
improvement from 2012."""
PER2020_Ind_2o: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""survival insurance, individual: best estimate of technical provisions for solvency; life, ages
0-118, per mille, exponential improvement from 2012."""
PER2020_Ind_1o: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""survival insurance, individual: accounting provisions and provisions of the special solvency
regime; a reference for premiums; life, ages 0-119, per mille, exponential improvement from 2012."""
PASEM2020_Gen_2o: StaticTable[Columns[_QX, Rates]]
"""life-risk insurance (vida-riesgo) without funeral: best estimate of technical provisions for
solvency; life, ages 0-110, per mille."""
PASEM2020_Dec_2o: StaticTable[Columns[_QX, Rates]]
"""funeral insurance (decesos): best estimate of technical provisions for solvency; life, ages
0-111, per mille."""
PASEM2020_Rel_1o: StaticTable[Columns[_QX, Rates]]
"""life-risk insurance related to other operations (sold with another product): accounting
provisions and provisions of the special solvency regime; a reference for premiums; pension plans,
death benefits; life, ages 0-109, per mille."""
PASEM2020_NoRel_1o: StaticTable[Columns[_QX, Rates]]
"""other life-risk insurance without funeral: accounting provisions and provisions of the special
solvency regime; a reference for premiums; life, ages 0-108, per mille."""
PASEM2020_Dec_1o: StaticTable[Columns[_QX, Rates]]
"""funeral insurance (decesos): accounting provisions and provisions of the special solvency regime,
with exceptions for old policies; a reference for premiums; life, ages 0-108, per mille."""
PEAI2007_IAP_Ind: StaticTable[Columns[_IX, Rates]]
"""entry into disability, individual business; disability, ages 18-64, decimal."""
PEAI2007_IAP_Col: StaticTable[Columns[_IX, Rates]]
"""entry into disability, group business; disability, ages 18-64, decimal."""
PASEM2010: StaticTable[Columns[_QX, Rates]]
"""individual life insurance, death cover; life, ages 0-112, decimal."""
DAV2004R_Agg_2o: GenerationalTable[Columns[_QX, Rates, _MI, YearGrid]]
"""annuity insurance, without select effects, second order; **the trends of 2005-2023 are a choice
of parameters: 1.5 % of a price**; life, ages 0-121, decimal, exponential improvement from 1999."""
DAV2004R_Agg_1o: GenerationalTable[Columns[_QX, Rates, _MI, Rates]]
"""annuity insurance, without select effects, first order: recommended for new business from 2005;
life, ages 0-121, decimal, exponential improvement from 1999."""
DAV2004R_SelUlt_2o: SelectGenerationalTable[Columns[_QX, SelectMapping, _MI, YearGrid]]
"""annuity insurance, by select duration, second order; **the trends of 2005-2023 are a choice of
parameters: 1.5 % of a price**; life, ages 0-121, decimal, exponential improvement from 1999."""
DAV2004R_SelUlt_1o: SelectGenerationalTable[Columns[_QX, SelectMapping, _MI, Rates]]
"""annuity insurance, by select duration, first order: recommended for new business from 2005; life,
ages 0-121, decimal, exponential improvement from 1999."""
GAM71: StaticTable[Columns[_QX, Rates]]
"""group annuities, experience of 1964 to 1968; life, ages 5-110, decimal."""
GAM83: StaticTable[Columns[_QX, Rates]]
"""group annuities: interim table for valuation; life, ages 5-110, decimal."""
GAM94_AA: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""group annuities, static table of 1994; with Scale AA it is the 1994 Group Annuity Reserving
table; life, ages 1-120, decimal, discrete improvement from 1994."""
GRMF80: StaticTable[Columns[_QX, Rates]]
"""group annuities, Swiss experience of 1971 to 1975; **the male rate of age 102 is very probably a
misprint of the publication**; life, ages 15-117, decimal."""
GRMF95: StaticTable[Columns[_QX, Rates]]
"""group annuities, Swiss experience of 1986 to 1990; life, ages 15-126, decimal."""
GKMF80: StaticTable[Columns[_QX, Rates]]
"""group life, Swiss experience of 1971 to 1975; **the female rate of age 94 is very probably a
misprint of the publication**; life, ages 15-117, decimal."""
GKMF95: StaticTable[Columns[_QX, Rates]]
"""group life, Swiss experience of 1986 to 1990; life, ages 15-126, decimal."""
IASS90: StaticTable[Columns[Literal["ix_m"], Rates]]
"""not stated; probably entry into permanent disability, absolute, Social Security 1990; **ages
21-62 are reconstructed, not published; what the rates measure is in doubt: probably entry into
disability, not deaths**; disability, ages 18-65, per mille."""
SS90TOT: StaticTable[Columns[Literal["ix_m"], Rates]]
"""not stated; probably entry into permanent disability, total, Social Security 1990; **ages 21-62
are reconstructed, not published; what the rates measure is in doubt: probably entry into
disability, not deaths**; disability, ages 18-65, per mille."""
SS90ABS: StaticTable[Columns[Literal["ix_m"], Rates]]
"""not stated; probably entry into permanent disability, absolute, Social Security 1990; **ages
21-62 are reconstructed, not published; what the rates measure is in doubt: probably entry into
disability, not deaths**; disability, ages 18-65, per mille."""
CB_H_2020: GenerationalTable[Columns[Literal["qx_m"], Rates, Literal["mi_m"], YearGrid]]
"""annuities: male old-age pensioners and non-disabled survivors; life, ages 0-110, decimal,
projected improvement from 2020."""
MI_H_2020: GenerationalTable[Columns[Literal["qx_m"], Rates, Literal["mi_m"], YearGrid]]
"""annuities: male disability pensioners and disabled survivors; life, ages 0-110, decimal,
projected improvement from 2020."""
RV_M_2020: GenerationalTable[Columns[Literal["qx_f"], Rates, Literal["mi_f"], YearGrid]]
"""annuities: female old-age pensioners; life, ages 20-110, decimal, projected improvement from
2020."""
B_M_2020: GenerationalTable[Columns[Literal["qx_f"], Rates, Literal["mi_f"], YearGrid]]
"""annuities: female non-disabled survivors; life, ages 0-110, decimal, projected improvement from
2020."""
MI_M_2020: GenerationalTable[Columns[Literal["qx_f"], Rates, Literal["mi_f"], YearGrid]]
"""annuities: female disability pensioners and disabled survivors; life, ages 0-110, decimal,
projected improvement from 2020."""
AM92_AF92: SelectTable[Columns[_QX, SelectMapping]]
"""direct permanent assurances (whole life and endowment), experience of 1991 to 1994, medical and
non-medical combined; life, ages 17-120, decimal."""
DummySD2015: StaticTable[Columns[_IX, Rates]]
"""static rates of disability; disability, ages 20-65, decimal."""
DummySD2015Gen: GenerationalTable[Columns[_IX, Rates, _Mi, Rates]]
"""exponential improvement; disability, ages 20-65, decimal, exponential improvement from 2005."""
DummyEXIT: StaticTable[Columns[_OX, Rates]]
"""static rates of exit; exit, ages 0-100, decimal."""
DummyEXIT_Gen: GenerationalTable[Columns[_OX, Rates, _Mi, Rates]]
"""exponential improvement; exit, ages 0-100, decimal, exponential improvement from 2015."""
Dummy_qx0: StaticTable[Columns[_QX, Rates]]
"""nobody dies before 200: an annuity equals the annuity-certain; life, ages 0-200, decimal."""
DummyLIFE_1Sm: StaticTable[Columns[Literal["qx_m"], Rates]]
"""one sex only, males; life, ages 0-100, decimal."""
DummyLIFE_1Sf: StaticTable[Columns[Literal["qx_f"], Rates]]
"""one sex only, females; life, ages 0-100, decimal."""
DummyLIFE_LinearGen: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""linear improvement; life, ages 0-100, decimal, linear improvement from 1901."""
DummyLIFE_DiscreteGen: GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]
"""discrete improvement; life, ages 0-100, decimal, discrete improvement from 2010."""
DummyLIFE_ProjectedGen: GenerationalTable[Columns[_QX, Rates, _Mi, YearGrid]]
"""projected improvement by calendar year; life, ages 0-100, decimal, projected improvement from
2020."""
DummyLIFE_Select: SelectTable[Columns[_QX, SelectMapping]]
"""select durations; life, ages 0-100, decimal."""
DummyLIFE_Unisex: StaticTable[Columns[Literal["qx_m"], Rates]]
"""one column for both sexes; life, ages 0-100, decimal."""
DummySD_LinearGen: GenerationalTable[Columns[_IX, Rates, _Mi, Rates]]
"""linear improvement; disability, ages 20-65, decimal, linear improvement from 2010."""
DummySD_DiscreteGen: GenerationalTable[Columns[_IX, Rates, _Mi, Rates]]
"""discrete improvement; disability, ages 20-65, decimal, discrete improvement from 2010."""
DummySD_ProjectedGen: GenerationalTable[Columns[_IX, Rates, _Mi, YearGrid]]
"""projected improvement by calendar year; disability, ages 20-65, decimal, projected improvement
from 2020."""
DummySD_Select: SelectTable[Columns[_IX, SelectMapping]]
"""select durations; disability, ages 20-65, decimal."""
DummySD_Unisex: StaticTable[Columns[Literal["ix_m"], Rates]]
"""one column for both sexes; disability, ages 20-65, decimal."""
DummyEXIT_LinearGen: GenerationalTable[Columns[_OX, Rates, _Mi, Rates]]
"""linear improvement; exit, ages 0-100, decimal, linear improvement from 2010."""
DummyEXIT_DiscreteGen: GenerationalTable[Columns[_OX, Rates, _Mi, Rates]]
"""discrete improvement; exit, ages 0-100, decimal, discrete improvement from 2010."""
DummyEXIT_ProjectedGen: GenerationalTable[Columns[_OX, Rates, _Mi, YearGrid]]
"""projected improvement by calendar year; exit, ages 0-100, decimal, projected improvement from
2020."""
DummyEXIT_Select: SelectTable[Columns[_OX, SelectMapping]]
"""select durations; exit, ages 0-100, decimal."""
DummyEXIT_Unisex: StaticTable[Columns[Literal["ox_m"], Rates]]
"""one column for both sexes; exit, ages 0-100, decimal."""
DummySD_Gen2o: GenerationalTable[Columns[_IX, Rates, _Mi, YearGrid]]
"""exponential improvement by calendar year; disability, ages 20-65, decimal, exponential
improvement from 2004."""
DummyEXIT_Gen2o: GenerationalTable[Columns[_OX, Rates, _Mi, YearGrid]]
"""exponential improvement by calendar year; exit, ages 0-100, decimal, exponential improvement from
2004."""
DummySD_SelectGen_a: SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, Rates]]
"""select durations, one improvement for all; disability, ages 20-65, decimal, exponential
improvement from 2010."""
DummyEXIT_SelectGen_a: SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, Rates]]
"""select durations, one improvement for all; exit, ages 0-100, decimal, exponential improvement
from 2010."""
DummySD_SelectGen_b: SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, YearGrid]]
"""select durations, exponential improvement by calendar year; disability, ages 20-65, decimal,
exponential improvement from 2004."""
DummyEXIT_SelectGen_b: SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, YearGrid]]
"""select durations, exponential improvement by calendar year; exit, ages 0-100, decimal,
exponential improvement from 2004."""
DummyLIFE_SelectGen_c: SelectGenerationalTable[Columns[_QX, SelectMapping, _Mi, YearGrid]]
"""select durations, projected improvement by calendar year; life, ages 0-100, decimal, projected
improvement from 2020."""
DummySD_SelectGen_c: SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, YearGrid]]
"""select durations, projected improvement by calendar year; disability, ages 20-65, decimal,
projected improvement from 2020."""
DummyEXIT_SelectGen_c: SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, YearGrid]]
"""select durations, projected improvement by calendar year; exit, ages 0-100, decimal, projected
improvement from 2020."""
DummyLIFE_SelectGen_d: SelectGenerationalTable[Columns[_QX, SelectMapping, _Mi, SelectMapping]]
"""select durations, each with its own improvement; life, ages 0-100, decimal, exponential
improvement from 2010."""
DummySD_SelectGen_d: SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, SelectMapping]]
"""select durations, each with its own improvement; disability, ages 20-65, decimal, exponential
improvement from 2010."""
DummyEXIT_SelectGen_d: SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, SelectMapping]]
"""select durations, each with its own improvement; exit, ages 0-100, decimal, exponential
improvement from 2010."""

type TableName = Literal[
    "PER2020_Col_2o", "PER2020_Col_1o", "PER2020_Ind_2o", "PER2020_Ind_1o", "PASEM2020_Gen_2o",
    "PASEM2020_Dec_2o", "PASEM2020_Rel_1o", "PASEM2020_NoRel_1o", "PASEM2020_Dec_1o",
    "PEAI2007_IAP_Ind", "PEAI2007_IAP_Col", "PASEM2010", "DAV2004R_Agg_2o", "DAV2004R_Agg_1o",
    "DAV2004R_SelUlt_2o", "DAV2004R_SelUlt_1o", "GAM71", "GAM83", "GAM94_AA", "GRMF80", "GRMF95",
    "GKMF80", "GKMF95", "IASS90", "SS90TOT", "SS90ABS", "CB_H_2020", "MI_H_2020", "RV_M_2020",
    "B_M_2020", "MI_M_2020", "AM92_AF92", "DummySD2015", "DummySD2015Gen", "DummyEXIT",
    "DummyEXIT_Gen", "Dummy_qx0", "DummyLIFE_1Sm", "DummyLIFE_1Sf", "DummyLIFE_LinearGen",
    "DummyLIFE_DiscreteGen", "DummyLIFE_ProjectedGen", "DummyLIFE_Select", "DummyLIFE_Unisex",
    "DummySD_LinearGen", "DummySD_DiscreteGen", "DummySD_ProjectedGen", "DummySD_Select",
    "DummySD_Unisex", "DummyEXIT_LinearGen", "DummyEXIT_DiscreteGen", "DummyEXIT_ProjectedGen",
    "DummyEXIT_Select", "DummyEXIT_Unisex", "DummySD_Gen2o", "DummyEXIT_Gen2o",
    "DummySD_SelectGen_a", "DummyEXIT_SelectGen_a", "DummySD_SelectGen_b", "DummyEXIT_SelectGen_b",
    "DummyLIFE_SelectGen_c", "DummySD_SelectGen_c", "DummyEXIT_SelectGen_c",
    "DummyLIFE_SelectGen_d", "DummySD_SelectGen_d", "DummyEXIT_SelectGen_d"
]

@type_check_only
class Tables(_Repository):
    """Literal names give the exact type of the table."""

    @overload
    def __getitem__(
        self, name: Literal["PER2020_Col_2o", "PER2020_Col_1o", "PER2020_Ind_2o", "PER2020_Ind_1o",
        "GAM94_AA", "DummyLIFE_LinearGen", "DummyLIFE_DiscreteGen"], /
    ) -> GenerationalTable[Columns[_QX, Rates, _Mi, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["PASEM2020_Gen_2o", "PASEM2020_Dec_2o", "PASEM2020_Rel_1o",
        "PASEM2020_NoRel_1o", "PASEM2020_Dec_1o", "PASEM2010", "GAM71", "GAM83", "GRMF80", "GRMF95",
        "GKMF80", "GKMF95", "Dummy_qx0"], /
    ) -> StaticTable[Columns[_QX, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["PEAI2007_IAP_Ind", "PEAI2007_IAP_Col", "DummySD2015"], /
    ) -> StaticTable[Columns[_IX, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DAV2004R_Agg_2o"], /
    ) -> GenerationalTable[Columns[_QX, Rates, _MI, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DAV2004R_Agg_1o"], /
    ) -> GenerationalTable[Columns[_QX, Rates, _MI, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DAV2004R_SelUlt_2o"], /
    ) -> SelectGenerationalTable[Columns[_QX, SelectMapping, _MI, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DAV2004R_SelUlt_1o"], /
    ) -> SelectGenerationalTable[Columns[_QX, SelectMapping, _MI, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["IASS90", "SS90TOT", "SS90ABS", "DummySD_Unisex"], /
    ) -> StaticTable[Columns[Literal["ix_m"], Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["CB_H_2020", "MI_H_2020"], /
    ) -> GenerationalTable[Columns[Literal["qx_m"], Rates, Literal["mi_m"], YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["RV_M_2020", "B_M_2020", "MI_M_2020"], /
    ) -> GenerationalTable[Columns[Literal["qx_f"], Rates, Literal["mi_f"], YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["AM92_AF92", "DummyLIFE_Select"], /
    ) -> SelectTable[Columns[_QX, SelectMapping]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummySD2015Gen", "DummySD_LinearGen", "DummySD_DiscreteGen"], /
    ) -> GenerationalTable[Columns[_IX, Rates, _Mi, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT"], /
    ) -> StaticTable[Columns[_OX, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_Gen", "DummyEXIT_LinearGen", "DummyEXIT_DiscreteGen"], /
    ) -> GenerationalTable[Columns[_OX, Rates, _Mi, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyLIFE_1Sm", "DummyLIFE_Unisex"], /
    ) -> StaticTable[Columns[Literal["qx_m"], Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyLIFE_1Sf"], /
    ) -> StaticTable[Columns[Literal["qx_f"], Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyLIFE_ProjectedGen"], /
    ) -> GenerationalTable[Columns[_QX, Rates, _Mi, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummySD_ProjectedGen", "DummySD_Gen2o"], /
    ) -> GenerationalTable[Columns[_IX, Rates, _Mi, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummySD_Select"], /
    ) -> SelectTable[Columns[_IX, SelectMapping]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_ProjectedGen", "DummyEXIT_Gen2o"], /
    ) -> GenerationalTable[Columns[_OX, Rates, _Mi, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_Select"], /
    ) -> SelectTable[Columns[_OX, SelectMapping]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_Unisex"], /
    ) -> StaticTable[Columns[Literal["ox_m"], Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummySD_SelectGen_a"], /
    ) -> SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_SelectGen_a"], /
    ) -> SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, Rates]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummySD_SelectGen_b", "DummySD_SelectGen_c"], /
    ) -> SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_SelectGen_b", "DummyEXIT_SelectGen_c"], /
    ) -> SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyLIFE_SelectGen_c"], /
    ) -> SelectGenerationalTable[Columns[_QX, SelectMapping, _Mi, YearGrid]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyLIFE_SelectGen_d"], /
    ) -> SelectGenerationalTable[Columns[_QX, SelectMapping, _Mi, SelectMapping]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummySD_SelectGen_d"], /
    ) -> SelectGenerationalTable[Columns[_IX, SelectMapping, _Mi, SelectMapping]]: ...
    @overload
    def __getitem__(
        self, name: Literal["DummyEXIT_SelectGen_d"], /
    ) -> SelectGenerationalTable[Columns[_OX, SelectMapping, _Mi, SelectMapping]]: ...
    @overload
    def __getitem__(self, name: TableName, /) -> TablePayload: ...
