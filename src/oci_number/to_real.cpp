// Conversion to native reals, through a long double. The bits of reals
// are put together with integers: the floating-point unit has no part in a result, and no locale
// in a text.
#include <cfloat>

#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/real_bits.h"

using namespace number_bytes;
using namespace oci_number;
using namespace real_bits;

namespace {

// What the size of a real decides.
struct RealType {
    uword size;
    ub4 scale;  // fraction digits that are rendered
};
constexpr RealType real_types[] = {
    {Float::size, 6},
    {Double::size, 15},
    {LongDouble::size, 18},
};

const RealType *find_real_type(uword size) {
    for (const RealType &type : real_types) {
        if (type.size == size) return &type;
    }
    return nullptr;
}

// An infinity becomes the largest float, or the bound of all numbers.
void OCINumberStoreInfinity(bool negative, uword rsl_length, void *rsl) {
    constexpr float largest = FLT_MAX;
    constexpr double bound = 1e126;
    const bool is_float = rsl_length == Float::size;
    Binary value = normalized(is_float ? Float::split(&largest) : Double::split(&bound));
    value.negative = negative;
    is_float                     ? Float::store(value, rsl)
    : rsl_length == Double::size ? Double::store(value, rsl)
                                 : LongDouble::store(value, rsl);
}

template <class Layout>
bool OCINumberStoreNarrow(const Binary &data, void *rsl) {
    if (data.mantissa != 0 && !Layout::holds(data)) return false;
    Layout::store(data, rsl);
    return true;
}

// The nearest long double by the digits. False when they are too many for a product that
// tells.
bool OCINumberNearest(const plain_number::PlainNumber &p, Binary &data) {
    constexpr unsigned max_digits_of_product = 19;  // 10^38 < 2^128
    if (p.count == 0) {
        data = {Binary::Kind::finite, p.negative, 0, 0};
        return true;
    }
    if (p.count > max_digits_of_product) return false;
    // The digits moved to the end of the words, as an integer of 100^(exponent + 1 - count).
    const auto joined = join(moved_back(p.digits, digit_words::window - p.count));
    natural::ub16 value = joined.word[0];
    for (int i = 1; i < 3; ++i) value = value * digit_words::word_base + joined.word[i];
    if (!qz_nearest_long_double(value, 2 * (p.exponent + 1 - static_cast<int>(p.count)), &data)) {
        return false;
    }
    data.negative = p.negative;
    return true;
}

// The same by the decimal text, for any number of digits.
bool OCINumberScanned(const OCINumber *number, ub4 scale, Binary &data) {
    OraText number_buf[number_text_size];
    OraText *number_str = number_buf;
    sb8 number_str_len = sizeof number_buf;
    if (OCINumberRenderValue(number, &number_str, &number_str_len, scale, 0)) return false;
    const char *const text = reinterpret_cast<const char *>(number_str);
    int errcode = 0;
    const long double scanned = qz_atold(text, text + number_str_len, &errcode);
    if (errcode != 0) return false;
    data = normalized(LongDouble::split(&scanned));
    return true;
}

sword OCINumberToRealChecked(OCIError *err, const OCINumber *number, const RealType &type,
                             void *rsl) {
    if (is_negative_infinity(*number) || is_positive_infinity(*number)) {
        OCINumberStoreInfinity(is_negative(*number), type.size, rsl);
        return OCI_SUCCESS;
    }
    plain_number::PlainNumber p;
    if (const sword status = OCINumberProcessDigits(number, p, type.scale)) {
        QZOCI_LOG_ERROR("fail to get str from number");
        return status;
    }
    Binary data;
    if (!OCINumberNearest(p, data) && !OCINumberScanned(number, type.scale, data)) {
        return OCI_NUMBER_INTERNAL_FAILURE(err, "fail to convert str to double");
    }

    switch (type.size) {
        case Float::size:
            if (OCINumberStoreNarrow<Float>(data, rsl)) return OCI_SUCCESS;
            return OCI_NUMBER_INTERNAL_FAILURE(err, "float value is overflow");
        case Double::size:
            if (OCINumberStoreNarrow<Double>(data, rsl)) return OCI_SUCCESS;
            return OCI_NUMBER_INTERNAL_FAILURE(err, "double value is overflow");
        default: LongDouble::store(data, rsl); return OCI_SUCCESS;
    }
}

}  // namespace

extern "C" sword OCINumberToReal(OCIError *err, const OCINumber *number, uword rsl_length,
                                 void *rsl) {
    const auto thread = static_cast<long>(qz_thread_self());
    const auto rsl_length_shown = static_cast<int>(rsl_length);
    QZOCI_LOG_DEBUG(
        "thread %ld call function OCINumberToReal with param err %p,number:%p, rsl_length:%d, "
        "rsl:%p",
        thread, address(err), address(number), rsl_length_shown, address(rsl));
    sword status;
    if (err == nullptr) {
        QZOCI_LOG_ERROR("invalid param, err:%p, number:%p, rsl:%p", address(err), address(number),
                        address(rsl));
        status = OCI_INVALID_HANDLE;
    } else if (number == nullptr) {
        status = OCINumberError21560(err, 2);
    } else if (rsl == nullptr) {
        status = OCINumberError21560(err, 4);
    } else if (const RealType *type = find_real_type(rsl_length)) {
        status = OCINumberToRealChecked(err, number, *type, rsl);
    } else {
        status = OCINumberError21560(err, 3);
        QZOCI_LOG_ERROR("invalid param, rsl_length:%d", rsl_length_shown);
    }
    return OCI_NUMBER_RETURN("OCINumberToReal", status);
}

extern "C" sword OCINumberToRealArray(OCIError *err, const OCINumber **number, uword elems,
                                      uword rsl_length, void *rsl) {
    QZOCI_LOG_DEBUG(
        "call OCINumberToRealArray with params [err:%p] [number:%p] [elems:%u] [rsl_length:%u] "
        "[rsl:%p] ",
        address(err), address(number), elems, rsl_length, address(rsl));
    sword status = OCI_SUCCESS;
    if (err == nullptr) {
        QZOCI_LOG_ERROR("call OCINumberToRealArray with invalid handle");
        status = OCI_INVALID_HANDLE;
    } else if (number == nullptr) {
        status = OCINumberError21560(err, 2);
    } else if (elems == 0) {
        status = OCINumberError21560(err, 3);
    } else if (rsl_length == 0) {
        status = OCINumberError21560(err, 4);
    } else if (rsl == nullptr) {
        status = OCINumberError21560(err, 5);
    } else {
        for (uword i = 0; i < elems; ++i) {
            void *const element = static_cast<char *>(rsl) + size_t{i} * rsl_length;
            status = OCINumberToReal(err, number[i], rsl_length, element);
            if (status != OCI_SUCCESS) {
                QZOCI_LOG_ERROR("OCINumberToRealArray error in index %u", i);
                break;
            }
        }
    }
    return OCI_NUMBER_RETURN("OCINumberToRealArray", status);
}
