// Columns of integers, doubles, decimals and text to numbers.
#include "oci_calc_number/convert.h"
#include "oci_number/steps.h"
#include "oci_number_column/column.h"
#include "oci_number_column/wide.h"
#include "oci_utils/digit_text.h"
#include "oci_utils/oci_utils.h"

using namespace number_bytes;

namespace columns {

namespace {

Reason from_int64(const ub1 *at, OCINumber &number) {
    sb8 value;
    std::memcpy(&value, at, sizeof value);
    const bool negative = value < 0;
    const auto bits = static_cast<ub8>(value);
    const ub8 magnitude = (bits ^ flip(negative)) + negative;
    OCINumberFromInteger({negative, magnitude}, oci_number::integer_digits(magnitude), number);
    return OCI_NUMBER_DONE;
}

// The real's first 17 digits, as printf rounds; then 15, rounded half away from zero by the
// sixteenth.
Reason from_double(const ub1 *at, OCINumber &number) {
    using real_bits::Binary;
    constexpr unsigned printed = 17, kept = 15;
    const Binary real = real_bits::Double::split(at);
    if (real.kind == Binary::Kind::nan) return OCI_NUMBER_NOT_A_NUMBER;
    if (real.kind == Binary::Kind::infinite) {
        set_infinity(number, real.negative);
        return OCI_NUMBER_DONE;
    }
    if (real.mantissa == 0) {
        set_zero(number);
        return OCI_NUMBER_DONE;
    }
    char shown[printed];
    const int top = qz_decimal_digits(real.mantissa, real.exponent, printed, shown);
    // Pairs from the first digit's on, which has one place when its power of ten is even.
    char places[2 * digit_words::window];
    std::memset(places, '0', sizeof places);
    const unsigned first = top % 2 == 0;
    std::memcpy(places + first, shown, kept);
    digit_words::Digits digits = {
        {digit_text::digits_of(places), digit_text::digits_of(places + 16), 0}};
    int exponent = (top - (top < 0 && first == 0)) / 2;
    if (shown[kept] >= '5') {
        // The last place is the tens of the eighth digit, or its ones.
        digit_words::Digits unit = {};
        add_to_digit(unit, 7, first != 0 ? 1 : 10);
        if (combine(digits, unit, false, false) != 0) {
            digits = {{digit_words::first_digit_1, 0, 0}};
            ++exponent;
        }
    }
    const unsigned count = significant(digits);
    if (is_in_range(exponent)) write_first_digits(number, real.negative, digits, count);
    finish(number, real.negative, exponent, count);
    return OCI_NUMBER_DONE;
}

template <unsigned limbs>
Reason from_decimal(const ub1 *at, const Column &from, OCINumber &number) {
    constexpr unsigned words = 5;  // of 10^16: 80 places
    Wide units = {};
    std::memcpy(units.limb, at, 8 * limbs);
    for (ub8 &limb : units.limb) limb = little_endian(limb);
    const bool negative = units.limb[limbs - 1] >> 63 != 0;
    ub8 carry = negative;
    for (unsigned k = 0; k < limbs; ++k) {
        units.limb[k] = (units.limb[k] ^ flip(negative)) + carry;
        carry &= units.limb[k] == 0;
    }
    // Whole digits: ten times the units of an odd scale, below 10^77 < 2^256.
    Wide limit = {{1, 0, 0, 0}};
    multiply_by_power_of_ten(limit, static_cast<unsigned>(from.precision));
    if (!is_less(units, limit)) return OCI_NUMBER_OUT_OF_RANGE;
    const bool odd = from.scale % 2 != 0;
    if (odd) multiply_add(units, 10, 0);
    ub8 digits[words + 3] = {};
    for (unsigned i = words; i-- > 0;) digits[i] = divide(units, digit_words::word_base);
    ub1 bytes[8 * (words + 3)];
    for (unsigned i = 0; i < words + 3; i += 2) {
        const auto [high, low] = split(digit_words::TwoWords{digits[i], digits[i + 1]});
        digit_words::store(bytes + 8 * i, high);
        digit_words::store(bytes + 8 * i + 8, low);
    }
    unsigned zeros = 0;
    while (zeros < 8 * words && bytes[zeros] == 0) ++zeros;
    if (zeros == 8 * words) {
        set_zero(number);
        return OCI_NUMBER_DONE;
    }
    calc::Finite value{
        {}, static_cast<int>(8 * words - 1 - zeros) - (from.scale + odd) / 2, negative};
    for (unsigned i = 0; i < 3; ++i)
        value.digits.word[i] = digit_words::load(bytes + zeros + 8 * i);
    write_finite(value, number);
    return is_positive_infinity(number) || is_negative_infinity(number) ? OCI_NUMBER_OUT_OF_RANGE
                                                                        : OCI_NUMBER_DONE;
}

Reason from_text(const Column &from, size_t row, OCINumber &number) {
    const Span text = span_at(from, row);
    if (!text.valid) return OCI_NUMBER_BAD_LENGTH;
    const bool read =
        text.size <= ~ub4{0} && getNumberFromStr(&number, const_cast<ub1 *>(text.data),
                                                 static_cast<ub4>(text.size)) == OCI_SUCCESS;
    return read ? OCI_NUMBER_DONE : OCI_NUMBER_BAD_TEXT;
}

Reason from_row(const Column &from, size_t row, OCINumber &number) {
    const ub1 *const at = static_cast<const ub1 *>(from.data) + row * fixed_size(from.form);
    switch (from.form) {
        case OCI_NUMBER_INT64: return from_int64(at, number);
        case OCI_NUMBER_DOUBLE: return from_double(at, number);
        case OCI_NUMBER_DECIMAL128: return from_decimal<2>(at, from, number);
        case OCI_NUMBER_DECIMAL256: return from_decimal<4>(at, from, number);
        default: return from_text(from, row, number);
    }
}

}  // namespace

Reason from_native(const Column &from, const Column &to, uword options, Tally *tally) {
    NumberWriter writer(to);
    Outcome outcome(&to, from.length, options);
    OCINumber numbers[block_rows];
    for (size_t start = 0; start < from.length; start += block_rows) {
        const size_t left = from.length - start;
        const auto count = static_cast<unsigned>(left < block_rows ? left : block_rows);
        const Rows present = present_rows(from, start, count);
        outcome.begin(start, count, present);
        for (Rows rows = present; rows != 0; rows &= rows - 1) {
            const auto i = static_cast<unsigned>(std::countr_zero(rows));
            if (const Reason reason = from_row(from, start + i, numbers[i])) {
                outcome.refuse(i, reason);
            }
        }
        writer.put(numbers, start, count, outcome);
        if (!outcome.end()) break;
    }
    return outcome.finish(tally, writer.size());
}

}  // namespace columns
