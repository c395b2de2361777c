"""Reading what ./dev export writes."""


def readme_line(folder, reader):
    """What README.txt says to be typed into a reader."""
    (line,) = (
        line
        for line in (folder / "README.txt").read_text("utf-8").splitlines()
        if line.startswith(f"{reader}: ")
    )
    return line.removeprefix(f"{reader}: ")


def annuity_due(rates, interest):
    """ä from the rates of the years to come."""
    value, alive = 0.0, 1.0
    for years, rate in enumerate(rates):
        value += alive / (1 + interest) ** years
        alive *= 1 - rate
    return value
