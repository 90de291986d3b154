// The tool's rate beside the bare library calls on the same million values.
//
//   tool_rate PATH_OF_OCINUMBER
//
// Each figure is the best of five rounds. The tool reads and writes files, so
// its time holds its start, reading, line cutting, hex and writing.
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "oci_utils/oci_utils.h"

namespace {

constexpr size_t value_count = 1'000'000;

// Up to 38 digits with a point at any place.
std::string random_text(std::mt19937_64 &random) {
    const size_t digits = 1 + random() % 38;
    std::string text = random() % 2 != 0 ? "-" : "";
    const size_t point = random() % digits;
    for (size_t i = 0; i < digits; ++i) {
        if (i > 0 && i == point) text += '.';
        text += static_cast<char>('1' + random() % 9);
    }
    return text;
}

template <typename Work>
double best_milliseconds(Work work) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> time =
            std::chrono::steady_clock::now() - start;
        best = std::min(best, time.count());
    }
    return best;
}

void show(const char *name, double bare, double tool) {
    std::printf("%-16s %8.1f ms bare %8.1f ms tool  ratio %.2f  %.1f million values/s\n", name,
                bare, tool, tool / bare, static_cast<double>(value_count) / tool / 1000);
}

}  // namespace

int main(int argc, char **argv) {
    char folder[] = "/tmp/tool_rate.XXXXXX";
    if (argc != 2 || mkdtemp(folder) == nullptr) {
        std::fprintf(stderr, "usage: tool_rate PATH_OF_OCINUMBER\n");
        return 2;
    }
    const std::string tool = argv[1], base = folder;
    std::mt19937_64 random(1);
    std::vector<std::string> texts(value_count);
    {
        std::ofstream file(base + "/texts");
        for (std::string &text : texts) file << (text = random_text(random)) << '\n';
    }
    std::vector<OCINumber> numbers(value_count);
    sword status = 0;
    const double bare_encode = best_milliseconds([&] {
        for (size_t i = 0; i < value_count; ++i) {
            status |= getNumberFromStr(&numbers[i], reinterpret_cast<ub1 *>(texts[i].data()),
                                       static_cast<ub4>(texts[i].size()));
        }
    });
    const double bare_decode = best_milliseconds([&] {
        OraText text[256];
        for (const OCINumber &number : numbers) {
            ub2 size = sizeof text;
            status |= getStrFromNumber(&number, text, &size);
        }
    });
    const auto run = [&](const std::string &command) {
        return best_milliseconds([&] { status |= std::system(command.c_str()); });
    };
    const std::string encode = "'" + tool + "' encode <" + base + "/texts";
    const double tool_encode = run(encode + " >" + base + "/hex");
    const double tool_decode = run("'" + tool + "' decode <" + base + "/hex >" + base + "/back");
    const double tool_both = run(encode + " | '" + tool + "' decode >" + base + "/back");
    status |= std::system(("cmp " + base + "/texts " + base + "/back").c_str());
    show("encode", bare_encode, tool_encode);
    show("decode", bare_decode, tool_decode);
    show("encode | decode", bare_encode + bare_decode, tool_both);
    status |= std::system(("rm -r " + base).c_str());
    return status == 0 ? 0 : 1;
}
