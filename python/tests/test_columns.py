"""Columns, against decimal and pyarrow's decimals."""

import array
import random
import threading
import time
from decimal import Decimal

import duckdb
import numpy as np
import oci_number
import polars as pl
import pyarrow as pa
import pytest
from hypothesis import given
from hypothesis import strategies as st
from oci_number import Number, RowError

# Up to 38 digits with 10 behind the point, the values of decimal(38, 10).
values = st.builds(lambda i: Decimal(f"{i}e-10"), st.integers(-(10**38) + 1, 10**38 - 1))
small = st.builds(lambda i: Decimal(f"{i}e-2"), st.integers(-999, 999))
columns = st.lists(st.none() | values | small, max_size=150)
DECIMAL = pa.decimal128(38, 10)


def decimals(column):
    return pa.array(oci_number.decode(column, to=DECIMAL)).to_pylist()


def numbers(column):
    """The Numbers of a column of records, one by one."""
    return [None if b is None else Number.from_bytes(b) for b in pa.array(column).to_pylist()]


def forms(rows):
    """The same rows as every source that is taken."""
    records = oci_number.encode(pa.array(rows, DECIMAL))
    binary = pa.array(oci_number.encode(pa.array(rows, DECIMAL), to="binary"))
    half = len(binary) // 2
    yield from (records, binary, binary.cast(pa.large_binary()), binary.cast(pa.binary_view()))
    yield pa.chunked_array([binary[:half], binary[half:]], pa.binary())
    yield pa.concat_arrays([pa.array([None, b"\x80"], pa.binary()), binary])[2:]
    yield pa.table({"n": binary})
    yield pl.Series(binary) if len(binary) else pl.Series([], dtype=pl.Binary)
    yield [None if r is None else Number(r) for r in rows]
    if None not in rows:
        array = np.asarray(records)
        yield from (array, array.view(np.uint8).reshape(-1, 22))
        fields = np.zeros(len(rows), [("id", "i4"), ("n", "S22")])
        fields["n"] = array
        yield fields["n"]


@given(columns)
def test_every_source_has_the_same_rows(rows):
    for column in forms(rows):
        assert decimals(column) == rows
        assert oci_number.count(column) == len(rows) - rows.count(None)


@given(columns)
def test_targets(rows):
    column = oci_number.encode(pa.array(rows, DECIMAL))
    some = [r for r in rows if r is not None]
    assert len(column) == len(rows) and column.null_count == rows.count(None)
    for to in ("decimal256(60, 10)", pl.Decimal(38, 10), "binary", "large_binary", "records"):
        result = pa.array(oci_number.decode(column, to=to))
        if "inary" in str(result.type):
            result = pa.array(oci_number.decode(result, to=DECIMAL))
        assert result.to_pylist() == rows
    for to in ("string", "large_string"):
        text = pa.array(oci_number.decode(column, to=to))
        assert [t and Decimal(t) for t in text.to_pylist()] == rows
        assert decimals(oci_number.encode(text)) == decimals(oci_number.encode(pl.Series(text))) == rows
    integers = pa.array(oci_number.decode(column, to="int64", on_error="null")).to_pylist()
    assert integers == [None if r is None or not -(2**63) <= int(r) < 2**63 else int(r) for r in rows]
    keys = pa.array(oci_number.sort_keys(column)).to_pylist()
    assert [r for _, r in sorted((k, r) for k, r in zip(keys, rows) if r is not None)] == sorted(some)
    assert oci_number.sum(column) == sum(map(Number, some), start=Number())
    assert oci_number.min(column) == min(some, default=None)
    assert oci_number.max(column) == max(some, default=None)


# The scalar's results, which test_number.py compares with decimal's.
OPERATIONS = {
    oci_number.add: lambda a, b: a + b,
    oci_number.sub: lambda a, b: a - b,
    oci_number.mul: lambda a, b: a * b,
    oci_number.div: lambda a, b: a / b,
    oci_number.mod: lambda a, b: a % b,
}


