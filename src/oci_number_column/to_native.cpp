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
    // cppcheck-suppress CastIntegerToAddressAtReturn ; it takes the sum for an integer
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

#if defined(OCI_NUMBER_COLUMN_VECTORS)
    // Windows down to the units, below 10^16; of at most 15 digits, so that five zero digits may be
    // in front.
    [[OCI_NUMBER_VECTOR_TARGET]] bool four(const Block &block, unsigned i) const {
        static constexpr Vector::Shape shape(0, -5, 7);
        auto even = Vector::pair(block, i, i + 2), odd = Vector::pair(block, i + 1, i + 3);
        const __m256i even_words = Vector::windows(even, shape);
        const __m256i odd_words = Vector::windows(odd, shape);
        if (Vector::any(_mm256_or_si256(even.refused, odd.refused))) [[unlikely]]
            return false;
        const __m256i values = _mm256_unpackhi_epi64(even_words, odd_words);
        const __m256i signs = _mm256_unpackhi_epi64(even.positive, odd.positive);
        _mm256_storeu_si256(reinterpret_cast<__m256i *>(at(i)), Vector::signed_by(values, signs));
        return true;
    }
#endif

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

    static constexpr int places = 16;

    // The window's last digit has the weight 10^-16: `high` is the integer part, and the last place
    // of `low` decides the rounding to 15 places. 2^117 / 10^16 is the reciprocal, cut by less than
    // 2^-63 of it, so that high + low * reciprocal / 2^117 is too low by less than 2^-63 of the
    // fraction. Its first 64 bits q from the first that is 1, which are cut, too, are too low by
    // less than 3: by 2^-63 of it where `high` is 0, by 2^-63 of their first bit or less where it
    // is not. So the nearest long double lies between q and q + below. Where no midpoint of two
    // doubles does, it rounds to the double that q rounds to. False for zero, and where one does.
    bool nearest(const Window &w, bool negative, unsigned i) const {
        constexpr ub8 below = 3;
        constexpr ub8 reciprocal = static_cast<ub8>((ub16{1} << 117) / word_base);
        const ub8 raised = w.low + 5;
        const ub8 rounded = raised - raised % 10;
        // What a carry into the integer part leaves is 0, and a unit more there.
        const ub8 high = w.high + (rounded == word_base);
        const auto fraction = (ub16{rounded == word_base ? 0 : rounded} * reciprocal) << 11;
        // cppcheck-suppress shiftTooManyBits ; the product has 128 bits
        const auto first_bits = static_cast<ub8>(fraction >> 64);
        const ub8 first = high != 0 ? high : first_bits;
        const ub8 second = high != 0 ? first_bits : static_cast<ub8>(fraction);
        if (first == 0) [[unlikely]]
            return false;
        const int zeros = natural::leading_zeros(first);
        const ub8 q = first << zeros | second >> 1 >> (63 - zeros);
        constexpr ub8 half = 1 << 10;
        const ub8 rest = q & (2 * half - 1);
        if (rest - (half - below) <= below) [[unlikely]]
            return false;
        // The value is q * 2^-zeros, or 2^-(64 + zeros); the hidden bit adds one to the exponent.
        const int biased = (high != 0 ? 0 : -64) - zeros + 11 + 52 + 1022;
        const ub8 bits =
            (ub8{negative} << 63) + (static_cast<ub8>(biased) << 52) + (q >> 11) + (rest > half);
        std::memcpy(at(i), &bits, sizeof bits);
        return true;
    }

    template <class Kind>
    Reason row(const Row &row, unsigned i) const {
        const Head head = head_of(row);
        const int behind = head.exponent + places / 2;
        Window w;
        if (!head.has_digits() || behind < 0 || behind >= window_digits ||
            !Kind::window(row, head, behind, w) || !nearest(w, head.negative, i)) [[unlikely]] {
            return other(row, i);
        }
        return OCI_NUMBER_DONE;
    }

#if defined(OCI_NUMBER_COLUMN_VECTORS)
    [[OCI_NUMBER_VECTOR_TARGET]] bool four(const Block &block, unsigned i) const {
        static constexpr Vector::Shape shape(places / 2, -places / 2, 14 - places / 2);
        for (unsigned k = 0; k < 4; k += 2) {
            auto two = Vector::pair(block, i + k, i + k + 1);
            const __m256i words = Vector::windows(two, shape);
            if (Vector::any(two.refused)) [[unlikely]]
                return false;
            alignas(32) Window w[2];
            _mm256_store_si256(reinterpret_cast<__m256i *>(w), words);
            const int signs = ~_mm256_movemask_epi8(two.positive);
            if (!nearest(w[0], (signs & 1) != 0, i + k) || !nearest(w[1], signs < 0, i + k + 1))
                [[unlikely]] {
                return false;
            }
        }
        return true;
    }
#endif

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
          short_limit_(to.precision < 16
                           ? static_cast<ub8>(power_of_ten(static_cast<unsigned>(to.precision)))
                           : word_base),
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

#if defined(OCI_NUMBER_COLUMN_VECTORS)
    // Units below 10^16.
    [[OCI_NUMBER_VECTOR_TARGET]] bool four(const Block &block, unsigned i) const {
        if (odd_) return false;
        const __m256i limit = _mm256_set1_epi64x(static_cast<sb8>(short_limit_ - 1));
        for (unsigned k = 0; k < 4; k += 2) {
            auto two = Vector::pair(block, i + k, i + k + 1);
            const __m256i words = Vector::windows(two, shape_);
            Vector::refuse_behind(two, shape_);
            const __m256i low = _mm256_unpackhi_epi64(words, words);
            if (Vector::any(_mm256_or_si256(two.refused, _mm256_cmpgt_epi64(low, limit))))
                [[unlikely]] {
                return false;
            }
            const __m256i units = Vector::signed_by(low, two.positive);
            const __m256i upper = _mm256_cmpgt_epi64(_mm256_setzero_si256(), units);
            store_two(_mm256_blend_epi32(units, upper, 0xCC), upper, i + k);
        }
        return true;
    }
#endif

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
#if defined(OCI_NUMBER_COLUMN_VECTORS)
    // Two results, the lower 128 bits of each, and their signs.
    [[OCI_NUMBER_VECTOR_TARGET]] void store_two(__m256i units, __m256i signs, unsigned i) const {
        auto *const out = reinterpret_cast<__m256i *>(this->at(i));
        if constexpr (limbs == 2) {
            _mm256_storeu_si256(out, units);
        } else {
            _mm256_storeu_si256(out, _mm256_permute2x128_si256(units, signs, 0x20));
            _mm256_storeu_si256(out + 1, _mm256_permute2x128_si256(units, signs, 0x31));
        }
    }
#endif

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
    ub8 short_limit_;  // of units below 10^16
#if defined(OCI_NUMBER_COLUMN_VECTORS)
    Vector::Shape shape_{last_, -last_, 7 - last_};
#endif
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
