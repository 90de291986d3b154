#include "support/guard_page.h"
#include "support/values.h"

namespace {

// Reads a text under a model, both at the end of their pages: the value's bytes,
// none for an error. Checks all else that may be seen; `fault` tells a log line
// before that of the error.
Bytes read(const std::string &str, const std::string &fmt, int code,
           const std::string &fault = "") {
    const GuardedBytes s(str), f(fmt);
    const OCINumber untouched = number({});
    const GuardedBytes record(&untouched, sizeof untouched);
    const std::string refused = code == 22061 ? "invalid format text [" + fmt + "]"
                                              : "invalid input string [" + str + "]\n";
    const std::string line =
        code == 0
            ? "D call OCINumberFromText success with params [str:" + str + "] [fmt:" + fmt + "]"
        : code == 22061 ? "E call OCINNumberFromText with invalid fmt [" + fmt + "]"
                        : "E call OCINumberFromText with invalid str [" + str + "]";
    ErrorHandle err;
    take_log();
    const sword status =
        OCINumberFromText(err, s.as<OraText>(), static_cast<ub4>(str.size()), f.as<OraText>(),
                          static_cast<ub4>(fmt.size()), nullptr, 0, record.as<OCINumber>());
    EXPECT_EQ(status, code == 0 ? OCI_SUCCESS : OCI_ERROR);
    EXPECT_EQ(take_masked_log(),
              text("D call OCINumberFromText with params [err:P] [str:P] [str_length:%zu] [fmt:P] "
                   "[fmt_length:%zu] [nls_params:(nil)] [nls_p_length:0] [number:P]\n"
                   "D call OCINumberFromTextProcessFmt with params [fmt:%s]\n%s%s\n"
                   "D function OCINumberFromText return with status %d\n",
                   str.size(), fmt.size(), fmt.c_str(), fault.c_str(), line.c_str(), status));
    EXPECT_EQ(err.code(), code);
    EXPECT_EQ(err.message(), code == 0 ? "" : text("OCI-%d: ", code) + refused);
    if (code == 0) return value_bytes(*record.as<OCINumber>());
    EXPECT_EQ(*record.as<OCINumber>(), untouched);
    return {};
}

TEST(FromText, Results) {
    const std::string bad_character = "E OCINumberFromText get a error character\n";
    ASSERT_FALSE(data_rows("from_text.txt").empty());
    for (const auto &[line, c] : data_rows("from_text.txt")) {
        SCOPED_TRACE(line);
        if (c[2] == "character") {
            read(c[0], c[1], 22062, bad_character);
        } else if (c[2].starts_with("2206")) {
            read(c[0], c[1], std::stoi(c[2]));
        } else {
            EXPECT_EQ(read(c[0], c[1], 0), bytes_of(c[2]));
        }
    }
    for (const char *str : {"\t1", "1\x80"}) read(str, "9999", 22062, bad_character);
}

// The rules in terms of strings: the number's parts against the model's.
bool matches(const std::string &str, const std::string &fmt) {
    const size_t fmt_dot = std::min(fmt.find('.'), fmt.size());
    const std::string digits = str.substr(str.find_first_not_of(" -"));
    const size_t dot = digits.rfind('.');
    const size_t integers = std::min(dot, digits.size());
    if (integers > fmt_dot) return false;
    if (integers < fmt_dot) return fmt.substr(0, fmt_dot - integers).find('0') == std::string::npos;
    if (dot == std::string::npos) return true;
    const size_t last = digits.find_last_not_of('0');
    return fmt_dot < fmt.size() && std::max(last, dot) - dot <= fmt.size() - fmt_dot - 1;
}

TEST(FromText, RandomTextsAndModels) {
    auto random = seeded();
    const auto put_dot = [&random](std::string s, size_t place) {
        return random() % 4 ? s.insert(std::min(place, s.size()), ".") : s;
    };
    for (long i = random_cases(20000); i > 0; --i) {
        // Lengths near each other, so that about half of the texts match.
        const size_t integers = random() % 8, decimals = random() % 5;
        std::string fmt, str(random() % 3, ' ');
        for (size_t k = integers + decimals + random() % 3; k > 0; --k) {
            fmt += random() % 8 ? '9' : '0';
        }
        fmt = put_dot(fmt, integers);
        if (random() % 2) str += '-';
        str += put_dot(random_digits(random, 1 + integers + decimals), integers - random() % 2);
        SCOPED_TRACE(str + " as " + fmt);
        if (matches(str, fmt)) {
            ASSERT_EQ(read(str, fmt, 0), bytes_of(str));
        } else {
            read(str, fmt, 22062);
        }
        if (HasFailure()) return;
    }
}

}  // namespace
