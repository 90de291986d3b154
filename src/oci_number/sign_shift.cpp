// Absolute value, negation and the shift by powers of ten.
#include "oci_number/call_frame.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// Turns the sign of a value other than zero and the infinities: the exponent
// byte becomes its complement, a digit byte b becomes 102 - b.
void OCINumberTurnSign(const OCINumber &number, OCINumber &result) {
    const bool negative = is_negative(number);
    const unsigned count = digit_count(number);
    const int exponent = real_exponent(number.OCINumberPart[1]);
    for (unsigned i = 2; i < OCI_NUMBER_SIZE; ++i) {
        result.OCINumberPart[i] = turn_digit_byte(number.OCINumberPart[i]);
    }
    set_frame(result, !negative, exponent, count);
}

void OCINumberMagnitude(const OCINumber &number, OCINumber &result) {
    if (is_negative_infinity(number)) {
        OCINumberSetPInfi(&result);
    } else if (is_negative(number)) {
        OCINumberTurnSign(number, result);
    } else {
        result = number;
    }
}

void OCINumberNegate(const OCINumber &number, OCINumber &result) {
    if (is_negative_infinity(number)) {
        OCINumberSetPInfi(&result);
    } else if (is_positive_infinity(number)) {
        OCINumberSetNInfi(&result);
    } else if (has_zero_exponent(number)) {
        set_zero(result);
    } else {
        OCINumberTurnSign(number, result);
    }
}

// Moves every decimal place one to the right, across the digits: 12 34 becomes
// 01 23 40. A first digit that becomes zero is dropped, else the exponent grows;
// what a 21st digit would hold is rounded half away from zero.
void OCINumberMoveHalfDigit(DigitView &digits) {
    const unsigned count = digits.count;
    if (count == 0) return;
    unsigned before = digits.get(0);
    digits.count = 0;
    if (before >= 10) {
        digits.append(before / 10);
        ++digits.exponent;
    }
    for (unsigned i = 1; i < count; ++i) {
        // Never writes a digit that is still to be read.
        const unsigned digit = digits.get(i);
        digits.set(digits.count++, before % 10 * 10 + digit / 10);
        before = digit;
    }
    const unsigned last = before % 10 * 10;
    if (digits.count < max_digits) {
        digits.append(last);
    } else if (last >= 50) {
        round_up(digits);
    }
    trim(digits);
}

void OCINumberShiftDigits(OCIError *err, const OCINumber &number, sword nDig, OCINumber &result) {
    if (has_zero_exponent(number)) {
        set_zero(result);
        return;
    }
    if (is_negative_infinity(number) || is_positive_infinity(number)) {
        set_infinity(result, is_negative(number));
        return;
    }
    DigitView digits = copy_digits(number, result);
    digits.exponent += nDig / 2;
    if (nDig % 2 != 0) {
        // One place to the right is one to the left, a whole digit higher.
        if (nDig < 0) --digits.exponent;
        OCINumberMoveHalfDigit(digits);
    }
    if (finish(digits) == Finished::zero) OCINumberSetZero(err, &result);
}

}  // namespace

extern "C" sword OCINumberAbs(OCIError *err, const OCINumber *number, OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberAbs with params [err:%p] [number:%p] [result:%p]", address(err),
                    address(number), address(result));
    const sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberMagnitude(*number, *result);
    return OCI_NUMBER_RETURN("OCINumberAbs", status);
}

extern "C" sword OCINumberNeg(OCIError *err, const OCINumber *number, OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberNeg with params [err:%p] [number:%p] [result:%p]", address(err),
                    address(number), address(result));
    const sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberNegate(*number, *result);
    return OCI_NUMBER_RETURN("OCINumberNeg", status);
}

extern "C" sword OCINumberShift(OCIError *err, const OCINumber *number, const sword nDig,
                                OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberShift with params [err:%p] [number:%p] [nDig:%d] [result:%p]",
                    address(err), address(number), nDig, address(result));
    const sword status = OCINumberCheckCountParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberShiftDigits(err, *number, nDig, *result);
    return OCI_NUMBER_RETURN("OCINumberShift", status);
}
