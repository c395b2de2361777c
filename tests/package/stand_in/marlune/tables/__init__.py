from typing import Any


class TableBuilder:
    def __init__(self, data: dict[str, Any], *, table_name: str, **metadata: Any) -> None:
        self.data, self.table_name, self.metadata = data, table_name, metadata
