// The tool's input: blocks of any size hold the same records, the records are the file's bytes,
// and the fields of a line are the line.
#include "input.h"

#include <sys/mman.h>
#include <unistd.h>

#include "support.h"

using namespace fuzz;
using namespace number_tool;

namespace {

struct Format {
    Framing framing;
    bool has_columns;
    Dialect dialect;
};

// The blocks' records, each with its end.
std::vector<std::string> records_of(const std::string &file, const Format &format,
                                    size_t block_size) {
    const Inputs inputs{{}, {file}};
    const Output out;
    Input input(inputs, format.framing,
                format.has_columns ? std::optional(format.dialect) : std::nullopt, block_size, out,
                -1);
    const char end = format.framing == Framing::zeros ? '\0' : '\n';
    std::vector<std::string> records;
    Block block;
    size_t number = 0;
    while (input.next(block)) {
        REQUIRE(block.failure.empty() && !block.is_too_long && block.number == number++);
        REQUIRE(!block.bytes.empty());
        CsvScanner scanner(format.dialect.delimiter, end);
        for (std::string_view left = block.bytes; !left.empty();) {
            size_t size = OCI_NUMBER_SIZE;
            if (format.framing != Framing::records) {
                size = format.has_columns && format.dialect.is_csv ? scanner.find(left, 0)
                                                                   : left.find(end);
                if (size != left.npos) ++size;
            }
            records.emplace_back(left.substr(0, size));
            left.remove_prefix(records.back().size());
        }
    }
    return records;
}

void check_fields(std::string_view line, const Dialect &dialect) {
    Fields fields{dialect, {}};
    std::string reason, scratch, joined;
    if (!fields.split(line, reason)) {
        REQUIRE(dialect.is_csv && !reason.empty());
        return;
    }
    for (size_t i = 0; i < fields.raw.size(); ++i) {
        if (i > 0) joined += dialect.delimiter;
        joined += fields.raw[i];
        const std::string value(fields.value(i, scratch));
        const bool is_quoted = dialect.is_csv && fields.raw[i].starts_with('"');
        REQUIRE(fields.raw[i] == (is_quoted ? in_csv_quotes(value) : value));
    }
    REQUIRE(joined == line);
}

void check_list(std::string_view text) {
    FieldList list;
    if (!list.parse(text)) return;
    size_t behind = 0;
    for (const auto &[first, last] : list.ranges()) {
        REQUIRE(first > behind && first <= last);
        behind = last;
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const auto choice = source.take<ub1>(), block_size = source.take<ub1>();
    const Format format{static_cast<Framing>(choice % 3),
                        (choice & 4) != 0,
                        {"\t,;|"[choice / 8 % 4], (choice & 32) != 0, false}};
    const std::string_view bytes = source.rest();
    check_list(bytes);

    const int fd = memfd_create("input", 0);
    REQUIRE(fd >= 0 && write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    const std::string file = "/proc/self/fd/" + std::to_string(fd);
    const std::vector<std::string> records = records_of(file, format, 1 << 16);
    REQUIRE(records == records_of(file, format, 1u + block_size));
    close(fd);

    std::string all;
    for (const std::string &record : records) {
        all += record;
        check_fields(record, format.dialect);
    }
    REQUIRE(all == bytes);
    return 0;
}
