#include "support/guard_page.h"
#include "support/values.h"

namespace {

const std::string error_character = "E OCINumberFromText get a error character";

// Reads a text and a model that end at unreadable pages. Returns the status and
// checks all else that may be seen.
sword read(const std::string &str, const std::string &fmt, OCINumber &result, int code,
           std::vector<std::string> error_lines) {
    const GuardedBytes s(str), f(fmt), record(&result, sizeof result);
    const std::string message = code == 0       ? ""
                                : code == 22061 ? "OCI-22061: invalid format text [" + fmt + "]"
                                                : "OCI-22062: invalid input string [" + str + "]\n";
    if (code == 22062)
        error_lines.push_back("E call OCINumberFromText with invalid str [" + str + "]");
    if (code == 22061)
        error_lines.push_back("E call OCINNumberFromText with invalid fmt [" + fmt + "]");
    if (code == 0) {
        error_lines.push_back("D call OCINumberFromText success with params [str:" + str +
                              "] [fmt:" + fmt + "]");
    }
    ErrorHandle err;
    take_log();
    const sword status =
        OCINumberFromText(err, s.as<OraText>(), static_cast<ub4>(str.size()), f.as<OraText>(),
                          static_cast<ub4>(fmt.size()), nullptr, 0, record.as<OCINumber>());
    std::vector<std::string> log = {
        text("D call OCINumberFromText with params [err:%p] [str:%p] [str_length:%zu] [fmt:%p] "
             "[fmt_length:%zu] [nls_params:(nil)] [nls_p_length:0] [number:%p]",
             static_cast<void *>(err.get()), s.address(), str.size(), f.address(), fmt.size(),
             record.address()),
        "D call OCINumberFromTextProcessFmt with params [fmt:" + fmt + "]"};
    log.insert(log.end(), error_lines.begin(), error_lines.end());
    log.push_back(text("D function OCINumberFromText return with status %d", status));
    EXPECT_EQ(take_log(), log);
    EXPECT_EQ(err.code(), code);
    EXPECT_EQ(err.message(), message);
    result = *record.as<OCINumber>();
    return status;
}

TEST(FromText, Results) {
    const struct {
        std::string str, fmt, value;  // value: a text of the codec, or an error number
    } rows[] = {
        {"123.45", "999.99", "123.45"},
        {"  -12.5", "99.9", "-12.5"},
        {"12", "99.9", "12"},
        {"12", "999", "12"},
        {"012", "099", "12"},
        {"12", "909", "12"},
        {"12", "099", "E22062"},
        {"2", "909", "E22062"},
        {"1234", "999", "E22062"},
        {"0012", "999", "E22062"},
        {"1.25", "9.9", "E22062"},
        {"1.20", "9.9", "1.2"},
        {"1.000", "9.", "1"},
        {"1.00", "9", "E22062"},
        {".5", ".9", "0.5"},
        {"-.5", ".0", "-0.5"},
        {".5", "9.", "0.5"},
        {"12.5", "99", "E22062"},
        {"12.", "99", "E22062"},
        {"12.", "99.", "12"},
        {"1.5", "99", "1.5"},
        {"1.23456", "99.9", "1.23456"},
        {"+5", "9999", "C"},
        {"1e5", "9999", "C"},
        {"1,000", "9999", "C"},
        {"12 ", "9999", "C"},
        {"- 1", "9999", "C"},
        {"--1", "9999", "C"},
        {"\t1", "9999", "C"},
        {"1\x80", "9999", "C"},
        {"12", "9,99", "E22061"},
        {"12", "FM99", "E22061"},
        {"12", "99..9", "E22061"},
        {"1x", "TM", "E22061"},
        // An empty model takes no digit before a period, and no period.
        {"1", "", "E22062"},
        {".5", "", "E22062"},
        {"-", "", "E22062"},
        // Left to the codec, which refuses them.
        {"   ", "99", "E22062"},
        {"-", "99", "E22062"},
        {"  -", "9.9", "E22062"},
        {".", "9.", "E22062"},
        {"1.2.3", "999.9", "E22062"},
        {std::string(127, '1'), std::string(127, '9'), "E22062"},
        {"  -0.0", "9.9", "0"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.str + " as " + row.fmt);
        OCINumber result = number({});
        const OCINumber untouched = result;
        if (row.value == "C") {
            EXPECT_EQ(read(row.str, row.fmt, result, 22062, {error_character}), OCI_ERROR);
        } else if (row.value[0] == 'E') {
            EXPECT_EQ(read(row.str, row.fmt, result, std::stoi(row.value.substr(1)), {}),
                      OCI_ERROR);
        } else {
            EXPECT_EQ(read(row.str, row.fmt, result, 0, {}), OCI_SUCCESS);
            EXPECT_EQ(result, from_text(row.value));
            continue;
        }
        EXPECT_EQ(result, untouched);
    }
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
        OCINumber result = number({});
        const OCINumber expected = from_text(str);
        const bool accepted = matches(str, fmt);
        ASSERT_EQ(read(str, fmt, result, accepted ? 0 : 22062, {}), accepted ? 0 : -1);
        if (accepted) ASSERT_EQ(result, expected);
        if (HasFailure()) return;
    }
}

