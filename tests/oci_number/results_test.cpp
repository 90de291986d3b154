// Results and refusals of every function on given operands.
#include "oci_calc_number/oci_calc_number.h"
#include "support/functions.h"

namespace {

// The result apart from the operands, and in the place of each.
TEST(Results, Table) {
    for (const auto &[line, columns] : data_rows("results.txt")) {
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
            ASSERT_EQ(f.call(err, &a, &b, count, r), refused ? OCI_ERROR : OCI_SUCCESS);
            const auto log = take_log();
            if (refused) {
                const int code = std::stoi(column[1]);
                const std::string message =
                    code == 0       ? ""
                    : code == 602   ? column[2]
                    : code == 22056 ? "OCI-22056: value [" + column[2] + "] is divided by zero\n"
                                    : argument_error(code, std::stoi(column[2]));
                EXPECT_EQ(err.code(), code);
                EXPECT_EQ(err.message(), message);
                EXPECT_TRUE(*r == before);
                const std::string &said = log.at(log.size() - 2);
                if (code == 602 || code == 0) EXPECT_EQ(said, "E " + column[2]);
                if (code == 22060) EXPECT_EQ(said, error_line(message));
                if (code == 22056) EXPECT_EQ(log.size(), 2u);
            } else if (f.gives_number) {
                EXPECT_EQ(value_bytes(*r), hex_bytes(*column));
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

TEST(Results, Printers) {
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
