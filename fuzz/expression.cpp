// Expressions of the tool: read or refused with a place, and the same in parentheses, between
// blanks and under a sign.
#include "expression.h"

#include "support.h"

using namespace fuzz;
using namespace number_tool;

namespace {

constexpr const char *too_deep = "nested too deeply";

// The value's bytes; none with the reason.
Bytes value_of(const std::string &text, const Fields &line, bool &is_read, std::string &reason) {
    static const LibraryError error;
    static const Variables variables = {{"x", from_text("2.5")}, {"_y1", from_text("-1e-7")}};
    Expression expression;
    OCINumber result = number({});
    is_read = expression.read(text, variables, error, reason);
    if (!is_read || !expression.compute(&line, error, result, reason)) {
        REQUIRE(!reason.empty());
        return {};
    }
    REQUIRE(is_well_formed(result));
    return value_bytes(result);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const std::string fields(source.line()), text(source.rest());
    if (text.size() > 300) return 0;
    Fields line{{',', true, false}, {}};
    std::string reason;
    if (!line.split(fields, reason)) return 0;

    bool is_read, is_read_again;
    const Bytes value = value_of(text, line, is_read, reason);
    if (!is_read) {
        const size_t place = reason.rfind(" at column ");
        REQUIRE(place != reason.npos);
        const unsigned long column = std::stoul(reason.substr(place + 11));
        REQUIRE(column >= 1 && column <= text.size() + 1);
    }
    is_free_name(text);
    const Bytes in_parentheses = value_of(" (\t" + text + " ) ", line, is_read_again, reason);
    if (!is_read_again && reason.starts_with(too_deep)) return 0;
    if (is_read) REQUIRE(is_read_again && in_parentheses == value);
    const Bytes under_sign = value_of("--(" + text + ")", line, is_read_again, reason);
    if (!is_read_again && reason.starts_with(too_deep)) return 0;
    if (is_read) REQUIRE(is_read_again && under_sign == value);
    return 0;
}
