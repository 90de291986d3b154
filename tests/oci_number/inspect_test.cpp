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

TEST(Inspect, Constants) {
    OCINumber zero = number({}), pi = number({});
    OCINumberSetZero(nullptr, &zero);
    OCINumberSetPi(nullptr, &pi);
    take_log();
    EXPECT_EQ(zero, hex("0180"));
    EXPECT_EQ(pi, hex("15C1040F105D42245A5021272F1B2C272150331D5515"));
}

}  // namespace
