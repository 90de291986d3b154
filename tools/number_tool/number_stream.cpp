#include "number_stream.h"

namespace number_tool {

Summary NumberStream::run(const std::function<NumberFunction()> &make_function, Output &out) {
    settle(stream, from.form, to);
    return for_each_value(
        stream,
        [this, &make_function]() -> Operation {
            return [this, function = make_function()](const Value &value, char *end,
                                                      std::string &reason) -> char * {
                GivenBytes given;
                if (!read_number(from, value.text, given, reason)) return nullptr;
                if (!function) return write_number(to, given.number, end, reason);
                OCINumber result{};
                if (!function(given.number, result, reason)) return nullptr;
                return write_number(to, result, end, reason);
            };
        },
        out);
}

}  // namespace number_tool
