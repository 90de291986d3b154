// Between the number's bytes and the record: reading, and the rounding of algebraic results.
#include "oci_calc_number/record.h"

using namespace number_bytes;
using calc::Digits;

extern "C" sword QZCICalcNumFromNumber(QZCICalcNumber *out, const OCINumber *in) {
    if (!has_valid_length(*in)) return OCI_ERROR;
    const bool negative = is_negative(*in);
    const unsigned count = digit_count(*in);
    if (count == 0) {
        if (is_zero(*in)) {
            calc::set_zero(*out);
        } else if (is_negative_infinity(*in)) {
            calc::set_infinity(*out, true);
        } else {
            return OCI_ERROR;
        }
        return OCI_SUCCESS;
    }
    Digits digits;
    if (!read_digits(*in, negative, count, digits)) [[unlikely]] {
        if (!is_positive_infinity(*in)) return OCI_ERROR;
        calc::set_infinity(*out, false);
        return OCI_SUCCESS;
    }
    calc::set_normalized(*out, negative, real_exponent(in->OCINumberPart[1]), digits);
    return OCI_SUCCESS;
}

// Results of elementary functions are rounded already (binary/rounding.cpp); their digits
// behind the twentieth are zero.
extern "C" sword QZCICalcNumToNumber(const QZCICalcNumber *in, OCINumber *out) {
    const bool negative = calc::is_negative(*in);
    if (in->is_zero != 0) {
        set_zero(*out);
        return OCI_SUCCESS;
    }
    if (calc::is_infinite(*in)) {
        set_infinity(*out, negative);
        return OCI_SUCCESS;
    }
    Digits digits = calc::digits_of(*in);
    int exponent = calc::exponent_of(*in);
    // Half away from zero: 50 or more in the digit behind the last carries into it by 206.
    constexpr ub8 half = ub8{256 - 50} << 24;
    constexpr ub8 kept = ~ub8{0} << 32;
    digits.word[2] = (digits.word[2] + half) & kept;
    if ((digits.word[2] >> 32 & 0xff) == 100) [[unlikely]] {
        digits.word[2] -= ub8{100} << 32;
        if (add_unit(digits, max_digits - 2)) {
            digits.word[0] = ub8{1} << 56;
            ++exponent;
        }
    }
    if (is_in_range(exponent)) write_digits(*out, negative, digits);
    finish(*out, negative, exponent, significant(digits));
    return OCI_SUCCESS;
}
