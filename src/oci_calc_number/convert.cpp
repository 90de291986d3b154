// Between the number's bytes and the record: reading, and the rounding of algebraic results.
#include "oci_calc_number/record.h"

using namespace number_bytes;
using calc::Digits;

namespace {

// What is no run of digits with a first that is not zero: zero, the infinities, numbers not in
// normal form, and bytes that hold no number.
[[gnu::noinline]] sword read_special(QZCICalcNumber &out, const OCINumber &in) {
    if (!has_valid_length(in)) return OCI_ERROR;
    if (is_zero(in)) {
        calc::set_zero(out);
        return OCI_SUCCESS;
    }
    if (is_negative_infinity(in) || is_positive_infinity(in)) {
        calc::set_infinity(out, is_negative(in));
        return OCI_SUCCESS;
    }
    const unsigned count = digit_count(in);
    Digits digits;
    if (count == 0 || !read_digits(in, is_negative(in), count, digits)) return OCI_ERROR;
    calc::set_normalized(out, is_negative(in), real_exponent(in.OCINumberPart[1]), digits);
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword QZCICalcNumFromNumber(QZCICalcNumber *out, const OCINumber *in) {
    const bool negative = is_negative(*in);
    if (!has_valid_length(*in)) return OCI_ERROR;
    Digits digits;
    // A length byte of 1 leaves no digit, or its exponent byte is taken for the ending byte.
    const bool in_range = read_digits(*in, negative, digit_count(*in), digits);
    if (in_range & (digits.word[0] >> 56 != 0)) [[likely]] {
        calc::set_digits(*out, negative, real_exponent(in->OCINumberPart[1]), digits);
        return OCI_SUCCESS;
    }
    return read_special(*out, *in);
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
