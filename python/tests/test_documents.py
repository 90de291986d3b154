"""The programs of the documents, and the types that the package declares."""

import doctest
import pathlib
import subprocess
import sys

import oci_number
import pytest

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"


@pytest.mark.parametrize("name", ["python.md", "duckdb.md", "parquet.md"])
def test_document(name, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    result = doctest.testfile(str(DOCS / name), module_relative=False)
    assert result.attempted > 5 and result.failed == 0


# With --strict an ignored error that there is not is one itself.
PROGRAM = """
import decimal, fractions
import oci_number.spark
from oci_number import Column, Number, RowError, add, decode, max, pi, sum
n: Number = Number("1") + 2 - decimal.Decimal(3) * Number(1.5) ** 2
i: int = round(n) + int(n)
m: Number = round(n, 2).sqrt() + (2 / n) + abs(-n) + sum([n]) + pi()
b: bytes = n.to_bytes(length_byte=False)
f: fractions.Fraction = n.to_fraction()
t: bool = n < 2.5 or n == "x" or n >= fractions.Fraction(1, 2)
c: Column = decode(add([n], 1), to="int64", on_error="null")
o: Number = max(c)  # type: ignore[assignment]
n + 1.5  # type: ignore[operator]
n < "1"  # type: ignore[operator]
decode(c, to="int64", on_error="ignore")  # type: ignore[arg-type]
try:
    pass
except RowError as error:
    k: int = error.row + len(error.bytes)
"""


def test_types(tmp_path):
    program = tmp_path / "program.py"
    program.write_text(PROGRAM)
    run = subprocess.run(
        [sys.executable, "-m", "mypy", "--strict", str(program)],
        capture_output=True, text=True, cwd=tmp_path,
    )
    assert run.returncode == 0, run.stdout
    for name in oci_number.__all__:
        assert getattr(oci_number, name).__doc__, name
