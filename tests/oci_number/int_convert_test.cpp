#include "oci_number/call_frame.h"
#include "support/values.h"

namespace {

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
        const uword flag = columns[3] == "signed" ? OCI_NUMBER_SIGNED : OCI_NUMBER_UNSIGNED;
        ErrorHandle err;
        if (columns[0] == "from") {
            // At an odd address, to see that alignment does not matter.
            char memory[9];
            ub8 value = parsed(columns[1]);
            std::memcpy(memory + 1, low_part(value, length), length);
            OCINumber result = number({});
            EXPECT_EQ(OCINumberFromInt(err, memory + 1, length, flag, &result), OCI_SUCCESS);
            EXPECT_EQ(result, hex(columns[4]));
        } else {
            const OCINumber n = from_text(columns[1]);
            ub8 value = parsed(columns[4]);
            sb8 rsl = 0x7777777777777777, expected = rsl;
            std::memcpy(&expected, low_part(value, length), length);
            EXPECT_EQ(OCINumberToInt(err, &n, length, flag, &rsl), OCI_SUCCESS);
            EXPECT_EQ(rsl, expected);
        }
    }
    take_log();
}

// Random bit patterns of every width both ways, against GMP's text of them.
TEST(IntConvert, RandomPatterns) {
    auto random = seeded();
    ErrorHandle err;
    for (long i = random_cases(20000); i > 0 && !HasFailure(); --i) {
        const uword length = 1u << random() % 4;
        const uword flag = random() % 2 ? OCI_NUMBER_SIGNED : OCI_NUMBER_UNSIGNED;
        ub8 bits = low_bytes(random() >> random() % 64, length);
        const bool negative = flag == OCI_NUMBER_SIGNED && bits >> (8 * length - 1) != 0;
        const mpz_class magnitude(negative ? low_bytes(-bits, length) : bits);
        const Decimal exact(negative ? mpz_class(-magnitude) : magnitude, 0);
        SCOPED_TRACE(exact.plain());
        OCINumber n;
        ub8 back = 0;
        ASSERT_EQ(OCINumberFromInt(err, low_part(bits, length), length, flag, &n), OCI_SUCCESS);
        // The normal form, but for zero pairs kept at the end.
        EXPECT_EQ(bits == 0 ? exact.bytes() : Decimal::of(value_bytes(n)).bytes(), exact.bytes());
        ASSERT_EQ(OCINumberToInt(err, &n, length, flag, low_part(back, length)), OCI_SUCCESS);
        EXPECT_EQ(back, bits);
        take_log();
    }
}

}  // namespace
