#include "support/guard_page.h"
#include "support/values.h"

namespace {

// Reads a text under a model, both at the end of their pages: the value's bytes, or the
// number of the error.
Bytes read(const std::string &str, const std::string &fmt) {
    const GuardedBytes s(str), f(fmt);
    const OCINumber untouched = number({});
    const GuardedBytes record(&untouched, sizeof untouched);
    ErrorHandle err;
    const sword status =
        OCINumberFromText(err, s.as<OraText>(), static_cast<ub4>(str.size()), f.as<OraText>(),
                          static_cast<ub4>(fmt.size()), nullptr, 0, record.as<OCINumber>());
    take_log();
    if (status == OCI_SUCCESS) return value_bytes(*record.as<OCINumber>());
    EXPECT_EQ(*record.as<OCINumber>(), untouched);
    return {err.code()};
}

TEST(FromText, Results) {
    for (const auto &[line, c] : data_rows("from_text.txt")) {
        EXPECT_EQ(read(c[0], c[1]),
                  c[2].starts_with("2206") ? Bytes{std::stoi(c[2])} : bytes_of(c[2]))
            << line;
    }
    for (const char *str : {"\t1", "1\x80"}) EXPECT_EQ(read(str, "9999"), Bytes{22062});
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
        ASSERT_EQ(read(str, fmt), matches(str, fmt) ? bytes_of(str) : Bytes{22062});
    }
}

}  // namespace
