"""Functions on whole columns.

A column is anything that exports the Arrow C interface, as an array or a stream (a table of one
column stands for that column), a NumPy array of type S22 or of shape (n, 22) and type uint8, or a
list or tuple of numbers. The rows hold the 22 bytes of records, or, in a binary column, the bytes
behind the length byte.
"""

from __future__ import annotations

import decimal
import re
from typing import Any, Literal

from . import _core
from ._core import Column, Number

OnError = Literal["raise", "null"]
Scalar = Number | int | decimal.Decimal

# The names that types have in Arrow, NumPy, SQL and Polars, and the library's forms.
_FORMS = {
    "records": 1,
    "fixed_size_binary[22]": 1,
    "s22": 1,
    "binary": 3,
    "blob": 3,
    "large_binary": 4,
    "int64": 5,
    "bigint": 5,
    "float64": 6,
    "double": 6,
    "string": 9,
    "varchar": 9,
    "text": 9,
    "large_string": 10,
    "large_text": 10,
    "keys": 11,
}
_DECIMAL = re.compile(r"decimal(128|256)?\((?:precision=)?(\d+)(?:,\s*(?:scale=)?(-?\d+))?\)")


def _form(to: object) -> tuple[int, int, int]:
    name = str(to).lower()
    if name in _FORMS:
        return _FORMS[name], 0, 0
    match = _DECIMAL.fullmatch(name)
    if match is None:
        raise TypeError(f"no type that numbers are converted to: {to}")
    bits, precision, scale = match[1], int(match[2]), int(match[3] or 0)
    wide = bits == "256" or (bits is None and precision > 38)
    if not 1 <= precision <= (76 if wide else 38) or not -128 <= scale <= 128:
        raise ValueError(f"no precision and scale of a decimal: {to}")
    return 8 if wide else 7, precision, scale


def _stop(on_error: OnError) -> bool:
    if on_error not in ("raise", "null"):
        raise ValueError(f'on_error is "raise" or "null", not {on_error!r}')
    return on_error == "raise"


def decode(column: Any, to: Any, on_error: OnError = "raise") -> Column:
    """The numbers of a column as another type.

    to: "int64" (the integer part), "float64", "decimal(P, S)" (exact, up to 76 digits; refused
    where the scale is too small), "string", "large_string"; or as numbers in another form:
    "records", "binary", "large_binary", or "keys", 22 bytes that sort as the values do. A pyarrow
    or Polars type of that kind does, too.
    on_error: whether a row that has no such value raises a RowError, or becomes null.
    """
    return _core.convert(column, *_form(to), _stop(on_error))


def encode(column: Any, to: Any = "records", on_error: OnError = "raise") -> Column:
    """Numbers of a column of int64, float64, decimals or decimal text.

    to: "records", "binary" or "large_binary". A float keeps 15 significant digits.
    """
    form = _form(to)
    if form[0] > 4:
        raise TypeError(f"no form of numbers: {to}")
    # Rows of different sizes are written from one block of records.
    records = _core.convert(column, 1, 0, 0, _stop(on_error))
    return records if form[0] == 1 else _core.convert(records, *form, True)


def sort_keys(column: Any, on_error: OnError = "raise") -> Column:
    """22 bytes a row whose order is that of the values, nulls first."""
    return _core.convert(column, 11, 0, 0, _stop(on_error))


def abs(column: Any, on_error: OnError = "raise") -> Column:
    """The magnitudes."""
    return _core.calculate(1, column, None, 0, _stop(on_error))


def neg(column: Any, on_error: OnError = "raise") -> Column:
    """The negated numbers."""
    return _core.calculate(2, column, None, 0, _stop(on_error))


def round(column: Any, places: int = 0, on_error: OnError = "raise") -> Column:
    """Rounded half away from zero to decimal places, below 0 to tens and hundreds."""
    return _core.calculate(3, column, None, places, _stop(on_error))


def trunc(column: Any, places: int = 0, on_error: OnError = "raise") -> Column:
    """Cut off behind so many decimal places."""
    return _core.calculate(4, column, None, places, _stop(on_error))


def ceil(column: Any, on_error: OnError = "raise") -> Column:
    """The least integers that are not below."""
    return _core.calculate(5, column, None, 0, _stop(on_error))


def floor(column: Any, on_error: OnError = "raise") -> Column:
    """The greatest integers that are not above."""
    return _core.calculate(6, column, None, 0, _stop(on_error))


def sqrt(column: Any, on_error: OnError = "raise") -> Column:
    """The square roots."""
    return _core.calculate(7, column, None, 0, _stop(on_error))


def add(a: Any | Scalar, b: Any | Scalar, on_error: OnError = "raise") -> Column:
    """The sums of two columns, or of a column and a number."""
    return _core.calculate(8, a, b, 0, _stop(on_error))


def sub(a: Any | Scalar, b: Any | Scalar, on_error: OnError = "raise") -> Column:
    """The differences."""
    return _core.calculate(9, a, b, 0, _stop(on_error))


def mul(a: Any | Scalar, b: Any | Scalar, on_error: OnError = "raise") -> Column:
    """The products."""
    return _core.calculate(10, a, b, 0, _stop(on_error))


def div(a: Any | Scalar, b: Any | Scalar, on_error: OnError = "raise") -> Column:
    """The quotients; a zero divisor is refused."""
    return _core.calculate(11, a, b, 0, _stop(on_error))


def mod(a: Any | Scalar, b: Any | Scalar, on_error: OnError = "raise") -> Column:
    """The remainders, with the signs of `a`."""
    return _core.calculate(12, a, b, 0, _stop(on_error))


def compare(a: Any | Scalar, b: Any | Scalar, on_error: OnError = "raise") -> Column:
    """-1, 0 or 1 as `a` is below, equal to or above `b`, a column of int8."""
    return _core.calculate(13, a, b, 0, _stop(on_error))


def count(column: Any, on_error: OnError = "raise") -> int:
    """How many rows hold a number."""
    return _core.extremes(column, _stop(on_error))[0]


def sum(column: Any, on_error: OnError = "raise") -> Number:
    """The exact sum, rounded once; 0 of no rows."""
    return _core.sum(column, _stop(on_error))


def min(column: Any, on_error: OnError = "raise") -> Number | None:
    """The least number, None of no rows."""
    return _core.extremes(column, _stop(on_error))[1]


def max(column: Any, on_error: OnError = "raise") -> Number | None:
    """The greatest number, None of no rows."""
    return _core.extremes(column, _stop(on_error))[2]


