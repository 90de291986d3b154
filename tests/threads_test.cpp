// Many threads at once through the functions, the handles and the log; what
// the thread sanitizer is for.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "oci.h"
#include "oci_number_log.h"

namespace {

TEST(Threads, CallsAtOnce) {
    std::atomic<long> lines{0};
    qzoci_log_set_sink([](void *context, int, const char *, long, const char *,
                          size_t) { ++*static_cast<std::atomic<long> *>(context); },
                       &lines);
    OCIEnv *env = nullptr;
    ASSERT_EQ(OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr), 0);
    const auto work = [env](int thread) {
        void *handle = nullptr;
        ASSERT_EQ(OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, nullptr), OCI_SUCCESS);
        auto *err = static_cast<OCIError *>(handle);
        for (int i = 0; i < 300; ++i) {
            qzoci_log_set_level(i % 16 == 0 ? LOG_LEVEL_DEBUG : QZOCI_LOG_OFF);
            const int value = thread * 1000 + i;
            int back = 0;
            OCINumber n;
            OCINumberFromInt(err, &value, sizeof value, OCI_NUMBER_SIGNED, &n);
            OCINumberToInt(err, &n, sizeof back, OCI_NUMBER_SIGNED, &back);
            EXPECT_EQ(back, value);
            EXPECT_EQ(OCINumberToInt(err, nullptr, 4, OCI_NUMBER_SIGNED, &back), OCI_ERROR);
        }
        EXPECT_EQ(OCIHandleFree(err, OCI_HTYPE_ERROR), OCI_SUCCESS);
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) threads.emplace_back(work, t);
    for (auto &t : threads) t.join();
    qzoci_log_set_level(QZOCI_LOG_OFF);
    qzoci_log_set_sink(nullptr, nullptr);
    EXPECT_GT(lines, 0);
    EXPECT_EQ(OCIHandleFree(env, OCI_HTYPE_ENV), OCI_SUCCESS);
}

}  // namespace
