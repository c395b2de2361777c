from pkgutil import extend_path

__path__ = extend_path(__path__, __name__)

from marlune.tables import TableBuilder

__all__ = ["TableBuilder"]
