// The bridge to the calc engine: two dispatchers over constant tables, the functions
// that call them, and the debug printers.
#include "oci_number/calc_bridge.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "oci_calc_number/algebraic/algebraic.h"
#include "oci_calc_number/convert.h"
#include "oci_calc_number/oci_calc_number.h"
#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

using two_param_calcnumber_call = sword (*)(const QZCICalcNumber *operand1,
                                            const QZCICalcNumber *operand2, QZCICalcNumber *result);
using one_param_calcnumber_call = sword (*)(const QZCICalcNumber *operand, QZCICalcNumber *result);

using calc::Finite;
using TwoFinite = Finite (*)(const Finite &a, const Finite &b);
using OneFinite = Finite (*)(const Finite &a);

// The engine's function, the name that traces and messages show, and what an algebraic function
// does with finite operands that are not zero: those take no records.
struct TwoParamCall {
    two_param_calcnumber_call calculate;
    const char *func_name;
    TwoFinite of_finite;
};
struct OneParamCall {
    one_param_calcnumber_call calculate;
    const char *func_name;
    OneFinite of_finite;
};

inline Finite add(const Finite &a, const Finite &b) { return calc::sum(a, b, false); }
inline Finite subtract(const Finite &a, const Finite &b) { return calc::sum(a, b, true); }
inline Finite ceiling(const Finite &a) { return calc::integer_part(a, !a.negative); }
inline Finite floor(const Finite &a) { return calc::integer_part(a, a.negative); }

enum two_params_calcfunc_index : ub4 {
    OCINumberAddIndex,
    OCINumberDivIndex,
    OCINumberMulIndex,
    OCINumberPowerIndex,
    OCINumberSubIndex,
    OCINumberModIndex,
    OCINumberArcTan2Index,
    OCINumberTwoParamIndexMax
};
constexpr TwoParamCall two_param_calls[] = {
    {QZCICalcNumAdd, "OCINumberAdd", add},
    {QZCICalcNumDiv, "OCINumberDiv", calc::quotient},
    {QZCICalcNumMul, "OCINumberMul", calc::product},
    {QZCICalcNumPower, "OCINumberPower", nullptr},
    {QZCICalcNumSub, "OCINumberSub", subtract},
    {QZCICalcNumMod, "OCINumberMod", calc::remainder},
    {QZCICalcNumAtan2, "OCINumberArcTan2", nullptr},
};
static_assert(std::size(two_param_calls) == OCINumberTwoParamIndexMax);

enum one_param_calcfunc_index : ub4 {
    OCINumberSinIndex,
    OCINumberCosIndex,
    OCINumberTanIndex,
    OCINumberArcSinIndex,
    OCINumberArcCosIndex,
    OCINumberArcTanIndex,
    OCINumberHypSinIndex,
    OCINumberHypCosIndex,
    OCINumberHypTanIndex,
    OCINumberCeilIndex,
    OCINumberExpIndex,
    OCINumberFloorIndex,
    OCINumberLnIndex,
    OCINumberSqrtIndex,
    OCINumberOneParamIndexMax
};
constexpr OneParamCall one_param_calls[] = {
    {QZCICalcNumSinWithRound, "OCINumberSin", nullptr},
    {QZCICalcNumCosWithRound, "OCINumberCos", nullptr},
    {QZCICalcNumTanWithRound, "OCINumberTan", nullptr},
    {QZCICalcNumAsin, "OCINumberArcSin", nullptr},
    {QZCICalcNumAcos, "OCINumberArcCos", nullptr},
    {QZCICalcNumAtan, "OCINumberArcTan", nullptr},
    {QZCICalcNumSinh, "OCINumberHypSin", nullptr},
    {QZCICalcNumCosh, "OCINumberHypCos", nullptr},
    {QZCICalcNumTanh, "OCINumberHypTan", nullptr},
    {QZCICalcNumCeil, "OCINumberCeil", ceiling},
    {QZCICalcNumExp, "OCINumberExp", nullptr},
    {QZCICalcNumFloor, "OCINumberFloor", floor},
    {QZCICalcNumLn, "OCINumberLn", nullptr},
    {QZCICalcNumSqrt, "OCINumberSqrt", calc::square_root},
};
static_assert(std::size(one_param_calls) == OCINumberOneParamIndexMax);

// Error 22056: division by zero, with the dividend's text and no line in the log.
sword OCINumberError22056(OCIError *errhp, const OCINumber *number) {
    OraText text[100] = {};
    ub2 size = sizeof text;
    getStrFromNumber(number, text, &size);
    return OCINumberSetError(errhp, 22056, "%s-22056: value [%.*s] is divided by zero\n",
                             qzci_oci_prefix(), static_cast<int>(size),
                             reinterpret_cast<const char *>(text));
}

// A failure of the engine's `step`; its status is passed on.
sword OCINumberEngineFailure(OCIError *err, const char *func_name, const char *step, sword status) {
    OCI_NUMBER_INTERNAL_FAILURE(err, "%s call %s error", func_name, step);
    return status;
}

