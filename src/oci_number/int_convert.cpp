// Conversions to and from native integers.
#include <cstring>
#include <limits>

#include "oci_number/call_frame.h"
#include "oci_utils/oci_utils.h"
#include "oci_utils/plain_number.h"

using namespace number_bytes;
using namespace oci_number;
using digit_words::Digits;
using digit_words::word_base;

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

// An integer by its magnitude.
struct Integer {
    bool negative;
    ub8 magnitude;
};

// The integer part of a number. False outside -9223372036854775808 .. 18446744073709551615.
bool OCINumberIntegerPart(const plain_number::PlainNumber &p, Integer &integer) {
    constexpr int max_digits_of_integer = 10;
    integer = {p.negative, 0};
    if (!has_first(p.digits) || p.exponent < 0) return true;
    if (p.exponent >= max_digits_of_integer) return false;
    // The digits down to the units, moved to the end of two words.
    constexpr int units = 2 * int{digit_words::digits_per_word} - 1;
    const auto joined = join(moved_back(p.digits, static_cast<unsigned>(units - p.exponent)));
    const ub8 high = joined.word[0];                      // at most four digits
    const ub8 limit = ~ub8{0} - (flip(p.negative) >> 1);  // no branch depends on the sign
    return !__builtin_mul_overflow(high, word_base, &integer.magnitude) &&
           !__builtin_add_overflow(integer.magnitude, joined.word[1], &integer.magnitude) &&
           integer.magnitude <= limit;
}

template <class Native>
sword OCINumberStoreInteger(OCIError *err, Integer integer, uword rsl_length, void *rsl) {
    const ub8 sign = flip(integer.negative);
    const ub8 bits = (integer.magnitude ^ sign) - sign;
    // Only the unsigned 8-byte integer holds what lies above the signed range.
    const auto value = static_cast<sb8>(bits);
    const bool above_signed = (bits & ~sign) >> 63 != 0;
    using limits = std::numeric_limits<Native>;
    if (!std::is_same_v<Native, ub8> &&
        (above_signed || value < sb8{limits::min()} || value > static_cast<sb8>(limits::max()))) {
        const int length = static_cast<int>(rsl_length);
        return OCI_NUMBER_INTERNAL_FAILURE(err, "the value is overflow, value:%ld, rsl_length:%d",
                                           static_cast<long>(value), length);
    }
    const auto result = static_cast<Native>(bits);
    std::memcpy(rsl, &result, sizeof result);
    return OCI_SUCCESS;
}

sword OCINumberToIntChecked(OCIError *err, const OCINumber *number, uword rsl_length,
                            uword rsl_flag, void *rsl) {
    // The integer is that of the number's decimal text in a buffer of this size, so what has no
    // text, or a longer one, has no integer.
    constexpr int text_size = 44;
    plain_number::PlainNumber p;
    if (!plain_number::read(*number, p) || !fits(p, text_size)) {
        if (is_negative_infinity(*number) || is_positive_infinity(*number)) {
            return OCINumberOverflow(err);
        }
        OCINumberSetError(err, 1458, "%s-01458: invalid length inside variable character string",
                          qzci_ora_prefix());
        QZOCI_LOG_ERROR("fail to get str from number");
        return OCI_ERROR;
    }
    const bool is_unsigned = rsl_flag == OCI_NUMBER_UNSIGNED;
    if (is_unsigned && p.negative) {
        return OCI_NUMBER_INTERNAL_FAILURE(
            err, "number is negative, but rsl_flag is OCI_NUMBER_UNSIGNED");
    }
    Integer integer;
    if (!OCINumberIntegerPart(p, integer)) {
        OCINumberOverflow(err);
        QZOCI_LOG_ERROR("fail to convert str to int");
        return OCI_ERROR;
    }

    switch (rsl_length) {
        case 1:
            return is_unsigned ? OCINumberStoreInteger<ub1>(err, integer, rsl_length, rsl)
                               : OCINumberStoreInteger<sb1>(err, integer, rsl_length, rsl);
        case 2:
            return is_unsigned ? OCINumberStoreInteger<ub2>(err, integer, rsl_length, rsl)
                               : OCINumberStoreInteger<sb2>(err, integer, rsl_length, rsl);
        case 4:
            return is_unsigned ? OCINumberStoreInteger<ub4>(err, integer, rsl_length, rsl)
                               : OCINumberStoreInteger<sb4>(err, integer, rsl_length, rsl);
        case 8:
            return is_unsigned ? OCINumberStoreInteger<ub8>(err, integer, rsl_length, rsl)
                               : OCINumberStoreInteger<sb8>(err, integer, rsl_length, rsl);
        default: return OCINumberBadIntegerLength(err, rsl_length);
    }
}

