// Increment and decrement in place.
#include <cstring>

#include "oci_number/call_frame.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// Real exponent of the largest values that are stepped, those below 100^20.
constexpr int max_stepped_exponent = max_digits - 1;

// Whether a value has its units digit within 20 digits: those from 1 to below
// 10^40 do. Every other value gets a fixed result.
bool OCINumberIsStepped(const OCINumber &number) {
    const int exponent = real_exponent(number.OCINumberPart[1]);
    return !is_negative(number) && exponent >= 0 && exponent <= max_stepped_exponent;
}

// The digits down to the units at least; the format leaves zeros at the end out.
DigitView OCINumberStepDigits(OCINumber &number) {
    DigitView digits = digits_of(number);
    while (static_cast<int>(digits.count) <= digits.exponent) digits.append(0);
    return digits;
}

// Drops zero digits at both ends.
void OCINumberNormalize(DigitView &digits) {
    trim(digits);
    unsigned zeros = 0;
    while (zeros < digits.count && digits.get(zeros) == 0) ++zeros;
    if (zeros == 0) return;
    digits.count -= zeros;
    digits.exponent -= static_cast<int>(zeros);
    ub1 *const bytes = digits.number.OCINumberPart + 2;
    std::memmove(bytes, bytes + zeros, digits.count);
}

// Puts a digit 1 in front; what would be the 21st digit is rounded away.
void OCINumberPrependOne(DigitView &digits) {
    const bool full = digits.count == max_digits;
    const bool up = full && digits.get(max_digits - 1) >= 50;
    if (full) --digits.count;
    ub1 *const bytes = digits.number.OCINumberPart + 2;
    std::memmove(bytes + 1, bytes, digits.count);
    digits.set(0, 1);
    ++digits.count;
    ++digits.exponent;
    if (up) round_up(digits);
}

void OCINumberIncrement(OCINumber &number) {
    if (!OCINumberIsStepped(number)) {
        DigitView one = new_digits(number, false, 0);
        one.append(1);
        finish(one);
        return;
    }
    DigitView digits = OCINumberStepDigits(number);
    int i = digits.exponent;
    for (; i >= 0 && digits.get(static_cast<unsigned>(i)) >= 99; --i) {
        digits.set(static_cast<unsigned>(i), 0);
    }
    if (i >= 0) {
        digits.set(static_cast<unsigned>(i), digits.get(static_cast<unsigned>(i)) + 1);
    } else {
        OCINumberPrependOne(digits);
    }
    OCINumberNormalize(digits);
    finish(digits);
}

void OCINumberDecrement(OCIError *err, OCINumber &number) {
    if (OCINumberIsStepped(number)) {
        DigitView digits = OCINumberStepDigits(number);
        int i = digits.exponent;
        for (; i >= 0 && digits.get(static_cast<unsigned>(i)) == 0; --i) {
            digits.set(static_cast<unsigned>(i), 99);
        }
        // A borrow out of the first digit: the value is below 1, stored with
        // zero digits in front.
        if (i >= 0) {
            digits.set(static_cast<unsigned>(i), digits.get(static_cast<unsigned>(i)) - 1);
            OCINumberNormalize(digits);
            if (digits.count > 0) {
                finish(digits);
                return;
            }
        }
    }
    OCINumberSetZero(err, &number);
}

sword OCINumberCheckStepped(OCIError *err, const OCINumber *number) {
    return err == nullptr ? OCINumberInvalidHandle() : OCINumberCheckNumber(err, number, 2);
}

}  // namespace

extern "C" sword OCINumberInc(OCIError *err, OCINumber *number) {
    QZOCI_LOG_DEBUG("call OCINumberInc with params [err:%p] [number:%p]", address(err),
                    address(number));
    const sword status = OCINumberCheckStepped(err, number);
    if (status == OCI_SUCCESS) OCINumberIncrement(*number);
    return OCI_NUMBER_RETURN("OCINumberInc", status);
}

extern "C" sword OCINumberDec(OCIError *err, OCINumber *number) {
    QZOCI_LOG_DEBUG("call OCINumberDec with params [err:%p] [number:%p]", address(err),
                    address(number));
    const sword status = OCINumberCheckStepped(err, number);
    if (status == OCI_SUCCESS) OCINumberDecrement(err, *number);
    return OCI_NUMBER_RETURN("OCINumberDec", status);
}
