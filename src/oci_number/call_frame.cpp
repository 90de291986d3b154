#include <cstdarg>
#include <cstdio>

#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"

namespace oci_number {

sword OCINumberInvalidHandle() {
    QZOCI_LOG_ERROR("get a invalid handle");
    return OCI_INVALID_HANDLE;
}

sword OCINumberSetError(OCIError *errhp, int err_code, const char *fmt, ...) {
    errhp->err_code = err_code;
    va_list args;
    va_start(args, fmt);
    std::vsnprintf(reinterpret_cast<char *>(errhp->err_message), sizeof errhp->err_message, fmt,
                   args);
    va_end(args);
    return OCI_ERROR;
}

sword OCINumberError21560(OCIError *errhp, ub4 argument) {
    QZOCI_LOG_ERROR("21560: argument %u is null, invalid, or out of range", argument);
    return OCINumberSetError(errhp, 21560,
                             "%s-21560: argument %u is null, invalid, or out of range\n",
                             qzci_oci_prefix(), argument);
}

sword OCINumberError22060(OCIError *errhp, ub4 argument) {
    QZOCI_LOG_ERROR("22060: argument [%u] is an invalid or uninitialized number", argument);
    return OCINumberSetError(errhp, 22060,
                             "%s-22060: argument [%u] is an invalid or uninitialized number\n",
                             qzci_oci_prefix(), argument);
}

sword OCINumberError22062(OCIError *errhp, const char *str, ub4 str_length) {
    const int shown = OCINumberShownLength(str_length);
    QZOCI_LOG_ERROR("call OCINumberFromText with invalid str [%.*s]", shown, str);
    return OCINumberSetError(errhp, 22062, "%s-22062: invalid input string [%.*s]\n",
                             qzci_oci_prefix(), shown, str);
}

sword OCINumberError22061(OCIError *errhp, const OraText *fmt, ub4 fmt_length) {
    return OCINumberSetError(errhp, 22061, "%s-22061: invalid format text [%.*s]",
                             qzci_oci_prefix(), OCINumberShownLength(fmt_length), fmt);
}

sword OCINumberCheckNumber(OCIError *errhp, const OCINumber *number, ub4 argument) {
    if (number == nullptr) return OCINumberError21560(errhp, argument);
    if (!number_bytes::has_valid_length(*number)) return OCINumberError22060(errhp, argument);
    return OCI_SUCCESS;
}

sword OCINumberReportParams(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                            ub4 result_argument) {
    if (err == nullptr) return OCINumberInvalidHandle();
    if (const sword status = OCINumberCheckNumber(err, number1, 2)) return status;
    if (const sword status = OCINumberCheckNumber(err, number2, 3)) return status;
    return OCINumberError21560(err, result_argument);
}

}  // namespace oci_number
