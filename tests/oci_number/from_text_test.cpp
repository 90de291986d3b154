#include "support/guard_page.h"
#include "support/values.h"

namespace {

// Reads a text under a model, both at the end of their pages: the value's bytes, or the
// number of the error.
Bytes read(const std::string &str, const std::string &fmt) {
    const GuardedBytes s(str), f(fmt);
    const OCINumber untouched = number({});
    const GuardedBytes record(&untouched, sizeof untouched);
    ErrorHandle err;
    const sword status =
        OCINumberFromText(err, s.as<OraText>(), static_cast<ub4>(str.size()), f.as<OraText>(),
                          static_cast<ub4>(fmt.size()), nullptr, 0, record.as<OCINumber>());
    take_log();
    if (status == OCI_SUCCESS) return value_bytes(*record.as<OCINumber>());
    EXPECT_EQ(*record.as<OCINumber>(), untouched);
    return {err.code()};
}

TEST(FromText, Results) {
    for (const auto &[line, c] : data_rows("from_text.txt")) {
        EXPECT_EQ(read(c[0], c[1]),
                  c[2].starts_with("2206") ? Bytes{std::stoi(c[2])} : bytes_of(c[2]))
            << line;
    }
    for (const char *str : {"\t1", "1\x80"}) EXPECT_EQ(read(str, "9999"), Bytes{22062});
}

}  // namespace
