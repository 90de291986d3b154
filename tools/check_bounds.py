#!/usr/bin/env python3
"""Evaluates the inequalities behind docs/numerics.md in exact arithmetic.

    tools/check_bounds.py          prints each with the bits to spare; fails when one does not hold

The constants are read from the source: one that changes without its proof fails here, and one that
is not found any more does, too. Errors are counted in ulps, 2^-64N, of N limbs.
"""
import math
import re
import sys
from fractions import Fraction
from pathlib import Path

SOURCE = Path(__file__).resolve().parent.parent / "src"
ENGINE = SOURCE / "oci_calc_number"
TABLE_WIDTHS, WIDE = (3, 4), 16
failures = 0


def constant(path, pattern):
    """The integers of the one place in a file that the pattern finds."""
    found = re.findall(pattern, (ENGINE / path).read_text(encoding="utf-8"))
    if len(found) != 1:
        sys.exit(f"{path}: {len(found)} places for {pattern}")
    values = [int(value) for value in (found[0] if isinstance(found[0], tuple) else found)]
    return values[0] if len(values) == 1 else values


def two(exponent):
    return Fraction(2) ** exponent


def ten(exponent):
    return Fraction(10) ** exponent


def below(what, left, right, equal=False):
    """left < right, or left <= right; both exact."""
    global failures
    if left < right or (equal and left == right):
        spare = math.log2(right / left) if left > 0 else math.inf
        print(f"{what:<66} {spare:9.1f}")
    else:
        failures += 1
        print(f"{what:<66} does not hold: by {math.log2(left / right):.1f} bits")


def arc_tangent_of_inverse(n, terms=1200):
    return sum(Fraction((-1) ** k, (2 * k + 1) * n ** (2 * k + 1)) for k in range(terms))


def fixed(value, bits):
    """floor(value * 2^bits)."""
    return math.floor(value * two(bits))


# Rounded down to 2600 bits, so that fractions stay small; what is missing is below every slack.
def cut(value, bits=2600):
    return Fraction(fixed(value, bits), 2 ** bits)


PI = cut(16 * arc_tangent_of_inverse(5) - 4 * arc_tangent_of_inverse(239))
LN2 = cut(sum(Fraction(1, k * 2 ** k) for k in range(1, 2700)))

REAL = constant("binary/real.h", r"real_bits = 64 \* N - (\d+);")
OPERAND = constant("binary/operand.h", r"operand_bits = 64 \* N - (\d+);")
SQRT = constant("binary/real.h", r"sqrt_bits = (\d+) \* N;")
SCALE = constant("binary/rounding.cpp", r"scale_bits = 64 \* N - (\d+);")
UNIT_BITS = constant("binary/rounding.cpp", r"unit_bits = (\d+);")
KERNEL = {name: constant("elementary/kernels.h", rf"{name}_bits = kernel_bits\(N, (\d+), (\d+)\)")
          for name in ("exp", "ln", "sin_cos", "atan")}


def bits(name, n):
    lost, wide = KERNEL[name]
    return wide if n == WIDE else 64 * n - lost


def factorial_term(base_bits, power):
    """The Taylor term x^power / power! for x < 2^-base_bits."""
    return two(-base_bits * power) / math.factorial(power)


