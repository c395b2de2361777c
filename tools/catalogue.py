"""Print the catalogue: a line for each table, then how a table is handed to a consumer."""

from marlune.tables.data_tables import REPO_TABLES, PER2020_Ind_1o


def shape_of(column):
    if isinstance(column, list):
        return "flat"
    keys = list(column)
    if keys[-1] == "ult":
        return f"durations {keys[0]}-{keys[-2]}, ult"
    return f"years {keys[0]}-{keys[-1]} ({len(keys)})"


def line(name, payload):
    columns = payload["data"]
    shapes = {shape_of(column): None for column in columns.values()}
    return (
        name,
        payload["table_name"],
        payload["table_type"],
        f"{payload['start_age']}-{payload['omega']}",
        str(payload.get("base_year") or "-"),
        "per mille" if payload["decrement_scale_factor"] == 1000 else "decimal",
        " ".join(columns),
        "; ".join(shapes),
        payload.get("generational_formula_type", "-"),
    )


def print_catalogue():
    head = ("name", "published name", "type", "ages", "base", "unit", "columns", "shape", "formula")
    lines = [head] + [line(name, payload) for name, payload in REPO_TABLES.items()]
    widths = [max(map(len, column)) for column in zip(*lines)]
    for row in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def print_documented_use():
    payload = dict(PER2020_Ind_1o)
    data = payload.pop("data")
    print("\nThe documented use: copy the payload, take \"data\" out of the copy, pass on the rest.")
    print("TableBuilder(")
    print("    {" + ", ".join(f"{key!r}: {len(rates)} rates" for key, rates in data.items()) + "},")
    for key, value in payload.items():
        print(f"    {key}={value!r},")
    print(")")


if __name__ == "__main__":
    print_catalogue()
    print_documented_use()
