// Results and refusals of every function on given operands.
#include "oci_calc_number/oci_calc_number.h"
#include "support/functions.h"
#include "support/surroundings.h"

namespace {

// The result apart from the operands, and in the place of each.
class Results : public testing::TestWithParam<const char *> {};

TEST_P(Results, Table) {
    long surroundings = 0;
    for (const auto &[line, columns] : data_rows(GetParam())) {
        SCOPED_TRACE(line);
        const Function &f = function(columns.at(0));
        auto column = columns.begin() + 1;
        OCINumber operands[2] = {hex(*column++), number({})};
        if (f.numbers == 2) operands[1] = hex(*column++);
        const sword count = f.has_count() ? std::stoi(*column++) : 0;
        ASSERT_EQ(*column++, "=");
        const bool refused = *column == "error";
        const int places = f.result == 0 ? 1 : f.gives_number ? f.numbers + 1 : 1;
        for (int place = 0; place < places; ++place) {
            ErrorHandle err;
            alignas(8) OCINumber apart = number({});
            OCINumber a = operands[0], b = operands[1];
            OCINumber *const r = f.result == 0 || place == 1 ? &a : place == 2 ? &b : &apart;
            const OCINumber before = *r;
            take_log();
            const sword status = [&] {
                const Surroundings set(surroundings++);
                return f.call(err, &a, &b, count, r);
            }();
            ASSERT_EQ(status, refused ? OCI_ERROR : OCI_SUCCESS);
            const auto log = take_log();
            if (refused) {
                EXPECT_EQ(std::to_string(err.code()), column[1]);
                EXPECT_EQ(err.message(), ended(column[2]));
                EXPECT_TRUE(*r == before);
                const bool is_logged = columns.end() - column > 3;
                EXPECT_EQ(log.at(log.size() - 2), is_logged ? "E " + column[3] : log.front());
            } else if (f.gives_number) {
                EXPECT_EQ(value_bytes(*r), hex_bytes(*column));
                if (f.name == "Assign") EXPECT_EQ(*r, operands[0]);
                EXPECT_EQ(err.code(), 0);
                if (column + 1 != columns.end()) EXPECT_EQ(log.at(1), "D " + column[1]);
            } else {
                int value;
                std::memcpy(&value, r, sizeof value);
                EXPECT_EQ(value, std::stoi(*column));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Tables, Results, testing::Values("results.txt", "word_edges.txt"));

TEST(Printers, Text) {
    OCINumber z = hex("0180"), negative = hex("033E6166"),
              broken = hex("FF" + repeated("(07){21}"));
    QZCICalcNumber record;
    ASSERT_EQ(QZCICalcNumFromNumber(&record, &negative), 0);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(print_number(&z), 0);
    EXPECT_EQ(print_number(&negative), 0);
    EXPECT_EQ(print_number(&broken), 0);
    EXPECT_EQ(print_calc_number(&record), 0);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              "Len=1: 1, 128\nLen=3: 3, 62, 97, 102\nLen=255: 255" + repeated("(, 7){21}") +
                  "\nbuffer is -4\n");
}

}  // namespace
