// Text output: a number's decimal text laid into the positions of a format model.
#include <algorithm>
#include <cstring>

#include "oci_number/call_frame.h"
#include "oci_number/steps.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// A text of printf. All that is laid out here is shorter than its int precision.
struct Shown {
    int length;
    const OraText *text;
};
Shown number_text(const Layout &l) { return {static_cast<int>(l.number_len), l.number_str}; }
Shown format_text(const Layout &l) { return {static_cast<int>(l.format_len), l.format_str}; }

constexpr const char *overflow_text =
    "number to text translation for the given format causes overflow";

sword OCINumberError22065(OCIError *err) {
    return OCINumberSetError(err, 22065, "%s-22065: %s", qzci_oci_prefix(), overflow_text);
}

sb8 find_dot(const OraText *text, sb8 from, sb8 to) {
    return std::find(text + from, text + to, '.') - text;
}

// Places of the two periods; just behind the text where there is none.
struct Dots {
    sb8 number;
    sb8 format;
};

// Lays digits, padding, blanks and the sign. Returns the result position where
// the text begins when blanks are not wanted.
sb8 OCINumberLayPositions(const Layout &l, sb8 num_start, Dots dot) {
    OraText *const result = l.result_buf;
    if (dot.format < l.format_len) result[dot.format + 1] = '.';

    sb8 real_digits_num = 0;
    for (sb8 p = dot.format + 1; p < l.format_len; ++p) {
        const sb8 rank = dot.number + (p - dot.format);
        result[p + 1] = rank < l.number_len ? l.number_str[rank] : '0';
        ++real_digits_num;
    }
    sb8 fmt_pos = dot.format - 1;  // the last free position of the body
    for (sb8 num_pos = dot.number - 1; num_pos >= num_start; --num_pos) {
        result[fmt_pos-- + 1] = l.number_str[num_pos];
        ++real_digits_num;
    }
    if (real_digits_num == 0) result[fmt_pos-- + 1] = '0';

    // Blanks up to the body's first "0" or the first digit, then the sign, then
    // zeros up to the first digit.
    result[0] = ' ';
    sb8 i = 0;
    for (; i <= fmt_pos && l.format_str[i] != '0'; ++i) result[i + 1] = ' ';
    const bool negative = num_start == 1;
    result[i] = negative ? '-' : ' ';
    for (sb8 k = i; k <= fmt_pos; ++k) result[k + 1] = '0';
    return negative ? i : i + 1;
}

// Padding zeros that fill mode takes from the end: those that stand for "9"
// positions behind the body's last "0" and for no digit of the number.
sb8 OCINumberEndingZeros(const Layout &l, Dots dot) {
    sb8 nines = 0;
    while (l.format_len - 1 - nines > dot.format && l.format_str[l.format_len - 1 - nines] != '0') {
        ++nines;
    }
    const sb8 num_decimal_length = std::max<sb8>(l.number_len - dot.number - 1, 0);
    const sb8 fmt_decimal_length = std::max<sb8>(l.format_len - dot.format - 1, 0);
    return std::min(fmt_decimal_length - num_decimal_length, nines);
}

}  // namespace

sword oci_number::OCINumberLayOut(OCIError *err, const Layout &l, sb8 &result_len) {
    if (l.number_len < 0 || l.number_str == nullptr ||
        (l.format_len > 0 && l.format_str == nullptr) || l.format_len >= result_size) {
        QZOCI_LOG_DEBUG(
            "params have null, status:%d, number:%p, number_len:%ld, format:%p, format_len:%ld, "
            "result_buf:%p, result_size:%ld",
            OCI_ERROR, address(static_cast<const void *>(l.number_str)), l.number_len,
            address(static_cast<const void *>(l.format_str)), l.format_len,
            address(static_cast<void *>(l.result_buf)), result_size);
        return OCI_ERROR;
    }
    if (l.has_tm) {
        if (l.number_len > result_size) {
            QZOCI_LOG_DEBUG("buffer is to small, number_len:%ld, result_size:%ld", l.number_len,
                            result_size);
            return OCI_ERROR;
        }
        result_len = l.number_len;
        return OCI_SUCCESS;
    }

    const sb8 num_start = l.number_len > 0 && l.number_str[0] == '-' ? 1 : 0;
    const Dots dot{find_dot(l.number_str, num_start, l.number_len),
                   find_dot(l.format_str, 0, l.format_len)};
    if (dot.format < dot.number - num_start || l.format_len == 0) {
        OCINumberError22065(err);
        const Shown format = format_text(l);
        QZOCI_LOG_DEBUG("%s, fmt_raw:%.*s", overflow_text, format.length, format.text);
        return OCI_ERROR;
    }
    const sb8 result_number_start = OCINumberLayPositions(l, num_start, dot);
    result_len = l.format_len + 1;
    if (l.has_fm) {
        const sb8 remove_ending_zero_count = OCINumberEndingZeros(l, dot);
        result_len -= remove_ending_zero_count + result_number_start;
        std::memmove(l.result_buf, l.result_buf + result_number_start,
                     static_cast<size_t>(result_len));
        QZOCI_LOG_DEBUG(
            "format numer with fm, remove_ending_zero_count:%ld, format_len:%ld, "
            "result_number_start:%ld, result:%.*s",
            remove_ending_zero_count, l.format_len, result_number_start,
            static_cast<int>(l.format_len + 1), l.result_buf);
    }
    return OCI_SUCCESS;
}

