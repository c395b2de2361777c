#pragma once

namespace marlune::tables {

// The module's __doc__. Counts and notes are kept as users know them; the tables themselves are
// documented in docs/.
inline constexpr const char *docstring = R"doc(Actuarial table data repository.

This module contains predefined actuarial table data for use with :class:`TableBuilder`.
All tables are provided as Python dictionaries with standardized metadata and data arrays.

Tables Included
---------------
**PER2020 Series** (Spain, survival, generational)
    - PER2020_Col_2o : collective, second order
    - PER2020_Col_1o : collective, first order
    - PER2020_Ind_2o : individual, second order
    - PER2020_Ind_1o : individual, first order

**PASEM2020 Series** (Spain, term life and funeral)
    - PASEM2020_Gen_2o : general, second order
    - PASEM2020_Dec_2o : decesos, second order
    - PASEM2020_Rel_1o : related business, first order
    - PASEM2020_NoRel_1o : non-related business, first order
    - PASEM2020_Dec_1o : decesos, first order

**PEAI2007 / PASEM2010** (Spain)
    - PEAI2007_IAP_Ind : absolute permanent disability, individual
    - PEAI2007_IAP_Col : absolute permanent disability, collective
    - PASEM2010 : mortality, group insurance

**DAV 2004 R** (Germany, annuitants, generational)
    - DAV2004R_Agg_2o : aggregate, second order
    - DAV2004R_Agg_1o : aggregate, first order
    - DAV2004R_SelUlt_2o : select-ultimate, second order (select_period=5)
    - DAV2004R_SelUlt_1o : select-ultimate, first order (select_period=5)

**GAM / AM92** (United States, United Kingdom)
    - GAM71 : 1971 Group Annuity Mortality
    - GAM83 : 1983 Group Annuity Mortality
    - GAM94_AA : 1994 Group Annuity Mortality with Scale AA
    - AM92_AF92 : CMI 92 Series select-ultimate (select_period=2, Duration-0 indexing)

**Swiss SOA** (Switzerland, reprinted by the Society of Actuaries)
    - GRMF80, GRMF95 : Gruppen Renten (group annuities)
    - GKMF80, GKMF95 : Gruppen Kapital (group life)

**IASS / SS90** (Spain disability mortality, per-mille ix)
    - IASS90, SS90TOT, SS90ABS : ages 21 to 62 are reconstructed, NOT published

**CMF 2020** (Chile, generational, improvement by calendar year)
    - CB_H_2020, MI_H_2020 : males
    - RV_M_2020, B_M_2020, MI_M_2020 : females

**Dummy tables** (synthetic, testing only — 33 entries)
    - static, generational, select-ultimate, unisex and zero-mortality tables

The canonical inventory is :const:`REPO_TABLES` (66 table payloads).

Table Structure
---------------
Each table dictionary contains:

table_name : str
    Published or display name of the table.
table_type : str
    "life", "disability" or "exit".
base_year : int, optional
    Calendar year of the base rates.
generational : bool
    Whether the table carries improvement rates.
select : bool, optional
    Whether the decrement columns are select mappings.
select_period : int, optional
    Count of numbered select-duration columns per sex (required when select=True).
    Duration keys start at 0 (CMI/UK, e.g. AM92_AF92) or 1 (most other tables).
decrement_scale_factor : int or float
    Scale factor applied to decrement probabilities (typically 1000 for per-mille notation).
mi_scale_factor : int, float, or None
    Scale factor applied to improvement rates.
omega : int
    Terminal age (all lives extinct by omega).
generational_formula_type : str, optional
    Name of the improvement formula.
description : str
    Source, regulation and intended use.
data : dict
    - qx_m, qx_f : flat list per sex, or a dict keyed by duration integers plus "ult"
    - mi_m, mi_f : improvement rates (λ for exponential/linear, AA for discrete/projected improvement)

First vs. Second Order Tables
-----------------------------
- "1er.orden" : first-order tables with prudential margins, for tarification.
- "2ndo.orden" : second-order best-estimate tables, for reserves.

Usage
-----
Copy the payload, take "data" out of the copy and pass the rest as keyword arguments:

>>> from marlune import TableBuilder
>>> from marlune.tables.data_tables import PER2020_Ind_1o
>>> payload = PER2020_Ind_1o.copy()
>>> data = payload.pop("data")
>>> table = TableBuilder(data, **payload)

Module Constants
----------------
REPO_TABLES : dict[str, dict]
    Dictionary mapping table variable names to table dict objects.
    Explicit hardcoded dictionary mapping all distributed table payloads.

Notes
-----
- The decrement_scale_factor is 1000 = per-mille (‰) for Spanish PER/PASEM tables,
  1 = decimal qx for DAV, GAM, CMF 2020, and dummies
- Generational tables require both qx and mi (improvement rate) columns.
- Ages are implicit: index 0 corresponds to age 0, index 1 to age 1, etc.
- Tables end at omega; :math:`q_{\omega-1} = 1.0` (certainty of death at terminal age).

See Also
--------
~marlune.TableBuilder : Main class for building and validating actuarial tables.
~marlune.tables.data.read_table : Load a table from disk in the package's table-file format.

References
----------
- PER2020 : notes on the survival tables of 2020, Instituto de Actuarios Españoles and
  Dirección General de Seguros y Fondos de Pensiones (DGSFP).
- PASEM2020 : notes on the mortality tables of 2020, Instituto de Actuarios Españoles and
  Dirección General de Seguros y Fondos de Pensiones (DGSFP).

Examples
--------
Load a table:

>>> from marlune.tables.data_tables import PER2020_Ind_1o
>>> print(PER2020_Ind_1o["table_name"])
PER2020_Ind_1er.orden
>>> print(PER2020_Ind_1o["omega"])
119

Build a table:

>>> from marlune import TableBuilder
>>> from marlune.tables.data_tables import PASEM2020_Gen_2o
>>> payload = PASEM2020_Gen_2o.copy()
>>> table = TableBuilder(payload.pop("data"), **payload)

Iterate over the inventory:

>>> from marlune.tables.data_tables import REPO_TABLES
>>> for name, payload in REPO_TABLES.items():
...     print(name, payload["table_name"])
)doc";

} // namespace marlune::tables