@given(st.lists(st.tuples(st.none() | values | small, st.none() | small), max_size=70))
def test_operations(pairs):
    a, b = [p[0] for p in pairs], [p[1] for p in pairs]
    present = [x is not None and y is not None for x, y in pairs]
    left = pa.chunked_array(pa.array(oci_number.encode(pa.array(a, DECIMAL))).slice(i, 7)
                            for i in range(0, len(a), 7)) if a else []
    right = pa.array(b, DECIMAL) if b else pa.array([], DECIMAL)
    right = oci_number.encode(right, to="binary")
    for function, one in OPERATIONS.items():
        divides = function in (oci_number.div, oci_number.mod)
        expected = [one(Number(x), y) if p and not (divides and y == 0) else None
                    for p, (x, y) in zip(present, pairs)]
        assert numbers(function(left, right, on_error="null")) == expected
        constant = [None if x is None else one(Number(x), Decimal("-0.7")) for x in a]
        assert numbers(function(left, Decimal("-0.7"))) == constant
    order = pa.array(oci_number.compare(left, right)).to_pylist()
    assert order == [(x > y) - (x < y) if p else None for p, (x, y) in zip(present, pairs)]
    for function, one in ((oci_number.round, Number.round), (oci_number.trunc, Number.trunc)):
        assert numbers(function(left, 3)) == [None if x is None else one(Number(x), 3) for x in a]
    for name in ("abs", "neg", "floor", "ceil"):
        method = getattr(Number, name, getattr(Number, f"__{name}__", None))
        assert numbers(getattr(oci_number, name)(left)) == [
            None if x is None else method(Number(x)) for x in a]


def test_floats_and_integers():
    floats = np.array([0.1, -2.5, 1e-7, 1e20])
    column = oci_number.encode(floats)
    assert numbers(column) == [Decimal(repr(x)) for x in floats.tolist()]
    assert np.asarray(oci_number.decode(column, to="float64")).tolist() == floats.tolist()
    integers = array.array("q", [0, -1, 2**63 - 1, -(2**63)])
    decoded = np.asarray(oci_number.decode(oci_number.encode(integers), to="int64"))
    assert decoded.tolist() == integers.tolist() and decoded.dtype == np.int64


LONG = pa.chunked_array([[b"\xc1\x02"], [b"\xc1" * 30]], pa.binary())
BAD = pa.chunked_array([[b"\xc1\x02"], [b"\xc1\x02", b"\xc1\x65", None]], pa.binary())


@pytest.mark.parametrize(
    "call, row, data, reason",
    [
        (lambda: oci_number.decode(BAD, to="float64"), 2, b"\xc1\x65", "no number"),
        (lambda: oci_number.sum(BAD), 2, b"\xc1\x65", "no number"),
        (lambda: oci_number.max(BAD), 2, b"\xc1\x65", "no number"),
        (lambda: oci_number.decode(BAD, to="string"), 2, b"\xc1\x65", "no number"),
        (lambda: oci_number.add(LONG, [1, 2]), 1, b"\xc1" * 30, "21 bytes"),
        (lambda: oci_number.decode(BAD[:2], to="decimal(38, 38)"), 0, b"\xc1\x02", "large"),
        (lambda: oci_number.decode([5, Number("0.25")], to="decimal(9, 1)"), 1,
         b"\x02\xc0\x1a", "places"),
        (lambda: oci_number.encode(pa.array(["1", "1x"])), 1, b"1x", "text"),
        (lambda: oci_number.encode(np.array([1, np.nan])), 1, np.array(np.nan).tobytes(), ""),
        (lambda: oci_number.decode(np.zeros((3, 22), np.uint8), to="int64"), 0, b"\0", "21 bytes"),
    ],
)
def test_a_refused_row_is_named(call, row, data, reason):
    with pytest.raises(RowError) as caught:
        call()
    error = caught.value
    assert (error.row, error.bytes) == (row, data) and reason in error.reason
    assert str(error).startswith(f"row {row}: {error.reason} (")
    with pytest.raises(RowError, match=r"row 1: .*zero.* \(02 c1 06 and 01 80\)"):
        oci_number.div([1, 5], [1, 0])
    with pytest.raises(RowError, match=r"\((78 ){39}78\.\.\. of 9000 bytes\)$"):
        oci_number.sum(pa.array([b"x" * 9000]))


