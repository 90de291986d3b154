// The one rounding test: from a binary value with an error bound to the record of the
// value rounded to 20 base-100 digits.
#pragma once

#include "oci_calc_number/engine.h"
#include "oci_calc_number/real.h"

namespace calc {

// What to do when a value lies so close to the middle between two neighbours that its
// error leaves the choice open.
enum class Undecided { retry, nearest, toward_zero, away_from_zero };

// Rounds v, whose relative error is below 2^-bits, half away from zero into `result`
// and applies the range rule. Returns false, with nothing of use in `result`, when
// `undecided` is retry and the error leaves the choice open. v is not zero.
template <int N>
bool round_to_record(QZCICalcNumber &result, const Real<N> &v, int bits,
                     Undecided undecided = Undecided::retry);

// The ladder of passes: 3 limbs decide nearly every operand, 4 those whose results are
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

// Writes `count` limbs (from the top one down, at most 38) of v, cut off.
template <int N>
void truncate_to_record(QZCICalcNumber &result, const Real<N> &v, int count);

}  // namespace calc
