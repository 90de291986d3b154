#include "oci_number/call_frame.h"
#include "support/data.h"
#include "support/numbers.h"

namespace {

using oci_number::OCINumberProcessValue;
const std::string returns_0 = "D function OCINumberProcessValue return with status 0";
const std::string returns_error = "D function OCINumberProcessValue return with status -1";

TEST(Render, CutsAndRounds) {
    ASSERT_FALSE(data_rows("render.txt").empty());
    for (const auto &[line, c] : data_rows("render.txt")) {
        SCOPED_TRACE(line);
        const OCINumber n = from_text(c[0]);
        OraText buffer[128] = {};
        OraText *str = buffer;
        sb8 length = sizeof buffer;
        take_log();
        ASSERT_EQ(OCINumberProcessValue(&n, &str, &length, static_cast<ub4>(std::stoul(c[1])),
                                        c[2] == "1"),
                  OCI_SUCCESS);
        EXPECT_EQ(std::string(str, str + length), c[3]);
        EXPECT_EQ(str - buffer, c[3][c[3][0] == '-'] == '.' ? 1 : 0);
        EXPECT_EQ(take_log(), std::vector{returns_0});
    }
}

TEST(Render, BufferBounds) {
    const struct {
        const char *number;
        sb8 capacity;
        bool fits;
    } rows[] = {{"9.5", 3, false}, {"9.5", 4, true}, {"-9.5", 4, false}, {"-9.5", 5, true},
                {"8.5", 3, true},  {"9.4", 3, true}, {"123", 3, true},   {"0.95", 4, true}};
    for (const auto &row : rows) {
        SCOPED_TRACE(text("%s in %ld", row.number, row.capacity));
        const OCINumber n = from_text(row.number);
        OraText buffer[8] = "#######";
        OraText *str = buffer;
        sb8 length = row.capacity;
        take_log();
        EXPECT_EQ(OCINumberProcessValue(&n, &str, &length, 0, 0), row.fits ? 0 : -1);
        if (!row.fits) EXPECT_EQ(length, row.capacity);
        EXPECT_EQ(str, buffer);
        for (sb8 i = row.capacity; i < 7; ++i) EXPECT_EQ(buffer[i], '#');
        EXPECT_EQ(take_log(), std::vector{row.fits ? returns_0 : returns_error});
    }
    // What the codec refuses: a text that is too long, an infinity, no number.
    for (const OCINumber &n : {from_text("123"), from_text("inf"), from_text("-inf"), number({0}),
                               number({22, 193, 2})}) {
        OraText buffer[2] = {};
        OraText *str = buffer;
        sb8 length = 2;
        EXPECT_EQ(OCINumberProcessValue(&n, &str, &length, 0, 0), OCI_ERROR);
        EXPECT_EQ(str, buffer);
        EXPECT_EQ(length, 2);
        EXPECT_EQ(take_log(), (std::vector{text("D fail to get str from number number:%p",
                                                static_cast<const void *>(&n)),
                                           returns_error}));
    }
}

}  // namespace