def exponential():
    log2_e = constant("elementary/exp.cpp", r"log2_e_32 = (\d+);")
    below("exp: log2_e_32 is not above 2^32 / ln 2", log2_e * LN2, two(32))
    below("exp: nor more than 1 below it", two(32) - LN2 * log2_e, LN2)
    # |x| < 2^9, and at most one step more.
    k = Fraction(2 ** 9) / LN2 + 2
    degrees = constant("elementary/exp.cpp", r"horner<N, 16, false, N == 3 \? (\d+) : (\d+)>")
    for n, degree in zip(TABLE_WIDTHS, degrees):
        ulps = k + 2 + 3 * 2 * n + two(9 + OPERAND)
        missing = 2 * factorial_term(16, degree + 3) * two(64 * n)
        below(f"exp, {n} limbs: error of a mantissa", (ulps + missing) * two(1 - 64 * n),
              two(-bits("exp", n)))
    halvings = constant("elementary/exp.cpp", r"halvings = (\d+);")
    terms = constant("elementary/exp.cpp", r"n < (\d+); \+\+n")
    ulp = two(REAL - 64 * WIDE)
    reduction = (two(9) + 1) * ulp + k * two(-64 * WIDE)
    series = (3 * terms * two(halvings) + two(halvings)) * ulp
    missing = 2 * factorial_term(halvings, terms) * two(halvings)
    below("exp, 16 limbs: reduction, series, squarings, error of x",
          reduction + series + missing + two(-990), two(-bits("exp", WIDE)))
    below("exp, 16 limbs: an error of x as read", two(9 + OPERAND - 64 * WIDE), two(-990))


def logarithm_missing(bits, relative):
    """What the series leaves out for a power below 2^-bits: of the power, or absolutely."""
    loop = r"relative \? (\d+) : (\d+)\)\) < 64 \* n \+ (\d+)\) \+\+k"
    *more, spare = constant("elementary/ln.cpp", loop)
    step = more[0 if relative else 1]

    def missing(n):
        k = 0
        while bits * (k + step) < 64 * n + spare:
            k += 1
        base = two(-bits) * (1 + two(-28))
        return base ** (k + (2 if relative else 3)) / (k + 3)
    return missing


def logarithm():
    near = constant("elementary/ln.cpp", r"near_one_bits = (\d+);")
    level = constant("elementary/ln.cpp", r"level_bits = (\d+);")
    last = max(int(shift) for shift in
               re.findall(r"ln_level<N, (\d+)>\(", (ENGINE / "elementary/ln.cpp").read_text()))
    below("ln: the series begins where the levels end", Fraction(level - 1), Fraction(last))
    zeros = constant("elementary/ln.cpp", r"horner<N, near_one_bits - (\d+), true")
    used = constant("elementary/ln.cpp", r"last_power\(N, near_one_bits - (\d+), true\)")
    below("ln: x - 1 turned, and the zeros in front of it", two(-near) / (1 - two(-near)),
          two(min(zeros, used) - near))
    zeros = constant("elementary/ln.cpp", r"horner<N, level_bits - (\d+), true")
    below("ln: what the levels leave, and the zeros in front of it",
          two(-last) * (1 + two(-28)), two(zeros - level))
    levels, distance = logarithm_missing(level, False), logarithm_missing(near - used, True)
    for n in (*TABLE_WIDTHS, 8):
        ulps = two(OPERAND) + 5 * 2 + 2 * n + levels(n) * two(64 * n)
        below(f"ln, {n} limbs: next to 1, in a sum of 2^-{near}", ulps * two(near - 64 * n),
              two(-bits("ln", n)))
        # |k| of 2 or more: the sum is (|k| - 1) ln 2 or more, and k ln 2 is cut off |k| times.
        worst = max((ulps + k) / ((k - 1) * LN2) for k in range(2, 440))
        below(f"ln, {n} limbs: elsewhere", worst * two(-64 * n), two(-bits("ln", n)))
        below(f"ln, {n} limbs: from x - 1",
              4 * two(REAL - 64 * n) + two(OPERAND - 64 * n) + distance(n), two(-bits("ln", n)))
    largest = 440 * LN2
    start = largest * two(-bits("ln", 8))
    smallest = ten(-40)  # of |ln x|, x = 1 - 10^-40
    below("ln, 16 limbs: the third power of the start's error", start ** 3 / 12 / smallest,
          two(-bits("ln", WIDE) - 1))
    below("ln, 16 limbs: the exponential's error, of the smallest logarithm",
          (two(-bits("exp", WIDE)) + two(3 + REAL - 64 * WIDE)) / smallest,
          two(-bits("ln", WIDE) - 1))


