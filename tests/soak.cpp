// All functions from eight threads at once for some time, while the log is set to files and sinks,
// rotated and silenced, and processes are forked. The results must be those of one thread alone,
// every line of the log a whole one.
//
//   soak SECONDS
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <thread>

#include "oci_number_log.h"
#include "support/functions.h"
#include "support/values.h"

namespace {

std::atomic<bool> is_over{false};
std::atomic<long> calls{0}, lines{0}, failures{0};

void fail(const std::string &what) {
    if (++failures < 20) std::fprintf(stderr, "%s\n", what.c_str());
}

// Everything that a call gives; conversions write behind the status, too.
struct Result {
    sword status = 0;
    alignas(16) ub1 bytes[64] = {};
    bool operator==(const Result &) const = default;
};

struct Case {
    std::string name;
    std::function<void(OCIError *, Result &)> call;
    Result expected;
};

template <class F>
void add_case(std::vector<Case> &cases, const std::string &name, F f) {
    cases.push_back({name, [f](OCIError *e, Result &r) { r.status = f(e, r.bytes); }, {}});
}

const OraText *text_of(const char *s) { return reinterpret_cast<const OraText *>(s); }
OCINumber *number_of(ub1 *bytes) { return reinterpret_cast<OCINumber *>(bytes); }

std::vector<Case> make_cases() {
    Random random(20260101);
    std::vector<Case> cases;
    for (int i = 0; i < 40; ++i) {
        const OCINumber a = number(random_value(random, 40, between(random, -5, 5)).bytes());
        const OCINumber b = number(random_value(random, 12, between(random, -5, 5)).bytes());
        const sword count = between(random, -20, 20);
        for (const Function &f : functions) {
            add_case(cases, f.name, [&f, a, b, count](OCIError *e, ub1 *out) {
                OCINumber own = a, other = b;
                *number_of(out) = a;
                return f.call(e, f.result == 0 ? number_of(out) : &own, &other, count,
                              number_of(out));
            });
        }
        add_case(cases, "FromInt", [count](OCIError *e, ub1 *out) {
            return OCINumberFromInt(e, &count, sizeof count, OCI_NUMBER_SIGNED, number_of(out));
        });
        add_case(cases, "ToInt", [a](OCIError *e, ub1 *out) {
            return OCINumberToInt(e, &a, 8, OCI_NUMBER_SIGNED, out);
        });
        for (const uword size : {4u, 8u}) {
            add_case(cases, "ToReal and FromReal", [a, size](OCIError *e, ub1 *out) {
                const sword status = OCINumberToReal(e, &a, size, out);
                return status != 0 ? status : OCINumberFromReal(e, out, size, number_of(out + 16));
            });
        }
        add_case(cases, "ToText and FromText", [a](OCIError *e, ub1 *out) {
            ub4 size = 40;
            const sword status =
                OCINumberToText(e, &a, text_of("999999990.999999"), 16, nullptr, 0, &size, out);
            if (status != OCI_SUCCESS) return status;
            return OCINumberFromText(e, out, size, text_of("999999990.999999"), 16, nullptr, 0,
                                     number_of(out + 40));
        });
    }
    return cases;
}

// Each case once, with a handle of its own for every few.
void run_cases(const std::vector<Case> &cases, OCIEnv *env, size_t start) {
    void *handle = nullptr;
    for (size_t i = 0; i < cases.size() && !is_over; ++i) {
        const Case &c = cases[(start + i) % cases.size()];
        if (i % 16 == 0) {
            if (handle != nullptr && OCIHandleFree(handle, OCI_HTYPE_ERROR) != OCI_SUCCESS) {
                fail("a handle is not freed");
            }
            if (OCIHandleAlloc(env, &handle, OCI_HTYPE_ERROR, 0, nullptr) != OCI_SUCCESS) {
                return fail("no handle");
            }
        }
        Result result;
        c.call(static_cast<OCIError *>(handle), result);
        ++calls;
        if (!(result == c.expected)) fail(c.name + " gives another result");
    }
    if (handle != nullptr) OCIHandleFree(handle, OCI_HTYPE_ERROR);
}

void count_line(void *context, int, const char *, long, const char *, size_t) {
    ++*static_cast<std::atomic<long> *>(context);
}

// Lines begin with the time and end with the file.
void check_log(const std::string &path) {
    std::ifstream in(path);
    std::string line;
    while (std::getline(in, line)) {
        ++lines;
        if (line.size() < 40 || line[4] != '-' || line[26] != 'Z' || line[27] != ' ' || in.eof()) {
            fail("a broken line: " + line);
        }
    }
    std::remove(path.c_str());
}

// A child has a log and functions that work, whatever its parent's threads were at.
void fork_one(const std::vector<Case> &cases, OCIEnv *env, size_t start) {
    const pid_t child = fork();
    if (child == 0) {
        std::vector<Case> few(
            cases.begin() + static_cast<ptrdiff_t>(start % (cases.size() - 40)),
            cases.begin() + static_cast<ptrdiff_t>(start % (cases.size() - 40) + 40));
        run_cases(few, env, 0);
        _exit(failures == 0 ? 0 : 1);
    }
    int status = -1;
    if (child < 0 || waitpid(child, &status, 0) != child || status != 0) fail("a child failed");
}

}  // namespace

int main(int argc, char **argv) {
    const double seconds = argc > 1 ? std::strtod(argv[1], nullptr) : 10;
    const std::string folder = ::testing::TempDir() + "oci_number_soak_" + std::to_string(getpid());
    OCIEnv *env = nullptr;
    OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
    std::vector<Case> cases = make_cases();
    {
        ErrorHandle err;
        for (Case &c : cases) c.call(err, c.expected);
    }

    std::vector<std::thread> threads;
    for (size_t t = 0; t < 8; ++t) {
        threads.emplace_back([&cases, env, t] {
            for (size_t start = t * 97; !is_over; start += 31) run_cases(cases, env, start);
        });
    }
    long rotations = 0, forks = 0;
    std::string path;
    const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
    for (int step = 0; std::chrono::steady_clock::now() < end; ++step) {
        const std::string former = path;
        switch (step % 8) {
            case 0: qzoci_log_set_level(LOG_LEVEL_TRACE); break;
            case 1:
            case 4:
                path = folder + "_" + std::to_string(++rotations);
                if (qzoci_log_set_file(path.c_str()) != 0) fail("no log");
                if (!former.empty()) check_log(former);
                break;
            case 2: qzoci_log_set_sink(count_line, &lines); break;
            case 3: qzoci_log_set_sink(nullptr, nullptr); break;
            case 5: qzoci_log_set_level(LOG_LEVEL_ERROR); break;
            case 6:
                fork_one(cases, env, static_cast<size_t>(step));
                ++forks;
                break;
            default: qzoci_log_set_level(QZOCI_LOG_OFF);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(step % 8 == 7 ? 20 : 3));
    }
    is_over = true;
    for (std::thread &t : threads) t.join();
    qzoci_log_set_level(QZOCI_LOG_OFF);
    qzoci_log_set_file(nullptr);
    if (!path.empty()) check_log(path);
    OCIHandleFree(env, OCI_HTYPE_ENV);
    std::printf("%ld calls, %ld lines of the log, %ld rotations, %ld forks, %ld failures\n",
                calls.load(), lines.load(), rotations, forks, failures.load());
    return failures != 0 || calls == 0 || lines == 0;
}
