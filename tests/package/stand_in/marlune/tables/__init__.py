from pkgutil import extend_path
from typing import Any

__path__ = extend_path(__path__, __name__)


class TableBuilder:
    def __init__(self, data: dict[str, Any], *, table_name: str, **metadata: Any) -> None:
        self.data, self.table_name, self.metadata = data, table_name, metadata
