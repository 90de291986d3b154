#include "oci_utils/oci_utils.h"
#include "support/exact.h"
#include "support/numbers.h"

namespace {

std::string zeros(int n) { return std::string(static_cast<size_t>(n), '0'); }

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
std::vector<int> read(const std::string &s) {
    std::vector<ub1> exact(s.begin(), s.end());
    OCINumber n = number({});
    const OCINumber untouched = n;
    if (getNumberFromStr(&n, exact.data(), static_cast<ub4>(exact.size())) != OCI_SUCCESS) {
        EXPECT_EQ(n, untouched) << s;
        return {};
    }
    return value_bytes(n);
}

TEST(DecimalText, CanonicalBothWays) {
    struct Row {
        std::string text;
        std::vector<int> bytes;
    };
    const Row rows[] = {
        {"0", {1, 128}},
        {"1", {2, 0xC1, 2}},
        {"10", {2, 0xC1, 0x0B}},
        {"100", {2, 0xC2, 2}},
        {"123", {3, 0xC2, 2, 0x18}},
        {"0.5", {2, 0xC0, 0x33}},
        {"-0.05", {3, 0x3F, 0x60, 0x66}},
        {"1.5", {3, 0xC1, 2, 0x33}},
        {"-1", {3, 0x3E, 0x64, 0x66}},
        {"-0.5", {3, 0x3F, 0x33, 0x66}},
        {"-12.5", {4, 0x3E, 0x59, 0x33, 0x66}},
        {"-100", {3, 0x3D, 0x64, 0x66}},
        {"-123", {4, 0x3D, 0x64, 0x4E, 0x66}},
        {"0.00001", {2, 0xBE, 0x0B}},
        {"0.0001", {2, 0xBF, 2}},
        {"1" + zeros(125), {2, 0xFF, 0x0B}},
        {"-1" + zeros(125), {3, 0, 0x5B, 0x66}},
        {"0." + zeros(127) + "1", {2, 0x81, 2}},
        {"3.1415926535897932384626433832795028842",
         {0x15, 0xC1, 0x04, 0x0F, 0x10, 0x5D, 0x42, 0x24, 0x5A, 0x50, 0x21,
          0x27, 0x2F, 0x1B, 0x2C, 0x27, 0x21, 0x50, 0x33, 0x1D, 0x55, 0x15}},
        {"-1234567890123456789012345678901234567890",
         {21, 43, 89, 67, 45, 23, 11, 89, 67, 45, 23, 11, 89, 67, 45, 23, 11, 89, 67, 45, 23, 11}},
        {"-12345678901234567890123456789012345678",
         {21, 44, 89, 67, 45, 23, 11, 89, 67, 45, 23, 11, 89, 67, 45, 23, 11, 89, 67, 45, 23, 102}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(read(row.text), row.bytes);
        OCINumber n = number({});
        for (size_t i = 0; i < row.bytes.size(); ++i) {
            n.OCINumberPart[i] = static_cast<ub1>(row.bytes[i]);
        }
        EXPECT_EQ(render(n), row.text);
    }
}

TEST(DecimalText, ReadsOtherForms) {
    const struct {
        std::string text, canonical;
    } rows[] = {
        {"  -12.50", "-12.5"},
        {"-0", "0"},
        {"0.000", "0"},
        {".0", "0"},
        {".5", "0.5"},
        {"-.5", "-0.5"},
        {"5.", "5"},
        {"000120.0300", "120.03"},
        {zeros(300) + "7", "7"},
        {zeros(300) + "." + zeros(127) + "1" + zeros(300), "0." + zeros(127) + "1"},
        // Rounded once, half away from zero, at the 20th digit pair.
        {"1" + zeros(37) + "0.5", "1" + zeros(37) + "1"},  // 39 digits, one pair's tens dropped
        {"1" + zeros(38) + ".49999999999", "1" + zeros(38)},
        {"-1" + zeros(39) + ".5", "-1" + zeros(38) + "1"},
        {std::string(40, '9') + ".5", "1" + zeros(40)},
        {"9." + std::string(39, '9'), "10"},
        {"0.01" + zeros(36) + "49" + zeros(40) + "9", "0.01" + zeros(36) + "49"},
        // Both ends of the range.
        {std::string(126, '9').replace(40, 86, zeros(86)), std::string(40, '9') + zeros(86)},
        {"0." + zeros(128) + "9", "0"},
        {"0." + zeros(128) + std::string(39, '9') + "4", "0"},
        {"0." + zeros(128) + std::string(41, '9'), "0." + zeros(127) + "1"},
        {"-0." + zeros(5000) + "1", "0"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(read(row.text), read(row.canonical));
        EXPECT_FALSE(read(row.text).empty());
    }
}

TEST(DecimalText, RefusedTexts) {
    const std::string rows[] = {"",
                                "-",
                                "   ",
                                ".",
                                "-.",
                                " - 1",
                                "1.2.3",
                                "1-2",
                                "nan",
                                "-nan",
                                std::string("nan\0", 4),
                                "+1",
                                "1e5",
                                "1 ",
                                "--1",
                                "1,5",
                                "\t1",
                                std::string("1\0", 2),
                                "0x1",
                                "1" + zeros(126),
                                std::string(126, '9'),
                                std::string(126, '9') + ".5"};
    for (const std::string &row : rows) EXPECT_EQ(read(row), std::vector<int>{}) << row;
}

TEST(DecimalText, RendersFormsOutsideNormalForm) {
    const struct {
        OCINumber bytes;
        const char *text;
    } rows[] = {
        {number({3, 0xC2, 2, 1}), "100"},
        {number({3, 0xC2, 1, 6}), "5"},
        {number({2, 0xC1, 1}), "0"},
        {number({3, 0x3E, 101, 102}), "0"},
        {number({2, 0x3E, 96}), "-5"},  // no ending byte
        {number({0}), "refused"},
        {number({22, 0xC1, 2}), "refused"},
        {number({255, 0xC1, 2}), "refused"},
        {number({1, 5}), "refused"},
        {number({2, 62, 102}), "refused"},
        {number({2, 255, 101}), "refused"},
        {number({1, 0}), "refused"},
        {number({3, 0xC1, 2, 0}), "refused"},
        {number({3, 0xC1, 102, 2}), "refused"},
        {number({3, 0x3E, 1, 102}), "refused"},
    };
    for (const auto &row : rows) EXPECT_EQ(render(row.bytes), row.text) << row.text;
}

// Random values in random notations against GMP.
TEST(DecimalText, RandomValues) {
    auto random = seeded();
    for (long i = random_cases(20000); i > 0; --i) {
        const size_t length = 1 + random() % (random() % 4 ? 42 : 130);
        std::string digits;
        for (size_t k = 0; k < length; ++k) {
            digits += static_cast<char>('0' + (random() % 3 ? random() % 10 : random() % 2 * 9));
        }
        const long exponent = static_cast<long>(random() % 270) - 150;
        const Decimal exact((random() % 2 ? "-" : "") + digits, exponent);
        SCOPED_TRACE(exact.plain());
        const auto bytes = exact.bytes();
        ASSERT_EQ(read(exact.plain()), bytes);
        if (bytes.empty() || bytes[0] == 1) continue;
        OCINumber n = number({});
        for (size_t k = 0; k < bytes.size(); ++k) n.OCINumberPart[k] = static_cast<ub1>(bytes[k]);
        ASSERT_EQ(read(render(n)), bytes);
    }
}

}  // namespace
