// Conversions to and from native integers.
#include <charconv>
#include <cstring>
#include <limits>

#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

bool OCINumberIsSignFlag(uword flag) {
    return flag == OCI_NUMBER_UNSIGNED || flag == OCI_NUMBER_SIGNED;
}

sword OCINumberBadIntegerLength(OCIError *err, uword length) {
    return OCINumberSetError(err, 22057, "%s-22057: bad integer length [%u]\n", qzci_oci_prefix(),
                             length);
}

sword OCINumberOverflow(OCIError *err) {
    return OCINumberSetError(err, 22053, "%s-22053: overflow error", qzci_oci_prefix());
}

// A parsed integer: its bits, and whether they are a magnitude above the
// largest signed 8-byte integer.
struct Parsed {
    long long value;
    bool above_signed;
};

template <class Integer>
sword OCINumberStoreInteger(OCIError *err, Parsed parsed, uword rsl_length, void *rsl) {
    using limits = std::numeric_limits<Integer>;
    // Only the unsigned 8-byte integer holds what lies above the signed range.
    if (!std::is_same_v<Integer, ub8> &&
        (parsed.above_signed || parsed.value < static_cast<long long>(limits::min()) ||
         parsed.value > static_cast<long long>(limits::max()))) {
        const long value = static_cast<long>(parsed.value);
        const int length = static_cast<int>(rsl_length);
        return OCI_NUMBER_INTERNAL_FAILURE(err, "the value is overflow, value:%ld, rsl_length:%d",
                                           value, length);
    }
    const auto result = static_cast<Integer>(parsed.value);
    std::memcpy(rsl, &result, sizeof result);
    return OCI_SUCCESS;
}

sword OCINumberToIntChecked(OCIError *err, const OCINumber *number, uword rsl_length,
                            uword rsl_flag, void *rsl) {
    if (is_negative_infinity(*number) || is_positive_infinity(*number)) {
        return OCINumberOverflow(err);
    }

    OraText text[44] = {};
    ub2 size = sizeof text;
    if (const sword status = getStrFromNumber(number, text, &size)) {
        OCINumberSetError(err, 1458, "%s-01458: invalid length inside variable character string",
                          qzci_ora_prefix());
        QZOCI_LOG_ERROR("fail to get str from number");
        return status;
    }
    const bool is_unsigned = rsl_flag == OCI_NUMBER_UNSIGNED;
    const bool negative = text[0] == '-';
    if (is_unsigned && negative) {
        return OCI_NUMBER_INTERNAL_FAILURE(
            err, "number is negative, but rsl_flag is OCI_NUMBER_UNSIGNED");
    }

    const char *const start = reinterpret_cast<char *>(text);
    char *end = reinterpret_cast<char *>(text) + size;
    int error = 0;
    Parsed parsed;
    parsed.value = my_strtoll10(start, &end, &error);
    parsed.above_signed = parsed.value < 0 && !negative;
    if (error == 33 || error == 34) {
        if (error == 33) {
            OCINumberSetError(err, 22054, "%s-22054: underflow error", qzci_oci_prefix());
        } else {
            OCINumberOverflow(err);
        }
        QZOCI_LOG_ERROR("fail to convert str to int");
        return OCI_ERROR;
    }

    switch (rsl_length) {
        case 1:
            return is_unsigned ? OCINumberStoreInteger<ub1>(err, parsed, rsl_length, rsl)
                               : OCINumberStoreInteger<sb1>(err, parsed, rsl_length, rsl);
        case 2:
            return is_unsigned ? OCINumberStoreInteger<ub2>(err, parsed, rsl_length, rsl)
                               : OCINumberStoreInteger<sb2>(err, parsed, rsl_length, rsl);
        case 4:
            return is_unsigned ? OCINumberStoreInteger<ub4>(err, parsed, rsl_length, rsl)
                               : OCINumberStoreInteger<sb4>(err, parsed, rsl_length, rsl);
        case 8:
            return is_unsigned ? OCINumberStoreInteger<ub8>(err, parsed, rsl_length, rsl)
                               : OCINumberStoreInteger<sb8>(err, parsed, rsl_length, rsl);
        default: return OCINumberBadIntegerLength(err, rsl_length);
    }
}

// Longest integers: "-9223372036854775808" and "18446744073709551615".
constexpr size_t integer_text_size = 22;

template <class Integer>
std::to_chars_result OCINumberPrintInteger(char *text, char *end, const void *inum) {
    Integer value;
    std::memcpy(&value, inum, sizeof value);
    return std::to_chars(text, end, value);
}

