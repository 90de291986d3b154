#include "support/exact.h"
#include "support/guard_page.h"
#include "support/values.h"

namespace {

const OraText *bytes(const std::string &s) { return reinterpret_cast<const OraText *>(s.data()); }
ub4 size_of(const std::string &s) { return static_cast<ub4>(s.size()); }

// The text, in a buffer of exactly its size, or the error number. One byte less
// must be refused, one more takes the terminator. All arguments end at unreadable
// pages.
std::string to_text(const OCINumber &n, const std::string &model) {
    const GuardedBytes record(&n, sizeof n), fmt(model);
    const auto run = [&](ub4 &size, OraText *buf) {
        ErrorHandle err;
        const sword status = OCINumberToText(err, record.as<OCINumber>(), fmt.as<OraText>(),
                                             size_of(model), nullptr, 0, &size, buf);
        take_log();
        return status == OCI_SUCCESS ? 0 : err.code();
    };
    OraText big[200];
    ub4 size = sizeof big;
    if (const int code = run(size, big)) return std::to_string(code);
    EXPECT_EQ(big[size], '\0');
    const std::string expected(big, big + size);
    const GuardedBytes exact(std::string(size, '#'));
    ub4 same = size, less = size - 1;
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
    const struct {
        std::string number, model, text;
    } rows[] = {
        {"123.456", "999.99", " 123.46"},
        {"123.456", "9999.9999", "  123.4560"},
        {"5", "999", "   5"},
        {"-5", "999", "  -5"},
        {"-5", "0999", "-0005"},
        {"5", "9099", "  005"},
        {"-5", "9099", " -005"},
        {"5", "FM999", "5"},
        {"-5", "FM999", "-5"},
        {"-5", "fm9099", "-005"},
        {"0", "999", "   0"},
        {"0", "9.99", " 0.00"},
        {"0", "FM9.99", "0."},
        {"1", "FM9.99", "1."},
        {"1.5", "FM9.99", "1.5"},
        {"1.5", "FM9.90", "1.50"},
        {"1.5", "Fm9.9099", "1.50"},
        {"1.3004", "FM9.999", "1.300"},
        {"1.2996", "FM9.999", "1.3"},
        {"0.5", "9.9", "  .5"},
        {"0.5", "0.9", " 0.5"},
        {"-0.5", "9.9", " -.5"},
        {"0.5", ".9", " .5"},
        {"0.5", "99", "  1"},
        {"2.5", "9", " 3"},
        {"-2.5", "9", "-3"},
        {"-0.4", "9", "-0"},
        {"0.999", "9.99", " 1.00"},
        {"0.04", "FM9.9", ".0"},
        {"5", "9.", " 5."},
        {"99.5", "999", " 100"},
        {"-1234.5678", "FM9999.99", "-1234.57"},
        {"-1234.5678", "09999.990", "-01234.568"},
        {"123.45", "TM", "123.45"},
        {"0.25", "tm9", ".25"},
        {"-0.25", "Tm", "-.25"},
        {"0", "tM9", "0"},
        {"7", nines63, std::string(63, ' ') + "7"},
        {"-0.5", "fm" + text63, "-.5"},
        // Refused.
        {"1234", "999", "22065"},
        {"99.5", "99", "22065"},
        {"9.96", "9.9", "22065"},
        {"0", ".9", "22065"},
        {"0.5", ".", "22065"},
        {"0.5", "FM", "22065"},
        {"0.5", "fm.", "22065"},
        {"inf", "TM", "22065"},
        {"-inf", "9", "22065"},
        {"1", "9.9.9", "22061"},
        {"1", "9,999", "22061"},
        {"1", "TM8", "22061"},
        {"1", "TM99", "22061"},
        {"1", "FMTM", "22061"},
        {"1", "S999", "22061"},
        {"1", "T", "22061"},
        {"1", "F", "22061"},
        {"1", nines63 + "9", "22061"},
        {"1", "FM" + nines63 + "9", "22061"},
        {"0." + std::string(127, '0') + "1", "TM", "602"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.number + " as " + row.model);
        EXPECT_EQ(to_text(from_text(row.number), row.model), row.text);
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
        std::string model = random() % 3 ? body : "FM" + body;
        if (model.empty()) model = "9";
        SCOPED_TRACE(value.plain() + " as " + model);
        ASSERT_EQ(to_text(from_text(value.plain()), model), lay_out(value.plain(), model));
    }
}

// Every argument error and failure with its log.
TEST(ToText, ErrorsAndTraces) {
    const OCINumber one = from_text("1"), tenth = from_text("0.1"), large = from_text("-12.34");
    const OCINumber infinite = from_text("inf"), none = number({0, 193, 2});
    const std::string model_64 = std::string(64, '9');
    const auto line = [](const char *step, int status) {
        return text("D function %s return with status %d", step, status);
    };
    const auto bad_argument = [](int i) {
        return text("OCI-21560: argument %d is null, invalid, or out of range", i);
    };
    const std::string bad_size = "D buf_size param is null, invalid, or out of range";
    const std::string overflow = "number to text translation for the given format causes overflow";
    const std::string no_value =
        text("fail to proccess Value, number:%p", static_cast<const void *>(&none));
    const char *const nls = "x";
    const std::string no_nls = text("nls_param is not support, nls_params:%p, nls_p_length:%d",
                                    static_cast<const void *>(nls), 1);
    const std::string parsed = line("OCINumberProcessFormat", 0);
    const std::string not_parsed = line("OCINumberProcessFormat", -1);
    const std::string rendered = line("OCINumberProcessValue", 0);
    const std::string laid = line("OCINumberFormat", 0), not_laid = line("OCINumberFormat", -1);
    const auto info = [](int tm, int fm, const std::string &fmt, int scale) {
        return text("D format info, has_tm:%d, has_fm:%d, fmt:%s, scale:%d", tm, fm, fmt.c_str(),
                    scale);
    };
    const auto refused = [&](const std::string &error, const std::string &format_info,
                             const std::string &fmt) {
        return std::vector{"E " + error, format_info, not_parsed,
                           "D fail to proccess format, fmt_raw:" + fmt};
    };
    const auto bad_model = [](const std::string &fmt) {
        return "OCI-22061: invalid format text [" + fmt + "]";
    };
    struct Row {
        const OCINumber *number;
        const char *fmt;
        int buf_size;  // -1: null pointer
        bool buf, nls;
        int code;
        std::string message;
        std::vector<std::string> log;
    };
    const Row rows[] = {
        {nullptr, nullptr, -1, false, true, 21560, bad_argument(7), {bad_size}},
        {nullptr, nullptr, 0, false, true, 21560, bad_argument(7), {bad_size}},
        {nullptr, nullptr, 9, false, true, 21560, bad_argument(8), {bad_size}},
        {nullptr, nullptr, 9, true, true, 21560, bad_argument(2), {bad_size}},
        {&infinite, nullptr, 9, true, true, 22065, "OCI-22065: " + overflow, {"D " + overflow}},
        {&infinite, "", 9, true, true, 22065, "OCI-22065: " + overflow, {"D " + overflow}},
        {&infinite, "x", 9, true, true, 602, no_nls, {"D " + no_nls}},
        {&infinite,
         "x",
         9,
         true,
         false,
         22065,
         "OCI-22065: " + overflow,
         {"E OCINumberToText get infinity number"}},
        {&none, "9.9x9", 9, true, false, 22061, bad_model("9.9x9"),
         refused("find invalid character in the format string, fmt:9.9x9, index:3, ret:-1",
                 info(0, 0, "9.9x9", 1), "9.9x9")},
        {&none, "fm9.90.9", 9, true, false, 22061, bad_model("fm9.90.9"),
         refused("period apperas twice in the format string, fmt:9.90.9, index:4, ret:-1",
                 info(0, 1, "fm9.90.9", 2), "fm9.90.9")},
        {&none, "tm8", 9, true, false, 22061, bad_model("tm8"),
         refused("invalid format string, fmt_raw_length:3, ret:-1", info(0, 0, "tm8", 0), "tm8")},
        {&none, model_64.c_str(), 9, true, false, 22061, bad_model(model_64),
         refused("invalid format string, fmt_raw_length:64, ret:-1", info(0, 0, model_64, 0),
                 model_64)},
        {&none,
         "FM9.90",
         9,
         true,
         false,
         602,
         no_value,
         {info(0, 1, "9.90", 2), parsed,
          text("D fail to get str from number number:%p", static_cast<const void *>(&none)),
          line("OCINumberProcessValue", -1), "D " + no_value}},
        {&large,
         "FM9.9",
         9,
         true,
         false,
         22065,
         "OCI-22065: " + overflow,
         {info(0, 1, "9.9", 1), parsed, rendered, "D " + overflow + ", fmt_raw:9.9", not_laid,
          "D fail to proccess format, number_str:-12.3, fmt_raw:9.9, has_fm:1"}},
        {&large,
         "999.9",
         5,
         true,
         false,
         22059,
         "OCI-22059: buffer size [5] is too small - [6] is needed",
         {info(0, 0, "999.9", 1), parsed, rendered, laid,
          "E 22059: buffer size [5] is too small - [6] is needed"}},
        {&tenth, "TM9", 9, true, false, 0, "", {info(1, 0, "TM9", 0), parsed, rendered, laid}},
        // The log shows the buffer behind the moved text as well.
        {&one,
         "FM99.9909",
         9,
         true,
         false,
         0,
         "",
         {info(0, 1, "99.9909", 4), parsed, rendered,
          "D format numer with fm, remove_ending_zero_count:1, format_len:7, "
          "result_number_start:2, result:1.000000",
          laid}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.fmt == nullptr ? "null" : row.fmt);
        ErrorHandle err;
        OraText buf[16] = "###############";
        ub4 size = static_cast<ub4>(row.buf_size);
        ub4 *const size_ptr = row.buf_size < 0 ? nullptr : &size;
        OraText *const buf_ptr = row.buf ? buf : nullptr;
        const auto *fmt = reinterpret_cast<const OraText *>(row.fmt);
        const auto *nls_params = reinterpret_cast<const OraText *>(row.nls ? nls : nullptr);
        const ub4 fmt_length = row.fmt == nullptr ? 7 : static_cast<ub4>(std::strlen(row.fmt));
        const ub4 nls_length = row.nls ? 1 : 0;
        const sword status = row.code == 0 ? OCI_SUCCESS : OCI_ERROR;
        std::vector<std::string> log = {
            text("D thread %ld call function OCINumberToText with param err %p,number:%p, fmt:%p, "
                 "fmt_length %d, nls_params:%p, nls_p_length:%d, buf_size:%p, buf:%p ",
                 static_cast<long>(qz_thread_self()), static_cast<void *>(err.get()),
                 static_cast<const void *>(row.number), static_cast<const void *>(fmt), fmt_length,
                 static_cast<const void *>(nls_params), nls_length, static_cast<void *>(size_ptr),
                 static_cast<void *>(buf_ptr))};
        log.insert(log.end(), row.log.begin(), row.log.end());
        log.push_back(line("OCINumberToText", status));
        take_log();
        EXPECT_EQ(OCINumberToText(err, row.number, fmt, fmt_length, nls_params, nls_length,
                                  size_ptr, buf_ptr),
                  status);
        EXPECT_EQ(take_log(), log);
        EXPECT_EQ(err.code(), row.code);
        EXPECT_EQ(err.message(), row.message);
        EXPECT_TRUE(err.other_fields_untouched());
        if (row.code == 0) continue;
        EXPECT_EQ(size, static_cast<ub4>(row.buf_size));
        EXPECT_EQ(buf[0], '#');
    }
    ub4 size = 9;
    OraText buf[9];
    take_log();
    EXPECT_EQ(OCINumberToText(nullptr, &one, bytes("9"), 1, nullptr, 0, &size, buf),
              OCI_INVALID_HANDLE);
    const auto log = take_log();
    EXPECT_EQ(log.at(1).find("D param is invalid, err:(nil), number:0x"), 0u);
    EXPECT_EQ(log.at(1).substr(log[1].size() - 14), ", fmt_length:1");
    EXPECT_EQ(log.at(2), line("OCINumberToText", -2));
    // The message ends where the handle's text does.
    ErrorHandle err;
    const std::string long_model(5000, 'x');
    EXPECT_EQ(OCINumberToText(err, &one, bytes(long_model), 4294967295, nullptr, 0, &size, buf),
              OCI_ERROR);
    EXPECT_EQ(err.message(), bad_model(long_model).substr(0, 3072));
}

}  // namespace
