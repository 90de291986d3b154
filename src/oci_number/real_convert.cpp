// Conversions to and from native reals, through decimal text. The bits of reals
// are taken apart and put together with integers: the rounding mode has no part
// in a result, and no locale in a text.
#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "oci_malloc.h"
#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;
using namespace oci_number;

namespace {

// What the size of a real decides.
struct RealType {
    uword size;
    ub4 scale;          // fraction digits that OCINumberToReal renders
    unsigned decimals;  // fraction digits that OCINumberFromReal prints
    const char *tag;    // of the printed text's memory
};
constexpr RealType real_types[] = {
    {sizeof(float), 6, 7, "OCINumberFromReal 4"},
    {sizeof(double), 15, 16, "OCINumberFromReal 8"},
    {sizeof(long double), 18, 19, "OCINumberFromReal 16"},
};
static_assert(sizeof(float) == 4 && sizeof(double) == 8 && sizeof(long double) == 16);

const RealType *find_real_type(uword size) {
    for (const RealType &type : real_types) {
        if (type.size == size) return &type;
    }
    return nullptr;
}

// A real's bits: finite reals are mantissa * 2^exponent.
struct Binary {
    enum class Kind { finite, infinite, nan };
    Kind kind;
    bool negative;
    ub8 mantissa;
    int exponent;
};

// The layout of float and double.
template <class Real, class Bits>
struct Ieee {
    static_assert(sizeof(Real) == sizeof(Bits) && std::numeric_limits<Real>::is_iec559);
    static constexpr int digits = std::numeric_limits<Real>::digits;
    static constexpr int sign_bit = std::numeric_limits<Bits>::digits - 1;
    static constexpr Bits hidden_bit = Bits{1} << (digits - 1);
    static constexpr unsigned max_biased = 2 * std::numeric_limits<Real>::max_exponent - 1;
    // Of the mantissa's last bit in a real whose biased exponent is 0.
    static constexpr int bias = std::numeric_limits<Real>::max_exponent + digits - 2;

    static Binary split(const void *real) {
        Bits bits;
        std::memcpy(&bits, real, sizeof bits);
        const bool negative = bits >> sign_bit != 0;
        const auto biased = static_cast<unsigned>(bits >> (digits - 1)) & max_biased;
        const Bits fraction = bits & (hidden_bit - 1);
        if (biased == max_biased) {
            return {fraction == 0 ? Binary::Kind::infinite : Binary::Kind::nan, negative, 0, 0};
        }
        if (biased == 0) return {Binary::Kind::finite, negative, fraction, 1 - bias};
        return {Binary::Kind::finite, negative, fraction | hidden_bit,
                static_cast<int>(biased) - bias};
    }

    // To nearest, ties to even; for zero, and for a value in the range of normal
    // reals whose mantissa has its top bit set.
    static Bits round(const Binary &value) {
        const auto sign = static_cast<Bits>(Bits{value.negative} << sign_bit);
        if (value.mantissa == 0) return sign;
        constexpr int dropped = 64 - digits;
        constexpr ub8 half = ub8{1} << (dropped - 1);
        ub8 kept = value.mantissa >> dropped;
        const ub8 rest = value.mantissa & (2 * half - 1);
        if (rest > half || (rest == half && (kept & 1) != 0)) ++kept;
        // A carry out of the mantissa adds one to the exponent, where it belongs.
        const int biased = value.exponent + dropped + bias;
        return sign + (static_cast<Bits>(biased) << (digits - 1)) +
               (static_cast<Bits>(kept) - hidden_bit);
    }
};
using Float = Ieee<float, ub4>;
using Double = Ieee<double, ub8>;

// The 80-bit extended layout, its units bit stored, in 16 bytes.
struct LongDouble {
    static_assert(std::numeric_limits<long double>::digits == 64);
    static constexpr size_t used_bytes = 10;
    static constexpr unsigned max_biased = 0x7FFF;
    static constexpr int bias = 16383 + 63;

