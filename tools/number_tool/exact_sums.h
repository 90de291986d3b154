// Exact sums of numbers and of their squares, and what follows from them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "oci.h"

namespace number_tool {

class ExactSums {
public:
    // A finite number in normal form.
    void add(const OCINumber &number);
    void add(const ExactSums &other);

    size_t count() const { return count_; }
    // All digits of the sum, as decimal text.
    std::string sum() const;
    // Digits enough to round the value once to a number: decimal text cut off far behind.
    std::string mean() const;
    // Of a sample: the squares of the differences from the mean, over count - 1. The count is 2 or
    // more.
    std::string deviation() const;

private:
    __extension__ typedef __int128 int128;

    // Limbs of eight decimal digits, the lowest from 10^-168 on: no digit of a number stands
    // below 10^-166, and none above 10^125.
    static constexpr size_t decimals = 168;
    static constexpr size_t limb_count = 37;

    size_t count_ = 0;
    // Not carried: a limb holds the sum of the values' limbs, which 2^60 values do not overflow.
    std::array<int128, limb_count> sum_{};
    // The product of limbs i and j counts in i + j.
    std::array<int128, 2 * limb_count> squares_{};
};

}  // namespace number_tool
