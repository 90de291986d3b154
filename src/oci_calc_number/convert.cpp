// Between a number's bytes and a record.
#include "oci_calc_number/convert.h"

using namespace number_bytes;

namespace {

// Other than digits with a first that is not zero.
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
    calc::Finite finite{{}, real_exponent(in.OCINumberPart[1]), is_negative(in)};
    if (count == 0 || !read_digits(in, finite.negative, count, finite.digits)) return OCI_ERROR;
    normalize(finite);
    set_finite(out, finite);
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword QZCICalcNumFromNumber(QZCICalcNumber *out, const OCINumber *in) {
    calc::Finite finite;
    if (has_valid_length(*in) && read_finite(*in, finite) == 0) [[likely]] {
        calc::set_digits(*out, finite.negative, finite.exponent, finite.digits);
        return OCI_SUCCESS;
    }
    return read_special(*out, *in);
}

// Results of elementary functions are rounded already (binary/rounding.cpp); their digits
// behind the twentieth are zero.
extern "C" sword QZCICalcNumToNumber(const QZCICalcNumber *in, OCINumber *out) {
    if (calc::is_infinite(*in)) {
        set_infinity(*out, calc::is_negative(*in));
    } else {
        write_finite(calc::finite_of(*in), *out);
    }
    return OCI_SUCCESS;
}
