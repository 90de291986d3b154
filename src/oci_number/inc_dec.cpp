// Increment and decrement in place.
#include <cstring>

#include "oci_number/oci_number.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// Real exponent of the largest values that are stepped, those below 100^20.
constexpr int max_stepped_exponent = max_digits - 1;

// The digits of a value from 1 to below 10^40, down to the units at least. False
// for every other value: those get a fixed result.
bool OCINumberStepDigits(const OCINumber &number, Digits &digits) {
    if (is_negative(number)) return false;
    digits = unpack(number);
    if (digits.exponent < 0 || digits.exponent > max_stepped_exponent) return false;
    // The format leaves zero digits at the end out.
    while (static_cast<int>(digits.count) <= digits.exponent) digits.digit[digits.count++] = 0;
    return true;
}

// Drops zero digits at both ends.
void OCINumberNormalize(Digits &digits) {
    trim(digits);
    unsigned zeros = 0;
    while (zeros < digits.count && digits.digit[zeros] == 0) ++zeros;
    digits.count -= zeros;
    digits.exponent -= static_cast<int>(zeros);
    std::memmove(digits.digit, digits.digit + zeros, digits.count);
}

void OCINumberIncrement(OCINumber &number) {
    Digits digits;
    if (!OCINumberStepDigits(number, digits)) {
        digits = {false, 0, 1, {1}};
    } else {
        int i = digits.exponent;
        while (i >= 0 && digits.digit[i] >= 99) digits.digit[i--] = 0;
        if (i >= 0) {
            ++digits.digit[i];
        } else {
            // A new first digit; the 21st is rounded away.
            std::memmove(digits.digit + 1, digits.digit, digits.count);
            digits.digit[0] = 1;
            ++digits.exponent;
            if (++digits.count > max_digits) {
                digits.count = max_digits;
                if (digits.digit[max_digits] >= 50) round_up(digits);
            }
        }
        OCINumberNormalize(digits);
    }
    pack(digits, number);
}

void OCINumberDecrement(OCIError *err, OCINumber &number) {
    Digits digits;
    int i = -1;
    if (OCINumberStepDigits(number, digits)) {
        i = digits.exponent;
        while (i >= 0 && digits.digit[i] == 0) digits.digit[i--] = 99;
    }
    if (i >= 0) {
        --digits.digit[i];
        OCINumberNormalize(digits);
    }
    if (i < 0 || digits.count == 0) {
        OCINumberSetZero(err, &number);
    } else {
        pack(digits, number);
    }
}

sword OCINumberCheckStepped(OCIError *err, const OCINumber *number) {
    return err == nullptr ? OCINumberInvalidHandle() : OCINumberCheckNumber(err, number, 2);
}

}  // namespace

extern "C" sword OCINumberInc(OCIError *err, OCINumber *number) {
    QZOCI_LOG_DEBUG("call OCINumberInc with params [err:%p] [number:%p]", err, number);
    const sword status = OCINumberCheckStepped(err, number);
    if (status == OCI_SUCCESS) OCINumberIncrement(*number);
    return OCI_NUMBER_RETURN("OCINumberInc", status);
}

extern "C" sword OCINumberDec(OCIError *err, OCINumber *number) {
    QZOCI_LOG_DEBUG("call OCINumberDec with params [err:%p] [number:%p]", err, number);
    const sword status = OCINumberCheckStepped(err, number);
    if (status == OCI_SUCCESS) OCINumberDecrement(err, *number);
    return OCI_NUMBER_RETURN("OCINumberDec", status);
}
