// oci_number.hpp beside the calls of oci.h that it stands for: time of a call in ns, and the
// ratio. Both sides run by turns in short rounds. A round counts by its own ratio, and the
// median of the ratios is shown, so that what slows the machine slows both.
//
//   bench_cpp [ROUNDS]        default 2000; fails when a median is above 1.03
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "oci_number.hpp"

namespace {

constexpr size_t count = 256;
using Numbers = std::array<oci::number, count>;

template <class T>
inline void keep(T &value) {
    asm volatile("" : : "r"(&value) : "memory");
}

// Of `digits` significant digits, with the point anywhere among them.
Numbers random_numbers(size_t digits, unsigned seed) {
    std::mt19937_64 random{seed};
    Numbers numbers;
    for (oci::number &n : numbers) {
        std::string text;
        const size_t point = 1 + random() % digits;
        for (size_t i = 0; i < digits; ++i) {
            if (i == point) text += '.';
            text += static_cast<char>('1' + random() % 9);
        }
        n = oci::number(text);
    }
    return numbers;
}

OCIError *c_handle() {
    OCIEnv *env = nullptr;
    void *error = nullptr;
    if (OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
            OCI_SUCCESS ||
        OCIHandleAlloc(env, &error, OCI_HTYPE_ERROR, 0, nullptr) != OCI_SUCCESS) {
        std::exit(2);
    }
    return static_cast<OCIError *>(error);
}

void check(sword status) {
    if (status != OCI_SUCCESS) std::exit(2);
}

int rounds = 2000;
bool too_slow = false;

template <class Step>
double nanoseconds(Step step) {
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < count; ++i) step(i);
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return taken.count() / count;
}

double median(std::vector<double> &values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

template <class C, class Cpp>
void compare(const char *name, C c, Cpp cpp) {
    std::vector<double> c_times, cpp_times, ratios;
    for (int i = 0; i < rounds; ++i) {
        double c_time, cpp_time;
        if (i % 2 == 0) {
            c_time = nanoseconds(c);
            cpp_time = nanoseconds(cpp);
        } else {
            cpp_time = nanoseconds(cpp);
            c_time = nanoseconds(c);
        }
        c_times.push_back(c_time);
        cpp_times.push_back(cpp_time);
        ratios.push_back(cpp_time / c_time);
    }
    const double ratio = median(ratios);
    too_slow = too_slow || ratio > 1.03;
    std::printf("%-24s %8.2f %8.2f %8.3f\n", name, median(c_times), median(cpp_times), ratio);
}

}  // namespace

