#include <regex>

#include "support/guard_page.h"
#include "support/values.h"

namespace {

const OraText *bytes(const std::string &s) { return reinterpret_cast<const OraText *>(s.data()); }

// The text, in a buffer of exactly its size, or the error number. One byte less
// must be refused, one more takes the terminator. All arguments end at unreadable
// pages.
std::string to_text(const OCINumber &n, const std::string &model) {
    const GuardedBytes record(&n, sizeof n), fmt(model);
    const auto run = [&](ub4 &size, OraText *buf) {
        ErrorHandle err;
        const sword status =
            OCINumberToText(err, record.as<OCINumber>(), fmt.as<OraText>(),
                            static_cast<ub4>(model.size()), nullptr, 0, &size, buf);
        take_log();
        return status == OCI_SUCCESS ? 0 : err.code();
    };
    OraText big[200];
    ub4 size = sizeof big;
    if (const int code = run(size, big)) return std::to_string(code);
    EXPECT_EQ(big[size], '\0');
    const std::string expected(big, big + size);
    const GuardedBytes exact(std::string(size, '#')), longer(std::string(size + 1, '#'));
    ub4 same = size, less = size - 1, more = size + 1;
    EXPECT_EQ(run(more, longer.as<OraText>()), 0);
    EXPECT_EQ(std::string(longer.as<char>()), expected);
    if (less > 0) {
        EXPECT_EQ(run(less, exact.as<OraText>()), 22059);
        EXPECT_EQ(less, size - 1);
        EXPECT_EQ(*exact.as<char>(), '#');
    }
    EXPECT_EQ(run(same, exact.as<OraText>()), 0);
    EXPECT_EQ(same, size);
    EXPECT_EQ(std::string(exact.as<char>(), size), expected);
    return expected;
}

TEST(ToText, Results) {
    const std::string nines63(63, '9'), text63 = "." + std::string(62, '9');
    // clang-format off
    const std::string rows[][3] = {  // number, model, text or the number of the error
        {"123.456", "999.99", " 123.46"}, {"123.456", "9999.9999", "  123.4560"},
        {"5", "999", "   5"}, {"-5", "999", "  -5"}, {"-5", "0999", "-0005"},
        {"5", "9099", "  005"}, {"-5", "9099", " -005"}, {"5", "FM999", "5"}, {"-5", "FM999", "-5"},
        {"-5", "fm9099", "-005"}, {"0", "999", "   0"}, {"0", "9.99", " 0.00"},
        {"0", "FM9.99", "0."}, {"1", "FM9.99", "1."}, {"1.5", "FM9.99", "1.5"},
        {"1.5", "FM9.90", "1.50"}, {"1.5", "Fm9.9099", "1.50"}, {"1.3004", "FM9.999", "1.300"},
        {"1.2996", "FM9.999", "1.3"}, {"0.5", "9.9", "  .5"}, {"0.5", "0.9", " 0.5"},
        {"-0.5", "9.9", " -.5"}, {"0.5", ".9", " .5"}, {"0.5", "99", "  1"}, {"2.5", "9", " 3"},
        {"-2.5", "9", "-3"}, {"-0.4", "9", "-0"}, {"0.999", "9.99", " 1.00"},
        {"0.04", "FM9.9", ".0"}, {"5", "9.", " 5."}, {"99.5", "999", " 100"},
        {"-1234.5678", "FM9999.99", "-1234.57"}, {"-1234.5678", "09999.990", "-01234.568"},
        {"123.45", "TM", "123.45"}, {"0.25", "tm9", ".25"}, {"-0.25", "Tm", "-.25"},
        {"0", "tM9", "0"}, {"7", nines63, std::string(63, ' ') + "7"},
        {"-0.5", "fm" + text63, "-.5"}, {"1234", "999", "22065"}, {"99.5", "99", "22065"},
        {"9.96", "9.9", "22065"}, {"0", ".9", "22065"}, {"0.5", ".", "22065"},
        {"0.5", "FM", "22065"}, {"0.5", "fm.", "22065"}, {"inf", "TM", "22065"},
        {"-inf", "9", "22065"}, {"1", "9.9.9", "22061"}, {"1", "9,999", "22061"},
        {"1", "TM8", "22061"}, {"1", "TM99", "22061"}, {"1", "FMTM", "22061"},
        {"1", "S999", "22061"}, {"1", "T", "22061"}, {"1", "F", "22061"},
        {"1", nines63 + "9", "22061"}, {"1", "FM" + nines63 + "9", "22061"},
        {"0." + std::string(127, '0') + "1", "TM", "602"},
    };
    // clang-format on
    for (const auto &row : rows) {
        SCOPED_TRACE(row[0] + " as " + row[1]);
        EXPECT_EQ(to_text(from_text(row[0]), row[1]), row[2]);
    }
    // A first digit byte of 0 or 1 counts as an infinity; the codec refuses others.
    EXPECT_EQ(to_text(number({2, 193, 0}), "9"), "22065");
    EXPECT_EQ(to_text(number({3, 193, 1, 5}), "9"), "22065");
    EXPECT_EQ(to_text(number({30, 193, 1}), "9"), "22065");
    EXPECT_EQ(to_text(number({0, 193, 5}), "9"), "602");
    EXPECT_EQ(to_text(number({22, 193, 5}), "9"), "602");
    EXPECT_EQ(to_text(number({1, 5}), "9"), "602");
}

// The layout in terms of strings: the number's parts over the model's parts.
std::string lay_out(const std::string &plain, const std::string &model) {
    const bool fm = model.rfind("FM", 0) == 0;
    const std::string body = fm ? model.substr(2) : model;
    const size_t body_dot = std::min(body.find('.'), body.size());
    const std::string ibody = body.substr(0, body_dot);
    const std::string fbody = body.substr(std::min(body_dot + 1, body.size()));

    const bool negative = plain[0] == '-';
    const size_t dot = std::min(plain.find('.'), plain.size());
    std::string integer = plain.substr(negative, dot - negative);
    std::string fraction = plain.substr(std::min(dot + 1, plain.size()));
    if (fraction.size() > fbody.size()) {
        const bool up = fraction[fbody.size()] >= '5';
        fraction.resize(fbody.size());
        if (up) {
            // A carry leaves no zeros at the end of the fraction.
            const std::string sum = Decimal(integer + fraction, 0).plus(1).digits();
            const std::string text = Decimal(sum, -static_cast<long>(fraction.size())).plain();
            const size_t sum_dot = std::min(text.find('.'), text.size());
            integer = text.substr(0, sum_dot);
            fraction = text.substr(std::min(sum_dot + 1, text.size()));
        }
    }
    if (integer == "0" && !(fraction.empty() && (dot == plain.size() || fbody.empty()))) {
        integer.clear();
    }
    if (body.empty() || integer.size() > ibody.size()) return "22065";

    const size_t first_digit = ibody.size() - integer.size();
    const size_t shown = std::min(first_digit, ibody.find('0'));
    const size_t padding = fbody.size() - fraction.size();
    std::string out(shown, ' ');
    out += negative ? '-' : ' ';
    out += std::string(first_digit - shown, '0') + integer;
    if (body_dot < body.size()) out += '.';
    out += fraction + std::string(padding, '0');
    if (fm) {
        const size_t optional = fbody.size() - (fbody.rfind('0') + 1);
        out.resize(out.size() - std::min(padding, optional));
        out.erase(0, out.find_first_not_of(' '));
    }
    return out;
}

TEST(ToText, RandomNumbersAndModels) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        const long places = static_cast<long>(random() % 30);
        const Decimal value((random() % 2 ? "-" : "") + random_digits(random, 1 + random() % 35),
                            -places);
        std::string body;
        for (size_t k = random() % (random() % 4 ? 40 : 64); k > 0; --k) {
            body += random() % 6 ? '9' : '0';
        }
        if (random() % 4 && body.size() < 63) body.insert(random() % (body.size() + 1), ".");
        if (body.empty()) body = "9";
        const std::string model = random() % 3 ? body : "FM" + body;
        SCOPED_TRACE(value.plain() + " as " + model);
        const std::string laid_out = to_text(from_text(value.plain()), model);
        ASSERT_EQ(laid_out, lay_out(value.plain(), model));
        // And it reads back under the body.
        if (laid_out == "22065") continue;
        ErrorHandle err;
        OCINumber back;
        EXPECT_EQ(OCINumberFromText(err, bytes(laid_out), static_cast<ub4>(laid_out.size()),
                                    bytes(body), static_cast<ub4>(body.size()), nullptr, 0, &back),
                  OCI_SUCCESS);
        EXPECT_EQ(value_bytes(back), value_bytes(from_text(laid_out)));
        take_log();
    }
}