namespace {

sword OCINumberFormat(OCIError *err, const Layout &layout, sb8 &result_len) {
    return OCI_NUMBER_RETURN("OCINumberFormat", OCINumberLayOut(err, layout, result_len));
}

sword OCINumberCopyOut(OCIError *err, const OraText *result, sb8 result_len, ub4 *buf_size,
                       OraText *buf) {
    const ub4 capacity = *buf_size;
    if (capacity < result_len) {
        QZOCI_LOG_ERROR("22059: buffer size [%d] is too small - [%ld] is needed",
                        static_cast<int>(capacity), result_len);
        return OCINumberSetError(err, 22059,
                                 "%s-22059: buffer size [%u] is too small - [%ld] is needed",
                                 qzci_oci_prefix(), capacity, result_len);
    }
    std::memcpy(buf, result, static_cast<size_t>(result_len));
    if (capacity != result_len) buf[result_len] = '\0';
    *buf_size = static_cast<ub4>(result_len);
    return OCI_SUCCESS;
}

// This function's own form of error 21560, without line end.
sword OCINumberBadArgument(OCIError *err, int argument) {
    QZOCI_LOG_DEBUG("buf_size param is null, invalid, or out of range");
    return OCINumberSetError(err, 21560, "%s-21560: argument %d is null, invalid, or out of range",
                             qzci_oci_prefix(), argument);
}

sword OCINumberToTextChecked(OCIError *err, const OCINumber *number, const OraText *fmt,
                             ub4 fmt_length, ub4 *buf_size, OraText *buf) {
    if (is_taken_for_infinity(*number)) {
        QZOCI_LOG_ERROR("OCINumberToText get infinity number");
        return OCINumberError22065(err);
    }

    const OraText *fmt_raw = fmt;
    ub4 fmt_raw_length = fmt_length;
    ub4 scale;
    boolean has_fm;
    boolean has_tm;
    if (OCINumberProcessFormat(&fmt_raw, &fmt_raw_length, &scale, &has_fm, &has_tm)) {
        QZOCI_LOG_DEBUG("fail to proccess format, fmt_raw:%.*s", OCINumberShownLength(fmt_length),
                        fmt);
        return OCINumberError22061(err, fmt, fmt_length);
    }

    OraText number_buf[number_text_size];
    OraText *number_str = number_buf;
    sb8 number_str_len = sizeof number_buf;
    if (const sword status =
            OCINumberProcessValue(number, &number_str, &number_str_len, scale, has_tm)) {
        constexpr const char *fail = "fail to proccess Value, number:%p";
        QZOCI_LOG_DEBUG(fail, static_cast<const void *>(number));
        OCINumberSetError(err, internal_failure, fail, static_cast<const void *>(number));
        return status;
    }

    OraText number_format_buf[result_size];
    // Fill mode's log line shows places that may not be laid.
    if (has_fm) std::memset(number_format_buf, 0, sizeof number_format_buf);
    sb8 number_format_str_len = 0;
    const Layout layout{number_str,        number_str_len, fmt_raw, sb8{fmt_raw_length},
                        number_format_buf, has_fm,         has_tm};
    if (const sword status = OCINumberFormat(err, layout, number_format_str_len)) {
        const Shown value = number_text(layout);
        const Shown format = format_text(layout);
        QZOCI_LOG_DEBUG("fail to proccess format, number_str:%.*s, fmt_raw:%.*s, has_fm:%d",
                        value.length, value.text, format.length, format.text, has_fm);
        return status;
    }
    return OCINumberCopyOut(err, has_tm ? number_str : number_format_buf, number_format_str_len,
                            buf_size, buf);
}

}  // namespace

extern "C" sword OCINumberToText(OCIError *err, const OCINumber *number, const OraText *fmt,
                                 ub4 fmt_length, const OraText *nls_params, ub4 nls_p_length,
                                 ub4 *buf_size, OraText *buf) {
    const auto thread = static_cast<long>(qz_thread_self());
    const auto fmt_length_shown = static_cast<int>(fmt_length);
    const auto nls_length_shown = static_cast<int>(nls_p_length);
    QZOCI_LOG_DEBUG(
        "thread %ld call function OCINumberToText with param err %p,number:%p, fmt:%p, "
        "fmt_length %d, nls_params:%p, nls_p_length:%d, buf_size:%p, buf:%p ",
        thread, address(err), address(number), address(fmt), fmt_length_shown, address(nls_params),
        nls_length_shown, address(buf_size), address(buf));
    sword status;
    if (err == nullptr) {
        QZOCI_LOG_DEBUG(
            "param is invalid, err:%p, number:%p,buf:%p, buf_size:%p, fmt:%p, fmt_length:%d",
            address(err), address(number), address(buf), address(buf_size), address(fmt),
            fmt_length_shown);
        status = OCI_INVALID_HANDLE;
    } else if (buf_size == nullptr || *buf_size == 0) {
        status = OCINumberBadArgument(err, 7);
    } else if (buf == nullptr) {
        status = OCINumberBadArgument(err, 8);
    } else if (number == nullptr) {
        status = OCINumberBadArgument(err, 2);
    } else if (fmt == nullptr || fmt_length == 0) {
        QZOCI_LOG_DEBUG("%s", overflow_text);
        status = OCINumberError22065(err);
    } else if (nls_params != nullptr || nls_p_length != 0) {
        constexpr const char *refused = "nls_param is not support, nls_params:%p, nls_p_length:%d";
        const void *const shown = nls_params;
        QZOCI_LOG_DEBUG(refused, shown, nls_length_shown);
        status = OCINumberSetError(err, internal_failure, refused, shown, nls_length_shown);
    } else {
        status = OCINumberToTextChecked(err, number, fmt, fmt_length, buf_size, buf);
    }
    return OCI_NUMBER_RETURN("OCINumberToText", status);
}
