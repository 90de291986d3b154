#include "oci_number/call_frame.h"
#include "support/guard_page.h"
#include "support/lay_out.h"
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
    for (const auto &[line, c] : data_rows("to_text.txt")) {
        EXPECT_EQ(to_text(from_text(c[0]), c[1]), c[2]) << line;
    }
}

// Arguments of the layout that no call gives it: refused, or too long, or laid out.
TEST(ToText, LayoutBounds) {
    const std::string s(200, '9');
    const OraText *const digits = bytes(s);
    const struct {
        oci_number::Layout layout;
        const char *outcome;
    } rows[] = {
        {{digits, -1, digits, 2, nullptr, 0, 1}, "params have null, status:-1"},
        {{nullptr, 1, digits, 2, nullptr, 0, 1}, "params have null, status:-1"},
        {{digits, 1, nullptr, 2, nullptr, 0, 1}, "params have null, status:-1"},
        {{digits, 1, digits, 128, nullptr, 0, 0}, "params have null, status:-1"},
        {{digits, 1, digits, 127, nullptr, 0, 0}, ""},
        {{digits, 129, nullptr, 0, nullptr, 0, 1}, "buffer is to small, number_len:129"},
        {{digits, 128, nullptr, 0, nullptr, 0, 1}, ""},
    };
    for (auto [layout, outcome] : rows) {
        OraText result[oci_number::result_size];
        layout.result_buf = result;
        ErrorHandle err;
        sb8 length = 0;
        EXPECT_EQ(oci_number::OCINumberLayOut(err, layout, length), *outcome ? -1 : 0);
        EXPECT_EQ(length, *outcome ? 0 : 128);
        const std::string log = take_masked_log();
        EXPECT_TRUE(log.starts_with(*outcome ? text("D %s, ", outcome) : "")) << log;
    }
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
        ASSERT_EQ(laid_out, lay_out(value, model));
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

}  // namespace
