// Columns of numbers to integers, doubles and decimals. A value whose digits fit in a window goes a
// short way, the same for all forms; all else is decided as the functions of one number do.
#include "oci_number/call_frame.h"
#include "oci_number/steps.h"
#include "oci_number_column/wide.h"
#include "oci_number_column/window.h"

using namespace number_bytes;
using natural::ub16;
using plain_number::PlainNumber;

namespace columns {

namespace {

// What kernels of an output of fixed size share.
template <unsigned size>
class Fixed {
public:
    explicit Fixed(const Column &to) : out_(static_cast<ub1 *>(to.data)) {}
    void begin(const Block &) {}
    void end(const Block &block, const Outcome &outcome) {
        clear_rows(out_, size, first_rows(block.count) & ~outcome.done());
        out_ += size_t{size} * block.count;
    }

protected:
    ub1 *at(unsigned i) const { return out_ + size_t{size} * i; }

private:
    ub1 *out_;
};

struct ToInt64 : Fixed<sizeof(sb8)> {
    using Fixed::Fixed;

    template <class Kind>
    Reason row(const Row &row, unsigned i) const {
        const Head head = head_of(row);
        // Numbers whose text is short enough for any digits: 20 behind at most one zero digit, 16
        // behind at most five.
        const int first = head.count > 16 ? -1 : -5;
        Window w;
        if (!head.has_digits() || head.exponent > 8 || head.exponent < first ||
            !Kind::window(row, head, head.exponent, w)) [[unlikely]] {
            return other(row, i);
        }
        const ub8 sign = flip(head.negative);
        const ub8 value = ((w.high * word_base + w.low) ^ sign) - sign;
        std::memcpy(at(i), &value, sizeof value);
        return OCI_NUMBER_DONE;
    }

    [[gnu::noinline]] Reason other(const Row &row, unsigned i) const {
        PlainNumber p;
        if (!read(row.value, row.length, p)) return reason_of(row);
        if (!fits(p, oci_number::integer_text_size)) return OCI_NUMBER_TEXT_TOO_LONG;
        oci_number::Integer integer;
        if (!OCINumberIntegerPart(p, integer)) return OCI_NUMBER_OUT_OF_RANGE;
        const ub8 sign = flip(integer.negative);
        if (integer.magnitude > (~ub8{0} >> 1) + integer.negative) return OCI_NUMBER_OUT_OF_RANGE;
        const ub8 value = (integer.magnitude ^ sign) - sign;
        std::memcpy(at(i), &value, sizeof value);
        return OCI_NUMBER_DONE;
    }
};

struct ToDouble : Fixed<sizeof(double)> {
    using Fixed::Fixed;

    // The window's last digit has the weight 10^-16, so its last place decides the rounding to 15
    // places, and m = 10^16 times the value is an integer below 10^32. Its top 64 bits times the
    // reciprocal of 10^16 give the quotient q of 64 bits, at most `below` too low: each factor is
    // cut by less than one of its last bits, 2 of the product's upper half, which is cut, too; a
    // shift doubles that. The nearest long double lies between q and q + below. Where no midpoint
    // of two doubles does, it rounds to the double that q rounds to.
    template <class Kind>
    Reason row(const Row &row, unsigned i) const {
        constexpr int places = 16;
        constexpr ub8 below = 6;
        constexpr ub8 reciprocal = static_cast<ub8>((ub16{1} << 117) / word_base);
        const Head head = head_of(row);
        const int behind = head.exponent + places / 2;
        Window w;
        if (!head.has_digits() || behind < 0 || behind >= window_digits ||
            !Kind::window(row, head, behind, w)) [[unlikely]] {
            return other(row, i);
        }
        const ub8 raised = w.low + 5;
        const ub16 m = ub16{w.high} * word_base + (raised - raised % 10);
        if (m == 0) [[unlikely]]
            return other(row, i);
        const int zeros = natural::leading_zeros(m);
        const auto product = ub16{static_cast<ub8>(m << zeros >> 64)} * reciprocal;
        const int shift = (product >> 127) == 0;
        const auto q = static_cast<ub8>(product << shift >> 64);
        constexpr ub8 half = 1 << 10;
        const ub8 rest = q & (2 * half - 1);
        if (rest - (half - below) <= below) [[unlikely]]
            return other(row, i);
        // The value is q * 2^(11 - zeros - shift); the hidden bit adds one to the exponent.
        const auto biased = static_cast<ub8>(11 + 11 - zeros - shift + 52 + 1022);
        const ub8 bits =
            (ub8{head.negative} << 63) + (biased << 52) + (q >> 11) + (rest > half ? 1 : 0);
        std::memcpy(at(i), &bits, sizeof bits);
        return OCI_NUMBER_DONE;
    }