sword OCINumberStoreResult(OCIError *err, const QZCICalcNumber &calc_result, OCINumber *result,
                           const char *func_name) {
    const sword status = QZCICalcNumToNumber(&calc_result, result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, func_name, "QZCICalcNumToNumber", status);
    }
    return OCI_SUCCESS;
}

// By way of records: elementary functions, and operands that are zero, infinite, not in normal
// form or no numbers.
[[gnu::noinline]] sword OCINumberTwoParamRecords(OCIError *err, const OCINumber *number1,
                                                 const OCINumber *number2, OCINumber *result,
                                                 ub4 index) {
    const char *const func_name = two_param_calls[index].func_name;
    QZCICalcNumber calc_number1, calc_number2, calc_result;
    sword status = QZCICalcNumFromNumber(&calc_number1, number1);
    if (status == OCI_SUCCESS) status = QZCICalcNumFromNumber(&calc_number2, number2);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, func_name, "QZCICalcNumFromNumber", status);
    }
    status = two_param_calls[index].calculate(&calc_number1, &calc_number2, &calc_result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, func_name, "QZCICalcFunc", status);
    }
    return OCINumberStoreResult(err, calc_result, result, func_name);
}

[[gnu::always_inline]] inline sword OCINumberTwoParamChecked(OCIError *err,
                                                             const OCINumber *number1,
                                                             const OCINumber *number2,
                                                             OCINumber *result, ub4 index,
                                                             boolean check_zero) {
    if (const sword status = OCINumberCheckFourParams(err, number1, number2, result)) return status;
    if (check_zero == 1 && is_zero(*number2)) return OCINumberError22056(err, number1);
    if (index == OCINumberArcTan2Index && is_zero(*number2)) return OCINumberError22060(err, 3);

    const TwoFinite of_finite = two_param_calls[index].of_finite;
    Finite a, b;
    if (of_finite != nullptr && (read_finite(*number1, a) | read_finite(*number2, b)) == 0) {
        write_finite(of_finite(a, b), *result);
        return OCI_SUCCESS;
    }
    return OCINumberTwoParamRecords(err, number1, number2, result, index);
}

// Arc sine and arc cosine take -1 to 1.
sword OCINumberCheckArcDomain(OCIError *err, const OCINumber *number) {
    constexpr OCINumber positive_one = {{2, 0xC1, 0x02}};
    constexpr OCINumber negative_one = {{3, 0x3E, 0x64, 0x66}};
    const auto compare = [&](const OCINumber &bound, sword &order) {
        const sword status = OCINumberCmp(err, number, &bound, &order);
        if (status != OCI_SUCCESS) QZOCI_LOG_ERROR("OCINumberArcCos error in cmp");
        return status;
    };
    sword tmp_result = 0;
    if (const sword status = compare(positive_one, tmp_result)) return status;
    if (tmp_result > 0) return OCINumberError22060(err, 2);
    if (const sword status = compare(negative_one, tmp_result)) return status;
    if (tmp_result < 0) return OCINumberError22060(err, 2);
    return OCI_SUCCESS;
}

sword OCINumberCheckDomain(OCIError *err, const OCINumber *number, ub4 index) {
    switch (index) {
        case OCINumberSqrtIndex:
            return is_negative(*number) ? OCINumberError22060(err, 2) : OCI_SUCCESS;
        case OCINumberLnIndex: return is_zero(*number) ? OCINumberError22060(err, 2) : OCI_SUCCESS;
        case OCINumberArcSinIndex:
        case OCINumberArcCosIndex: return OCINumberCheckArcDomain(err, number);
        default: return OCI_SUCCESS;
    }
}

[[gnu::noinline]] sword OCINumberOneParamRecords(OCIError *err, const OCINumber *number,
                                                 OCINumber *result, ub4 index) {
    const char *const func_name = one_param_calls[index].func_name;
    QZCICalcNumber calc_number, calc_result;
    sword status = QZCICalcNumFromNumber(&calc_number, number);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, func_name, "QZCICalcNumFromNumber", status);
    }
    status = one_param_calls[index].calculate(&calc_number, &calc_result);
    if (status != OCI_SUCCESS) {
        return OCINumberEngineFailure(err, func_name, "QZCICalcFunc", status);
    }
    return OCINumberStoreResult(err, calc_result, result, func_name);
}

[[gnu::always_inline]] inline sword OCINumberOneParamChecked(OCIError *err, const OCINumber *number,
                                                             OCINumber *result, ub4 index) {
    if (const sword status = OCINumberCheckThreeParams(err, number, result)) return status;
    if (const sword status = OCINumberCheckDomain(err, number, index)) return status;

    const OneFinite of_finite = one_param_calls[index].of_finite;
    Finite a;
    if (of_finite != nullptr && read_finite(*number, a) == 0) {
        write_finite(of_finite(a), *result);
        return OCI_SUCCESS;
    }
    return OCINumberOneParamRecords(err, number, result, index);
}

