// Private header of the number module: its call frame, and the steps that
// several files share.
//
// An exported function traces its call, checks its arguments in the order of
// its parameters, works, and traces the status that it returns. The steps are
// the same everywhere; they live in call_frame.cpp.
#pragma once

#include "number_bytes.h"
#include "oci.h"
#include "oci_handle.h"
#include "oci_log.h"
#include "oci_utils/plain_number.h"

namespace oci_number {

// Failures without a number of the interface.
inline constexpr int internal_failure = 602;

// Traces the returned status; written by every return of a function that has
// one: return OCI_NUMBER_RETURN("OCINumberSign", status).
inline sword OCINumberTraceResult(const char *file, long line, const char *trace_name,
                                  sword status) {
    qzoci_log_inner(LOG_LEVEL_DEBUG, file, line, "function %s return with status %d", trace_name,
                    status);
    return status;
}
#define OCI_NUMBER_RETURN(trace_name, status) \
    ::oci_number::OCINumberTraceResult(__FILE__, __LINE__, trace_name, status)

// What "%p" takes.
inline const void *address(const void *of) { return of; }

// Reports a null error handle. Returns OCI_INVALID_HANDLE.
sword OCINumberInvalidHandle();

// Writes an error number and a printf-formatted message, cut at 3072
// characters, into the handle, and nothing into the log. Returns OCI_ERROR.
sword OCINumberSetError(OCIError *errhp, int err_code, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));

// An internal failure: the formatted text becomes the message of error 602 and
// a line of the log. Returns OCI_ERROR.
#define OCI_NUMBER_INTERNAL_FAILURE(errhp, ...) \
    (QZOCI_LOG_ERROR(__VA_ARGS__),              \
     ::oci_number::OCINumberSetError(errhp, ::oci_number::internal_failure, __VA_ARGS__))

// The precision with which "%.*s" shows a caller's text: it is an int, and no
// message is longer than the handle's field.
inline int OCINumberShownLength(ub4 length) {
    constexpr ub4 longest = err_message_size - 1;
    return static_cast<int>(length < longest ? length : longest);
}

// Errors with an ERROR line in the log. All return OCI_ERROR.
// 21560: argument null, invalid or out of range.
sword OCINumberError21560(OCIError *errhp, ub4 argument);
// 22060: invalid or uninitialised number.
sword OCINumberError22060(OCIError *errhp, ub4 argument);
// 22062: invalid input string, quoted.
sword OCINumberError22062(OCIError *errhp, const char *str, ub4 str_length);

// Null test, then length byte, of one number argument. Returns OCI_SUCCESS or
// the status of the failure that was reported.
sword OCINumberCheckNumber(OCIError *errhp, const OCINumber *number, ub4 argument);

inline bool OCINumberIsUsable(const OCINumber *number) {
    return number != nullptr && number_bytes::has_valid_length(*number);
}

// Reports the first of the arguments that is not usable: the handle, number 1 as argument 2,
// number 2 as argument 3, or else the result. Returns the status, never OCI_SUCCESS: the callers
// below tell the compiler, which then reads no length byte twice.
sword OCINumberReportParams(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                            ub4 result_argument);

// The checks of (err, number, result), (err, number1, number2, result), and (err, number, a
// count that is never refused, result). Return OCI_SUCCESS or the status of the failure that
// was reported.
inline sword OCINumberCheckThreeParams(OCIError *err, const OCINumber *number, const void *result,
                                       ub4 result_argument = 3) {
    if (err != nullptr && OCINumberIsUsable(number) && result != nullptr) [[likely]] {
        return OCI_SUCCESS;
    }
    const sword status = OCINumberReportParams(err, number, number, result_argument);
    if (status == OCI_SUCCESS) __builtin_unreachable();
    return status;
}
inline sword OCINumberCheckFourParams(OCIError *err, const OCINumber *number1,
                                      const OCINumber *number2, const void *result) {
    if (err != nullptr && OCINumberIsUsable(number1) && OCINumberIsUsable(number2) &&
        result != nullptr) [[likely]] {
        return OCI_SUCCESS;
    }
    const sword status = OCINumberReportParams(err, number1, number2, 4);
    if (status == OCI_SUCCESS) __builtin_unreachable();
    return status;
}
inline sword OCINumberCheckCountParams(OCIError *err, const OCINumber *number, const void *result) {
    return OCINumberCheckThreeParams(err, number, result, 4);
}

// Room for the decimal text of a number where it is rendered.
inline constexpr sb8 number_text_size = 128;

// Renders a finite number as plain decimal text in the buffer at
// `*number_raw_str`, of `*number_raw_len` bytes: at most `scale` fraction digits,
// rounded half away from zero, or all of them when `has_tm` is true; "0" before
// the point only where it is the only digit. The text is not terminated.
// On success the two outputs delimit it: it starts at the buffer's first or
// second byte. Returns the codec's status when it refuses the number, OCI_ERROR
// when a carry needs a digit that the buffer has no room for; the outputs are
// untouched then.
sword OCINumberProcessValue(const OCINumber *number, OraText **number_raw_str, sb8 *number_raw_len,
                            ub4 scale, boolean has_tm);

// The same for digits: reads a finite number and rounds it to `scale` places; the sign stays.
sword OCINumberProcessDigits(const OCINumber *number, plain_number::PlainNumber &p, ub4 scale);

// The text of OCINumberProcessValue, without a line in the log.
sword OCINumberRenderValue(const OCINumber *number, OraText **number_raw_str, sb8 *number_raw_len,
                           ub4 scale, boolean has_tm);

// Parses the format model of `*fmt_raw_length` characters at `*fmt_raw`. On
// success the two designate its body (of "TM" and "TM9": the whole model), and
// `*scale` is the number of positions behind the body's period. Returns
// OCI_SUCCESS or OCI_ERROR; the outputs but for `*fmt_raw` and `*fmt_raw_length`
// are written on both.
sword OCINumberProcessFormat(const OraText **fmt_raw, ub4 *fmt_raw_length, ub4 *scale,
                             boolean *has_fm, boolean *has_tm);

// What OCINumberToText lays out: the number's text over a model's body, in a buffer of
// `result_size`. Body position k lands at result position k + 1; result position 0 is left
// for the sign. Without a body (`has_tm`) the number's text is the result as it stands.
inline constexpr sb8 result_size = 128;
struct Layout {
    const OraText *number_str;
    sb8 number_len;
    const OraText *format_str;
    sb8 format_len;
    OraText *result_buf;
    boolean has_fm;
    boolean has_tm;
};
sword OCINumberLayOut(OCIError *err, const Layout &l, sb8 &result_len);

// Error 22061: the format model, quoted; nothing in the log. Returns OCI_ERROR.
sword OCINumberError22061(OCIError *errhp, const OraText *fmt, ub4 fmt_length);

}  // namespace oci_number
