from marlune.tables import TableBuilder

__all__ = ["TableBuilder"]
