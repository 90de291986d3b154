#include "support/values.h"

namespace {

// Values in ascending order: every pair must compare as its places do.
TEST(Inspect, CmpOrdersValues) {
    const char *const ascending[] = {"-inf",   "-1e125", "-123", "-1.5", "-1", "-0.5",  "0",
                                     "1e-128", "0.5",    "1",    "1.5",  "10", "1e125", "inf"};
    ErrorHandle err;
    for (const auto &a : ascending) {
        for (const auto &b : ascending) {
            const OCINumber x = from_text(a), y = from_text(b);
            sword result = 7;
            ASSERT_EQ(OCINumberCmp(err, &x, &y, &result), OCI_SUCCESS);
            EXPECT_EQ((result > 0) - (result < 0), (&a > &b) - (&a < &b)) << a << ' ' << b;
        }
    }
}

TEST(Inspect, AssignCopiesAllBytes) {
    ErrorHandle err;
    OCINumber from = hex("02C102070809"), to = number({});
    EXPECT_EQ(OCINumberAssign(err, &from, &to), OCI_SUCCESS);
    EXPECT_EQ(OCINumberAssign(err, &to, &to), OCI_SUCCESS);
    EXPECT_EQ(to, from);
}

}  // namespace