// The dispatchers. Where the index is a constant, what a sum, a ceiling and a floor do with finite
// operands is part of the function.
[[gnu::always_inline]] inline sword OCINumberTwoParamDispatch(OCIError *err,
                                                              const OCINumber *number1,
                                                              const OCINumber *number2,
                                                              OCINumber *result, ub4 index,
                                                              boolean check_zero) {
    const char *const func_name = two_param_calls[index].func_name;
    QZOCI_LOG_DEBUG("call %s with params [err:%p] [number1:%p] [number2:%p] [result:%p]", func_name,
                    address(err), address(number1), address(number2), address(result));
    const sword status = OCINumberTwoParamChecked(err, number1, number2, result, index, check_zero);
    return OCI_NUMBER_RETURN(func_name, status);
}

[[gnu::always_inline]] inline sword OCINumberOneParamDispatch(OCIError *err,
                                                              const OCINumber *number,
                                                              OCINumber *result, ub4 index) {
    const char *const func_name = one_param_calls[index].func_name;
    QZOCI_LOG_DEBUG("call %s with params [err:%p] [number:%p] [result:%p]", func_name, address(err),
                    address(number), address(result));
    const sword status = OCINumberOneParamChecked(err, number, result, index);
    return OCI_NUMBER_RETURN(func_name, status);
}

}  // namespace

[[gnu::noinline]] sword oci_number::OCINumberTwoParamMathCall(OCIError *err,
                                                              const OCINumber *number1,
                                                              const OCINumber *number2,
                                                              OCINumber *result, ub4 index,
                                                              boolean check_zero) {
    return OCINumberTwoParamDispatch(err, number1, number2, result, index, check_zero);
}

[[gnu::noinline]] sword oci_number::OCINumberOneParamMathCall(OCIError *err,
                                                              const OCINumber *number,
                                                              OCINumber *result, ub4 index) {
    if (index >= OCINumberOneParamIndexMax) {
        QZOCI_LOG_ERROR("OCINumberOneParamMathCall get a invalid index %u", index);
        return OCI_ERROR;
    }
    return OCINumberOneParamDispatch(err, number, result, index);
}

extern "C" sword OCINumberAdd(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                              OCINumber *result) {
    return OCINumberTwoParamDispatch(err, number1, number2, result, OCINumberAddIndex, false);
}

extern "C" sword OCINumberSub(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                              OCINumber *result) {
    return OCINumberTwoParamDispatch(err, number1, number2, result, OCINumberSubIndex, false);
}

extern "C" sword OCINumberMul(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                              OCINumber *result) {
    return OCINumberTwoParamMathCall(err, number1, number2, result, OCINumberMulIndex, false);
}

extern "C" sword OCINumberDiv(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                              OCINumber *result) {
    return OCINumberTwoParamMathCall(err, number1, number2, result, OCINumberDivIndex, true);
}

extern "C" sword OCINumberMod(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                              OCINumber *result) {
    return OCINumberTwoParamMathCall(err, number1, number2, result, OCINumberModIndex, true);
}

extern "C" sword OCINumberPower(OCIError *err, const OCINumber *base, const OCINumber *number,
                                OCINumber *result) {
    return OCINumberTwoParamMathCall(err, base, number, result, OCINumberPowerIndex, false);
}

extern "C" sword OCINumberArcTan2(OCIError *err, const OCINumber *number1, const OCINumber *number2,
                                  OCINumber *result) {
    return OCINumberTwoParamMathCall(err, number1, number2, result, OCINumberArcTan2Index, false);
}

extern "C" sword OCINumberSin(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberSinIndex);
}

extern "C" sword OCINumberCos(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberCosIndex);
}

extern "C" sword OCINumberTan(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberTanIndex);
}

extern "C" sword OCINumberArcSin(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberArcSinIndex);
}

extern "C" sword OCINumberArcCos(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberArcCosIndex);
}

extern "C" sword OCINumberArcTan(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberArcTanIndex);
}

extern "C" sword OCINumberHypSin(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberHypSinIndex);
}

extern "C" sword OCINumberHypCos(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberHypCosIndex);
}

extern "C" sword OCINumberHypTan(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberHypTanIndex);
}

extern "C" sword OCINumberCeil(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamDispatch(err, number, result, OCINumberCeilIndex);
}

extern "C" sword OCINumberExp(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberExpIndex);
}

extern "C" sword OCINumberFloor(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamDispatch(err, number, result, OCINumberFloorIndex);
}

extern "C" sword OCINumberLn(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberLnIndex);
}

extern "C" sword OCINumberSqrt(OCIError *err, const OCINumber *number, OCINumber *result) {
    return OCINumberOneParamMathCall(err, number, result, OCINumberSqrtIndex);
}

extern "C" sword print_calc_number(QZCICalcNumber *number) {
    char buffer[500] = {};
    QZCICalcNumToStr(number, buffer, sizeof buffer);
    std::printf("buffer is %s\n", buffer);
    return OCI_SUCCESS;
}

extern "C" sword print_number(OCINumber *number) {
    const unsigned len = number->OCINumberPart[0];
    const unsigned last = std::min<unsigned>(len, max_length);
    std::printf("Len=%u: ", len);
    for (unsigned i = 0; i <= last; ++i) {
        std::printf(i < last ? "%u, " : "%u\n", unsigned{number->OCINumberPart[i]});
    }
    return OCI_SUCCESS;
}