    static Binary split(const void *real) {
        ub8 mantissa;
        ub2 sign_and_exponent;
        std::memcpy(&mantissa, real, sizeof mantissa);
        std::memcpy(&sign_and_exponent, static_cast<const char *>(real) + sizeof mantissa,
                    sizeof sign_and_exponent);
        const bool negative = sign_and_exponent >> 15 != 0;
        const unsigned biased = sign_and_exponent & max_biased;
        if (biased == max_biased && mantissa << 1 == 0 && mantissa != 0) {
            return {Binary::Kind::infinite, negative, 0, 0};
        }
        // Without the units bit the larger exponents stand for no value.
        if (biased == max_biased || (biased != 0 && mantissa >> 63 == 0)) {
            return {Binary::Kind::nan, negative, 0, 0};
        }
        return {Binary::Kind::finite, negative, mantissa,
                static_cast<int>(biased == 0 ? 1 : biased) - bias};
    }
};

Binary split_real(const void *real, uword size) {
    switch (size) {
        case sizeof(float): return Float::split(real);
        case sizeof(double): return Double::split(real);
        default: return LongDouble::split(real);
    }
}

// ---- Number to real -----------------------------------------------------

// The 16 bytes of a long double, those that it does not use zero.
void OCINumberStoreLongDouble(long double value, void *rsl) {
    ub1 bytes[sizeof value] = {};
    std::memcpy(bytes, &value, LongDouble::used_bytes);
    std::memcpy(rsl, bytes, sizeof bytes);
}

// An infinity becomes the largest float, or the bound of all numbers.
void OCINumberStoreInfinity(bool negative, uword rsl_length, void *rsl) {
    constexpr double bound = 1e126;
    if (rsl_length == sizeof(float)) {
        const float value = negative ? -FLT_MAX : FLT_MAX;
        std::memcpy(rsl, &value, sizeof value);
    } else if (rsl_length == sizeof(double)) {
        const double value = negative ? -bound : bound;
        std::memcpy(rsl, &value, sizeof value);
    } else {
        OCINumberStoreLongDouble(negative ? -bound : bound, rsl);
    }
}

template <class Layout, class Real>
bool OCINumberStoreNarrow(long double data, void *rsl) {
    using limits = std::numeric_limits<Real>;
    const Binary value = LongDouble::split(&data);
    if (value.mantissa != 0) {
        const long double magnitude = std::fabs(data);
        if (magnitude > limits::max() || magnitude < limits::min()) return false;
    }
    const auto bits = Layout::round(value);
    std::memcpy(rsl, &bits, sizeof bits);
    return true;
}

sword OCINumberToRealChecked(OCIError *err, const OCINumber *number, const RealType &type,
                             void *rsl) {
    if (is_negative_infinity(*number) || is_positive_infinity(*number)) {
        OCINumberStoreInfinity(is_negative(*number), type.size, rsl);
        return OCI_SUCCESS;
    }
    OraText number_buf[number_text_size] = {};
    OraText *number_str = number_buf;
    sb8 number_str_len = sizeof number_buf;
    if (const sword status =
            OCINumberProcessValue(number, &number_str, &number_str_len, type.scale, 0)) {
        QZOCI_LOG_ERROR("fail to get str from number");
        return status;
    }
    const char *const text = reinterpret_cast<const char *>(number_str);
    int errcode = 0;
    const long double data = qz_atold(text, text + number_str_len, &errcode);
    if (errcode != 0) return OCI_NUMBER_INTERNAL_FAILURE(err, "fail to convert str to double");

    switch (type.size) {
        case sizeof(float):
            if (OCINumberStoreNarrow<Float, float>(data, rsl)) return OCI_SUCCESS;
            return OCI_NUMBER_INTERNAL_FAILURE(err, "float value is overflow");
        case sizeof(double):
            if (OCINumberStoreNarrow<Double, double>(data, rsl)) return OCI_SUCCESS;
            return OCI_NUMBER_INTERNAL_FAILURE(err, "double value is overflow");
        default: OCINumberStoreLongDouble(data, rsl); return OCI_SUCCESS;
    }
}

// ---- Real to number -----------------------------------------------------

// A real in the exponent notation of printf("%.*e"): -d.ddde-dd, or inf, nan.
class PrintedReal {
public:
    PrintedReal(const Binary &value, unsigned decimals) : value_(value), decimals_(decimals) {
        if (value.kind != Binary::Kind::finite) return;
        if (value.mantissa == 0) {
            std::memset(digits_, '0', decimals + 1);
        } else {
            exponent_ = qz_decimal_digits(value.mantissa, value.exponent, decimals + 1, digits_);
        }
    }

    bool has_exponent() const { return value_.kind == Binary::Kind::finite; }
    int exponent() const { return exponent_; }
    // Length of what stands before the "e".
    size_t mantissa_length() const { return value_.negative + 2 + size_t{decimals_}; }
    // Length of the text without its terminator.
    size_t length() const {
        if (!has_exponent()) return value_.negative + size_t{3};
        return mantissa_length() + 2 +
               (std::abs(exponent_) < 100    ? 2
                : std::abs(exponent_) < 1000 ? 3
                                             : 4);
    }

