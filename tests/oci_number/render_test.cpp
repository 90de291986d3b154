#include "oci_number/call_frame.h"
#include "support/numbers.h"

namespace {

TEST(Render, CutsAndRounds) {
    for (const auto &[line, c] : data_rows("render.txt")) {
        SCOPED_TRACE(line);
        const OCINumber n = from_text(c[0]);
        const bool full = c[3] == "full", refused = c[3] == "refused";
        const sb8 room = c.size() > 4 ? std::stol(c[4]) : 128;
        std::string buffer(130, '#');
        auto *const start = reinterpret_cast<OraText *>(buffer.data());
        OraText *str = start;
        sb8 length = room;
        take_log();
        const sword status = oci_number::OCINumberProcessValue(
            &n, &str, &length, static_cast<ub4>(std::stoul(c[1])), c[2] == "1");
        std::vector<std::string> log = {
            text("D function OCINumberProcessValue return with status %d", status)};
        if (refused) {
            log.insert(log.begin(), text("D fail to get str from number number:%p", &n));
        }
        EXPECT_EQ(take_log(), log);
        EXPECT_EQ(buffer.find_first_not_of('#', static_cast<size_t>(room)), buffer.npos);
        if (full || refused) {
            EXPECT_EQ(status, OCI_ERROR);
            EXPECT_EQ(str, start);
            EXPECT_EQ(length, room);
        } else {
            EXPECT_EQ(status, OCI_SUCCESS);
            EXPECT_EQ(std::string(str, str + length), c[3]);
            EXPECT_EQ(str - start, c[3][c[3][0] == '-'] == '.' ? 1 : 0);
        }
    }
}

}  // namespace
