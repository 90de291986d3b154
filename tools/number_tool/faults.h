// What is wrong with the bytes given for a number.
#pragma once

#include <array>
#include <string>

#include "oci.h"

namespace number_tool {

// Bytes as they were given: perhaps no number, perhaps too few or too many.
struct GivenBytes {
    OCINumber number;  // the first `count` bytes
    unsigned count;    // 1 to 22
};

struct Fault {
    enum Kind {
        length_zero,
        length_above_21,
        bytes_missing,
        bytes_left_over,
        exponent_alone,
        exponent_of_zero,
        digits_missing,
        digit_out_of_range,
        ending_byte_early,
        ending_byte_missing,
        ending_byte_of_positive,
        // Not in normal form, yet a number that the library reads and writes.
        leading_zero_digit,
        trailing_zero_digit,
    };
    Kind kind;
    unsigned byte;  // its index; the count of bytes when the fault is a missing byte

    bool is_malformed() const { return kind < leading_zero_digit; }
};

class Faults {
public:
    const Fault *begin() const { return faults_.data(); }
    const Fault *end() const { return faults_.data() + count_; }
    void add(Fault::Kind kind, unsigned byte) { faults_[count_++] = {kind, byte}; }
    // The first one that makes the bytes malformed; null when they are a number.
    const Fault *malformed() const {
        for (const Fault &fault : *this) {
            if (fault.is_malformed()) return &fault;
        }
        return nullptr;
    }

private:
    // At most one of each kind, but one for each digit byte out of range.
    std::array<Fault, 40> faults_;
    unsigned count_ = 0;
};

Faults find_faults(const GivenBytes &given);

std::string describe(const Fault &fault, const GivenBytes &given);

}  // namespace number_tool
