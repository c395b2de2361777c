"""Any table as a numpy array for each column, or as a pandas frame of all columns."""

from __future__ import annotations

from typing import TYPE_CHECKING

import numpy as np

# pandas brings no types. Where pandas-stubs is installed, both comments to the checkers must go.
# pyright: basic
import pandas as pd  # type: ignore[import-untyped]

from marlune.tables.data_tables import REPO_TABLES, DAV2004R_SelUlt_2o

if TYPE_CHECKING:  # exists for checkers only
    from marlune.tables.data_tables import Column, TablePayload


def array(column: Column) -> np.ndarray[tuple[int, ...], np.dtype[np.float64]]:
    """By age; a row for each duration or year where the column has them."""
    return np.array(column if isinstance(column, list) else list(column.values()), dtype=float)


def frame(table: TablePayload) -> pd.DataFrame:
    """Indexed by age; the columns are (key, duration or year), with "" where a column is flat."""
    columns: dict[tuple[str, int | str], list[float]] = {}
    for key, column in table["data"].items():
        if isinstance(column, list):
            columns[key, ""] = column
        else:
            columns.update({(key, label): rates for label, rates in column.items()})
    ages = pd.RangeIndex(table["start_age"], table["omega"] + 1, name="age")
    return pd.DataFrame(columns, index=ages)


if __name__ == "__main__":
    data = DAV2004R_SelUlt_2o["data"]
    print("qx_m by duration and age:", array(data["qx_m"]).shape)
    print("MI_m by year and age:", array(data["MI_m"]).shape)
    table = frame(DAV2004R_SelUlt_2o)
    print("q of an ultimate male of 65:", table["qx_m", "ult"][65])
    print("his trend in 2024:", table["MI_m", 2024][65])
    rates = sum(frame(each).size for each in REPO_TABLES.values())
    print(f"{len(REPO_TABLES)} tables have {rates} rates")
