from pkgutil import extend_path

__path__ = extend_path(__path__, __name__)

from marlune.tables import TableBuilder  # noqa: E402

__all__ = ["TableBuilder"]
