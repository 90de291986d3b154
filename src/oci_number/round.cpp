// Precision, rounding and truncation: a value cut at a decimal position.
#include "oci_number/call_frame.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

enum class CutMode { round, truncate };

// A cut falls at a digit, counted from 0. A whole-digit cut drops that digit and
// all after it; a half-digit cut keeps the digit's tens.
struct Cut {
    sb8 index;
    bool half_digit;
};

// Keeps `n` >= 0 significant decimal digits: the first digit may hold one or two.
Cut OCINumberSignificantCut(const DigitView &digits, sb8 n) {
    const bool short_first = digits.count > 0 && digits.get(0) < 10;
    const bool odd = n % 2 != 0;
    return {n / 2 + (short_first && odd), short_first != odd};
}

// Keeps `places` decimal places. Digit E is the units digit.
Cut OCINumberPlacesCut(const DigitView &digits, sb8 places) {
    const sb8 distance = places >= 0 ? places / 2 + 1 : -((-places - 1) / 2);
    return {digits.exponent + distance, places % 2 != 0};
}

void OCINumberCutDigits(DigitView &digits, unsigned index, bool half_digit, CutMode mode) {
    const unsigned digit = digits.get(index);
    const unsigned dropped = half_digit ? digit % 10 * 10 : digit;
    const bool up = mode == CutMode::round && dropped >= 50;
    digits.count = index;
    if (half_digit) {
        const unsigned kept = digit - digit % 10 + (up ? 10 : 0);
        if (!up || kept < 100) {
            digits.append(kept);
            trim(digits);
            return;
        }
    }
    if (up) {
        round_up(digits);
    } else {
        trim(digits);
    }
}

// Cuts the digits of `digits.number`, which holds the whole value.
void OCINumberCut(OCIError *err, DigitView &digits, Cut cut, CutMode mode) {
    if (cut.index < 0) {
        // Above the first digit: the whole value is below half the unit.
        OCINumberSetZero(err, &digits.number);
        return;
    }
    // A negative value without ending byte is not rounded at its last digit: its
    // length byte counts as many bytes as that of a shorter one with the ending
    // byte in that place.
    const bool full_negative = digits.negative && digits.count == max_digits;
    const unsigned end = digits.count - (mode == CutMode::round && full_negative ? 1 : 0);
    if (cut.index >= end) return;
    OCINumberCutDigits(digits, static_cast<unsigned>(cut.index), cut.half_digit, mode);
    if (digits.count > 0 && digits.exponent < min_exponent) {
        // A cut moves no value below the range: this record was there before.
        set_frame(digits.number, digits.negative, digits.exponent, digits.count);
    } else if (finish(digits) == Finished::zero) {
        OCINumberSetZero(err, &digits.number);
    }
}

void OCINumberKeepPlaces(OCIError *err, const OCINumber &number, sword places, CutMode mode,
                         OCINumber &result) {
    const bool zero = has_zero_exponent(number);
    DigitView digits = copy_digits(number, result);
    if (!zero) OCINumberCut(err, digits, OCINumberPlacesCut(digits, places), mode);
}

void OCINumberKeepSignificant(OCIError *err, const OCINumber &number, sword n, OCINumber &result) {
    if (n < 0) {
        OCINumberSetZero(err, &result);
        return;
    }
    const bool zero = has_zero_exponent(number);
    DigitView digits = copy_digits(number, result);
    if (!zero) OCINumberCut(err, digits, OCINumberSignificantCut(digits, n), CutMode::round);
}

}  // namespace

extern "C" sword OCINumberPrec(OCIError *err, const OCINumber *number, sword nDigs,
                               OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberPrec with params [err:%p] [number:%p] [dcplace:%i] [result:%p]",
                    address(err), address(number), nDigs, address(result));
    const sword status = OCINumberCheckCountParams(err, number, result);
    if (status == OCI_SUCCESS) OCINumberKeepSignificant(err, *number, nDigs, *result);
    return OCI_NUMBER_RETURN("OCINumberPrec", status);
}

extern "C" sword OCINumberRound(OCIError *err, const OCINumber *number, sword dcplace,
                                OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberRound with params [err:%p] [number:%p] [dcplace:%i] [result:%p]",
                    address(err), address(number), dcplace, address(result));
    const sword status = OCINumberCheckCountParams(err, number, result);
    if (status == OCI_SUCCESS) {
        OCINumberKeepPlaces(err, *number, dcplace, CutMode::round, *result);
    }
    return OCI_NUMBER_RETURN("OCINumberRound", status);
}

extern "C" sword OCINumberTrunc(OCIError *err, const OCINumber *number, sword dcplace,
                                OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberTrunc with params [err:%p] [number:%p] [dcplace:%i] [result:%p]",
                    address(err), address(number), dcplace, address(result));
    const sword status = OCINumberCheckCountParams(err, number, result);
    if (status == OCI_SUCCESS) {
        OCINumberKeepPlaces(err, *number, dcplace, CutMode::truncate, *result);
    }
    return OCI_NUMBER_RETURN("OCINumberTrunc", status);
}
