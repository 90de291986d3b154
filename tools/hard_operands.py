#!/usr/bin/env python3
"""Searches operands whose results lie next to the middle between two numbers.

    tools/hard_operands.py SECONDS [SEED [FUNCTION...]]

Prints each function's hardest operands as rows of tests/data/hard_cases.txt, with the distance in
units of the result's last place: a power of ten. Needs mpmath.

Over a short arithmetic progression of operands a function is a straight line, to far less than a
unit. Where a line comes closest to a middle, modulo the unit, its slope's continued fraction tells
[V. Lefevre, J.-M. Muller: Worst cases for correct rounding of the elementary functions. 2001].
The function is then evaluated there.
"""
import math
import random
import sys
import time

import mpmath
from mpmath import mp, mpf

mp.dps = 80
FRACTION = 110  # bits behind the point of a result in units

# The range of operands' magnitudes, in powers of ten, and what they are multiplied by.
FUNCTIONS = {
    "Exp": (mpmath.exp, -3, 2), "Ln": (mpmath.log, -4, 12),
    "Log": (lambda x: mpmath.log(x) / LN10, -4, 12),
    "Sin": (mpmath.sin, -3, 0.1), "Cos": (mpmath.cos, -3, 0.1), "Tan": (mpmath.tan, -3, 0.1),
    "ArcSin": (mpmath.asin, -3, -0.01), "ArcCos": (mpmath.acos, -3, -0.01),
    "ArcTan": (mpmath.atan, -3, 4), "HypSin": (mpmath.sinh, -3, 2),
    "HypCos": (mpmath.cosh, -3, 2), "HypTan": (mpmath.tanh, -3, 1),
    "Power": (lambda x: mpmath.sqrt(x) * x ** 3 / mpmath.sqrt(mpmath.sqrt(mpmath.sqrt(x))), -3, 12),
}
LN10 = mpmath.log(10)
ROWS = {"Log": "Log 1e1 {}", "Power": "Power {} 3375e-3"}


def unit_exponent(x):
    """Of a number's last place: 20 base-100 digits."""
    return 2 * math.floor(mpmath.log10(abs(x)) / 2) - 38


def first_within(slope, modulus, low, high):
    """The least k >= 0 with low <= slope k mod modulus <= high, or None."""
    if low == 0:
        return 0
    if 2 * slope > modulus:
        slope, low, high = modulus - slope, modulus - high, modulus - low
    if slope == 0:
        return None
    k = -(-low // slope)
    if k * slope <= high:
        return k
    k = first_within(modulus % slope, slope, -high % slope, -low % slope)
    return None if k is None else -(-(low + modulus * k) // slope)


def closest(start, slope, count):
    """The k below count with start + slope k mod 1 next to one half, in fixed point."""
    one = 1 << FRACTION
    found = None
    width = 2 * one // count
    while width > 0:
        low = (one // 2 - width - start) % one
        high = low + 2 * width
        k = 0 if high >= one else first_within(slope % one, one, low, high)
        if k is None or k >= count:
            break
        found = k
        width //= 2
    return found


def search(function, x, step, steps):
    """Hard operands among x, x + step ...: yields each progression's (distance, operand)."""
    unit = unit_exponent(function(x))
    scale = mpf(10) ** -unit
    # f'' from three points; the line may be wrong by a hundredth of what it finds.
    far = x * mpf(10) ** -12
    bend = abs(function(x + far) - 2 * function(x) + function(x - far)) / far ** 2 * step ** 2 * scale
    count = int(min((mpf(8) / (100 * bend)) ** (mpf(1) / 3), 10 ** 15))
    left = function(x) * scale
    for _ in range(steps):
        if unit_exponent(left / scale) != unit:
            return
        right = function(x + count * step) * scale
        start = int(mpmath.floor(mpmath.ldexp(left, FRACTION)))
        slope = int(mpmath.floor(mpmath.ldexp((right - left) / count, FRACTION)))
        k = closest(start, slope, count)
        if k is not None:
            at = function(x + k * step) * scale
            yield abs(at - mpmath.floor(at) - mpf(1) / 2), x + k * step
        x, left = x + count * step, right


def main():
    seconds = float(sys.argv[1])
    seed = int(sys.argv[2]) if len(sys.argv) > 2 else 1
    for name in sys.argv[3:] or FUNCTIONS:
        random.seed(seed)
        function, low, high = FUNCTIONS[name]
        end = time.monotonic() + seconds
        best, progressions = [], 0
        while time.monotonic() < end:
            x = mpf(10) ** random.uniform(low, high)
            place = unit_exponent(x)
            step = mpf(10) ** place
            x = mpmath.floor(x / step) * step
            for distance, operand in search(function, x, step, 100):
                progressions += 1
                best = sorted({*best, (distance, int(mpmath.nint(operand / step)), place)})[:3]
        for distance, digits, place in best:
            row = ROWS.get(name, name + " {} -").format(f"{digits}e{place}")
            print(f"{row}  # 10^{float(mpmath.log10(distance)):.1f} of {progressions}", flush=True)


main()
