#include "faults.h"

#include "number_bytes.h"

namespace number_tool {

using namespace number_bytes;

Faults find_faults(const GivenBytes &given) {
    Faults faults;
    const OCINumber &number = given.number;
    const ub1 *const bytes = number.OCINumberPart;
    const unsigned length = bytes[0];
    if (!has_valid_length(number)) {
        faults.add(length == 0 ? Fault::length_zero : Fault::length_above_21, 0);
        return faults;
    }
    // A whole record may be given, with any bytes behind the value.
    if (given.count < length + 1) {
        faults.add(Fault::bytes_missing, given.count);
        return faults;
    }
    if (given.count > length + 1 && given.count < OCI_NUMBER_SIZE) {
        faults.add(Fault::bytes_left_over, length + 1);
    }
    if (is_zero(number) || is_negative_infinity(number) || is_positive_infinity(number)) {
        return faults;
    }
    if (length == 1) {
        faults.add(Fault::exponent_alone, 1);
        return faults;
    }
    // 127 is its mirror image among the negative ones.
    if (bytes[1] == zero_exponent_byte || bytes[1] == zero_exponent_byte - 1) {
        faults.add(Fault::exponent_of_zero, 1);
    }

    const bool negative = is_negative(number);
    const unsigned digits = digit_count(number);
    const bool has_ending_byte = digits + 1 < length;
    const unsigned last = digits + 1;
    if (digits == 0) faults.add(Fault::digits_missing, 2);
    for (unsigned i = 2; i <= last; ++i) {
        if (decode_digit(negative, bytes[i]) > 99) {
            faults.add(
                bytes[i] == ending_byte ? Fault::ending_byte_early : Fault::digit_out_of_range, i);
        }
    }
    if (digits > 0) {
        if (decode_digit(negative, bytes[2]) == 0) faults.add(Fault::leading_zero_digit, 2);
        if (decode_digit(negative, bytes[last]) == 0) faults.add(Fault::trailing_zero_digit, last);
    }
    if (has_ending_byte && !negative) faults.add(Fault::ending_byte_of_positive, length);
    if (!has_ending_byte && negative && digits < max_digits) {
        faults.add(Fault::ending_byte_missing, length + 1);
    }
    return faults;
}

std::string describe(const Fault &fault, const GivenBytes &given) {
    const ub1 *const bytes = given.number.OCINumberPart;
    const auto plural = [](unsigned n) {
        return std::to_string(n) + (n == 1 ? " byte" : " bytes");
    };
    switch (fault.kind) {
        case Fault::length_zero: return "length byte is 0: the number is not initialised";
        case Fault::length_above_21:
            return "length byte " + std::to_string(bytes[0]) + " is above 21";
        case Fault::bytes_missing:
            return plural(bytes[0] + 1 - given.count) + " missing: the length byte is " +
                   std::to_string(bytes[0]);
        case Fault::bytes_left_over:
            return plural(given.count - bytes[0] - 1) + " left over: the length byte is " +
                   std::to_string(bytes[0]);
        case Fault::exponent_alone:
            return "exponent byte " + std::to_string(bytes[1]) +
                   " without digits is neither zero (128) nor negative infinity (0)";
        case Fault::exponent_of_zero:
            return bytes[1] == zero_exponent_byte ? "exponent byte 128 is zero's, but digits follow"
                                                  : "exponent byte 127 is that of no value";
        case Fault::digits_missing: return "no digit byte";
        case Fault::digit_out_of_range:
            return "digit byte " + std::to_string(bytes[fault.byte]) +
                   (is_negative(given.number) ? " is outside 2 to 101 of a negative value"
                                              : " is outside 1 to 100 of a positive value");
        case Fault::ending_byte_early: return "ending byte 102 before the end of the value";
        case Fault::ending_byte_missing: return "ending byte 102 of a negative value is missing";
        case Fault::ending_byte_of_positive: return "ending byte 102 in a positive value";
        case Fault::leading_zero_digit: return "not in normal form: leading zero digit";
        case Fault::trailing_zero_digit: return "not in normal form: trailing zero digit";
    }
    return {};
}

}  // namespace number_tool
