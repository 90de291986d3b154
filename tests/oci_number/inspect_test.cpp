#include "support/numbers.h"

namespace {

TEST(Inspect, IsIntOfAStrangeByteIsOnlyLogged) {
    const OCINumber strange = hex("0105");
    int result = 7;
    ErrorHandle err;
    take_log();
    EXPECT_EQ(OCINumberIsInt(err, &strange, &result), OCI_ERROR);
    EXPECT_EQ(take_log().at(1),
              "E number length is 1, bug OCINumberPart[1] is not 128, OCINumberPart[1]:5");
    EXPECT_EQ(err.code(), 0);
    EXPECT_EQ(result, 7);
}

// Values in ascending order: every pair must compare as its places do.
TEST(Inspect, CmpOrdersValues) {
    const char *const ascending[] = {
        "0100",                                              // -inf
        "03005B66",                                          // -1E125
        "043D644E66", "043E643366", "033E6466", "033F3366",  // -123, -1.5, -1, -0.5
        "0180",                                              // 0
        "028102",                                            // 1E-128
        "02C033",     "02C102",     "03C10233", "02C10B",    // 0.5, 1, 1.5, 10
        "02FF0B",     "02FF65",                              // 1E125, inf
    };
    ErrorHandle err;
    const auto sign = [](auto v) { return (v > 0) - (v < 0); };
    for (const auto &a : ascending) {
        for (const auto &b : ascending) {
            const OCINumber x = hex(a), y = hex(b);
            sword result = 7;
            ASSERT_EQ(OCINumberCmp(err, &x, &y, &result), OCI_SUCCESS);
            EXPECT_EQ(sign(result), sign(&a - &b)) << a << ' ' << b;
        }
    }
}

TEST(Inspect, AssignCopiesAllBytes) {
    ErrorHandle err;
    OCINumber from = hex("02C102070809"), to = number({});
    EXPECT_EQ(OCINumberAssign(err, &from, &to), OCI_SUCCESS);
    EXPECT_EQ(to, from);
    EXPECT_EQ(OCINumberAssign(err, &to, &to), OCI_SUCCESS);
    EXPECT_EQ(to, from);
}

}  // namespace
