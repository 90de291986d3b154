#include "oci_log.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <malloc.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "oci.h"

namespace {

class Log : public ::testing::Test {
protected:
    void SetUp() override {
        path_ = ::testing::TempDir() + "oci_number_log_" + std::to_string(getpid());
        std::remove(path_.c_str());
        ASSERT_EQ(qzoci_log_set_file(path_.c_str()), 0);
        qzoci_log_set_level(LOG_LEVEL_DEBUG);
    }
    void TearDown() override {
        qzoci_log_set_file(nullptr);
        qzoci_log_set_level(QZOCI_LOG_OFF);
        std::remove(path_.c_str());
    }
    std::vector<std::string> lines() {
        std::ifstream in(path_);
        std::vector<std::string> result;
        for (std::string line; std::getline(in, line);) result.push_back(line);
        return result;
    }
    std::string path_;
};

TEST_F(Log, LineAndFilter) {
    qzoci_log_set_level(LOG_LEVEL_WARN);
    QZOCI_LOG_DEBUG("filtered");
    qzoci_log_set_level(99);  // no level: ignored
    EXPECT_EQ(qzoci_log_get_level(), LOG_LEVEL_WARN);
    QZOCI_LOG_ERROR("null %p, number %d", static_cast<void *>(nullptr), 5);
    const auto found = lines();
    ASSERT_EQ(found.size(), 1u);
    EXPECT_TRUE(std::regex_match(
        found[0], std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{6}Z ERROR \[-?\d+\] )"
                             R"(tests/oci_log_test\.cpp:\d+ null \(nil\), number 5)")))
        << found[0];
}

TEST_F(Log, NoTextForgesALine) {
    QZOCI_LOG_ERROR("a\nb\r\t\x1b\x7f\\ \xc3\xa9");
    const std::string huge = std::string(50000, '\n') + std::string(50000, '\x01');
    QZOCI_LOG_ERROR("%s", huge.c_str());
    const auto found = lines();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_NE(found[0].find(" a\\nb\\r\\t\\x1B\\x7F\\\\ \xc3\xa9"), std::string::npos) << found[0];
    EXPECT_GT(found[1].size(), 300000u);
}

// Lines of threads and processes stay whole.
TEST_F(Log, WritersDoNotMix) {
    const auto write_lines = [](char mark) {
        for (int i = 0; i < 200; ++i) {
            QZOCI_LOG_ERROR("%s|", std::string(static_cast<size_t>(50 * i % 3000), mark).c_str());
        }
    };
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    std::thread a(write_lines, 'a'), b(write_lines, 'b');
    a.join();
    b.join();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    const auto found = lines();
    EXPECT_EQ(found.size(), 800u);
    const std::regex whole(R"(\d{4}-\S+Z ERROR \[-?\d+\] \S+ (a*|b*)\|)");
    for (const auto &line : found) ASSERT_TRUE(std::regex_match(line, whole)) << line;
}

TEST_F(Log, SinkOfTheProgram) {
    std::vector<std::string> seen;
    qzoci_log_set_sink(
        [](void *context, int level, const char *, long, const char *text, size_t length) {
            static_cast<std::vector<std::string> *>(context)->push_back(
                std::to_string(level) + " " + std::string(text, length));
            EXPECT_EQ(text[length], '\0');
            QZOCI_LOG_ERROR("from inside the sink");
            errno = ENOMEM;
        },
        &seen);
    errno = 4711;
    QZOCI_LOG_ERROR("one\n");
    EXPECT_EQ(errno, 4711);
    qzoci_log_set_sink(nullptr, nullptr);
    QZOCI_LOG_ERROR("two");
    EXPECT_EQ(seen, std::vector<std::string>{"5 one\\n"});
    EXPECT_EQ(lines().size(), 1u);
}