TEST(FromText, Arguments) {
    const auto *str = reinterpret_cast<const OraText *>("1x");
    const auto *fmt = reinterpret_cast<const OraText *>("9x");
    const auto *good = reinterpret_cast<const OraText *>("9");
    OCINumber n = number({});
    const std::string nls = "call OCINumberFromText with nls_params which is not supported";
    const std::string check = "D call OCINumberFromTextProcessFmt with params [fmt:9]";
    const auto argument = [](int i) {
        return text("E 21560: argument %d is null, invalid, or out of range", i);
    };
    struct Row {
        bool handle;
        const OraText *str;
        ub4 str_length;
        const OraText *fmt;
        ub4 fmt_length;
        const OraText *nls;
        ub4 nls_length;
        OCINumber *number;
        int code;
        std::string message;
        std::vector<std::string> log;
    };
    const Row rows[] = {
        {false,
         nullptr,
         0,
         nullptr,
         0,
         str,
         1,
         nullptr,
         0,
         "",
         {"E call OCINumberFromText with invalid handle"}},
        {true,
         nullptr,
         0,
         nullptr,
         0,
         str,
         1,
         nullptr,
         21560,
         argument_error(21560, 2),
         {argument(2)}},
        {true, str, 0, nullptr, 0, str, 1, nullptr, 21560, argument_error(21560, 3), {argument(3)}},
        {true,
         str,
         2,
         nullptr,
         0,
         str,
         1,
         nullptr,
         22062,
         "OCI-22062: invalid input string [1x]\n",
         {"E call OCINumberFromText with invalid str [1x]"}},
        {true, str, 2, fmt, 2, str, 1, nullptr, 21560, argument_error(21560, 8), {argument(8)}},
        {true,
         str,
         2,
         fmt,
         2,
         str,
         1,
         &n,
         22061,
         "OCI-22061: invalid format text [9x]",
         {"D call OCINumberFromTextProcessFmt with params [fmt:9x]",
          "E call OCINNumberFromText with invalid fmt [9x]"}},
        {true, str, 2, good, 1, str, 0, &n, 602, nls, {check, "E " + nls}},
        {true, str, 2, good, 1, nullptr, 1, &n, 602, nls, {check, "E " + nls}},
    };
    for (const Row &row : rows) {
        check_call({"OCINumberFromText",
                    [&](OCIError *err) {
                        const sword status =
                            OCINumberFromText(err, row.str, row.str_length, row.fmt, row.fmt_length,
                                              row.nls, row.nls_length, row.number);
                        auto log = take_log();
                        log.erase(log.begin());
                        EXPECT_EQ(log.back(), text("D function OCINumberFromText return with "
                                                   "status %d",
                                                   status));
                        log.pop_back();
                        EXPECT_EQ(log, row.log);
                        return status;
                    },
                    row.handle ? OCI_ERROR : OCI_INVALID_HANDLE,
                    row.code,
                    row.message,
                    {},
                    !row.handle});
    }
    EXPECT_EQ(n, number({}));
    // A quoted text is cut where the handle's message ends.
    ErrorHandle err;
    const std::string longest(5000, '8');
    EXPECT_EQ(OCINumberFromText(err, reinterpret_cast<const OraText *>(longest.data()), 5000, good,
                                1, nullptr, 0, &n),
              OCI_ERROR);
    EXPECT_EQ(err.message(), ("OCI-22062: invalid input string [" + longest).substr(0, 3072));
}

}  // namespace
