// What the fuzz targets share: calls that are watched, and mutations of records and models.
//
// A target reads its input as structures that every input fills, calls the library, and ends the
// program where a property does not hold.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>
#include <span>
#include <string>
#include <string_view>

#include "oci_number_log.h"
#include "support/functions.h"
#include "support/values.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed);
extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t max_size);

#define REQUIRE(condition)                                                                      \
    do {                                                                                        \
        if (!(condition)) {                                                                     \
            std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                       \
        }                                                                                       \
    } while (false)

namespace fuzz {

// Takes values from the front of an input; zeros when it is at its end.
class Source {
public:
    Source(const uint8_t *data, size_t size) : at_(data), end_(data + size) {}

    template <class T>
    T take() {
        T value{};
        const size_t size = std::min(sizeof value, left());
        std::memcpy(static_cast<void *>(&value), at_, size);
        at_ += size;
        return value;
    }
    // The bytes up to a line feed, which is taken, or all that are left.
    std::string_view line() {
        const std::string_view all = rest(), text = all.substr(0, all.find('\n'));
        at_ += std::min(text.size() + 1, left());
        return text;
    }
    std::string_view rest() const { return {reinterpret_cast<const char *>(at_), left()}; }

private:
    size_t left() const { return static_cast<size_t>(end_ - at_); }

    const uint8_t *at_, *end_;
};

// Copies of memory that end where the allocation does, so that the address sanitizer sees a
// read behind them.
template <class T>
std::vector<T> exact_copy(std::string_view bytes) {
    return std::vector<T>(bytes.begin(), bytes.end());
}

// Silences the log; or has every line formatted and handed to a sink.
inline void set_log(bool is_on) {
    const auto sink = [](void *, int, const char *, long, const char *text, size_t length) {
        REQUIRE(std::strlen(text) == length);
    };
    qzoci_log_set_sink(is_on ? sink : nullptr, nullptr);
    qzoci_log_set_level(is_on ? LOG_LEVEL_TRACE : QZOCI_LOG_OFF);
}

struct Outcome {
    sword status;
    int code;
    std::string message;
    bool operator==(const Outcome &) const = default;
};

// Makes the call twice, with the log off and on, and requires the same outcome and result; a
// failure that leaves the result alone and has one of the documented errors, 0 for one without
// any, with a message that begins with it; and a success that leaves the handle alone.
template <class Call>
Outcome watched(std::span<ub1> result, const std::set<int> &documented, Call call) {
    const std::vector<ub1> before(result.begin(), result.end());
    std::vector<ub1> results[2];
    Outcome outcomes[2];
    for (const bool is_logged : {false, true}) {
        std::copy(before.begin(), before.end(), result.begin());
        set_log(is_logged);
        ErrorHandle err;
        const sword status = call(err);
        set_log(false);
        const int code = err.code();
        const std::string message = err.message();
        REQUIRE(err.other_fields_untouched());
        REQUIRE(status == OCI_SUCCESS || status == OCI_ERROR);
        if (status == OCI_SUCCESS) {
            REQUIRE(code == 0);
        } else {
            REQUIRE(documented.contains(code));
            REQUIRE(std::equal(before.begin(), before.end(), result.begin()));
            if (code == 602) REQUIRE(!message.empty() && !message.starts_with("OCI-"));
            if (code != 0 && code != 602) {
                char prefix[16];
                std::snprintf(prefix, sizeof prefix, "OCI-%05d: ", code);
                REQUIRE(message.starts_with(prefix) && message.size() > std::strlen(prefix));
            }
        }
        outcomes[is_logged] = {status, code, message};
        results[is_logged].assign(result.begin(), result.end());
    }
    REQUIRE(outcomes[0] == outcomes[1]);
    REQUIRE(results[0] == results[1]);
    return outcomes[0];
}

inline std::span<ub1> bytes_of(OCINumber &n) { return n.OCINumberPart; }

inline bool is_finite(const OCINumber &n) {
    return is_well_formed(n) && !is_infinite(value_bytes(n));
}
inline Decimal exact(const OCINumber &n) {
    return n.OCINumberPart[0] == 1 ? Decimal("0", 0) : Decimal::of(value_bytes(n));
}

// Blanks, "-", digits with at most one period among them: what is read as a plain decimal.
struct PlainText {
    explicit PlainText(std::string_view text) {
        const size_t start = std::min(text.find_first_not_of(' '), text.size());
        number = text.substr(start);
        const std::string_view digits = number.substr(number.starts_with('-'));
        const size_t dot = std::min(digits.find('.'), digits.size());
        has_period = dot < digits.size();
        integer = digits.substr(0, dot);
        fraction = digits.substr(std::min(dot + 1, digits.size()));
        is_good = integer.size() + fraction.size() > 0 &&
                  integer.find_first_not_of("0123456789") == integer.npos &&
                  fraction.find_first_not_of("0123456789") == fraction.npos;
    }
    Decimal value() const { return Decimal(std::string(number)); }

