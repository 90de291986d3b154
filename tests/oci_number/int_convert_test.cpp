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

ub8 parsed(const std::string &s) {
    return s[0] == '-' ? static_cast<ub8>(std::stoll(s)) : std::stoull(s);
}

TEST(IntConvert, Table) {
    for (const auto &[line, columns] : data_rows("int_convert.txt")) {
        SCOPED_TRACE(line);
        const uword length = static_cast<uword>(std::stoul(columns[2]));
        const uword flag = columns[3] == "signed" ? is_signed : is_unsigned;
        ErrorHandle err;
        take_log();
        std::vector<std::string> log;
        if (columns[0] == "from") {
            // At an odd address, to see that alignment does not matter.
            char memory[9];
            const ub8 value = parsed(columns[1]);
            std::memcpy(memory + 1, &value, sizeof value);
            OCINumber result = number({});
            EXPECT_EQ(OCINumberFromInt(err, memory + 1, length, flag, &result), OCI_SUCCESS);
            EXPECT_EQ(result, hex(columns[4]));
            log = {text("D call OCINumberFromInt with params [err:%p] [inum:%p] "
                        "[inum_length:%u] [inum_s_flag:%u] [number:%p]",
                        err.get(), static_cast<void *>(memory + 1), length, flag, &result),
                   text("D OCINumberFromInt get int to str: %s buffer_size: %zu",
                        columns[1].c_str(), columns[1].size()),
                   returned("OCINumberFromInt", 0)};
        } else {
            const bool refused = columns[4] == "error";
            const OCINumber n = from_text(columns[1]);
            sb8 rsl = 0x7777777777777777, expected = rsl;
            if (!refused) {
                const ub8 value = parsed(columns[4]);
                std::memcpy(&expected, &value, length);
            }
            EXPECT_EQ(OCINumberToInt(err, &n, length, flag, &rsl), refused ? -1 : 0);
            EXPECT_EQ(rsl, expected);
            log = {
                text("D thread %ld call function OCINumberToInt with param err %p,number:%p, "
                     "rsl_length:%u, rsl_flag:%u, rsl:%p",
                     static_cast<long>(pthread_self()), err.get(), &n, length, flag, &rsl)};
            if (refused) {
                const int code = std::stoi(columns[5]);
                EXPECT_EQ(err.code(), code);
                EXPECT_EQ(err.message(), columns[6] + (code == 22057 ? "\n" : ""));
                if (!columns.back().empty()) log.push_back("E " + columns.back());
            }
            log.push_back(returned("OCINumberToInt", refused ? -1 : 0));
        }
        EXPECT_EQ(take_log(), log);
        EXPECT_TRUE(err.other_fields_untouched());
    }
}

// Arguments that are bad in turn, with all behind them bad too.
TEST(IntConvert, FromIntRefusals) {
    const int value = 1;
    OCINumber result = number({});
    for (int argument = 1; argument <= 6; ++argument) {
        SCOPED_TRACE(argument);
        const bool null_handle = argument == 1;
        const std::string message = null_handle    ? ""
                                    : argument < 6 ? argument_error(21560, argument)
                                                   : "OCI-22057: bad integer length [4294967295]\n";
        const sword status = null_handle ? OCI_INVALID_HANDLE : OCI_ERROR;
        std::vector<std::string> log = {returned("OCINumberFromInt", status)};
        if (null_handle) log.insert(log.begin(), "E call OCINumberFromInt with invalid handle");
        if (argument > 1 && argument < 6) log.insert(log.begin(), error_line(message));
        ErrorHandle err;
        take_log();
        EXPECT_EQ(OCINumberFromInt(null_handle ? nullptr : err.get(),
                                   argument > 2 ? &value : nullptr, argument > 3 ? ~0u : 0,
                                   argument > 4 ? is_signed : 1, argument > 5 ? &result : nullptr),
                  status);
        auto said = take_log();
        said.erase(said.begin());
        EXPECT_EQ(said, log);
        EXPECT_EQ(err.message(), message);
        EXPECT_TRUE(err.other_fields_untouched());
        EXPECT_EQ(result, number({}));
    }
}

TEST(IntConvert, ToIntRefusals) {
    const OCINumber one = hex("02C102");
    int rsl = 7;
    for (int bad = 0; bad < 5; ++bad) {
        ErrorHandle err;
        OCIError *const e = bad < 2 ? nullptr : err.get();
        const OCINumber *const n = bad == 1 || bad == 2 ? nullptr : &one;
        int *const r = bad == 1 || bad == 3 ? nullptr : &rsl;
        const uword flag = bad == 1 || bad == 4 ? 1 : is_signed;
        const std::string message =
            text("invalid param, err:%p, number:%p, rsl:%p, rsl_flag:%u", e, n, r, flag);
        take_log();
        EXPECT_EQ(OCINumberToInt(e, n, 4, flag, r), e == nullptr ? OCI_INVALID_HANDLE : OCI_ERROR);
        EXPECT_EQ(take_log().at(1), "E " + message);
        EXPECT_EQ(err.code(), e == nullptr ? 0 : 602);
        EXPECT_EQ(err.message(), e == nullptr ? "" : message);
    }
    for (const char *bytes : {"00", "16C102", "FFC102"}) {
        ErrorHandle err;
        const OCINumber invalid = hex(bytes);
        EXPECT_EQ(OCINumberToInt(err, &invalid, 4, is_signed, &rsl), OCI_ERROR);
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