// A full destination cuts a line; that, and a reader that has gone, is no signal.
TEST_F(Log, WritesThatFail) {
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {100, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    for (int i = 0; i < 2; ++i) QZOCI_LOG_ERROR("%s", std::string(200, 'x').c_str());
    setrlimit(RLIMIT_FSIZE, &limit);
    QZOCI_LOG_ERROR("whole");
    const auto found = lines();
    ASSERT_EQ(found.size(), 2u);
    EXPECT_TRUE(found[1].ends_with(" whole"));

    int pipe_ends[2];
    ASSERT_EQ(pipe(pipe_ends), 0);
    ASSERT_EQ(qzoci_log_set_file(("/proc/self/fd/" + std::to_string(pipe_ends[1])).c_str()), 0);
    close(pipe_ends[0]);
    close(pipe_ends[1]);
    QZOCI_LOG_ERROR("to nobody");
}

TEST_F(Log, BadDestinationsKeepTheFormer) {
    const std::string fifo = path_ + "_fifo";
    mkfifo(fifo.c_str(), 0600);
    EXPECT_EQ(qzoci_log_set_file(fifo.c_str()), -1);
    std::remove(fifo.c_str());
    errno = 0;
    EXPECT_EQ(qzoci_log_set_file("/nonexistent/log"), -1);
    EXPECT_EQ(errno, ENOENT);
    QZOCI_LOG_ERROR("still here");
    EXPECT_EQ(lines().size(), 1u);
}

// The log's file takes no standard stream's place; when its descriptor has become
// another file's, that file is neither written to nor closed.
TEST_F(Log, KeepsToItsOwnDescriptor) {
    struct stat log, other;
    stat(path_.c_str(), &log);
    const auto same_file = [](const struct stat &a, const struct stat &b) {
        return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
    };
    const int standard_input = dup(0);
    close(0);
    EXPECT_EQ(qzoci_log_set_file(path_.c_str()), 0);
    EXPECT_EQ(fcntl(0, F_GETFD), -1);
    dup2(standard_input, 0);
    close(standard_input);

    FILE *const file = std::tmpfile();
    int fd = 3;
    while (fstat(fd, &other) != 0 || !same_file(other, log)) ASSERT_LT(++fd, 100);
    dup2(fileno(file), fd);
    QZOCI_LOG_ERROR("into the file of somebody else");
    qzoci_log_set_file(nullptr);
    EXPECT_EQ(fstat(fd, &other), 0);
    EXPECT_EQ(other.st_size, 0);
    close(fd);
    std::fclose(file);
}

// What a signal handler logs in the middle of its thread's line is dropped.
TEST_F(Log, SignalHandler) {
    signal(SIGUSR1, [](int) { QZOCI_LOG_ERROR("handler"); });
    alarm(60);  // ends the program if the two wait for each other
    std::atomic<bool> done{false};
    std::thread other([&done, logging = pthread_self()] {
        while (!done) pthread_kill(logging, SIGUSR1), usleep(10);
    });
    for (int i = 0; i < 5000; ++i) QZOCI_LOG_ERROR("line");
    done = true;
    other.join();
    alarm(0);
    signal(SIGUSR1, SIG_DFL);
    long written = 0;
    for (const auto &line : lines()) written += line.ends_with(" line");
    EXPECT_EQ(written, 5000);
}

// Loaded, used and unloaded, the library leaves no descriptor and no memory.
TEST_F(Log, Unload) {
    const auto load = [this] {
        void *const library = dlopen(OCI_NUMBER_SHARED_LIBRARY, RTLD_NOW);
        ASSERT_NE(library, nullptr) << dlerror();
        const auto find = [&]<class F>(F *, const char *name) {
            return reinterpret_cast<F *>(dlsym(library, name));
        };
        find(qzoci_log_set_file, "qzoci_log_set_file")(path_.c_str());
        OCIEnv *env = nullptr;
        find(OCIEnvCreate, "OCIEnvCreate")(&env, 0, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
        void *error = nullptr;
        find(OCIHandleAlloc, "OCIHandleAlloc")(env, &error, OCI_HTYPE_ERROR, 0, nullptr);
        find(OCIHandleFree, "OCIHandleFree")(env, OCI_HTYPE_ENV);
        dlclose(library);
    };
    const auto next_descriptor = [] {
        const int fd = dup(0);
        close(fd);
        return fd;
    };
    load();
    const int fd = next_descriptor();
    const size_t used = mallinfo2().uordblks;
    for (int i = 0; i < 20; ++i) load();
    EXPECT_EQ(next_descriptor(), fd);
    // The C library's own lists grow a little; a handle has 3 KB.
    EXPECT_LT(mallinfo2().uordblks, used + 20000);
}

// The environment is read before main: seen in a fresh process of this program.
TEST_F(Log, Environment) {
    const auto run = [this](const char *level) {
        const std::string command = "OCI_NUMBER_LOG_FILE=" + path_ +
                                    " OCI_NUMBER_LOG_LEVEL=" + level + " " OCI_NUMBER_EMULATOR " " +
                                    std::filesystem::read_symlink("/proc/self/exe").string() +
                                    " --gtest_filter=Speaker.* >/dev/null";
        const size_t before = lines().size();
        EXPECT_EQ(std::system(command.c_str()), 0);
        return lines().size() - before;
    };
    for (const auto &[level, count] :
         {std::pair{"debug", 2u}, {"5", 1u}, {"OFF", 0u}, {"loud", 0u}}) {
        EXPECT_EQ(run(level), count) << level;
    }
}

TEST(Speaker, SpeaksAtTwoLevels) {
    QZOCI_LOG_DEBUG("debug");
    QZOCI_LOG_ERROR("error");
}

}  // namespace
