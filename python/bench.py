#!/usr/bin/env python3
"""Times the package beside what a program does without it.

    python/bench.py [ROWS]        default 200000

The peers: a loop that unpacks the digits of each row into a Decimal, and pyarrow's casts from
decimal text. Prints a Markdown table of the best of five runs.
"""

import decimal
import random
import sys
import time

import numpy as np
import oci_number
import pyarrow as pa
import pyarrow.compute as pc

ROWS = int(sys.argv[1]) if len(sys.argv) > 1 else 200_000


def unpack(value: bytes | None) -> decimal.Decimal | None:
    """The loop's body: the bytes behind the length byte as a Decimal."""
    if value is None:
        return None
    if value == b"\x80":
        return decimal.Decimal(0)
    if value[0] >= 128:
        digits, exponent, sign = [b - 1 for b in value[1:]], value[0] - 193, 0
    else:
        body = value[1:-1] if value[-1] == 102 else value[1:]
        digits, exponent, sign = [101 - b for b in body], 62 - value[0], 1
    pairs = tuple(d for b in digits for d in divmod(b, 10))
    return decimal.Decimal((sign, pairs, 2 * (exponent - len(digits) + 1)))


def drop(results) -> None:
    for _ in results:
        pass


def best(function) -> float:
    """Nanoseconds a row."""
    times = []
    for _ in range(5):
        start = time.perf_counter()
        function()
        times.append(time.perf_counter() - start)
    return min(times) / ROWS * 1e9


def main() -> None:
    draw = random.Random(1)
    amounts = [decimal.Decimal(draw.randrange(-(10**11), 10**11)).scaleb(-2) for _ in range(ROWS)]
    text = pa.array(map(str, amounts))
    column = pa.array(oci_number.encode(text, to="binary"))
    records = oci_number.encode(text)
    array = np.asarray(records)
    kind = pa.decimal128(38, 10)
    some = [oci_number.Number(a) for a in amounts[:ROWS]]
    assert column.to_pylist() == [n.to_bytes(length_byte=False) for n in some]
    assert pa.array(oci_number.decode(column, to=kind)).to_pylist() == amounts
    assert [unpack(v) for v in column.to_pylist()] == amounts

    def loop():
        return pa.array([unpack(v) for v in column.to_pylist()], kind)

    def loop_sum():
        return sum(unpack(v) for v in column.to_pylist())

    tasks = [
        ("decode, binary to decimal(38, 10)", lambda: oci_number.decode(column, to=kind),
         [("loop", loop), ("cast from text", lambda: pc.cast(text, kind))]),
        ("decode, NumPy S22 to decimal(38, 10)", lambda: oci_number.decode(array, to=kind),
         [("cast from text", lambda: pc.cast(text, kind))]),
        ("decode, binary to float64", lambda: oci_number.decode(column, to="float64"),
         [("loop", lambda: [float(unpack(v)) for v in column.to_pylist()]),
          ("cast from text", lambda: pc.cast(text, pa.float64()))]),
        ("encode, text to records", lambda: oci_number.encode(text),
         [("cast to decimal", lambda: pc.cast(text, kind))]),
        ("sum of a binary column", lambda: oci_number.sum(column), [("loop", loop_sum)]),
        ("product of two columns", lambda: oci_number.mul(records, records),
         [("Decimal", lambda: [a * a for a in amounts])]),
        ("product of two scalars", lambda: drop(a * a for a in some),
         [("Decimal", lambda: drop(a * a for a in amounts))]),
    ]
    print("| task | ns a row | beside | ns a row | ratio |\n|---|---|---|---|---|")
    for title, ours, peers in tasks:
        time_of_ours = best(ours)
        for peer, function in peers:
            other = best(function)
            print(f"| {title} | {time_of_ours:.1f} | {peer} | {other:.1f} | "
                  f"{other / time_of_ours:.1f} |")
            title = ""


if __name__ == "__main__":
    main()
