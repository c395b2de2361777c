"""Reading what ./dev export writes."""


def readme_line(folder, reader):
    """What README.txt says to be typed into a reader."""
    (line,) = (
        line
        for line in (folder / "README.txt").read_text("utf-8").splitlines()
        if line.startswith(f"{reader}: ")
    )
    return line.removeprefix(f"{reader}: ")
