// Steps of the number functions without their call frame: no checks, no traces. The columns
// take them, too.
#pragma once

#include "number_bytes.h"
#include "oci_utils/plain_number.h"
#include "oci_utils/real_bits.h"

namespace oci_number {

using digit_words::Digits;

// ---- Integers -------------------------------------------------------------

// An integer by its magnitude.
struct Integer {
    bool negative;
    ub8 magnitude;
};

// The integer of a number is that of its decimal text in a buffer of this size, so what has no
// text, or a longer one, has no integer.
inline constexpr int integer_text_size = 44;

// The integer part of a number. False outside -9223372036854775808 .. 18446744073709551615.
inline bool OCINumberIntegerPart(const plain_number::PlainNumber &p, Integer &integer) {
    constexpr int max_digits_of_integer = 10;
    integer = {p.negative, 0};
    if (!has_first(p.digits) || p.exponent < 0) return true;
    if (p.exponent >= max_digits_of_integer) return false;
    // The digits down to the units, moved to the end of two words.
    constexpr int units = 2 * int{digit_words::digits_per_word} - 1;
    const auto joined = join(moved_back(p.digits, static_cast<unsigned>(units - p.exponent)));
    const ub8 high = joined.word[0];  // at most four digits
    // No branch depends on the sign.
    const ub8 limit = ~ub8{0} - (number_bytes::flip(p.negative) >> 1);
    return !__builtin_mul_overflow(high, digit_words::word_base, &integer.magnitude) &&
           !__builtin_add_overflow(integer.magnitude, joined.word[1], &integer.magnitude) &&
           integer.magnitude <= limit;
}

// The digits of an integer at the end of two words, `count` of them from the first that is not
// zero; one of zero.
struct IntegerDigits {
    Digits digits;
    unsigned count;
    static constexpr unsigned places = 2 * digit_words::digits_per_word;
};
inline IntegerDigits integer_digits(ub8 magnitude) {
    using digit_words::word_base;
    const auto [high, low] =
        split(digit_words::TwoWords{magnitude / word_base, magnitude % word_base});
    const Digits digits{{high, low, 0}};
    return {digits, magnitude == 0 ? 1 : IntegerDigits::places - leading_zeros(digits)};
}

// Writes the number of an integer, of which these are the digits; zero digits at the end are kept.
inline void OCINumberFromInteger(Integer integer, const IntegerDigits &from, OCINumber &number) {
    if (integer.magnitude == 0) return number_bytes::set_zero(number);
    write_first_digits(number, integer.negative,
                       moved_forward(from.digits, IntegerDigits::places - from.count), from.count);
    number_bytes::set_frame(number, integer.negative, static_cast<int>(from.count) - 1, from.count);
}

// ---- Reals ----------------------------------------------------------------

inline constexpr ub4 double_scale = 15;  // fraction digits of a number that a double is made of

// The long double nearest to a number that was rounded to `scale` fraction digits, `p`, which has
// a text of number_text_size. False when there is none.
bool OCINumberNearestReal(const OCINumber *number, const plain_number::PlainNumber &p, ub4 scale,
                          real_bits::Binary &data);

// An infinity becomes the largest float, or the bound of all numbers.
void OCINumberStoreInfinity(bool negative, uword rsl_length, void *rsl);

// ---- Text -----------------------------------------------------------------

// '0.5' becomes '.5' and '-0.5' '-.5'; "0" and '-0' stay.
void OCINumberDropLeadingZero(OraText *&number_str, sb8 &number_str_len);

// Infinities, and what no finite number begins with: a digit byte 0, or a digit
// byte 1, the zero digit of a positive value. They have no text under a model.
inline bool is_taken_for_infinity(const OCINumber &n) {
    return number_bytes::is_negative_infinity(n) || number_bytes::is_positive_infinity(n) ||
           (n.OCINumberPart[0] >= 2 && n.OCINumberPart[2] <= 1);
}

// ---- Digits ---------------------------------------------------------------

void OCINumberMagnitude(const OCINumber &number, OCINumber &result);
void OCINumberNegate(const OCINumber &number, OCINumber &result);

// Cuts at a decimal position. True when that left zero.
enum class CutMode { round, truncate };
bool OCINumberKeepPlaces(const OCINumber &number, sword places, CutMode mode, OCINumber &result);

}  // namespace oci_number
