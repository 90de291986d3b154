#include "number_stream.h"

#include <cstring>

#include "decimal.h"

namespace number_tool {

Operation NumberStream::conversion() const {
    // Text goes straight into the record, of which only the value's bytes are written.
    if (from.form == Form::text && to == Form::raw) {
        return [this](const Value &value, char *out, std::string &reason) -> char * {
            std::memset(out, 0, OCI_NUMBER_SIZE);
            auto *const record = reinterpret_cast<OCINumber *>(out);
            if (!read_decimal(value.text, from.is_strict, *record, reason)) return nullptr;
            return out + OCI_NUMBER_SIZE;
        };
    }
    const auto convert_any = [this](const Value &value, char *out, std::string &reason) -> char * {
        OCINumber room;
        const OCINumber *const number = read_number(from, value.text, room, reason);
        return number == nullptr ? nullptr : write_number(to, *number, out, reason);
    };
    if (from.form == Form::raw && to == Form::text) {
        return [convert_any](const Value &value, char *out, std::string &reason) {
            char *const end = write_record_text(value.text, out);
            return end != nullptr ? end : convert_any(value, out, reason);
        };
    }
    return convert_any;
}

Operation NumberStream::computation(NumberFunction function) const {
    return [this, function = std::move(function)](const Value &value, char *out,
                                                  std::string &reason) -> char * {
        OCINumber room, result{};
        const OCINumber *const number = read_number(from, value.text, room, reason);
        if (number == nullptr || !function(*number, result, reason)) return nullptr;
        return write_number(to, result, out, reason);
    };
}

Summary NumberStream::convert(Output &out) {
    settle(stream, from.form, to);
    return for_each_value(
        stream, [this] { return conversion(); }, out);
}

Summary NumberStream::compute(const std::function<NumberFunction()> &make_function, Output &out) {
    settle(stream, from.form, to);
    return for_each_value(
        stream, [&] { return computation(make_function()); }, out);
}

}  // namespace number_tool