def closest_to_multiple(e, digits=40):
    """The least |m 10^e / (pi/2) - n| over integers n > 0 and m of at most so many digits: no
    fraction with a smaller denominator comes as close as a convergent of the continued fraction.
    2600 bits leave no doubt, as m 10^e < 2^420."""
    ratio = ten(e) * 2 / PI
    numerator, denominator = ratio.numerator, ratio.denominator
    p0, q0, p1, q1 = 1, 0, numerator // denominator, 1
    rest = denominator, numerator % denominator
    best = Fraction(1)
    while q1 < 10 ** digits:
        if p1 > 0:
            best = min(best, abs(q1 * ratio - p1))
        a = rest[0] // rest[1]
        rest = rest[1], rest[0] - a * rest[1]
        p0, q0, p1, q1 = p1, q1, a * p1 + p0, a * q1 + q0
    return best


def angles():
    max_operand = ten(48)
    below("angle: an operand's integer, in 3 limbs less 32 bits", max_operand, two(160))
    beyond = constant("elementary/trig.cpp", r"W = N \+ (\d+);")
    for n in (*TABLE_WIDTHS, WIDE):
        # The table's last unit times the operand, in quarters of a turn; and what is cut off.
        ulps = 4 * max_operand * two(-64 * beyond) + 1
        below(f"angle, {n} limbs: error of the fraction, in ulps", ulps, Fraction(2))
    degrees = constant("elementary/trig.cpp", r"degree = N == 3 \? (\d+) : (\d+);")
    quarter = PI / 2 / 2 ** 9
    for n, degree in zip(TABLE_WIDTHS, degrees):
        missing = quarter ** (2 * degree + 3) / math.factorial(2 * degree + 3) * 2
        ulps = 1 + 2 * 2 * n + 2 * 2 * n + 4 + missing * two(64 * n)
        below(f"sin and cos, {n} limbs", 2 * ulps * two(-64 * n), two(-bits("sin_cos", n)))
    limit = constant("elementary/trig.cpp", r"n < (\d+); \+\+n")
    terms = next(n for n in range(1, 256) if math.factorial(n) > 2 ** (64 * WIDE + 1))
    below("sin and cos, 16 limbs: the terms' errors", 3 * terms * two(REAL - 64 * WIDE),
          two(-bits("sin_cos", WIDE)))
    below("sin and cos, 16 limbs: terms, and those allowed", Fraction(terms), Fraction(limit))
    # A value is 2^(its exponent - 1) or more; a tangent has two values' errors and a division's.
    zeros = constant("elementary/trig.cpp", r"sin_cos_bits<N> \+ v\.exp - (\d+);")
    tangent_lost = constant("elementary/trig.cpp", r"bits\(cosine\)\) - (\d+);")
    below("sin and cos: absolute errors made relative", Fraction(2), two(zeros), equal=True)
    for n in (*TABLE_WIDTHS, WIDE):
        error = two(-bits("sin_cos", n))
        below(f"tan, {n} limbs", 2 * error * (1 + two(-100)) + two(REAL - 64 * n),
              two(tangent_lost) * error)
    closest = min(closest_to_multiple(e) for e in range(-39, 87))
    below("angle: no number comes closer to a multiple of pi/2 than 10^-43 of pi/2", ten(-43), closest)