// One call and all that may be seen of it. `log` holds the lines between the
// call's and its result's.
struct Arguments {
    const char *fmt;
    ub4 capacity = 9;
    bool buf_size = true, buf = true, nls = false;
};
void check(const OCINumber *n, Arguments a, int code, const std::string &message,
           const std::string &log) {
    SCOPED_TRACE(message + log);
    ErrorHandle err;
    OraText buf[16] = "###############";
    ub4 size = a.capacity;
    const auto *fmt = reinterpret_cast<const OraText *>(a.fmt);
    const ub4 fmt_length = a.fmt == nullptr ? 7 : static_cast<ub4>(std::strlen(a.fmt));
    const sword status = code == 0 ? OCI_SUCCESS : OCI_ERROR;
    take_log();
    EXPECT_EQ(OCINumberToText(err, n, fmt, fmt_length, a.nls ? buf : nullptr, a.nls,
                              a.buf_size ? &size : nullptr, a.buf ? buf : nullptr),
              status);
    const auto shown = [](bool given) { return given ? "P" : "(nil)"; };
    EXPECT_EQ(take_masked_log(),
              text("D P call function OCINumberToText with param err P,number:%s, fmt:%s, "
                   "fmt_length %u, nls_params:%s, nls_p_length:%d, buf_size:%s, buf:%s \n%s"
                   "D function OCINumberToText return with status %d\n",
                   shown(n), shown(fmt), fmt_length, shown(a.nls), a.nls, shown(a.buf_size),
                   shown(a.buf), log.c_str(), status));
    EXPECT_EQ(err.code(), code);
    EXPECT_EQ(std::regex_replace(err.message(), std::regex("0x[0-9a-f]+"), "P"), message);
    EXPECT_TRUE(err.other_fields_untouched());
    if (code != 0) EXPECT_EQ(size, a.capacity);
    if (code != 0) EXPECT_EQ(buf[0], '#');
}

