"""Walks over the columns of payloads, and a blend of two."""

from marlune.tables.data_tables import REPO_TABLES

SYNTHETIC = [name for name in REPO_TABLES if name.startswith("Dummy")]
PUBLISHED = [name for name in REPO_TABLES if name not in SYNTHETIC]


def lists_of(column):
    """The lists of a column of any shape, each with the keys that lead to it."""
    if isinstance(column, list):
        return [((), column)]
    return [((key,), rates) for key, rates in column.items()]


def blended(start, target):
    """What _dav_mi_linear makes of two lists, in plain Python."""
    grid = {2004: start[:]}
    for gone in range(1, 20):
        weight = gone * 0.05
        grid[2004 + gone] = [s + weight * (t - s) for s, t in zip(start, target)]
    return grid | {2024: target[:]}
