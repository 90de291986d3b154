#include <cinttypes>

#include "support/exact.h"
#include "support/numbers.h"

namespace {

constexpr uword is_signed = OCI_NUMBER_SIGNED;
constexpr uword is_unsigned = OCI_NUMBER_UNSIGNED;

// The low `length` bytes of a value.
ub8 low_bytes(ub8 value, uword length) {
    return length == 8 ? value : value & ((ub8{1} << 8 * length) - 1);
}

TEST(IntConvert, FromInt) {
    struct Row {
        ub8 value;
        uword length, flag;
        const char *text;
        std::vector<int> bytes;
    };
    const Row rows[] = {
        {0, 4, is_signed, "0", {1, 0x80}},
        {5, 1, is_unsigned, "5", {2, 0xC1, 6}},
        {12, 2, is_signed, "12", {2, 0xC1, 0x0D}},
        {100, 4, is_signed, "100", {3, 0xC2, 2, 1}},
        {123, 8, is_unsigned, "123", {3, 0xC2, 2, 0x18}},
        {1000, 2, is_unsigned, "1000", {3, 0xC2, 0x0B, 1}},
        {0xFF, 1, is_signed, "-1", {3, 0x3E, 0x64, 0x66}},
        {0xFF, 1, is_unsigned, "255", {3, 0xC2, 3, 0x38}},
        {ub8(-5), 8, is_signed, "-5", {3, 0x3E, 0x60, 0x66}},
        {ub8(-100), 4, is_signed, "-100", {4, 0x3D, 0x64, 0x65, 0x66}},
        {ub8(-128), 1, is_signed, "-128", {4, 0x3D, 0x64, 0x49, 0x66}},
        {ub8(-32768), 2, is_signed, "-32768", {5, 0x3C, 0x62, 0x4A, 0x21, 0x66}},
        {4294967295, 4, is_unsigned, "4294967295", {6, 0xC5, 0x2B, 0x5F, 0x61, 0x49, 0x60}},
        {ub8{1} << 63,
         8,
         is_signed,
         "-9223372036854775808",
         {0x0C, 0x35, 0x5C, 0x4F, 0x44, 0x1D, 0x62, 0x21, 0x2F, 0x18, 0x2B, 0x5D, 0x66}},
        {~ub8{0},
         8,
         is_unsigned,
         "18446744073709551615",
         {0x0B, 0xCA, 0x13, 0x2D, 0x44, 0x2D, 0x08, 0x26, 0x0A, 0x38, 0x11, 0x10}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.text);
        // At an odd address, to see that alignment does not matter.
        char memory[9];
        std::memcpy(memory + 1, &row.value, sizeof row.value);
        OCINumber result = number({}), untouched = result;
        ErrorHandle err;
        take_log();
        ASSERT_EQ(OCINumberFromInt(err, memory + 1, row.length, row.flag, &result), OCI_SUCCESS);
        EXPECT_EQ(value_bytes(result), row.bytes);
        EXPECT_EQ(0,
                  std::memcmp(result.OCINumberPart + row.bytes.size(),
                              untouched.OCINumberPart + row.bytes.size(), 22 - row.bytes.size()));
        EXPECT_EQ(take_log(),
                  (std::vector<std::string>{
                      text("D call OCINumberFromInt with params [err:%p] [inum:%p] "
                           "[inum_length:%u] [inum_s_flag:%u] [number:%p]",
                           static_cast<void *>(err.get()), static_cast<void *>(memory + 1),
                           row.length, row.flag, static_cast<void *>(&result)),
                      text("D OCINumberFromInt get int to str: %s buffer_size: %zu", row.text,
                           std::strlen(row.text)),
                      "D function OCINumberFromInt return with status 0"}));
        // And back.
        ub8 back = 0;
        ASSERT_EQ(OCINumberToInt(err, &result, row.length, row.flag, &back), OCI_SUCCESS);
        EXPECT_EQ(back, low_bytes(row.value, row.length));
    }
}

TEST(IntConvert, FromIntRefusals) {
    const int value = 1;
    const OCINumber untouched = number({});
    struct Row {
        bool null_handle;
        const void *inum;
        uword length, flag;
        bool null_number;
        sword status;
        int code;
        std::string message, error_line;
    };
    const auto bad_argument = [](int argument) { return argument_error(21560, argument); };
    const auto line = [&](int argument) {
        return text("E 21560: argument %d is null, invalid, or out of range", argument);
    };
    const Row rows[] = {
        {true, nullptr, 0, 1, true, -2, 0, "", "E call OCINumberFromInt with invalid handle"},
        {false, nullptr, 0, 1, true, -1, 21560, bad_argument(2), line(2)},
        {false, &value, 0, 1, true, -1, 21560, bad_argument(3), line(3)},
        {false, &value, 3, 1, true, -1, 21560, bad_argument(4), line(4)},
        {false, &value, 3, 2, true, -1, 21560, bad_argument(5), line(5)},
        {false, &value, 3, 2, false, -1, 22057, "OCI-22057: bad integer length [3]\n", ""},
        {false, &value, 4294967295u, 0, false, -1, 22057,
         "OCI-22057: bad integer length [4294967295]\n", ""},
    };
    for (const Row &row : rows) {
        OCINumber result = untouched;
        OCINumber *target = row.null_number ? nullptr : &result;
        check_call({"OCINumberFromInt",
                    [&](OCIError *err) {
                        const sword status =
                            OCINumberFromInt(err, row.inum, row.length, row.flag, target);
                        auto log = take_log();
                        EXPECT_EQ(log.back(), text("D function OCINumberFromInt return with "
                                                   "status %d",
                                                   status));
                        EXPECT_EQ(log.size(), row.error_line.empty() ? 2u : 3u);
                        if (!row.error_line.empty()) EXPECT_EQ(log[1], row.error_line);
                        return status;
                    },
                    row.status,
                    row.code,
                    row.message,
                    {},
                    row.null_handle});
        EXPECT_EQ(result, untouched);
    }
}

TEST(IntConvert, ToInt) {
    enum Outcome { stored, negative, range, overflow, no_text, bad_length };
    struct Row {
        const char *value;
        uword length, flag;
        Outcome outcome;
        ub8 result;  // the stored bits; for `range` the value that the message names
    };
    const Row rows[] = {
        {"2.9", 4, is_signed, stored, 2},
        {"-2.9", 4, is_signed, stored, ub8(-2)},
        {"0.5", 4, is_unsigned, stored, 0},
        {"-0.5", 4, is_signed, stored, 0},
        {"-0.5", 4, is_unsigned, negative, 0},
        {"0", 8, is_unsigned, stored, 0},
        {"127", 1, is_signed, stored, 127},
        {"-128", 1, is_signed, stored, ub8(-128)},
        {"128", 1, is_signed, range, 128},
        {"-129", 1, is_signed, range, ub8(-129)},
        {"255", 1, is_unsigned, stored, 255},
        {"256", 1, is_unsigned, range, 256},
        {"32767", 2, is_signed, stored, 32767},
        {"-32769", 2, is_signed, range, ub8(-32769)},
        {"65535", 2, is_unsigned, stored, 65535},
        {"65536", 2, is_unsigned, range, 65536},
        {"-2147483648", 4, is_signed, stored, ub8(-2147483648)},
        {"2147483648", 4, is_signed, range, 2147483648},
        {"4294967295", 4, is_unsigned, stored, 4294967295},
        {"4294967296", 4, is_unsigned, range, 4294967296},
        {"9223372036854775807.9", 8, is_signed, stored, ~ub8{0} >> 1},
        {"-9223372036854775808", 8, is_signed, stored, ub8{1} << 63},
        {"-9223372036854775809", 8, is_signed, overflow, 0},
        {"9223372036854775808", 8, is_signed, range, ub8{1} << 63},
        {"18446744073709551615", 8, is_unsigned, stored, ~ub8{0}},
        {"18446744073709551615", 4, is_unsigned, range, ~ub8{0}},
        {"18446744073709551615", 1, is_signed, range, ~ub8{0}},
        {"18446744073709551616", 8, is_unsigned, overflow, 0},
        {"1e20", 1, is_signed, overflow, 0},
        {"inf", 8, is_signed, overflow, 1},
        {"-inf", 8, is_unsigned, overflow, 1},
        {"1", 3, is_signed, bad_length, 0},
        {"1", 0, is_unsigned, bad_length, 0},
        {"18446744073709551615", 16, is_signed, bad_length, 0},
        {"1e60", 8, is_signed, no_text, 0},
    };
    for (const Row &row : rows) {
        std::string digits = row.value;
        if (const size_t e = digits.find('e'); e != std::string::npos) {
            digits = "1" + std::string(std::stoul(digits.substr(e + 1)), '0');
        }
        SCOPED_TRACE(text("%s into %u bytes, flag %u", row.value, row.length, row.flag));
        const OCINumber n = from_text(digits);
        sb8 rsl = 0x7777777777777777;
        const sb8 untouched = rsl;
        Call call{row.value, nullptr, OCI_ERROR, 602, "", {}};
        std::string error_line;
        switch (row.outcome) {
            case stored: call.status = 0, call.code = 0; break;
            case negative:
                call.message = "number is negative, but rsl_flag is OCI_NUMBER_UNSIGNED";
                error_line = call.message;
                break;
            case range:
                call.message = text("the value is overflow, value:%" PRId64 ", rsl_length:%u",
                                    static_cast<sb8>(row.result), row.length);
                error_line = call.message;
                break;
            case overflow:
                call.code = 22053, call.message = "OCI-22053: overflow error";
                if (row.result == 0) error_line = "fail to convert str to int";
                break;
            case no_text:
                call.code = 1458;
                call.message = "ORA-01458: invalid length inside variable character string";
                error_line = "fail to get str from number";
                break;
            case bad_length:
                call.code = 22057;
                call.message = text("OCI-22057: bad integer length [%u]\n", row.length);
        }
        call.run = [&](OCIError *err) {
            const sword status = OCINumberToInt(err, &n, row.length, row.flag, &rsl);
            std::vector<std::string> log = {text(
                "D thread %ld call function OCINumberToInt with param err %p,number:%p, "
                "rsl_length:%u, rsl_flag:%u, rsl:%p",
                static_cast<long>(pthread_self()), static_cast<void *>(err),
                static_cast<const void *>(&n), row.length, row.flag, static_cast<void *>(&rsl))};
            if (!error_line.empty()) log.push_back("E " + error_line);
            log.push_back(text("D function OCINumberToInt return with status %d", status));
            EXPECT_EQ(take_log(), log);
            return status;
        };
        check_call(call);
        if (row.outcome == stored) {
            ub8 expected = static_cast<ub8>(untouched);
            std::memcpy(&expected, &row.result, row.length);
            EXPECT_EQ(static_cast<ub8>(rsl), expected);
        } else {
            EXPECT_EQ(rsl, untouched);
        }
    }
}

TEST(IntConvert, ToIntParameters) {
    const OCINumber n = number({2, 193, 2});
    const OCINumber invalid[] = {number({0}), number({22, 193, 2}), number({255, 193, 2})};
    int rsl = 7;
    struct Row {
        bool null_handle;
        const OCINumber *number;
        void *rsl;
        uword flag;
    };
    const Row rows[] = {{true, &n, &rsl, 2},
                        {true, nullptr, nullptr, 1},
                        {false, nullptr, &rsl, 2},
                        {false, &n, nullptr, 0},
                        {false, &n, &rsl, 1}};
    for (const Row &row : rows) {
        ErrorHandle err;
        OCIError *errhp = row.null_handle ? nullptr : err.get();
        const std::string message = text("invalid param, err:%p, number:%p, rsl:%p, rsl_flag:%u",
                                         static_cast<void *>(errhp),
                                         static_cast<const void *>(row.number), row.rsl, row.flag);
        take_log();
        EXPECT_EQ(OCINumberToInt(errhp, row.number, 4, row.flag, row.rsl),
                  row.null_handle ? OCI_INVALID_HANDLE : OCI_ERROR);
        EXPECT_EQ(take_log().at(1), "E " + message);
        EXPECT_EQ(err.code(), row.null_handle ? 0 : 602);
        EXPECT_EQ(err.message(), row.null_handle ? "" : message);
    }
    for (const OCINumber &bad : invalid) {
        ErrorHandle err;
        EXPECT_EQ(OCINumberToInt(err, &bad, 4, is_signed, &rsl), OCI_ERROR);
        EXPECT_EQ(err.code(), 1458);
    }
    EXPECT_EQ(rsl, 7);
}

// Random bit patterns of every width both ways, against GMP's text of them.
TEST(IntConvert, RandomPatterns) {
    auto random = seeded();
    ErrorHandle err;
    for (long i = random_cases(20000); i > 0; --i) {
        const uword length = 1u << random() % 4;
        const uword flag = random() % 2 ? is_signed : is_unsigned;
        const ub8 bits = low_bytes(random() >> random() % 64, length);
        const ub8 sign_bit = ub8{1} << (8 * length - 1);
        const bool negative = flag == is_signed && (bits & sign_bit) != 0;
        const ub8 magnitude = negative ? low_bytes(-bits, length) : bits;
        const Decimal exact((negative ? "-" : "") + text("%" PRIu64, magnitude), 0);
        OCINumber n;
        ub8 back = 0;
        ASSERT_EQ(OCINumberFromInt(err, &bits, length, flag, &n), OCI_SUCCESS);
        // The normal form, but for zero pairs kept at the end.
        auto bytes = value_bytes(n);
        if (bytes[0] > 1) {
            if (negative) bytes.pop_back();
            while (bytes.back() == (negative ? 101 : 1)) bytes.pop_back();
            if (negative) bytes.push_back(102);
            bytes[0] = static_cast<int>(bytes.size()) - 1;
        }
        EXPECT_EQ(bytes, exact.bytes());
        ASSERT_EQ(OCINumberToInt(err, &n, length, flag, &back), OCI_SUCCESS);
        EXPECT_EQ(back, bits) << exact.plain();
        take_log();
    }
}

}  // namespace
