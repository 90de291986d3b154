#include "exact_sums.h"

#include <algorithm>
#include <vector>

#include "number_bytes.h"

namespace number_tool {

namespace {

constexpr int64_t limb_base = 100'000'000;

// A natural number in limbs of eight decimal digits, the lowest first.
using Limbs = std::vector<uint32_t>;

void trim(Limbs &limbs) {
    while (!limbs.empty() && limbs.back() == 0) limbs.pop_back();
}

// The magnitude of limbs that are not carried; `is_negative` becomes the sign.
template <typename Sums>
Limbs carried(const Sums &sums, bool &is_negative) {
    Limbs limbs;
    const auto carry_all = [&](int sign) {
        typename Sums::value_type carry = 0;
        limbs.clear();
        const auto take = [&] {
            // The remainder is the digit, never negative.
            auto digit = carry % limb_base;
            if (digit < 0) digit += limb_base;
            limbs.push_back(static_cast<uint32_t>(digit));
            carry = (carry - digit) / limb_base;
        };
        for (const auto sum : sums) {
            carry += sign * sum;
            take();
        }
        while (carry > 0) take();
        return carry == 0;
    };
    is_negative = !carry_all(1);
    if (is_negative) carry_all(-1);
    trim(limbs);
    return limbs;
}

Limbs product(const Limbs &left, const Limbs &right) {
    Limbs result(left.size() + right.size());
    for (size_t i = 0; i < left.size(); ++i) {
        uint64_t carry = 0;
        for (size_t j = 0; j < right.size() || carry > 0; ++j) {
            carry += result[i + j] + (j < right.size() ? uint64_t{left[i]} * right[j] : 0);
            result[i + j] = static_cast<uint32_t>(carry % limb_base);
            carry /= limb_base;
        }
    }
    trim(result);
    return result;
}

Limbs natural(size_t value) {
    Limbs limbs;
    for (; value > 0; value /= limb_base) limbs.push_back(static_cast<uint32_t>(value % limb_base));
    return limbs;
}

// left -= right, which is not larger.
void subtract(Limbs &left, const Limbs &right) {
    int64_t borrow = 0;
    for (size_t i = 0; i < left.size(); ++i) {
        int64_t limb = int64_t{left[i]} - (i < right.size() ? right[i] : 0) + borrow;
        borrow = limb < 0 ? -1 : 0;
        if (limb < 0) limb += limb_base;
        left[i] = static_cast<uint32_t>(limb);
    }
    trim(left);
}

void divide(Limbs &limbs, size_t divisor) {
    __extension__ unsigned __int128 rest = 0;
    for (size_t i = limbs.size(); i-- > 0;) {
        rest = rest * static_cast<uint64_t>(limb_base) + limbs[i];
        limbs[i] = static_cast<uint32_t>(rest / divisor);
        rest %= divisor;
    }
    trim(limbs);
}

void shift_up(Limbs &limbs, size_t count) { limbs.insert(limbs.begin(), count, 0); }

// All eight digits of each limb, the highest first.
std::string digits_of_limbs(const Limbs &limbs) {
    std::string digits;
    for (size_t i = limbs.size(); i-- > 0;) {
        const std::string limb = std::to_string(limbs[i]);
        digits += std::string(8 - limb.size(), '0') + limb;
    }
    return digits;
}

// The digits as a number with `places` of them behind the period.
std::string plain_text(bool is_negative, std::string digits, size_t places) {
    if (digits.size() <= places) digits.insert(0, places + 1 - digits.size(), '0');
    std::string whole = digits.substr(0, digits.size() - places);
    std::string fraction = digits.substr(digits.size() - places);
    whole.erase(0, std::min(whole.find_first_not_of('0'), whole.size() - 1));
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return (is_negative ? "-" : "") + whole + (fraction.empty() ? "" : "." + fraction);
}

// The digits of the integer square root, one for each two of an even count of digits. The square
// of n is the sum of the first n odd numbers: of each place's digit, as many odd numbers are
// subtracted as there is room for.
std::string root_digits(const std::string &digits) {
    std::vector<int> rest, odd{1};
    const auto has_room = [&] {
        const auto first = std::find_if(rest.begin(), rest.end(), [](int d) { return d != 0; });
        rest.erase(rest.begin(), first);
        if (rest.size() != odd.size()) return rest.size() > odd.size();
        return rest >= odd;
    };
    std::string root;
    for (size_t i = 0; i < digits.size(); i += 2) {
        rest.push_back(digits[i] - '0');
        rest.push_back(digits[i + 1] - '0');
        char digit = '0';
        for (; has_room(); ++digit) {
            int borrow = 0;
            for (size_t k = 0; k < rest.size(); ++k) {
                int &d = rest[rest.size() - 1 - k];
                d -= borrow + (k < odd.size() ? odd[odd.size() - 1 - k] : 0);
                borrow = d < 0;
                if (borrow) d += 10;
            }
            odd.back() += 2;
            for (size_t k = odd.size() - 1; odd[k] > 9 && k > 0; --k) {
                odd[k] -= 10;
                ++odd[k - 1];
            }
            if (odd[0] > 9) {
                odd[0] -= 10;
                odd.insert(odd.begin(), 1);
            }
        }
        root += digit;
        // 20 times the root, and 1.
        --odd.back();
        if (odd[0] == 0) odd.clear();
        odd.push_back(1);
    }
    return root;
}

}  // namespace

void ExactSums::add(const OCINumber &number) {
    using namespace number_bytes;
    ++count_;
    if (is_zero(number)) return;
    const bool negative = is_negative(number);
    const unsigned count = digit_count(number);
    // In places of 100, four a limb.
    const auto top = static_cast<unsigned>(real_exponent(number.OCINumberPart[1]) +
                                           static_cast<int>(decimals / 2));
    int64_t value[6] = {};
    const unsigned top_limb = top / 4;
    unsigned limb = 0, place = top % 4;
    for (unsigned i = 0; i < count; ++i) {
        value[limb] = value[limb] * 100 + decode_digit(negative, number.OCINumberPart[2 + i]);
        if (place == 0) {
            place = 4;
            ++limb;
        }
        --place;
    }
    for (; place != 3; place = place == 0 ? 3 : place - 1) value[limb] *= 100;
    const unsigned used = std::min(top_limb + 1, 6u);
    for (unsigned i = 0; i < used; ++i) {
        sum_[top_limb - i] += negative ? -value[i] : value[i];
        squares_[2 * (top_limb - i)] += value[i] * value[i];
        for (unsigned j = i + 1; j < used; ++j) {
            squares_[2 * top_limb - i - j] += 2 * value[i] * value[j];
        }
    }
}

void ExactSums::add(const ExactSums &other) {
    count_ += other.count_;
    for (size_t i = 0; i < sum_.size(); ++i) sum_[i] += other.sum_[i];
    for (size_t i = 0; i < squares_.size(); ++i) squares_[i] += other.squares_[i];
}

std::string ExactSums::sum() const {
    bool is_negative;
    const Limbs sum = carried(sum_, is_negative);
    return plain_text(is_negative, digits_of_limbs(sum), decimals);
}

std::string ExactSums::mean() const {
    // The quotient has 76 digits or more.
    constexpr size_t more_limbs = 12;
    bool is_negative;
    Limbs mean = carried(sum_, is_negative);
    shift_up(mean, more_limbs);
    divide(mean, count_);
    return plain_text(is_negative, digits_of_limbs(mean), decimals + 8 * more_limbs);
}

std::string ExactSums::deviation() const {
    // (n times the sum of the squares - the square of the sum) / (n * (n - 1)); the root of what
    // is not 0 has 60 digits or more.
    constexpr size_t more_limbs = 20;
    bool is_negative;
    const Limbs sum = carried(sum_, is_negative);
    Limbs variance = product(carried(squares_, is_negative), natural(count_));
    subtract(variance, product(sum, sum));
    shift_up(variance, more_limbs);
    divide(variance, count_);
    divide(variance, count_ - 1);
    return plain_text(false, root_digits(digits_of_limbs(variance)), decimals + 4 * more_limbs);
}

}  // namespace number_tool