// Builds the number from its decimal text, an exact integer without leading
// zeros; zero digit pairs at the end are kept.
void OCINumberFromDigits(const char *text, const char *end, OCINumber &number) {
    const bool negative = *text == '-';
    const char *p = text + negative;
    if (*p == '0') {
        set_zero(number);
        return;
    }
    ub1 *out = number.OCINumberPart + 2;
    if ((end - p) % 2 != 0) *out++ = encode_digit(negative, static_cast<unsigned>(*p++ - '0'));
    for (; p != end; p += 2) {
        *out++ = encode_digit(negative, static_cast<unsigned>((p[0] - '0') * 10 + (p[1] - '0')));
    }
    const int count = static_cast<int>(out - number.OCINumberPart) - 2;
    set_frame(number, negative, count - 1, static_cast<unsigned>(count));
}

}  // namespace

sword oci_number::OCINumberFromIntChecked(OCIError *err, const void *inum, uword inum_length,
                                          bool is_unsigned, OCINumber *number, char *text,
                                          size_t text_size) {
    char *const end = text + text_size - 1;
    std::to_chars_result printed;
    switch (inum_length) {
        case 1:
            printed = is_unsigned ? OCINumberPrintInteger<ub1>(text, end, inum)
                                  : OCINumberPrintInteger<sb1>(text, end, inum);
            break;
        case 2:
            printed = is_unsigned ? OCINumberPrintInteger<ub2>(text, end, inum)
                                  : OCINumberPrintInteger<sb2>(text, end, inum);
            break;
        case 4:
            printed = is_unsigned ? OCINumberPrintInteger<ub4>(text, end, inum)
                                  : OCINumberPrintInteger<sb4>(text, end, inum);
            break;
        case 8:
            printed = is_unsigned ? OCINumberPrintInteger<ub8>(text, end, inum)
                                  : OCINumberPrintInteger<sb8>(text, end, inum);
            break;
        default: return OCINumberBadIntegerLength(err, inum_length);
    }
    // No integer's text is longer than 20 characters; a wider one would end here.
    if (printed.ec != std::errc()) {
        return OCI_NUMBER_INTERNAL_FAILURE(err, "buffer is too small in OCINumberFromInt");
    }
    *printed.ptr = '\0';
    QZOCI_LOG_DEBUG("OCINumberFromInt get int to str: %s buffer_size: %lu", text,
                    static_cast<unsigned long>(printed.ptr - text));
    OCINumberFromDigits(text, printed.ptr, *number);
    return OCI_SUCCESS;
}

extern "C" sword OCINumberToInt(OCIError *err, const OCINumber *number, uword rsl_length,
                                uword rsl_flag, void *rsl) {
    const auto thread = static_cast<long>(qz_thread_self());
    QZOCI_LOG_DEBUG(
        "thread %ld call function OCINumberToInt with param err %p,number:%p, rsl_length:%d, "
        "rsl_flag:%d, rsl:%p",
        thread, err, number, static_cast<int>(rsl_length), static_cast<int>(rsl_flag), rsl);
    sword status;
    if (err == nullptr || number == nullptr || rsl == nullptr || !OCINumberIsSignFlag(rsl_flag)) {
        constexpr const char *invalid_param =
            "invalid param, err:%p, number:%p, rsl:%p, rsl_flag:%d";
        const int flag = static_cast<int>(rsl_flag);
        QZOCI_LOG_ERROR(invalid_param, err, number, rsl, flag);
        status = err == nullptr ? OCI_INVALID_HANDLE
                                : OCINumberSetError(err, internal_failure, invalid_param, err,
                                                    number, rsl, flag);
    } else {
        status = OCINumberToIntChecked(err, number, rsl_length, rsl_flag, rsl);
    }
    return OCI_NUMBER_RETURN("OCINumberToInt", status);
}

extern "C" sword OCINumberFromInt(OCIError *err, const void *inum, uword inum_length,
                                  uword inum_s_flag, OCINumber *number) {
    QZOCI_LOG_DEBUG(
        "call OCINumberFromInt with params [err:%p] [inum:%p] [inum_length:%u] [inum_s_flag:%u] "
        "[number:%p]",
        err, inum, inum_length, inum_s_flag, number);
    sword status;
    if (err == nullptr) {
        QZOCI_LOG_ERROR("call OCINumberFromInt with invalid handle");
        status = OCI_INVALID_HANDLE;
    } else if (inum == nullptr) {
        status = OCINumberError21560(err, 2);
    } else if (inum_length == 0) {
        status = OCINumberError21560(err, 3);
    } else if (!OCINumberIsSignFlag(inum_s_flag)) {
        status = OCINumberError21560(err, 4);
    } else if (number == nullptr) {
        status = OCINumberError21560(err, 5);
    } else {
        char text[integer_text_size];
        status = OCINumberFromIntChecked(err, inum, inum_length, inum_s_flag == OCI_NUMBER_UNSIGNED,
                                         number, text, sizeof text);
    }
    return OCI_NUMBER_RETURN("OCINumberFromInt", status);
}
