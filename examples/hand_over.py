"""A table for a consumer: its data, then all else by name. The payload is copied first."""

from collections.abc import Mapping
from typing import Any

from marlune.tables.data_tables import AM92_AF92, REPO_TABLES


class Consumer:
    """Stands for TableBuilder of the package marlune: knows some names, keeps the others."""

    def __init__(
        self, data: Mapping[str, object], *, table_name: str, omega: int, **others: object
    ) -> None:
        self.text = f"{table_name} to {omega}: {', '.join(data)}; {len(others)} others"


def hand_over(name: str) -> Consumer:
    table = REPO_TABLES.get(name)
    if table is None:
        raise KeyError(name)
    payload: dict[str, Any] = dict(table)
    data = payload.pop("data")
    return Consumer(data, **payload)


if __name__ == "__main__":
    print(hand_over("PER2020_Ind_1o").text)
    print(hand_over("AM92_AF92").text)
    print("still there:", "data" in AM92_AF92)
