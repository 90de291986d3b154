// Absolute value, negation and the shift by powers of ten.
#include "oci_number/oci_number.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// Turns the sign of a value other than zero and the infinities: the exponent
// byte becomes its complement, a digit byte b becomes 102 - b.
void OCINumberTurnSign(const OCINumber &number, OCINumber &result) {
    Digits digits = unpack(number);
    digits.negative = !digits.negative;
    pack(digits, result);
}

void OCINumberMagnitude(const OCINumber &number, OCINumber &result) {
    if (is_negative_infinity(number)) {
        set_infinity(result, false);
    } else if (is_negative(number)) {
        OCINumberTurnSign(number, result);
    } else {
        result = number;
    }
}

void OCINumberNegate(const OCINumber &number, OCINumber &result) {
    if (is_negative_infinity(number)) {
        set_infinity(result, false);
    } else if (is_positive_infinity(number)) {
        set_infinity(result, true);
    } else if (number.OCINumberPart[1] == zero_exponent_byte) {
        set_zero(result);
    } else {
        OCINumberTurnSign(number, result);
    }
}

// Moves every decimal place one to the right, across the digits: 12 34 becomes
// 01 23 40. What a 21st digit would hold is rounded half away from zero.
void OCINumberMoveHalfDigit(Digits &digits) {
    unsigned units = 0;  // units place of the digit before
    for (unsigned i = 0; i < digits.count; ++i) {
        const unsigned digit = digits.digit[i];
        digits.digit[i] = static_cast<ub1>(10 * units + digit / 10);
        units = digit % 10;
    }
    digits.digit[digits.count++] = static_cast<ub1>(10 * units);
    if (digits.digit[0] == 0) {
        for (unsigned i = 1; i < digits.count; ++i) digits.digit[i - 1] = digits.digit[i];
        --digits.count;
    } else {
        ++digits.exponent;
    }
    if (digits.count > max_digits) {
        digits.count = max_digits;
        if (digits.digit[max_digits] >= 50) round_up(digits);
    }
    trim(digits);
}

void OCINumberShiftDigits(OCIError *err, const OCINumber &number, sword nDig, OCINumber &result) {
    if (number.OCINumberPart[1] == zero_exponent_byte) {
        set_zero(result);
        return;
    }
    if (is_negative_infinity(number) || is_positive_infinity(number)) {
        set_infinity(result, is_negative(number));
        return;
    }
    Digits digits = unpack(number);
    digits.exponent += nDig / 2;
    if (nDig % 2 != 0) {
        // One place to the right is one to the left, a whole digit higher.
        if (nDig < 0) --digits.exponent;
        OCINumberMoveHalfDigit(digits);
    }
    if (digits.exponent > max_exponent) {
        set_infinity(result, digits.negative);
    } else if (digits.exponent < min_exponent || digits.count == 0) {
        OCINumberSetZero(err, &result);
    } else if (nDig % 2 == 0) {
        // Whole digits: the digit bytes stay as they are.
        result = number;
        result.OCINumberPart[1] = exponent_byte(digits.negative, digits.exponent);
    } else {
        pack(digits, result);
    }
}

}  // namespace

extern "C" sword OCINumberAbs(OCIError *err, const OCINumber *number, OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberAbs with params [err:%p] [number:%p] [result:%p]", err, number,
                    result);
    const sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberMagnitude(*number, *result);
    return OCI_NUMBER_RETURN("OCINumberAbs", status);
}

extern "C" sword OCINumberNeg(OCIError *err, const OCINumber *number, OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberNeg with params [err:%p] [number:%p] [result:%p]", err, number,
                    result);
    const sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberNegate(*number, *result);
    return OCI_NUMBER_RETURN("OCINumberNeg", status);
}

extern "C" sword OCINumberShift(OCIError *err, const OCINumber *number, const sword nDig,
                                OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberShift with params [err:%p] [number:%p] [nDig:%d] [result:%p]",
                    err, number, nDig, result);
    const sword status = OCINumberCheckCountParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberShiftDigits(err, *number, nDig, *result);
    return OCI_NUMBER_RETURN("OCINumberShift", status);
}
