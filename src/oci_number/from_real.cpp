// Conversion from native reals, through the text that printf would print.
#include <cstdlib>
#include <cstring>

#include "oci_malloc.h"
#include "oci_number/call_frame.h"
#include "oci_utils/digit_text.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/real_bits.h"

using namespace number_bytes;
using namespace oci_number;
using real_bits::Binary;

namespace {

// What the size of a real decides.
struct RealType {
    uword size;
    unsigned decimals;  // fraction digits that are printed
    const char *tag;    // of the text's memory
};
constexpr RealType real_types[] = {
    {real_bits::Float::size, 7, "OCINumberFromReal 4"},
    {real_bits::Double::size, 16, "OCINumberFromReal 8"},
    {real_bits::LongDouble::size, 19, "OCINumberFromReal 16"},
};

const RealType *find_real_type(uword size) {
    for (const RealType &type : real_types) {
        if (type.size == size) return &type;
    }
    return nullptr;
}

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

// The number of a mantissa text, d.ddd of at most 20 places with a sign: digits in pairs from the
// units on.
void OCINumberFromMantissa(const char *text, size_t length, OCINumber &number) {
    const bool negative = text[0] == '-';
    text += negative;
    length -= negative;
    char places[4 * digit_words::digits_per_word];
    std::memset(places, '0', sizeof places);
    places[1] = text[0];
    std::memcpy(places + 2, text + 2, length - 2);
    const digit_words::Digits digits = {
        {digit_text::digits_of(places), digit_text::digits_of(places + 16), 0}};
    if (is_zero(digits)) return set_zero(number);
    const unsigned count = significant(digits);
    write_first_digits(number, negative, digits, count);
    set_frame(number, negative, 0, count);
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
    if (!real.has_exponent()) return OCI_ERROR;  // a NaN's text, which the codec refuses
    // Zeros behind the value: the shift copies all bytes.
    OCINumber tmp_number = {};
    OCINumberFromMantissa(text, length, tmp_number);
    return OCINumberShift(err, &tmp_number, number_exp, number);
}

sword OCINumberFromRealChecked(OCIError *err, const void *rnum, const RealType &type,
                               OCINumber *number) {
    const PrintedReal real(real_bits::split_real(rnum, type.size), type.decimals);
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

extern "C" sword OCINumberFromReal(OCIError *err, const void *rnum, uword rnum_length,
                                   OCINumber *number) {
    QZOCI_LOG_DEBUG(
        "call OCINumberFromReal with params [err:%p] [inum:%p] [inum_length:%u] [number:%p]",
        address(err), address(rnum), rnum_length, address(number));
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