def arc_tangent():
    degrees = constant("elementary/arc.cpp", r"horner<N, 47, true, N == 3 \? (\d+) : (\d+)>")
    turns = [int(shift) for shift in
             re.findall(r"turn<N, (\d+)>\(", (ENGINE / "elementary/arc.cpp").read_text())]
    u = two(-turns[-1]) * (1 + two(-28))
    below("atan: the square of what the turns leave, and the zeros in front of it", u ** 2, two(-47))
    below("atan: a turn takes eight bits", Fraction(max(
        b - a for a, b in zip([0] + turns, turns))), Fraction(8), equal=True)
    arc_lost = constant("elementary/arc.cpp",
                        r"std::min\(sqrt_bits<N>, atan_bits<N>\) - (\d+);")
    angle_lost = constant("elementary/arc.cpp", r"return atan_bits<N> - (\d+);")
    for n in (*TABLE_WIDTHS, WIDE):
        # Both operands', the kernel's; the difference to pi, of which the angle is half at most.
        below(f"angle of two operands, {n} limbs", 2 * two(OPERAND - 64 * n) + two(-bits("atan", n))
              + 2 * two(REAL - 64 * n), two(angle_lost - bits("atan", n)))
    for n, degree in zip(TABLE_WIDTHS, degrees):
        power = 2 * degree + 5
        missing = u ** power / power * two(64 * n)
        ulps = 16 * (4 + 4 * u) + 3 + 2 * n + 8 + missing
        below(f"atan, {n} limbs: turned", ulps * two(turns[-1] - 64 * n),
              two(-bits("atan", n)))
        relative = 4 * two(REAL - 64 * n) + u ** (power - 1) / power
        below(f"atan, {n} limbs: not turned", relative, two(-bits("atan", n)))
        # Above the diagonal pi/2 less the angle: at least as large, one subtraction more.
        side = two(-SQRT * n) + 2 * two(REAL - 64 * n) + two(OPERAND - 64 * n)
        below(f"asin and acos, {n} limbs", side + two(-bits("atan", n)) * 2,
              two(arc_lost - min(SQRT * n, bits("atan", n))))
    start = two(10 - bits("atan", 4))
    below("atan, 16 limbs: the term after the cubic one", start ** 5, two(-bits("atan", WIDE) - 1))
    below("atan, 16 limbs: the differences' errors, of the angle",
          start * 8 * two(-bits("sin_cos", WIDE)) / start, two(-bits("atan", WIDE) - 1))
    ratio = ten(-128)
    below("atan: what a small ratio's square leaves to the wide pass, and 2^-90",
          two(-bits("atan", WIDE) + 1) * two(90), ratio ** 2 / 3)


def compositions():
    power = constant("elementary/power.cpp", r"max_exp = (\d+);")
    power_lost = constant("elementary/power.cpp", r"ln_bits<N> - max_exp - (\d+);") + power
    hyperbolic_lost = constant("elementary/hyperbolic.cpp", r"bits = exp_bits<N> - (\d+);")
    integer_lost = constant("elementary/power.cpp", r"real_bits<3> - (\d+) - length;")
    below("x^n, n of a length: errors of 2n + 2 products, n = 2^length - 1",
          max((2 * 2 ** length) * (1 + two(-100)) / two(length) for length in range(1, 17)),
          two(integer_lost))
    quotient_lost = constant("elementary/logarithm.cpp", r"quotient_bits = ln_bits<N> - (\d+);")
    for n in (*TABLE_WIDTHS, WIDE):
        ulp = two(REAL - 64 * n)
        exp, ln = two(-bits("exp", n)), two(-bits("ln", n))
        below(f"x^y, {n} limbs", two(power) * (ln + 2 * ulp) + exp, two(power_lost) * ln)
        # e^x, its inverse, their sum or difference: in units of e^x, which `cancelled` stands for.
        below(f"sinh, cosh, tanh, {n} limbs", 2 * exp + 4 * ulp, two(hyperbolic_lost) * exp)
        below(f"ln x / ln y, {n} limbs", 2 * ln + 2 * ulp, two(quotient_lost) * ln)


