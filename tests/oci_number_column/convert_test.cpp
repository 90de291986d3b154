// Conversions of columns: each row beside the function of one number.
#include "oci_number_column/columns.h"
#include "oci_utils/oci_utils.h"

namespace {

// What a row becomes: bytes, or a refusal.
struct Expected {
    bool refused;
    std::string bytes;
};

template <class T>
std::string bytes_of(const T &value, size_t size = sizeof(T)) {
    return {reinterpret_cast<const char *>(&value), size};
}

// An integer in two's complement, least significant byte first.
std::string little_endian(mpz_class value, size_t size) {
    if (sgn(value) < 0) value += mpz_class(1) << (8 * size);
    std::string bytes(size, '\0');
    for (char &b : bytes) {
        b = static_cast<char>(mpz_class(value & 255).get_ui());
        value >>= 8;
    }
    return bytes;
}

// The value times 10^scale where that is an integer below 10^precision.
Expected as_decimal(const OCINumber &n, sb4 precision, sb4 scale, size_t size) {
    OraText text[300];
    ub2 length = sizeof text;
    if (getStrFromNumber(&n, text, &length) != 0) return {true, ""};
    const Decimal value(std::string(reinterpret_cast<char *>(text), length));
    const Decimal units = value.shifted(scale);
    const Decimal whole = units.truncated(0);
    const std::string plain = whole.plain();
    if (plain != units.plain()) return {true, ""};
    const mpz_class integer(plain);
    if (plain != "0" && plain.size() - (plain[0] == '-') > static_cast<size_t>(precision)) {
        return {true, ""};
    }
    return {false, little_endian(integer, size)};
}

// A conversion of numbers to another form.
struct Conversion {
    const char *name;
    oci_number_form form;
    size_t size;  // of a row; of text, the most
    sb4 precision, scale;
};
const Conversion conversions[] = {
    {"int64", OCI_NUMBER_INT64, 8, 0, 0},
    {"double", OCI_NUMBER_DOUBLE, 8, 0, 0},
    {"decimal128(38,2)", OCI_NUMBER_DECIMAL128, 16, 38, 2},
    {"decimal128(38,10)", OCI_NUMBER_DECIMAL128, 16, 38, 10},
    {"decimal128(7,3)", OCI_NUMBER_DECIMAL128, 16, 7, 3},
    {"decimal128(12,-1)", OCI_NUMBER_DECIMAL128, 16, 12, -1},
    {"decimal128(38,128)", OCI_NUMBER_DECIMAL128, 16, 38, 128},
    {"decimal256(76,38)", OCI_NUMBER_DECIMAL256, 32, 76, 38},
    {"decimal256(76,-50)", OCI_NUMBER_DECIMAL256, 32, 76, -50},
    {"decimal256(40,1)", OCI_NUMBER_DECIMAL256, 32, 40, 1},
    {"text32", OCI_NUMBER_TEXT_32, 128, 0, 0},
    {"text64", OCI_NUMBER_TEXT_64, 128, 0, 0},
    {"records", OCI_NUMBER_RECORDS, 22, 0, 0},
    {"prefixed", OCI_NUMBER_PREFIXED, 22, 0, 0},
    {"bytes32", OCI_NUMBER_BYTES_32, 21, 0, 0},
    {"bytes64", OCI_NUMBER_BYTES_64, 21, 0, 0},
};

Expected expected(const Conversion &to, const OCINumber &n) {
    ErrorHandle err;
    switch (to.form) {
        case OCI_NUMBER_INT64: {
            sb8 value = 0;
            const sword status = OCINumberToInt(err, &n, 8, OCI_NUMBER_SIGNED, &value);
            return {status != OCI_SUCCESS, bytes_of(value)};
        }
        case OCI_NUMBER_DOUBLE: {
            double value = 0;
            const sword status = OCINumberToReal(err, &n, 8, &value);
            return {status != OCI_SUCCESS, bytes_of(value)};
        }
        case OCI_NUMBER_DECIMAL128:
        case OCI_NUMBER_DECIMAL256: return as_decimal(n, to.precision, to.scale, to.size);
        case OCI_NUMBER_TEXT_32:
        case OCI_NUMBER_TEXT_64: {
            OraText text[200];
            ub4 size = sizeof text;
            const sword status = OCINumberToText(err, &n, reinterpret_cast<const OraText *>("TM9"),
                                                 3, nullptr, 0, &size, text);
            return {status != OCI_SUCCESS, bytes_of(text, status == OCI_SUCCESS ? size : 0)};
        }
        default: {
            OCINumber copy;
            const sword status = OCINumberAssign(err, &n, &copy);
            return {status != OCI_SUCCESS, row_of(OCI_NUMBER_PREFIXED, copy)};
        }
    }
}

// Row `i` of an output, numbers as prefixed records.
std::string row_at(const TestColumn &column, const std::vector<Bytes> &numbers, size_t i,
                   size_t size) {
    switch (column.column.form) {
        case OCI_NUMBER_TEXT_32:
        case OCI_NUMBER_TEXT_64: return column.span(i);
        case OCI_NUMBER_RECORDS:
        case OCI_NUMBER_PREFIXED:
        case OCI_NUMBER_BYTES_32:
        case OCI_NUMBER_BYTES_64: return {numbers[i].begin(), numbers[i].end()};
        default: return {column.at(i * size), size};
    }
}

void check(const Conversion &conversion, oci_number_form form, const RandomRows &random,
           size_t bit_offset) {
    SCOPED_TRACE(testing::Message() << conversion.name << " from form " << form << ", "
                                    << random.rows.size() << " rows, bit " << bit_offset);
    const size_t count = random.rows.size();
    const TestColumn from = column_of(form, random.rows, random.present, bit_offset);
    TestColumn to(conversion.form, count, count * conversion.size, 7 - bit_offset % 8);
    to.column.precision = conversion.precision;
    to.column.scale = conversion.scale;
    take_log();
    oci_number_tally tally;
    ASSERT_EQ(oci_number_column_convert(&from.column, &to.column, OCI_NUMBER_NULL, &tally),
              OCI_NUMBER_DONE);
    EXPECT_TRUE(take_log().empty());
    to.expect_other_bits_kept();

    size_t values = 0, refused = 0, first = count;
    std::vector<Bytes> numbers;
    if (conversion.form <= OCI_NUMBER_BYTES_64) numbers = to.numbers();
    for (size_t i = 0; i < count; ++i) {
        SCOPED_TRACE(testing::Message()
                     << "row " << i << ": " << testing::PrintToString(random.rows[i]));
        // A record that lies beyond 21 bytes is none that the other forms can hold.
        const Expected row = expected(conversion, random.rows[i]);
        const bool present = random.present[i];
        if (present) row.refused ? ++refused : ++values;
        if (present && row.refused && first == count) first = i;
        ASSERT_EQ(to.is_present(i), present && !row.refused);
        const std::string stored = row_at(to, numbers, i, conversion.size);
        if (to.is_present(i)) {
            ASSERT_EQ(stored, row.bytes);
        } else {
            ASSERT_EQ(stored.find_first_not_of('\0'), std::string::npos);
        }
    }
    take_log();
    EXPECT_EQ(tally.values, values);
    EXPECT_EQ(tally.refused, refused);
    EXPECT_EQ(tally.first_refused, first);
    EXPECT_EQ(tally.reason == OCI_NUMBER_DONE, refused == 0);

    // The same, but for the first refused row.
    const oci_number_reason stopped =
        oci_number_column_convert(&from.column, &to.column, OCI_NUMBER_STOP, &tally);
    EXPECT_EQ(stopped, tally.reason);
    EXPECT_EQ(tally.refused, refused == 0 ? 0u : 1u);
    EXPECT_EQ(tally.first_refused, first);
}

// A record of length 22 or more is read as one of 21, or as none, by form; keep lengths that all
// forms have.
RandomRows random_rows(Random &random, size_t count, bool all_present) {
    RandomRows rows(random, count, all_present);
    for (OCINumber &n : rows.rows) {
        if (n.OCINumberPart[0] > 21) n.OCINumberPart[0] = 0;
    }
    return rows;
}

TEST(ColumnConvert, IsWhatEachNumberBecomes) {
    Random random = seeded();
    for (long round = random_cases(6); round > 0; --round) {
        for (const Conversion &conversion : conversions) {
            for (const oci_number_form form : number_forms) {
                for (const size_t count : {1u, 5u, 64u, 150u}) {
                    check(conversion, form, random_rows(random, count, round % 2 == 0),
                          random() % 70);
                }
            }
        }
    }
}

TEST(ColumnConvert, TakesEveryBitOffset) {
    Random random = seeded();
    for (size_t offset = 0; offset < 66; ++offset) {
        check(conversions[0], OCI_NUMBER_BYTES_32, random_rows(random, 1 + random() % 140, false),
              offset);
    }
}

}  // namespace
