// Numbers and error handles for tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "oci_handle.h"
#include "support/data.h"
#include "support/exact.h"
#include "support/services.h"

inline constexpr ub1 unused = 0xEE;  // bytes of a record that nobody wrote

// A record from its first bytes; the others hold `unused`.
inline OCINumber number(const Bytes &bytes) {
    OCINumber n;
    std::memset(&n, unused, sizeof n);
    std::copy(bytes.begin(), bytes.end(), n.OCINumberPart);
    return n;
}
inline OCINumber hex(const std::string &bytes) { return number(hex_bytes(bytes)); }

inline bool operator==(const OCINumber &a, const OCINumber &b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline void PrintTo(const OCINumber &n, std::ostream *out) {
    for (ub1 b : n.OCINumberPart) *out << int{b} << ' ';
}

// The value of a decimal text, or an infinity.
inline Bytes bytes_of(const std::string &s) {
    return s == "inf" ? Bytes{2, 255, 101} : s == "-inf" ? Bytes{1, 0} : Decimal(s).bytes();
}
// Or of number bytes: "bytes:" and hex.
inline OCINumber from_text(const std::string &s) {
    return s.starts_with("bytes:") ? hex(s.substr(6)) : number(bytes_of(s));
}

// Only the value: the bytes that the length byte counts.
inline Bytes value_bytes(const OCINumber &n) {
    return {n.OCINumberPart, n.OCINumberPart + std::min<int>(n.OCINumberPart[0], 21) + 1};
}

// A number as the format has it, normal form aside.
inline bool is_well_formed(const OCINumber &n) {
    const ub1 *b = n.OCINumberPart;
    if (b[0] == 1) return b[1] == 0 || b[1] == 128;
    if (b[0] == 2 && b[1] == 255 && b[2] == 101) return true;
    if (b[0] < 2 || b[0] > 21 || b[1] == 127 || b[1] == 128) return false;
    const bool negative = b[1] < 128;
    const int last = b[0] - (negative && b[b[0]] == 102 ? 1 : 0);
    if (negative && last == b[0] && last != 21) return false;
    for (int i = 2; i <= last; ++i) {
        if (negative ? b[i] < 2 || b[i] > 101 : b[i] < 1 || b[i] > 100) return false;
    }
    return last >= 2;
}

// Well formed, and neither its first nor its last digit is zero.
inline bool is_normal(const OCINumber &n) {
    if (!is_well_formed(n)) return false;
    const Bytes bytes = value_bytes(n);
    if (bytes[0] == 1 || is_infinite(bytes)) return true;
    const int zero = bytes[1] < 128 ? 101 : 1;
    return bytes[2] != zero && bytes[bytes.size() - (bytes.back() == 102 ? 2 : 1)] != zero;
}

// An error handle that tells whether a call touched more than it may.
class ErrorHandle {
public:
    ErrorHandle() {
        std::memset(static_cast<void *>(&error_), 0x5A, sizeof error_);
        before_ = error_;
    }
    operator OCIError *() { return &error_; }
    OCIError *get() { return &error_; }

    // The error that was written; (0, "") for none.
    int code() const { return error_.err_code == before_.err_code ? 0 : error_.err_code; }
    std::string message() const {
        return code() == 0 ? "" : reinterpret_cast<const char *>(error_.err_message);
    }
    bool other_fields_untouched() const {
        OCIError other = error_;
        other.err_code = before_.err_code;
        std::memcpy(other.err_message, before_.err_message, sizeof other.err_message);
        return std::memcmp(&other, &before_, sizeof other) == 0;
    }

private:
    OCIError error_;
    OCIError before_;
};

// Random engine with a fixed seed, or that of TEST_SEED; the seed shows on failure.
inline std::mt19937_64 seeded() {
    const char *seed = std::getenv("TEST_SEED");
    const unsigned long value = seed != nullptr ? std::strtoul(seed, nullptr, 10) : 20260101;
    ::testing::Test::RecordProperty("seed", std::to_string(value));
    return std::mt19937_64{value};
}

// How many random cases to run: `usual`, times TEST_SCALE. The report of the tests has the sum of
// the counts so far.
inline long random_cases(long usual) {
    static long sum = 0;
    const char *scale = std::getenv("TEST_SCALE");
    const long cases = scale != nullptr ? usual * std::strtol(scale, nullptr, 10) : usual;
    ::testing::Test::RecordProperty("cases", std::to_string(sum += cases));
    return cases;
}