template <class Native>
Integer OCINumberLoadInteger(const void *inum) {
    Native value;
    std::memcpy(&value, inum, sizeof value);
    const auto bits = static_cast<ub8>(value);  // sign-extended
    const bool negative = std::is_signed_v<Native> && bits >> 63 != 0;
    return {negative, (bits ^ flip(negative)) + negative};
}

// The decimal text of an integer with its digits at the end of two words, `count` of them from
// the first that is not zero.
class IntegerText {
public:
    IntegerText(bool negative, const Digits &digits, unsigned count) {
        digit_words::write_characters(characters_, digits.word[0]);
        digit_words::write_characters(characters_ + 16, digits.word[1]);
        characters_[places] = '\0';
        start_ = places - 2 * count;
        start_ += characters_[start_] == '0';
        characters_[start_ - 1] = '-';  // there is room: an integer has 20 places
        start_ -= negative;
    }
    const char *text() const { return characters_ + start_; }
    unsigned length() const { return places - start_; }

private:
    static constexpr unsigned places = 4 * digit_words::digits_per_word;
    char characters_[places + 1];
    unsigned start_;
};

sword OCINumberFromIntChecked(OCIError *err, const void *inum, uword inum_length, bool is_unsigned,
                              OCINumber *number) {
    Integer integer;
    switch (inum_length) {
        case 1:
            integer =
                is_unsigned ? OCINumberLoadInteger<ub1>(inum) : OCINumberLoadInteger<sb1>(inum);
            break;
        case 2:
            integer =
                is_unsigned ? OCINumberLoadInteger<ub2>(inum) : OCINumberLoadInteger<sb2>(inum);
            break;
        case 4:
            integer =
                is_unsigned ? OCINumberLoadInteger<ub4>(inum) : OCINumberLoadInteger<sb4>(inum);
            break;
        case 8:
            integer =
                is_unsigned ? OCINumberLoadInteger<ub8>(inum) : OCINumberLoadInteger<sb8>(inum);
            break;
        default: return OCINumberBadIntegerLength(err, inum_length);
    }
    const auto [negative, magnitude] = integer;
    const auto [high, low] =
        split(digit_words::TwoWords{magnitude / word_base, magnitude % word_base});
    const Digits digits{{high, low, 0}};
    constexpr unsigned places = 2 * digit_words::digits_per_word;
    const unsigned count = magnitude == 0 ? 1 : places - leading_zeros(digits);
    const IntegerText shown(negative, digits, count);
    QZOCI_LOG_DEBUG("OCINumberFromInt get int to str: %s buffer_size: %lu", shown.text(),
                    static_cast<unsigned long>(shown.length()));
    if (magnitude == 0) {
        set_zero(*number);
        return OCI_SUCCESS;
    }
    // Zero digits at the end are kept.
    write_first_digits(*number, negative, moved_forward(digits, places - count), count);
    set_frame(*number, negative, static_cast<int>(count) - 1, count);
    return OCI_SUCCESS;
}

}  // namespace

extern "C" sword OCINumberToInt(OCIError *err, const OCINumber *number, uword rsl_length,
                                uword rsl_flag, void *rsl) {
    const auto thread = static_cast<long>(qz_thread_self());
    QZOCI_LOG_DEBUG(
        "thread %ld call function OCINumberToInt with param err %p,number:%p, rsl_length:%d, "
        "rsl_flag:%d, rsl:%p",
        thread, address(err), address(number), static_cast<int>(rsl_length),
        static_cast<int>(rsl_flag), address(rsl));
    sword status;
    if (err == nullptr || number == nullptr || rsl == nullptr || !OCINumberIsSignFlag(rsl_flag)) {
        constexpr const char *invalid_param =
            "invalid param, err:%p, number:%p, rsl:%p, rsl_flag:%d";
        const int flag = static_cast<int>(rsl_flag);
        QZOCI_LOG_ERROR(invalid_param, address(err), address(number), address(rsl), flag);
        status = err == nullptr
                     ? OCI_INVALID_HANDLE
                     : OCINumberSetError(err, internal_failure, invalid_param, address(err),
                                         address(number), address(rsl), flag);
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
        address(err), address(inum), inum_length, inum_s_flag, address(number));
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
        status = OCINumberFromIntChecked(err, inum, inum_length, inum_s_flag == OCI_NUMBER_UNSIGNED,
                                         number);
    }
    return OCI_NUMBER_RETURN("OCINumberFromInt", status);
}