    std::string_view number, integer, fraction;
    bool has_period, is_good;
};

inline int compare(const Decimal &a, const Decimal &b) { return a.plus(b.negated()).sign(); }

// ---- Mutations

// Makes a number of the bytes of a record, or changes one thing about it.
inline void mutate_record(ub1 *record, Random &random) {
    OCINumber n;
    std::memcpy(&n, record, sizeof n);
    ub1 *const b = n.OCINumberPart;
    const bool negative = b[1] < 128;
    const unsigned length = b[0];
    switch (random() % 9) {
        case 0: n = number(random_value(random).bytes()); break;
        case 1: n = number(random_value(random, between(random, 1, 40), 0).bytes()); break;
        case 2: b[0] = static_cast<ub1>(between(random, 0, 22)); break;
        case 3: b[1] = static_cast<ub1>(b[1] + between(random, -1, 1)); break;
        case 4: b[1] = static_cast<ub1>(random()); break;
        case 5:  // the other sign
            b[1] = static_cast<ub1>(~b[1]);
            for (unsigned i = 2; i < 22; ++i) b[i] = static_cast<ub1>(102 - b[i]);
            break;
        case 6: {  // a digit where carries and edges are
            const int digit = std::array{0, 1, 49, 50, 98, 99, 100, -1}[random() % 8];
            b[2 + random() % 20] = static_cast<ub1>(negative ? 101 - digit : digit + 1);
            break;
        }
        case 7:
            if (length >= 1 && length <= 21) b[length] = random() % 2 ? 102 : 1;
            break;
        default:
            n = hex(std::vector<std::string>{"0180", "0100", "02FF65", "02C102", "033E6466",
                                             "02810200", "028002", "037F6466"}[random() % 8]);
    }
    std::memcpy(record, &n, sizeof n);
}

// A character of numbers and models in a text, put in, taken out or changed.
inline size_t mutate_text(uint8_t *text, size_t size, size_t max_size, Random &random) {
    const char character = "0999.5-1 9FMTm~e\n"[random() % 17];
    const size_t at = size == 0 ? 0 : random() % (size + 1);
    if (random() % 3 && size < max_size) {
        std::memmove(text + at + 1, text + at, size - at);
        text[at] = static_cast<uint8_t>(character);
        return size + 1;
    }
    if (at == size) return size;
    if (random() % 2) {
        text[at] = static_cast<uint8_t>(character);
        return size;
    }
    std::memmove(text + at, text + at + 1, size - at - 1);
    return size - 1;
}

// A mutator for inputs of `count` records at `offset` and a text behind them: one half of the
// mutations is libFuzzer's own.
inline size_t mutate(uint8_t *data, size_t size, size_t max_size, unsigned seed, size_t offset,
                     size_t count) {
    Random random(seed);
    const size_t end = offset + count * OCI_NUMBER_SIZE;
    if (random() % 2 || max_size < end) return LLVMFuzzerMutate(data, size, max_size);
    if (size < end) {
        std::memset(data + size, 0, end - size);
        size = end;
    }
    if (count > 0 && (random() % 2 || max_size == end)) {
        mutate_record(data + offset + OCI_NUMBER_SIZE * (random() % count), random);
        if (count > 1 && random() % 8 == 0) {
            std::memcpy(data + offset, data + offset + OCI_NUMBER_SIZE, OCI_NUMBER_SIZE);
        }
        return size;
    }
    return end + mutate_text(data + end, size - end, max_size - end, random);
}

}  // namespace fuzz