int main(int argc, char **argv) {
    if (argc > 1) rounds = std::max(1, std::atoi(argv[1]));
    OCIError *const err = c_handle();
    const Numbers a = random_numbers(12, 1), b = random_numbers(12, 2);
    const Numbers la = random_numbers(38, 3), lb = random_numbers(38, 4);
    std::array<OCINumber, count> ca, cb, cla, clb;
    for (size_t i = 0; i < count; ++i) {
        ca[i] = a[i].bytes();
        cb[i] = b[i].bytes();
        cla[i] = la[i].bytes();
        clb[i] = lb[i].bytes();
    }
    std::printf("%-24s %8s %8s %8s\n", "", "C ns", "C++ ns", "ratio");

    const auto both = [&](const char *name, auto function, auto operation, const auto &cx,
                          const auto &cy, const Numbers &x, const Numbers &y) {
        compare(
            name,
            [&](size_t i) {
                OCINumber r;
                check(function(err, &cx[i], &cy[i], &r));
                keep(r);
            },
            [&](size_t i) {
                const oci::number r = operation(x[i], y[i]);
                keep(r);
            });
    };
#define BOTH(name, function, operation)                                                      \
    both(                                                                                    \
        name ", 12 digits", [](auto... p) { return function(p...); },                        \
        [](const oci::number &x, const oci::number &y) { return operation; }, ca, cb, a, b); \
    both(                                                                                    \
        name ", 38 digits", [](auto... p) { return function(p...); },                        \
        [](const oci::number &x, const oci::number &y) { return operation; }, cla, clb, la, lb)
    BOTH("x + y", OCINumberAdd, x + y);
    BOTH("x - y", OCINumberSub, x - y);
    BOTH("x * y", OCINumberMul, x * y);
    BOTH("x / y", OCINumberDiv, x / y);
    BOTH("x % y", OCINumberMod, x % y);

    OCINumber c_sum{{1, 128}};
    oci::number sum;
    compare(
        "sum += x", [&](size_t i) { check(OCINumberAdd(err, &c_sum, &ca[i], &c_sum)); },
        [&](size_t i) { sum += a[i]; });
    compare(
        "(x + y) * x",
        [&](size_t i) {
            OCINumber r, s;
            check(OCINumberAdd(err, &ca[i], &cb[i], &s));
            check(OCINumberMul(err, &s, &ca[i], &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r = (a[i] + b[i]) * a[i];
            keep(r);
        });
    // A temporary is copied; C writes at once where the result belongs.
    OCINumber c_result;
    oci::number result;
    compare(
        "r = x + y", [&](size_t i) { check(OCINumberAdd(err, &ca[i], &cb[i], &c_result)); },
        [&](size_t i) { result = a[i] + b[i]; });
    compare(
        "abs",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberAbs(err, &ca[i], &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r = abs(a[i]);
            keep(r);
        });
    compare(
        "round to 2 places",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberRound(err, &ca[i], 2, &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r = round(a[i], 2);
            keep(r);
        });
    compare(
        "sqrt",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberSqrt(err, &cla[i], &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r = sqrt(la[i]);
            keep(r);
        });
    compare(
        "sqrt with error_code",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberSqrt(err, &cla[i], &r));
            keep(r);
        },
        [&](size_t i) {
            std::error_code ec;
            const oci::number r = sqrt(la[i], ec);
            if (ec) std::exit(2);
            keep(r);
        });
    compare(
        "x < y",
        [&](size_t i) {
            sword order;
            check(OCINumberCmp(err, &ca[i], &cb[i], &order));
            bool less = order < 0;
            keep(less);
        },
        [&](size_t i) {
            bool less = a[i] < b[i];
            keep(less);
        });
    std::array<std::int64_t, count> integers;
    std::mt19937_64 random{5};
    for (size_t i = 0; i < count; ++i) {
        integers[i] = static_cast<std::int64_t>(random() >> (random() % 60)) - 1000;
    }
    compare(
        "from int64",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberFromInt(err, &integers[i], 8, OCI_NUMBER_SIGNED, &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r = integers[i];
            keep(r);
        });
    compare(
        "to int64",
        [&](size_t i) {
            std::int64_t r;
            check(OCINumberToInt(err, &ca[i], 8, OCI_NUMBER_SIGNED, &r));
            keep(r);
        },
        [&](size_t i) {
            std::int64_t r = a[i].to<std::int64_t>();
            keep(r);
        });
    compare(
        "to double",
        [&](size_t i) {
            double r;
            check(OCINumberToReal(err, &ca[i], 8, &r));
            keep(r);
        },
        [&](size_t i) {
            double r = static_cast<double>(a[i]);
            keep(r);
        });
    std::array<double, count> doubles;
    for (size_t i = 0; i < count; ++i) doubles[i] = static_cast<double>(a[i]);
    compare(
        "from double",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberFromReal(err, &doubles[i], 8, &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r(doubles[i]);
            keep(r);
        });
    compare(
        "to_chars",
        [&](size_t i) {
            OraText text[200];
            ub4 size = sizeof text;
            check(OCINumberToText(err, &ca[i], reinterpret_cast<const OraText *>("TM"), 2, nullptr,
                                  0, &size, text));
            keep(text);
        },
        [&](size_t i) {
            char text[200];
            if (to_chars(text, text + sizeof text, a[i]).ec != std::errc()) std::exit(2);
            keep(text);
        });
    std::array<std::string, count> texts;
    for (size_t i = 0; i < count; ++i) texts[i] = to_string(a[i]);
    const OraText model[] = "999999999999999999.99999999999999999999";
    compare(
        "from text",
        [&](size_t i) {
            OCINumber r;
            check(OCINumberFromText(err, reinterpret_cast<const OraText *>(texts[i].data()),
                                    static_cast<ub4>(texts[i].size()), model, sizeof model - 1,
                                    nullptr, 0, &r));
            keep(r);
        },
        [&](size_t i) {
            const oci::number r(texts[i]);
            keep(r);
        });
    return too_slow;
}
