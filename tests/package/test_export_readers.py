"""What ./dev export writes, read by R and by DuckDB: every value, annuities from nothing but it."""

# ./dev adds: readers
import csv
import json
import math
import subprocess

import pytest

from files import readme_line
from tools import export


@pytest.fixture(scope="module")
def folder(tmp_path_factory):
    return export.write(tmp_path_factory.mktemp("export")).with_suffix("")


def output(folder, *command):
    done = subprocess.run(
        command, cwd=folder, capture_output=True, text=True, check=False, timeout=60
    )
    assert done.returncode == 0 and not done.stderr, done.stderr
    return done.stdout.splitlines()


def values(folder):
    with open(folder / "rates.csv", encoding="utf-8", newline="") as file:
        return [float(row["value"]).hex() for row in csv.DictReader(file)]


R = """
due <- function(q, i) sum(cumprod(c(1, 1 - q[-length(q)])) / (1 + i)^(seq_along(q) - 1))
am92 <- subset(rates, table == "AM92_AF92" & sex == "male")
q <- c(subset(am92, duration == "0" & age == 40)$value,
       subset(am92, duration == "1" & age == 41)$value,
       subset(am92, duration == "ult" & age >= 42)$value)
cat(sprintf("%.3f\\n", due(q, 0.04)))
cat(sprintf("%a\\n", rates$value), sep = "")
text <- read.csv("rates.csv", colClasses = "character")$value
exact <- jsonlite::fromJSON(paste0("[", paste(text, collapse = ","), "]"))
cat(sprintf("%a\\n", exact), sep = "")
"""


def test_r(folder):
    """R's own reader of numbers misses the last bit of some; what is JSON it reads exactly."""
    am92, *read = output(folder, "Rscript", "-e", readme_line(folder, "R") + R)
    assert am92 == "20.009"
    held = values(folder)
    own, exact = read[: len(held)], read[len(held) :]
    assert [float.fromhex(value).hex() for value in exact] == held
    pairs = [(float.fromhex(a), float.fromhex(b)) for a, b in zip(own, held, strict=True)]
    assert all(abs(a - b) <= math.ulp(b) for a, b in pairs)
    print(sum(a != b for a, b in pairs), "of", len(pairs), "differ in the last bit")


DUCKDB = """
SELECT sum(alive / 1.04 ** t) AS due FROM (
  SELECT age - 40 AS t, coalesce(product(1 - value) OVER (ORDER BY age
    ROWS BETWEEN UNBOUNDED PRECEDING AND 1 PRECEDING), 1) AS alive FROM rates
  WHERE table_name = 'AM92_AF92' AND sex = 'male' AND age >= 40
    AND duration = CASE age WHEN 40 THEN '0' WHEN 41 THEN '1' ELSE 'ult' END
);
SELECT value FROM rates;
"""


def test_duckdb(folder):
    script = readme_line(folder, "DuckDB") + DUCKDB.replace("table_name", '"table"')
    lines = "\n".join(output(folder, "duckdb", "-json", "-c", script))
    ((annuity,), rows) = (json.loads(f"[{part}]") for part in lines.strip("[]").split("]\n["))
    assert f"{annuity['due']:.3f}" == "20.009"
    assert [float(row["value"]).hex() for row in rows] == values(folder)
