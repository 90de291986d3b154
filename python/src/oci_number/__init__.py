"""22-byte decimal numbers of OCI: the scalar Number, and functions on whole columns."""

import numbers as _numbers

from ._columns import (
    abs,
    add,
    ceil,
    compare,
    count,
    decode,
    div,
    encode,
    floor,
    max,
    min,
    mod,
    mul,
    neg,
    round,
    sort_keys,
    sqrt,
    sub,
    sum,
    trunc,
)
from ._core import Column, Number, pi
from ._core import version as __version__
from ._errors import RowError

__all__ = [
    "Column",
    "Number",
    "RowError",
    "abs",
    "add",
    "ceil",
    "compare",
    "count",
    "decode",
    "div",
    "encode",
    "floor",
    "max",
    "min",
    "mod",
    "mul",
    "neg",
    "pi",
    "round",
    "sort_keys",
    "sqrt",
    "sub",
    "sum",
    "trunc",
]

_numbers.Number.register(Number)


def _restore(value: bytes) -> Number:
    return Number.from_bytes(value, length_byte=False)