def rounding():
    below("rounding: 40 digits, in bits", ten(40), two(UNIT_BITS))
    errors = constant("binary/rounding.cpp", r"scale_bits<N>\) - (\d+) - unit_bits;")
    below("rounding: the value's error and the scaling's", Fraction(2), two(errors), equal=True)
    # With z zeros in front the distance is 2^-(z + 1) or more.
    margin = constant("binary/rounding.cpp", r"zeros >= certain - (\d+)\)")
    below("rounding: the error against the distance", Fraction(1), two(margin), equal=True)
    for n in (*TABLE_WIDTHS, WIDE):
        below(f"scaling, {n} limbs", (1 + 2 * n) * two(2 - 64 * n), two(SCALE - 64 * n))
    limit = constant("binary/rounding.cpp", r"exp_limit = (\d+);")
    below("rounding: beyond the limit is infinity", ten(132), two(limit))
    log10_2 = constant("binary/rounding.cpp", r"log10_2 = (\d+);")
    log2_10 = constant("binary/tables.h", r"log2_10 = (\d+);")
    # Exact for every exponent that occurs: the greatest p with 10^(8p) <= 2^(exp - 1).
    wrong = [exp for exp in range(-limit, limit + 1)
             if not ten(8 * ((exp - 1) * log10_2 >> 21)) <= two(exp - 1) <
             ten(8 * ((exp - 1) * log10_2 >> 21) + 8)]
    below("rounding: exponents whose position log10_2 misses", Fraction(len(wrong)), Fraction(1))
    wrong = [k for k in range(-24, 25)
             if not two((8 * k * log2_10 >> 16)) <= ten(8 * k) < two((8 * k * log2_10 >> 16) + 1)]
    below("tables: powers whose exponent log2_10 misses", Fraction(len(wrong)), Fraction(1))
    log = re.search(r"sb8\{b\} \* (\d+)\) >> 32", (SOURCE / "oci_utils/real_digits.cpp").read_text())
    wrong = [b for b in range(-16500, 16501)
             if not ten(b * int(log[1]) >> 32) <= two(b) < ten((b * int(log[1]) >> 32) + 1)]
    below("reals: exponents whose decimal one is missed", Fraction(len(wrong)), Fraction(1))


def last_pass():
    # What the bounds leave behind 40 digits, as a part of their unit. sin and cos lose 143 bits
    # next to a multiple of pi/2, sinh and tanh 80 by cancellation.
    left = {"e^x, sinh, cosh, tanh": bits("exp", WIDE) - 3 - 80, "ln": bits("ln", WIDE),
            "sin, cos, tan": bits("sin_cos", WIDE) - 2 - 143,
            "asin, acos, atan": min(bits("atan", WIDE), SQRT * WIDE) - 2,
            "x^y, log": bits("ln", WIDE) - 11}
    operands = ten(43)
    below("operands of a function: 10^40 digits, 254 exponents, 2 signs", 2 * 254 * ten(40), operands)
    for name, kept in left.items():
        part = two(UNIT_BITS + 2 - kept)
        below(f"{name}: the wide pass decides to 10^-208 of a unit", part, ten(-208))
        if name == "x^y, log":
            below(f"{name}: chance that two operands need more", operands ** 2 * 2 * part, ten(-120))
        else:
            below(f"{name}: chance that an operand needs more", operands * 2 * part, ten(-160))


def ends():
    below("tiny arguments: x^2 / 2 of 10^-24, in half units of 40 digits", ten(-48), ten(-40) / 2)
    # By e > 2.7182.
    e = Fraction(27182, 10000)
    tangent, hyperbolic = constant("elementary/hyperbolic.cpp", r"tangent \? (\d+) : (\d+);")
    below(f"tanh from {tangent} on is 1", 2 / e ** (2 * tangent), ten(-40) / 2)
    power = constant("elementary/power.cpp", r"max_exp = (\d+);")
    for limit in (constant("elementary/exp.cpp", r"magnitude_at_least\(\*operand, (\d+)\)"),
                  hyperbolic, 2 ** power):
        below(f"e^{limit} is out of range, half of it, too", ten(128) * 2, e ** limit)


for part in (exponential, logarithm, angles, arc_tangent, compositions, rounding, last_pass, ends):
    part()
if failures:
    sys.exit(f"{failures} inequalities do not hold")