@pytest.mark.parametrize("call, error", [
    (lambda: oci_number.decode([1], to="date"), TypeError),
    (lambda: oci_number.decode([1], to="decimal(39, 2, 128)"), TypeError),
    (lambda: oci_number.decode([1], to="decimal(77, 2)"), ValueError),
    (lambda: oci_number.decode([1], to="int64", on_error="ignore"), ValueError),
    (lambda: oci_number.decode(["1"], to="int64"), TypeError),
    (lambda: oci_number.decode(5, to="int64"), TypeError),
    (lambda: oci_number.decode(b"12", to="int64"), TypeError),
    (lambda: oci_number.decode(np.zeros((3, 22, 1), np.uint8), to="int64"), TypeError),
    (lambda: oci_number.decode(np.zeros(4, "S22")[::-1], to="int64"), TypeError),
    (lambda: oci_number.decode(np.zeros(4), to="int64"), TypeError),
    (lambda: oci_number.decode(pa.table({"a": [1], "b": [2]}), to="int64"), TypeError),
    (lambda: oci_number.decode(pa.array([True]), to="int64"), TypeError),
    (lambda: oci_number.encode([1], to="int64"), TypeError),
    (lambda: oci_number.add(pa.chunked_array([["1"], ["2"]]), 1), TypeError),
    (lambda: oci_number.decode(pa.StructArray.from_arrays(
        [pa.array([b"\x80"])], ["n"], mask=pa.array([True])), to="int64"), TypeError),
    (lambda: oci_number.add([1], [1, 2]), ValueError),
    (lambda: oci_number.add(1, 2), TypeError),
    (lambda: oci_number.encode(pa.DictionaryArray.from_arrays(
        pa.array([0, 0]), pa.array(["5"]))), TypeError),
    (lambda: np.asarray(oci_number.decode([None], to="int64")), ValueError),
    (lambda: np.asarray(oci_number.decode([1], to="decimal(9, 2)")), TypeError),
])
def test_errors(call, error):
    with pytest.raises(error):
        call()


def test_results_are_handed_on_without_a_copy():
    column = oci_number.encode(pa.array(range(1000), pa.int64()))
    doubles = oci_number.decode(column, to="float64")
    address = doubles.__array_interface__["data"][0]
    arrow, array, series = pa.array(doubles), np.asarray(doubles), pl.Series(doubles).to_numpy()
    del doubles
    assert arrow.buffers()[1].address == array.ctypes.data == address
    assert series.ctypes.data == address
    assert arrow.to_pylist() == array.tolist() == series.tolist() == list(range(1000))


def test_duckdb():
    rows = [Decimal(random.Random(7).randrange(10**12)).scaleb(-2) for _ in range(5000)] + [None]
    numbers = pa.table({"n": pa.array(oci_number.encode(pa.array(rows, DECIMAL), to="binary"))})
    relation = duckdb.sql("SELECT n FROM numbers")
    amounts = pa.table({"amount": pa.array(oci_number.decode(relation, to="decimal(38,10)"))})
    assert duckdb.sql("SELECT sum(amount), count(amount) FROM amounts").fetchall() == [(
        sum(r for r in rows if r is not None), 5000)]


def test_the_gil_is_released():
    column = oci_number.encode(np.arange(1, 3_000_001))
    ticks, done = [], threading.Event()

    def tick():
        while not done.is_set():
            ticks.append(time.perf_counter())
            time.sleep(0.001)

    thread = threading.Thread(target=tick)
    thread.start()
    start = time.perf_counter()
    oci_number.sqrt(column)
    end = time.perf_counter()
    done.set()
    thread.join()
    assert sum(start < t < end for t in ticks) > 3
