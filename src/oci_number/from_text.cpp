// Text input: a format model constrains a decimal text, which the codec reads.
#include <algorithm>

#include "oci_number/call_frame.h"
#include "oci_utils/digit_text.h"
#include "oci_utils/oci_utils.h"

using namespace oci_number;

namespace {

// A caller's text, not terminated.
struct Text {
    const OraText *begin;
    ub4 length;

    const OraText *end() const { return begin + length; }
};

// The first character that is neither "0" nor "9".
const OraText *OCINumberSkipPositions(const OraText *p, const OraText *end) {
    using namespace digit_words;
    for (; end - p >= 8; p += 8) {
        // Of 0 and 9, each of the two bits that 9 has is set where the other is.
        const ub8 x = load(p) ^ in_every_byte('0');
        const ub8 others = (x & ~in_every_byte(9)) | ((x ^ x >> 3) & in_every_byte(1));
        if (others != 0) return p + std::countl_zero(others) / 8;
    }
    while (p != end && (*p == '0' || *p == '9')) ++p;
    return p;
}

// The model: positions "0" and "9" with at most one period; it may be empty.
sword OCINumberFromTextCheckFmt(const Text &fmt) {
    QZOCI_LOG_DEBUG("call OCINumberFromTextProcessFmt with params [fmt:%.*s]",
                    OCINumberShownLength(fmt.length), fmt.begin);
    const OraText *p = OCINumberSkipPositions(fmt.begin, fmt.end());
    if (p != fmt.end() && *p == '.') p = OCINumberSkipPositions(p + 1, fmt.end());
    return p == fmt.end() ? OCI_SUCCESS : OCI_ERROR;
}

// Matches the text with a valid model. A position is the address of a character,
// or the one just behind the last where a period is missing.
sword OCINumberFromTextProcessFmtAndStr(const Text &fmt, const Text &str) {
    const OraText *const fmt_left_position = fmt.begin;
    const OraText *const fmt_dot_position = std::find(fmt.begin, fmt.end(), '.');

    const OraText *str_left_position = str.begin;
    while (str_left_position != str.end() && *str_left_position == ' ') ++str_left_position;
    if (str_left_position != str.end() && *str_left_position == '-') ++str_left_position;
    const OraText *str_dot_position = str.end();
    for (const OraText *p = str_left_position;; ++p) {
        p = digit_text::skip_digits(p, str.end());
        if (p == str.end()) break;
        if (*p != '.') {
            QZOCI_LOG_ERROR("OCINumberFromText get a error character");
            return OCI_ERROR;
        }
        str_dot_position = p;
    }

    // Positions in front that the text leaves out must all be optional; then its
    // fraction is not compared.
    const sb8 left_diff =
        (fmt_dot_position - fmt_left_position) - (str_dot_position - str_left_position);
    if (left_diff < 0) return OCI_ERROR;
    if (left_diff > 0) {
        const OraText *const omitted_end = fmt_left_position + left_diff;
        return std::find(fmt_left_position, omitted_end, '0') == omitted_end ? OCI_SUCCESS
                                                                             : OCI_ERROR;
    }

    // Fraction zeros at the end do not count; the period stops the walk over them. Each
    // difference counts the period too, or nothing for a side without one.
    const OraText *str_right_end = str.end();
    if (str_dot_position != str.end()) {
        while (str_right_end[-1] == '0') --str_right_end;
    }
    const sb8 right_diff = (fmt.end() - fmt_dot_position) - (str_right_end - str_dot_position);
    return right_diff < 0 ? OCI_ERROR : OCI_SUCCESS;
}

sword OCINumberFromTextChecked(OCIError *err, const Text &str, const Text &fmt, bool has_nls,
                               OCINumber *number) {
    if (OCINumberFromTextCheckFmt(fmt)) {
        QZOCI_LOG_ERROR("call OCINNumberFromText with invalid fmt [%.*s]",
                        OCINumberShownLength(fmt.length), fmt.begin);
        return OCINumberError22061(err, fmt.begin, fmt.length);
    }
    if (has_nls) {
        return OCI_NUMBER_INTERNAL_FAILURE(
            err, "call OCINumberFromText with nls_params which is not supported");
    }
    // The codec takes a writable pointer, and only reads.
    if (OCINumberFromTextProcessFmtAndStr(fmt, str) ||
        getNumberFromStr(number, const_cast<OraText *>(str.begin), str.length)) {
        return OCINumberError22062(err, reinterpret_cast<const char *>(str.begin), str.length);
    }
    QZOCI_LOG_DEBUG("call OCINumberFromText success with params [str:%.*s] [fmt:%.*s]",
                    OCINumberShownLength(str.length), str.begin, OCINumberShownLength(fmt.length),
                    fmt.begin);
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword OCINumberFromText(OCIError *err, const OraText *str, ub4 str_length,
                                   const OraText *fmt, ub4 fmt_length, const OraText *nls_params,
                                   ub4 nls_p_length, OCINumber *number) {
    QZOCI_LOG_DEBUG(
        "call OCINumberFromText with params [err:%p] [str:%p] [str_length:%u] [fmt:%p] "
        "[fmt_length:%u] [nls_params:%p] [nls_p_length:%u] [number:%p]",
        address(err), address(str), str_length, address(fmt), fmt_length, address(nls_params),
        nls_p_length, address(number));
    sword status;
    if (err == nullptr) {
        QZOCI_LOG_ERROR("call OCINumberFromText with invalid handle");
        status = OCI_INVALID_HANDLE;
    } else if (str == nullptr) {
        status = OCINumberError21560(err, 2);
    } else if (str_length == 0) {
        status = OCINumberError21560(err, 3);
    } else if (fmt == nullptr) {
        status = OCINumberError22062(err, reinterpret_cast<const char *>(str), str_length);
    } else if (number == nullptr) {
        status = OCINumberError21560(err, 8);
    } else {
        status = OCINumberFromTextChecked(err, {str, str_length}, {fmt, fmt_length},
                                          nls_params != nullptr || nls_p_length != 0, number);
    }
    return OCI_NUMBER_RETURN("OCINumberFromText", status);
}
