// Exact sum, minimum and maximum of columns.
#include "oci_calc_number/convert.h"
#include "oci_number_column/window.h"
#include "oci_utils/natural.h"
#include "oci_utils/plain_number.h"

using namespace number_bytes;

// ---- The sum --------------------------------------------------------------

// In base 10^8, least significant limb first: a limb's first digit pair but three is that of
// 100^(4 k - lowest). Carried limbs are below 10^8, the last has the sign; what is added to them in
// one go stays below 2^62.
namespace columns {

namespace {

using digit_words::group_base;

constexpr int lowest = 88;  // below 100^-84, the last digit of the smallest number
constexpr int limb_count = sizeof(oci_number_sum::limb) / sizeof(sb8);

enum Infinity : ub4 { positive_infinity = 1, negative_infinity = 2, both_infinities = 3 };

void carry(sb8 *limb) {
    sb8 carried = 0;
    for (int k = 0; k < limb_count - 1; ++k) {
        const sb8 sum = limb[k] + carried;
        carried = sum / sb8{group_base};
        sb8 rest = sum % sb8{group_base};
        if (rest < 0) {
            rest += group_base;
            --carried;
        }
        limb[k] = rest;
    }
    limb[limb_count - 1] += carried;
}

// Adds value * 100^exponent.
void add_scaled(sb8 *limb, bool negative, natural::ub16 value, int exponent) {
    const int place = exponent + lowest;
    constexpr ub4 powers[] = {1, 100, 10000, 1000000};
    value *= powers[place % 4];
    for (int k = place / 4; value != 0; ++k) {
        const auto low = static_cast<sb8>(value % group_base);
        limb[k] += negative ? -low : low;
        value /= group_base;
    }
}

// Sums of digits by exponent byte: a value is added where it stands, without moving its digits.
struct Scattered {
    Groups groups[256];

    void add_to(sb8 *limb) const {
        for (int byte = 0; byte < 256; ++byte) {
            const bool negative = is_negative(static_cast<ub1>(byte));
            const int exponent = real_exponent(static_cast<ub1>(byte));
            for (int g = 0; g < group_count; ++g) {
                if (const ub8 sum = groups[byte].sum[g]; sum != 0) {
                    add_scaled(limb, negative, sum, exponent - 4 * g - 2);
                }
            }
        }
    }
};

class Summing {
public:
    explicit Summing(const oci_number_sum &sum) : sum_(sum), scattered_{} {}

    template <class Kind>
    Reason row(const Row &row, unsigned) {
        const Head head = head_of(row);
        if (!head.has_digits() || !Kind::add(row, head, scattered_.groups[row.value[0]]))
            [[unlikely]] {
            return other(row);
        }
        return OCI_NUMBER_DONE;
    }

#if defined(OCI_NUMBER_COLUMN_VECTORS)
    [[OCI_NUMBER_VECTOR_TARGET]] bool four(const Block &block, unsigned i) {
        if (block.length[i] > 16) return false;  // likely the others, too
        const auto front = Vector::pair(block, i, i + 1), back = Vector::pair(block, i + 2, i + 3);
        if (Vector::any(_mm256_or_si256(front.refused, back.refused))) [[unlikely]]
            return false;
        add_two(block, i, Vector::grouped(front.digits));
        add_two(block, i + 2, Vector::grouped(back.digits));
        return true;
    }
    [[OCI_NUMBER_VECTOR_TARGET]] void add_two(const Block &block, unsigned i, __m256i groups) {
        Vector::add_groups(_mm256_castsi256_si128(groups), sums_of(block.value[i]));
        Vector::add_groups(_mm256_extracti128_si256(groups, 1), sums_of(block.value[i + 1]));
    }
    ub8 *sums_of(const ub1 *value) { return scattered_.groups[value[0]].sum; }
#endif

    [[gnu::noinline]] Reason other(const Row &row) {
        plain_number::PlainNumber p;
        if (read(row.value, row.length, p)) return OCI_NUMBER_DONE;  // zero: the rest has digits
        const Reason reason = reason_of(row);
        if (reason != OCI_NUMBER_INFINITE) return reason;
        const ub4 infinity = is_negative(row.value[0]) ? negative_infinity : positive_infinity;
        if ((sum_.infinity | infinity) == both_infinities) return OCI_NUMBER_NO_VALUE;
        sum_.infinity |= infinity;
        return OCI_NUMBER_DONE;
    }

    void begin(const Block &) {}
    void end(const Block &block, const Outcome &) {
        // Before a group's sum may overflow.
        constexpr size_t often = size_t{1} << 32;
        if ((block.start + block.count) % often == 0) collect();
    }

