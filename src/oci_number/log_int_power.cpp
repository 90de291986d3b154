// The logarithm to any base and the integer power, which do not fit the dispatchers.
#include "oci_calc_number/oci_calc_number.h"
#include "oci_number/call_frame.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// A failure of the engine: the text is the message and a line of the log; the status is
// passed on.
sword OCINumberEngineFailure(OCIError *err, const char *text, sword status) {
    OCI_NUMBER_INTERNAL_FAILURE(err, "%s", text);
    return status;
}

// A logarithm takes positive numbers.
sword OCINumberCheckPositive(OCIError *err, const OCINumber *number, ub4 argument) {
    if (const sword status = OCINumberCheckNumber(err, number, argument)) return status;
    if (!has_positive_exponent(*number)) return OCINumberError22060(err, argument);
    return OCI_SUCCESS;
}

sword OCINumberLogChecked(OCIError *err, const OCINumber *base, const OCINumber *number,
                          OCINumber *result) {
    if (err == nullptr) return OCINumberInvalidHandle();
    if (const sword status = OCINumberCheckPositive(err, base, 2)) return status;
    if (const sword status = OCINumberCheckPositive(err, number, 3)) return status;
    if (result == nullptr) return OCINumberError21560(err, 4);

    QZCICalcNumber calc_base, calc_number, calc_result;
    sword status = QZCICalcNumFromNumber(&calc_base, base);
    if (status == OCI_SUCCESS) status = QZCICalcNumFromNumber(&calc_number, number);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberLn failed to convert number to calcnumber",
                                      status);
    }
    status = QZCICalcNumLn(&calc_base, &calc_base);
    if (status == OCI_SUCCESS) status = QZCICalcNumLn(&calc_number, &calc_number);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberLn call QZCICalcNumLn error", status);
    }
    // The base is 1: every logarithm is infinite, positive from 1 on.
    if (calc_base.is_zero == 1) {
        QZOCI_LOG_DEBUG("number is infinity , set result to infinity");
        set_infinity(*result, calc_number.num_signed != 1);
        return OCI_SUCCESS;
    }
    status = QZCICalcNumDiv(&calc_number, &calc_base, &calc_result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberLn call QZCICalcNumDiv error", status);
    }
    status = QZCICalcNumToNumber(&calc_result, result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberLn call QZCICalcNumToNumber error", status);
    }
    return OCI_SUCCESS;
}

sword OCINumberIntPowerChecked(OCIError *err, const OCINumber *base, sword exp, OCINumber *result) {
    if (err == nullptr) return OCINumberInvalidHandle();
    if (const sword status = OCINumberCheckNumber(err, base, 2)) return status;
    if (result == nullptr) return OCINumberError21560(err, 4);

    QZCICalcNumber calc_number1, calc_result;
    sword status = QZCICalcNumFromNumber(&calc_number1, base);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberIntPower call QZCICalcNumFromNumber error",
                                      status);
    }
    status = QZCICalcNumIntPower(&calc_number1, exp, &calc_result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberIntPower call QZCICalcFunc error", status);
    }
    status = QZCICalcNumToNumber(&calc_result, result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, "OCINumberIntPower call QZCICalcNumToNumber error",
                                      status);
    }
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword OCINumberLog(OCIError *err, const OCINumber *base, const OCINumber *number,
                              OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberLon with params [err:%p] [base:%p] [number:%p] [result:%p]",
                    address(err), address(base), address(number), address(result));
    const sword status = OCINumberLogChecked(err, base, number, result);
    return OCI_NUMBER_RETURN("OCNumberLog", status);
}

extern "C" sword OCINumberIntPower(OCIError *err, const OCINumber *base, const sword exp,
                                   OCINumber *result) {
    QZOCI_LOG_DEBUG("call OCINumberIntPower with params [err:%p] [base:%p] [exp:%d] [result:%p]",
                    address(err), address(base), exp, address(result));
    const sword status = OCINumberIntPowerChecked(err, base, exp, result);
    return OCI_NUMBER_RETURN("OCINumberIntPower", status);
}
