// The one rounding test of the elementary functions: from a binary value with an error bound
// to the record of the value rounded to 20 base-100 digits. No width is known beforehand to
// decide every result (the table maker's dilemma); Ziv's strategy widens until one does
// [A. Ziv: Fast evaluation of elementary mathematical functions with correctly rounded last
// bit. ACM TOMS, 1991].
#pragma once

#include "oci_calc_number/binary/real.h"
#include "oci_calc_number/record.h"

namespace calc {

// What to do when a value lies so close to the midpoint of two neighbours that its
// error leaves the choice open.
enum class Undecided { retry, nearest, toward_zero, away_from_zero };

// Rounds v, whose relative error is below 2^-bits, half away from zero into `result`.
// What is far out of a number's range becomes an infinity or zero. Returns false, with nothing of
// use in `result`, when `undecided` is retry and the error leaves the choice open. v is not zero.
template <int N>
bool round_to_record(QZCICalcNumber &result, const Real<N> &v, int bits,
                     Undecided undecided = Undecided::retry);

// Ziv's ladder: 3 limbs decide nearly every operand, 4 those whose results are
// small by cancellation, 16 the hard ones. `evaluate` computes the value into a Real of
// the pass's width, or zero when nothing remains of it, and returns the bits of its error.
template <class Evaluate>
void round_by_passes(QZCICalcNumber &result, Evaluate evaluate) {
    const auto attempt = [&](auto value, Undecided undecided) {
        const int bits = evaluate(value);
        return !is_zero(value) && round_to_record(result, value, bits, undecided);
    };
    if (!attempt(Real<3>(), Undecided::retry) && !attempt(Real<4>(), Undecided::retry))
        attempt(Real<16>(), Undecided::nearest);
}

}  // namespace calc
