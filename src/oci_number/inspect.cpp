// Inspection, comparison, copy and the constants: functions that look at the
// bytes or set them, and compute nothing.
#include <algorithm>
#include <cstring>

#include "oci_number/call_frame.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// Pi to 38 decimal places: 3.14159265358979323846264338327950288420 in base 100.
constexpr OCINumber pi = {{0x15, 0xC1, 0x04, 0x0F, 0x10, 0x5D, 0x42, 0x24, 0x5A, 0x50, 0x21,
                           0x27, 0x2F, 0x1B, 0x2C, 0x27, 0x21, 0x50, 0x33, 0x1D, 0x55, 0x15}};

sword OCINumberTestInteger(const OCINumber &number, boolean &result) {
    const ub1 exponent_byte = number.OCINumberPart[1];
    if (number.OCINumberPart[0] == 1) {
        if (exponent_byte != 0 && exponent_byte != zero_exponent_byte) {
            QZOCI_LOG_ERROR(
                "number length is 1, bug OCINumberPart[1] is not 128, OCINumberPart[1]:%d",
                exponent_byte);
            return OCI_ERROR;
        }
        result = is_zero(number);
        return OCI_SUCCESS;
    }
    // Digit i has the weight 100^(E + 1 - i): none may stand behind the units.
    result = !is_positive_infinity(number) &&
             static_cast<int>(digit_count(number)) <= real_exponent(exponent_byte) + 1;
    return OCI_SUCCESS;
}

// The complemented exponent byte and the ending byte of negative values make
// the order of the bytes the order of the values.
sword OCINumberCompareBytes(const OCINumber &number1, const OCINumber &number2) {
    const ub1 length1 = number1.OCINumberPart[0];
    const ub1 length2 = number2.OCINumberPart[0];
    const int order = std::memcmp(number1.OCINumberPart + 1, number2.OCINumberPart + 1,
                                  std::min(length1, length2));
    if (order != 0) return order;
    return (length1 > length2) - (length1 < length2);
}

}  // namespace

extern "C" sword OCINumberIsZero(OCIError *err, const OCINumber *number, boolean *result) {
    QZOCI_LOG_DEBUG("call OCINumberIsZero with params [err:%p] [number:%p] [result:%p]",
                    address(err), address(number), address(result));
    const sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) *result = is_zero(*number);
    return OCI_NUMBER_RETURN("OCNumberZero", status);
}

extern "C" sword OCINumberIsInt(OCIError *err, const OCINumber *number, boolean *result) {
    QZOCI_LOG_DEBUG("call function OCINumberIsInt with param err %p,number:%p, result:%p",
                    address(err), address(number), address(result));
    sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) status = OCINumberTestInteger(*number, *result);
    return OCI_NUMBER_RETURN("OCINumberIsInt", status);
}

extern "C" sword OCINumberSign(OCIError *err, const OCINumber *number, sword *result) {
    QZOCI_LOG_DEBUG("call OCINumberSign with params [err:%p] [number:%p] [result:%p]", address(err),
                    address(number), address(result));
    const sword status = OCINumberCheckThreeParams(err, number, result);
    if (status == OCI_SUCCESS) {
        *result = is_zero(*number) ? 0 : has_positive_exponent(*number) ? 1 : -1;
    }
    return OCI_NUMBER_RETURN("OCINumberSign", status);
}

extern "C" sword OCINumberCmp(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                              sword *result) {
    QZOCI_LOG_DEBUG("call OCINumberCmp with params [err:%p] [number1:%p] [number2:%p] [result:%p]",
                    address(err), address(number1), address(number2), address(result));
    const sword status = OCINumberCheckFourParams(err, number1, number2, result);
    if (status == OCI_SUCCESS) *result = OCINumberCompareBytes(*number1, *number2);
    return OCI_NUMBER_RETURN("OCINumberCmp", status);
}

extern "C" sword OCINumberAssign(OCIError *err, const OCINumber *from, OCINumber *to) {
    QZOCI_LOG_DEBUG("call OCINumberAssign with params [err:%p] [from:%p] [to:%p]", address(err),
                    address(from), address(to));
    const sword status = OCINumberCheckThreeParams(err, from, to);
    if (status == OCI_SUCCESS) std::memmove(to, from, sizeof *to);
    return OCI_NUMBER_RETURN("OCINumberAssign", status);
}

extern "C" void OCINumberSetZero(OCIError *err, OCINumber *number) {
    QZOCI_LOG_DEBUG("call OCINumberSetZero with params [err:%p] [number:%p]", address(err),
                    address(number));
    if (err == nullptr) OCINumberInvalidHandle();
    if (number == nullptr) {
        if (err != nullptr) OCINumberError21560(err, 2);
        QZOCI_LOG_ERROR("OCINumberSetZero null number and null errhp");
        return;
    }
    set_zero(*number);
}

extern "C" void OCINumberSetPi(OCIError *err, OCINumber *number) {
    QZOCI_LOG_DEBUG("call OCINumberSetPi with params [err:%p] [number:%p]", address(err),
                    address(number));
    if (err == nullptr) OCINumberInvalidHandle();
    if (number == nullptr) {
        if (err != nullptr) OCINumberError21560(err, 2);
        return;
    }
    *number = pi;
}