    // Writes the text and its terminator.
    void print(char *out) const {
        if (value_.negative) *out++ = '-';
        if (!has_exponent()) {
            std::memcpy(out, value_.kind == Binary::Kind::nan ? "nan" : "inf", 4);
            return;
        }
        *out++ = digits_[0];
        *out++ = '.';
        std::memcpy(out, digits_ + 1, decimals_);
        out += decimals_;
        *out++ = 'e';
        *out++ = exponent_ < 0 ? '-' : '+';
        const int magnitude = std::abs(exponent_);
        if (magnitude >= 1000) *out++ = static_cast<char>('0' + magnitude / 1000);
        if (magnitude >= 100) *out++ = static_cast<char>('0' + magnitude / 100 % 10);
        *out++ = static_cast<char>('0' + magnitude / 10 % 10);
        *out++ = static_cast<char>('0' + magnitude % 10);
        *out = '\0';
    }

private:
    Binary value_;
    unsigned decimals_;
    int exponent_ = 0;
    char digits_[20];
};

// Drops the last two digits of the mantissa text of `length` characters, rounding
// by the first of them; of a zero, only one digit. Returns the new length.
size_t OCINumberShortenMantissa(char *text, size_t length, int &number_exp) {
    if (text[text[0] == '-' ? 1 : 0] == '0') return length - 1;
    const size_t kept = length - 2;
    if (text[kept] < '5') return kept;
    char *p = text + kept - 1;
    for (; *p == '9'; --p) *p = '0';
    // Over the point the carry goes on into the leading digit.
    if (*p == '.' && *--p == '9') {
        *p = '1';
        ++number_exp;
    } else {
        ++*p;
    }
    return kept;
}

sword OCINumberFromPrinted(OCIError *err, const PrintedReal &real, char *text, OCINumber *number) {
    int number_exp = real.exponent();
    size_t length;
    if (real.has_exponent()) {
        length = real.mantissa_length();
        QZOCI_LOG_DEBUG("covert real to string: %.*s buffer_size:%lu number_exp:%d",
                        static_cast<int>(length), text, length, number_exp);
        length = OCINumberShortenMantissa(text, length, number_exp);
    } else {
        length = real.length() + 1;
    }
    QZOCI_LOG_DEBUG("after carry, covert real to string: %.*s buffer_size:%lu number_exp:%d",
                    static_cast<int>(length), text, length, number_exp);

    if (length == 4 && std::memcmp(text, "inf", 4) == 0) {
        set_infinity(*number, false);
        return OCI_SUCCESS;
    }
    if (length == 5 && std::memcmp(text, "-inf", 5) == 0) {
        set_infinity(*number, true);
        return OCI_SUCCESS;
    }
    OCINumber tmp_number;
    if (const sword status = getNumberFromStr(&tmp_number, reinterpret_cast<ub1 *>(text),
                                              static_cast<ub4>(length))) {
        return status;
    }
    return OCINumberShift(err, &tmp_number, number_exp, number);
}

sword OCINumberFromRealChecked(OCIError *err, const void *rnum, const RealType &type,
                               OCINumber *number) {
    const PrintedReal real(split_real(rnum, type.size), type.decimals);
    auto *const text = static_cast<char *>(qzci_malloc(real.length() + 1, type.tag));
    if (text == nullptr) {
        return OCI_NUMBER_INTERNAL_FAILURE(err, "malloc error in OCINumberFromReal");
    }
    real.print(text);
    const sword status = OCINumberFromPrinted(err, real, text, number);
    qzci_free(text);
    return status;
}

}  // namespace

extern "C" sword OCINumberToReal(OCIError *err, const OCINumber *number, uword rsl_length,
                                 void *rsl) {
    const auto thread = static_cast<long>(qz_thread_self());
    const auto rsl_length_shown = static_cast<int>(rsl_length);
    QZOCI_LOG_DEBUG(
        "thread %ld call function OCINumberToReal with param err %p,number:%p, rsl_length:%d, "
        "rsl:%p",
        thread, err, number, rsl_length_shown, rsl);
    sword status;
    if (err == nullptr) {
        QZOCI_LOG_ERROR("invalid param, err:%p, number:%p, rsl:%p", err, number, rsl);
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
        err, number, elems, rsl_length, rsl);
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

extern "C" sword OCINumberFromReal(OCIError *err, const void *rnum, uword rnum_length,
                                   OCINumber *number) {
    QZOCI_LOG_DEBUG(
        "call OCINumberFromReal with params [err:%p] [inum:%p] [inum_length:%u] [number:%p]", err,
        rnum, rnum_length, number);
    sword status;
    if (err == nullptr) {
        QZOCI_LOG_ERROR("call OCINumberFromReal with invalid handle");
        status = OCI_INVALID_HANDLE;
    } else if (rnum == nullptr) {
        status = OCINumberError21560(err, 2);
    } else if (number == nullptr) {
        status = OCINumberError21560(err, 4);
    } else if (const RealType *type = find_real_type(rnum_length)) {
        status = OCINumberFromRealChecked(err, rnum, *type, number);
    } else {
        status = OCINumberError21560(err, 3);
    }
    return OCI_NUMBER_RETURN("OCINumberFromReal", status);
}
