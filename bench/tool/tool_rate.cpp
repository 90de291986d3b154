// The tool's rate beside the bare library calls on the same four million values.
//
//   tool_rate PATH_OF_OCINUMBER
//
// Each figure is the best of five rounds, in processor time, which other work on the machine
// disturbs least. The tool reads and writes files, so its time holds its start, reading, line
// cutting, hex and writing. Beside raw records, reading and writing the same bytes is added to the
// bare calls.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "oci_utils/oci_utils.h"

namespace {

constexpr size_t value_count = 4'000'000;

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

// Of this process and of those that it has waited for.
double processor_milliseconds() {
    double sum = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        for (const timeval &time : {usage.ru_utime, usage.ru_stime}) {
            sum +=
                1e3 * static_cast<double>(time.tv_sec) + 1e-3 * static_cast<double>(time.tv_usec);
        }
    }
    return sum;
}

template <typename Work>
double best_milliseconds(Work work) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const double start = processor_milliseconds();
        work();
        best = std::min(best, processor_milliseconds() - start);
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
    const double tool_to_raw = run(encode + " --to raw >" + base + "/raw");
    const double tool_from_raw =
        run("'" + tool + "' decode --from raw <" + base + "/raw >" + base + "/back");
    // The bytes of a file in, those of another out, in blocks.
    const auto copying = [&](const std::string &in, const std::string &out) {
        std::vector<char> block(1 << 16);
        const auto size = static_cast<off_t>(std::filesystem::file_size(base + out));
        return best_milliseconds([&] {
            const int from = open((base + in).c_str(), O_RDONLY);
            const int to = open((base + "/copy").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
            while (read(from, block.data(), block.size()) > 0) continue;
            for (off_t rest = size; rest > 0; rest -= static_cast<off_t>(block.size())) {
                const auto count = std::min(rest, static_cast<off_t>(block.size()));
                status |= write(to, block.data(), static_cast<size_t>(count)) < 0;
            }
            close(from);
            close(to);
        });
    };
    show("encode", bare_encode, tool_encode);
    show("decode", bare_decode, tool_decode);
    show("encode | decode", bare_encode + bare_decode, tool_both);
    show("encode, raw", bare_encode + copying("/texts", "/raw"), tool_to_raw);
    show("decode, raw", bare_decode + copying("/raw", "/texts"), tool_from_raw);
    status |= std::system(("rm -r " + base).c_str());
    return status == 0 ? 0 : 1;
}
