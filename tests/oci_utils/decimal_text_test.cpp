#include "oci_utils/oci_utils.h"
#include "support/values.h"

namespace {

// The text in a buffer of exactly its size; one byte less must be refused.
std::string render(const OCINumber &n) {
    std::vector<OraText> big(300, unused);
    ub2 size = 300;
    if (getStrFromNumber(&n, big.data(), &size) != OCI_SUCCESS) {
        EXPECT_EQ(size, 300);
        return "refused";
    }
    EXPECT_EQ(big[size], unused);
    std::vector<OraText> exact(size);
    ub2 same = size, less = static_cast<ub2>(size - 1);
    EXPECT_EQ(getStrFromNumber(&n, exact.data(), &same), OCI_SUCCESS);
    EXPECT_EQ(getStrFromNumber(&n, exact.data(), &less), OCI_ERROR);
    EXPECT_EQ(less, size - 1);
    return {exact.begin(), exact.end()};
}

// Reads a text that ends at the end of its memory; empty when refused.
Bytes read(const std::string &s) {
    std::vector<ub1> exact(s.begin(), s.end());
    OCINumber n = number({});
    const OCINumber untouched = n;
    if (getNumberFromStr(&n, exact.data(), static_cast<ub4>(exact.size())) != OCI_SUCCESS) {
        EXPECT_EQ(n, untouched) << s;
        return {};
    }
    return value_bytes(n);
}

TEST(DecimalText, Table) {
    for (const auto &[line, columns] : data_rows("decimal_text.txt")) {
        SCOPED_TRACE(line);
        const std::string &kind = columns[0];
        if (kind == "render") {
            EXPECT_EQ(render(hex(columns[1])), columns[2]);
            continue;
        }
        EXPECT_EQ(read(columns[1]), kind == "refused" ? Bytes{} : hex_bytes(columns[2]));
        if (kind == "=") EXPECT_EQ(render(hex(columns[2])), columns[1]);
    }
    for (const std::string s : {"1", "nan"}) EXPECT_EQ(read(s + '\0'), Bytes{});
}

// Random values in random notations against GMP.
TEST(DecimalText, RandomValues) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        const std::string digits = random_digits(random, 1 + random() % (random() % 4 ? 42 : 130));
        const Decimal exact((random() % 2 ? "-" : "") + digits, between(random, -150, 119));
        SCOPED_TRACE(exact.plain());
        const Bytes bytes = exact.bytes();
        ASSERT_EQ(read(exact.plain()), is_infinite(bytes) ? Bytes{} : bytes);
        if (!is_infinite(bytes) && bytes[0] > 1) ASSERT_EQ(read(render(number(bytes))), bytes);
    }
}

}  // namespace
