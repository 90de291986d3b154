// Operands for the benchmarks: prepared arrays, so that no branch learns one
// value by heart. Seeds are fixed.
#pragma once

#include <array>
#include <random>
#include <string>

#include "oci.h"
#include "oci_handle.h"
#include "oci_utils/oci_utils.h"

inline constexpr size_t operand_count = 1024;

inline OCIError *bench_error() {
    static OCIError error;
    return &error;
}

inline OCINumber number_from(std::string text) {
    OCINumber n{};
    getNumberFromStr(&n, reinterpret_cast<ub1 *>(text.data()), static_cast<ub4>(text.size()));
    return n;
}

// Texts of `decimals` significant digits with the point anywhere among them.
enum class Signs { both, positive };
inline std::array<std::string, operand_count> random_texts(size_t decimals,
                                                           Signs signs = Signs::both) {
    std::mt19937_64 random{42};
    std::array<std::string, operand_count> texts;
    for (std::string &text : texts) {
        const size_t point = 1 + random() % decimals;
        text = signs == Signs::both && random() % 2 ? "-" : "";
        for (size_t i = 0; i < decimals; ++i) {
            if (i == point) text += '.';
            text += static_cast<char>('1' + random() % 9);
        }
    }
    return texts;
}

inline std::array<OCINumber, operand_count> random_numbers(size_t decimals,
                                                           Signs signs = Signs::both) {
    std::array<OCINumber, operand_count> numbers;
    const auto texts = random_texts(decimals, signs);
    for (size_t i = 0; i < operand_count; ++i) numbers[i] = number_from(texts[i]);
    return numbers;
}