    [[gnu::noinline]] Reason other(const Row &row, unsigned i) const {
        using real_bits::Double;
        PlainNumber p;
        if (!read(row.value, row.length, p)) {
            const Reason reason = reason_of(row);
            if (reason != OCI_NUMBER_INFINITE) return reason;
            oci_number::OCINumberStoreInfinity(is_negative(row.value[0]), Double::size, at(i));
            return OCI_NUMBER_DONE;
        }
        if (!fits(p, oci_number::number_text_size)) return OCI_NUMBER_TEXT_TOO_LONG;
        round_places(p, oci_number::double_scale);
        const OCINumber number = number_of(row);
        real_bits::Binary data;
        if (!oci_number::OCINumberNearestReal(&number, p, oci_number::double_scale, data)) {
            return OCI_NUMBER_OUT_OF_RANGE;
        }
        Double::store(data, at(i));
        return OCI_NUMBER_DONE;
    }
};

template <unsigned limbs>
class ToDecimal : public Fixed<8 * limbs> {
public:
    explicit ToDecimal(const Column &to)
        : Fixed<8 * limbs>(to),
          precision_(to.precision),
          scale_(to.scale),
          odd_(to.scale % 2 != 0),
          last_((to.scale + odd_) / 2),
          limit_(to.precision < 32 ? power_of_ten(static_cast<unsigned>(to.precision))
                                   : power_of_ten(32)) {}

    // The window's last digit has the weight 100^-last: where the scale is odd, its last place is
    // one too many and must be 0.
    template <class Kind>
    Reason row(const Row &row, unsigned i) const {
        const Head head = head_of(row);
        const int behind = head.exponent + last_;
        Window w;
        if (!head.has_digits() || behind >= window_digits ||
            static_cast<int>(head.count) > behind + 1 || !Kind::window(row, head, behind, w))
            [[unlikely]] {
            return other(row, i);
        }
        ub8 base = word_base;
        if (odd_) {
            base /= 10;
            if (w.low % 10 != 0) [[unlikely]]
                return OCI_NUMBER_TOO_MANY_PLACES;
            w.low /= 10;
        }
        const ub16 units = ub16{w.high} * base + w.low;
        if (units >= limit_) [[unlikely]]
            return OCI_NUMBER_OUT_OF_RANGE;
        const ub16 sign = ub16{0} - head.negative;
        store({{static_cast<ub8>(units), static_cast<ub8>(units >> 64), 0, 0}},
              static_cast<ub8>(sign), i);
        return OCI_NUMBER_DONE;
    }

    [[gnu::noinline]] Reason other(const Row &row, unsigned i) const {
        PlainNumber p;
        if (!read(row.value, row.length, p)) return reason_of(row);
        Wide units = {};
        if (p.count > 0) {
            // The digits as an integer, times a power of ten.
            const auto joined = join(moved_back(p.digits, digit_words::window - p.count));
            for (const ub8 word : joined.word) multiply_add(units, word_base, word);
            int exponent = 2 * (p.exponent + 1 - static_cast<int>(p.count)) + scale_;
            int digits = 2 * static_cast<int>(p.count) - (digit_at(p.digits, 0) < 10) + exponent;
            if (exponent == -1 && digit_at(p.digits, p.count - 1) % 10 == 0) {
                divide(units, 10);
                exponent = 0;
            }
            if (exponent < 0) return OCI_NUMBER_TOO_MANY_PLACES;
            if (digits > precision_) return OCI_NUMBER_OUT_OF_RANGE;
            multiply_by_power_of_ten(units, static_cast<unsigned>(exponent));
        }
        store(units, flip(p.negative), i);
        return OCI_NUMBER_DONE;
    }

private:
    // Two's complement by the mask of the sign.
    void store(Wide units, ub8 sign, unsigned i) const {
        ub1 *const out = this->at(i);
        ub8 carry = sign & 1;
        for (unsigned k = 0; k < limbs; ++k) {
            const ub8 limb = (units.limb[k] ^ sign) + carry;
            carry = limb < carry;
            const ub8 stored = little_endian(limb);
            std::memcpy(out + 8 * k, &stored, sizeof stored);
        }
    }

    int precision_;
    int scale_;
    int odd_;
    int last_;
    ub16 limit_;
};

template <class Kernel>
Reason convert(const Column &from, const Column &to, uword options, Tally *tally) {
    Kernel kernel(to);
    Outcome outcome(&to, from.length, options);
    run(from, outcome, kernel);
    return outcome.finish(tally);
}

}  // namespace

Reason to_native(const Column &from, const Column &to, uword options, Tally *tally) {
    switch (to.form) {
        case OCI_NUMBER_INT64: return convert<ToInt64>(from, to, options, tally);
        case OCI_NUMBER_DOUBLE: return convert<ToDouble>(from, to, options, tally);
        case OCI_NUMBER_DECIMAL128: return convert<ToDecimal<2>>(from, to, options, tally);
        default: return convert<ToDecimal<4>>(from, to, options, tally);
    }
}

}  // namespace columns