TEST(ToText, ErrorsAndTraces) {
    const OCINumber one = from_text("1"), tenth = from_text("0.1"), large = from_text("-12.34");
    const OCINumber infinite = from_text("inf"), none = number({0, 193, 2});
    const auto argument = [](int i) {
        return text("OCI-21560: argument %d is null, invalid, or out of range", i);
    };
    const std::string bad_size = "D buf_size param is null, invalid, or out of range\n";
    check(nullptr, {nullptr, 9, false, false, true}, 21560, argument(7), bad_size);
    check(nullptr, {nullptr, 0, true, false, true}, 21560, argument(7), bad_size);
    check(nullptr, {nullptr, 9, true, false, true}, 21560, argument(8), bad_size);
    check(nullptr, {nullptr, 9, true, true, true}, 21560, argument(2), bad_size);
    const std::string overflow = "number to text translation for the given format causes overflow";
    const std::string error = "OCI-22065: " + overflow;
    check(&infinite, {nullptr, 9, true, true, true}, 22065, error, "D " + overflow + "\n");
    check(&infinite, {"", 9, true, true, true}, 22065, error, "D " + overflow + "\n");
    check(&infinite, {"x", 9, true, true, true}, 602,
          "nls_param is not support, nls_params:P, nls_p_length:1",
          "D nls_param is not support, nls_params:P, nls_p_length:1\n");
    check(&infinite, {"x"}, 22065, error, "E OCINumberToText get infinity number\n");

    const auto refused = [&](const char *fmt, const std::string &why, int fm, int scale) {
        check(&none, {fmt}, 22061, text("OCI-22061: invalid format text [%s]", fmt),
              text("E %s, ret:-1\nD format info, has_tm:0, has_fm:%d, fmt:%s, scale:%d\n"
                   "D function OCINumberProcessFormat return with status -1\n"
                   "D fail to proccess format, fmt_raw:%s\n",
                   why.c_str(), fm, fmt, scale, fmt));
    };
    refused("9.9x9", "find invalid character in the format string, fmt:9.9x9, index:3", 0, 1);
    refused("fm9.90.9", "period apperas twice in the format string, fmt:9.90.9, index:4", 1, 2);
    refused("tm8", "invalid format string, fmt_raw_length:3", 0, 0);
    refused(std::string(64, '9').c_str(), "invalid format string, fmt_raw_length:64", 0, 0);

    const auto parsed = [](int tm, int fm, const char *fmt, int scale) {
        return text(
            "D format info, has_tm:%d, has_fm:%d, fmt:%s, scale:%d\n"
            "D function OCINumberProcessFormat return with status 0\n",
            tm, fm, fmt, scale);
    };
    const std::string rendered = "D function OCINumberProcessValue return with status 0\n";
    const std::string laid = "D function OCINumberFormat return with status 0\n";
    check(&none, {"FM9.90"}, 602, "fail to proccess Value, number:P",
          parsed(0, 1, "9.90", 2) +
              "D fail to get str from number number:P\n"
              "D function OCINumberProcessValue return with status -1\n"
              "D fail to proccess Value, number:P\n");
    check(&large, {"FM9.9"}, 22065, error,
          parsed(0, 1, "9.9", 1) + rendered + "D " + overflow +
              ", fmt_raw:9.9\nD function OCINumberFormat return with status -1\n"
              "D fail to proccess format, number_str:-12.3, fmt_raw:9.9, has_fm:1\n");
    check(&large, {"999.9", 5}, 22059, "OCI-22059: buffer size [5] is too small - [6] is needed",
          parsed(0, 0, "999.9", 1) + rendered + laid +
              "E 22059: buffer size [5] is too small - [6] is needed\n");
    check(&tenth, {"TM9"}, 0, "", parsed(1, 0, "TM9", 0) + rendered + laid);
    // The log shows the buffer behind the moved text as well.
    check(&one, {"FM99.9909"}, 0, "",
          parsed(0, 1, "99.9909", 4) + rendered +
              "D format numer with fm, remove_ending_zero_count:1, format_len:7, "
              "result_number_start:2, result:1.000000\n" +
              laid);

    ub4 size = 9;
    OraText buf[9];
    EXPECT_EQ(OCINumberToText(nullptr, &one, buf, 1, nullptr, 0, &size, nullptr), -2);
    EXPECT_NE(take_masked_log().find("\nD param is invalid, err:(nil), number:P,buf:(nil), "
                                     "buf_size:P, fmt:P, fmt_length:1\n"
                                     "D function OCINumberToText return with status -2\n"),
              std::string::npos);
    // The message ends where the handle's text does.
    ErrorHandle err;
    const std::string long_model(5000, 'x');
    EXPECT_EQ(OCINumberToText(err, &one, bytes(long_model), 4294967295, nullptr, 0, &size, buf),
              OCI_ERROR);
    EXPECT_EQ(err.message(), ("OCI-22061: invalid format text [" + long_model).substr(0, 3072));
}

}  // namespace
