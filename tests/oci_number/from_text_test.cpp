#include "support/guard_page.h"
#include "support/values.h"

namespace {

// Reads a text under a model, both at the end of their pages: the value's bytes,
// none for an error. Checks all else that may be seen; `fault` tells a log line
// before that of the error.
std::vector<int> read(const std::string &str, const std::string &fmt, int code,
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
    // clang-format off
    const std::string accepted[][3] = {  // text, model, value
        {"123.45", "999.99", "123.45"}, {"  -12.5", "99.9", "-12.5"}, {"12", "99.9", "12"},
        {"12", "999", "12"}, {"012", "099", "12"}, {"12", "909", "12"}, {"1.20", "9.9", "1.2"},
        {"1.000", "9.", "1"}, {".5", ".9", "0.5"}, {"-.5", ".0", "-0.5"}, {".5", "9.", "0.5"},
        {"12.", "99.", "12"}, {"1.5", "99", "1.5"}, {"1.23456", "99.9", "1.23456"},
        {"  -0.0", "9.9", "0"},
    };
    const std::string refused[][2] = {
        {"12", "099"}, {"2", "909"}, {"1234", "999"}, {"0012", "999"}, {"1.25", "9.9"},
        {"1.00", "9"}, {"12.5", "99"}, {"12.", "99"}, {"1", ""}, {".5", ""}, {"-", ""},
        {"   ", "99"}, {"-", "99"}, {"  -", "9.9"}, {".", "9."}, {"1.2.3", "999.9"},
        {std::string(127, '1'), std::string(127, '9')},
    };
    const std::string bad_character[] = {
        "+5", "1e5", "1,000", "12 ", "- 1", "--1", "\t1", "1\x80",
    };
    const std::string bad_model[][2] = {
        {"12", "9,99"}, {"12", "FM99"}, {"12", "99..9"}, {"1x", "TM"},
    };
    // clang-format on
    for (const auto &row : accepted) {
        EXPECT_EQ(read(row[0], row[1], 0), value_bytes(from_text(row[2]))) << row[0];
    }
    for (const auto &row : refused) read(row[0], row[1], 22062);
    for (const auto &str : bad_character) {
        read(str, "9999", 22062, "E OCINumberFromText get a error character\n");
    }
    for (const auto &row : bad_model) read(row[0], row[1], 22061);
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
            ASSERT_EQ(read(str, fmt, 0), value_bytes(from_text(str)));
        } else {
            read(str, fmt, 22062);
        }
        if (HasFailure()) return;
    }
}

TEST(FromText, Arguments) {
    const auto bytes = [](const char *s) { return reinterpret_cast<const OraText *>(s); };
    OCINumber n = number({});
    const auto check = [&](const char *str, ub4 str_length, const char *fmt, bool nls,
                           OCINumber *result, int code, const std::string &message,
                           const std::string &log) {
        ErrorHandle err;
        take_log();
        EXPECT_EQ(OCINumberFromText(err, bytes(str), str_length, bytes(fmt), fmt != nullptr,
                                    nls ? bytes("x") : nullptr, nls, result),
                  OCI_ERROR);
        const std::string all = take_masked_log();
        EXPECT_EQ(all.substr(all.find('\n') + 1),
                  log + "\nD function OCINumberFromText return with status -1\n");
        EXPECT_EQ(err.code(), code);
        EXPECT_EQ(err.message(), message);
    };
    const auto check_argument = [&](const char *str, const char *fmt, int argument) {
        check(str, 0, fmt, true, nullptr, 21560, argument_error(21560, argument),
              text("E 21560: argument %d is null, invalid, or out of range", argument));
    };
    check_argument(nullptr, nullptr, 2);
    check_argument("1x", nullptr, 3);
    check("1x", 2, nullptr, true, nullptr, 22062, "OCI-22062: invalid input string [1x]\n",
          "E call OCINumberFromText with invalid str [1x]");
    check("1x", 2, "x", true, nullptr, 21560, argument_error(21560, 8),
          "E 21560: argument 8 is null, invalid, or out of range");
    check("1x", 2, "x", true, &n, 22061, "OCI-22061: invalid format text [x]",
          "D call OCINumberFromTextProcessFmt with params [fmt:x]\n"
          "E call OCINNumberFromText with invalid fmt [x]");
    const std::string nls = "call OCINumberFromText with nls_params which is not supported";
    check("1x", 2, "9", true, &n, 602, nls,
          "D call OCINumberFromTextProcessFmt with params [fmt:9]\nE " + nls);
    EXPECT_EQ(n, number({}));

    EXPECT_EQ(OCINumberFromText(nullptr, nullptr, 0, nullptr, 0, nullptr, 1, nullptr), -2);
    EXPECT_EQ(take_masked_log(),
              "D call OCINumberFromText with params [err:(nil)] [str:(nil)] [str_length:0] "
              "[fmt:(nil)] [fmt_length:0] [nls_params:(nil)] [nls_p_length:1] [number:(nil)]\n"
              "E call OCINumberFromText with invalid handle\n"
              "D function OCINumberFromText return with status -2\n");
    // A quoted text is cut where the handle's message ends.
    ErrorHandle err;
    const std::string longest(5000, '8');
    EXPECT_EQ(OCINumberFromText(err, bytes(longest.data()), 5000, bytes("9"), 1, nullptr, 0, &n),
              OCI_ERROR);
    EXPECT_EQ(err.message(), ("OCI-22062: invalid input string [" + longest).substr(0, 3072));
}

}  // namespace