    const oci_number_sum &collect() {
        scattered_.add_to(sum_.limb);
        scattered_ = {};
        carry(sum_.limb);
        return sum_;
    }

private:
    oci_number_sum sum_;
    Scattered scattered_;
};

// ---- Minimum and maximum

class Extremes {
public:
    template <class Kind>
    Reason row(const Row &row, unsigned) {
        plain_number::PlainNumber p;
        if (!read(row.value, row.length, p)) [[unlikely]] {
            if (const Reason reason = reason_of(row); reason != OCI_NUMBER_INFINITE) return reason;
        }
        const Key key = key_of(row);
        if (!any_ || compare(key, least_) < 0) keep(row, key, least_, least_number);
        if (!any_ || compare(key, greatest_) > 0) keep(row, key, greatest_, greatest_number);
        any_ = true;
        return OCI_NUMBER_DONE;
    }
#if defined(OCI_NUMBER_COLUMN_VECTORS)
    static bool four(const Block &, unsigned) { return false; }
#endif
    void begin(const Block &) {}
    void end(const Block &, const Outcome &) {}

    bool any() const { return any_; }
    OCINumber least_number, greatest_number;

private:
    [[gnu::noinline]] static void keep(const Row &row, const Key &key, Key &kept,
                                       OCINumber &number) {
        kept = key;
        number = {};
        number.OCINumberPart[0] = static_cast<ub1>(row.length);
        std::memcpy(number.OCINumberPart + 1, row.value, row.length);
    }
    Key least_, greatest_;
    bool any_ = false;
};

}  // namespace

}  // namespace columns

using namespace columns;

extern "C" void oci_number_sum_start(oci_number_sum *sum) {
    if (sum != nullptr) *sum = {};
}

extern "C" oci_number_reason oci_number_sum_add(oci_number_sum *sum, const oci_number_column *from,
                                                uword options, oci_number_tally *tally) {
    if (sum == nullptr || !holds_numbers(from, Use::input) || !is_option(options)) {
        return bad_call(tally);
    }
    Summing summing(*sum);
    Outcome outcome(nullptr, from->length, options);
    run(*from, outcome, summing);
    const Reason reason = outcome.finish(tally);
    if (reason == OCI_NUMBER_DONE) *sum = summing.collect();
    return reason;
}

extern "C" oci_number_reason oci_number_sum_merge(oci_number_sum *sum,
                                                  const oci_number_sum *other) {
    if (sum == nullptr || other == nullptr) return OCI_NUMBER_BAD_CALL;
    if ((sum->infinity | other->infinity) == both_infinities) return OCI_NUMBER_NO_VALUE;
    sum->infinity |= other->infinity;
    for (int k = 0; k < limb_count; ++k) sum->limb[k] += other->limb[k];
    carry(sum->limb);
    return OCI_NUMBER_DONE;
}

extern "C" oci_number_reason oci_number_sum_value(const oci_number_sum *sum, OCINumber *result) {
    if (sum == nullptr || result == nullptr) return OCI_NUMBER_BAD_CALL;
    *result = {};
    if (sum->infinity != 0) {
        set_infinity(*result, sum->infinity == negative_infinity);
        return OCI_NUMBER_DONE;
    }
    sb8 limb[limb_count];
    std::memcpy(limb, sum->limb, sizeof limb);
    const bool negative = limb[limb_count - 1] < 0;
    if (negative) {
        for (sb8 &l : limb) l = -l;
        carry(limb);
    }
    // All digits, the first of the last limb in front; the last limb holds more than one group.
    constexpr int top_groups = 3;
    ub1 digits[4 * (limb_count - 1 + top_groups) + digit_words::window] = {};
    ub1 *out = digits;
    const auto put = [&out](ub8 group) {
        for (ub4 unit = 1000000; unit > 0; unit /= 100) {
            *out++ = static_cast<ub1>(group / unit % 100);
        }
    };
    const auto top = static_cast<ub8>(limb[limb_count - 1]);
    put(top / group_base / group_base);
    put(top / group_base % group_base);
    put(top % group_base);
    for (int k = limb_count - 1; k-- > 0;) put(static_cast<ub8>(limb[k]));
    const ub1 *first = digits;
    while (first != out && *first == 0) ++first;
    calc::Finite value{{}, static_cast<int>(out - first) - 1 - lowest, negative};
    for (int i = 0; i < 3; ++i) value.digits.word[i] = digit_words::load(first + 8 * i);
    write_finite(value, *result);
    OCINumber whole = {};
    std::memcpy(&whole, result, size_t{result->OCINumberPart[0]} + 1);
    *result = whole;
    return OCI_NUMBER_DONE;
}

extern "C" oci_number_reason oci_number_column_extremes(const oci_number_column *from,
                                                        OCINumber *least, OCINumber *greatest,
                                                        uword options, oci_number_tally *tally) {
    if (!holds_numbers(from, Use::input) || !is_option(options)) return bad_call(tally);
    Extremes extremes;
    Outcome outcome(nullptr, from->length, options);
    run(*from, outcome, extremes);
    const Reason reason = outcome.finish(tally);
    if (reason == OCI_NUMBER_DONE && extremes.any()) {
        if (least != nullptr) *least = extremes.least_number;
        if (greatest != nullptr) *greatest = extremes.greatest_number;
    }
    return reason;
}
