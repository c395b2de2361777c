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
tables <- read.csv("tables.csv")
due <- function(q, i) sum(cumprod(c(1, 1 - q[-length(q)])) / (1 + i)^(seq_along(q) - 1))
per <- subset(rates, table == "PER2020_Ind_1o" & sex == "female" & age >= 65)
said <- subset(tables, name == "PER2020_Ind_1o")
years <- 2026 + 0:(said$omega - 65) - said$base_year
q <- per$value[per$kind == "death"] / said$decrement_scale_factor
cat(sprintf("%.6f\\n", due(q * exp(-per$value[per$kind == "improvement"] * years), 0.02)))
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
    per, am92, *read = output(folder, "Rscript", "-e", readme_line(folder, "R") + R)
    assert (per, am92) == ("22.503445", "20.009")
    held = values(folder)
    own, exact = read[: len(held)], read[len(held) :]
    assert [float.fromhex(value).hex() for value in exact] == held
    pairs = [(float.fromhex(a), float.fromhex(b)) for a, b in zip(own, held, strict=True)]
    assert all(abs(a - b) <= math.ulp(b) for a, b in pairs)
    print(sum(a != b for a, b in pairs), "of", len(pairs), "differ in the last bit")


DUCKDB = """
CREATE TABLE tables AS FROM read_csv('tables.csv');
CREATE TABLE lives AS
SELECT 'per' AS life, 0.02 AS i, q.age - 65 AS t,
       q.value / decrement_scale_factor * exp(-mi.value * (2026 + t - base_year)) AS q
FROM rates q JOIN rates mi USING (table_name, sex, age) JOIN tables ON name = table_name
WHERE name = 'PER2020_Ind_1o' AND sex = 'female' AND age >= 65
  AND q.kind = 'death' AND mi.kind = 'improvement'
UNION ALL
SELECT 'am92', 0.04, age - 40, value FROM rates
WHERE table_name = 'AM92_AF92' AND sex = 'male' AND age >= 40
  AND duration = CASE age WHEN 40 THEN '0' WHEN 41 THEN '1' ELSE 'ult' END;
SELECT life, sum(alive / (1 + i) ** t) AS due FROM (
  SELECT *, coalesce(product(1 - q) OVER (PARTITION BY life ORDER BY t
    ROWS BETWEEN UNBOUNDED PRECEDING AND 1 PRECEDING), 1) AS alive FROM lives
) GROUP BY life;
SELECT value FROM rates;
"""


def test_duckdb(folder):
    script = readme_line(folder, "DuckDB") + DUCKDB.replace("table_name", '"table"')
    lines = "\n".join(output(folder, "duckdb", "-json", "-c", script))
    annuities, rows = (json.loads(f"[{part}]") for part in lines.strip("[]").split("]\n["))
    due = {row["life"]: row["due"] for row in annuities}
    assert (f"{due['per']:.6f}", f"{due['am92']:.3f}") == ("22.503445", "20.009")
    assert [float(row["value"]).hex() for row in rows] == values(folder)
