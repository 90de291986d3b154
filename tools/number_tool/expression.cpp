#include "expression.h"

#include <algorithm>
#include <charconv>

#include "decimal.h"
#include "messages.h"
#include "number_bytes.h"

namespace number_tool {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_letter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_'; }

}  // namespace

bool is_free_name(std::string_view text) {
    return !text.empty() && is_letter(text[0]) &&
           std::all_of(text.begin(), text.end(),
                       [](char c) { return is_letter(c) || is_digit(c); }) &&
           text != "pi" && find_function(text) == nullptr;
}

// Writes the steps of an expression in the order in which they are computed.
class ExpressionReader {
public:
    ExpressionReader(std::string_view text, const Variables &variables, const LibraryError &error,
                     Expression &expression, std::string &reason)
        : text_(text),
          variables_(variables),
          error_(error),
          expression_(expression),
          reason_(reason) {}

    bool run() { return comparison() && (at_end() || unexpected()); }

private:
    // Parentheses, signs and powers nest this deep at most.
    static constexpr int max_depth = 200;

    bool at_end() {
        while (pos_ < text_.size() && (text_[pos_] == ' ' || text_[pos_] == '\t')) ++pos_;
        return pos_ == text_.size();
    }
    char peek() { return at_end() ? '\0' : text_[pos_]; }
    bool take(std::string_view token) {
        if (at_end() || !text_.substr(pos_).starts_with(token)) return false;
        pos_ += token.size();
        return true;
    }

    bool fail(const std::string &what, size_t where) {
        reason_ = what + at_column(where);
        return false;
    }
    bool unexpected() { return fail("unexpected " + in_quotes(text_.substr(pos_, 1)), pos_); }

    bool put(const Function *function, unsigned arguments, size_t place) {
        expression_.steps_.push_back({function, arguments, {}, 0, place});
        return true;
    }
    bool put_constant(const OCINumber &number) {
        expression_.steps_.push_back({nullptr, 0, number, 0, 0});
        return true;
    }

    bool comparison() {
        if (!sum()) return false;
        at_end();
        const size_t place = pos_;
        for (const char *name : {"<=", "<", ">=", ">", "==", "!="}) {
            if (take(name)) return sum() && put(find_operator(name), 2, place);
        }
        return true;
    }

    bool sum() {
        if (!product()) return false;
        for (;;) {
            const char c = peek();
            if (c != '+' && c != '-') return true;
            const size_t place = pos_++;
            if (!product() || !put(find_operator({&c, 1}), 2, place)) return false;
        }
    }

    bool product() {
        if (!sign()) return false;
        for (;;) {
            const char c = peek();
            if (c != '*' && c != '/' && c != '%') return true;
            const size_t place = pos_++;
            if (!sign() || !put(find_operator({&c, 1}), 2, place)) return false;
        }
    }

    bool sign() {
        if (depth_ == max_depth) return fail("nested too deeply", pos_);
        ++depth_;
        bool good;
        if (peek() == '-') {
            const size_t place = pos_++;
            good = sign() && put(find_operator("neg"), 1, place);
        } else {
            good = power();
        }
        --depth_;
        return good;
    }

    bool power() {
        if (!value()) return false;
        if (peek() != '^') return true;
        const size_t place = pos_++;
        return sign() && put(find_operator("^"), 2, place);
    }

    bool value() {
        const char c = peek();
        if (take("(")) return comparison() && close();
        if (take("~")) {
            OCINumber infinity{};
            number_bytes::set_infinity(infinity, false);
            return put_constant(infinity);
        }
        if (take("$")) return field();
        if (is_digit(c) || c == '.') return number();
        if (is_letter(c)) return named();
        if (at_end()) return fail("a value is missing", pos_);
        return unexpected();
    }

    bool close() { return take(")") || fail("\")\" is missing", pos_); }

    bool number() {
        OCINumber number{};
        size_t length, wrong_at;
        std::string what;
        if (!read_magnitude(text_.substr(pos_), length, number, what, wrong_at)) {
            return fail(what, pos_ + wrong_at);
        }
        pos_ += length;
        return put_constant(number);
    }

    bool field() {
        Expression::Step step;
        step.place = pos_ - 1;
        const char *const from = text_.data() + pos_;
        const auto parsed = std::from_chars(from, text_.data() + text_.size(), step.field);
        if (parsed.ec != std::errc{} || step.field == 0) {
            return fail("number of a field, from 1, expected", pos_);
        }
        pos_ += static_cast<size_t>(parsed.ptr - from);
        expression_.steps_.push_back(step);
        expression_.reads_columns_ = true;
        return true;
    }

    bool named() {
        const size_t start = pos_;
        while (pos_ < text_.size() && (is_letter(text_[pos_]) || is_digit(text_[pos_]))) ++pos_;
        const std::string_view name = text_.substr(start, pos_ - start);
        if (name == "pi") {
            OCINumber pi{};
            OCINumberSetPi(error_.handle(), &pi);
            return put_constant(pi);
        }
        if (const auto variable = variables_.find(name); variable != variables_.end()) {
            return put_constant(variable->second);
        }
        const Function *const function = find_function(name);
        if (function == nullptr) return fail("unknown name " + in_quotes(name), start);
        if (!take("(")) return fail("\"(\" is missing", pos_);
        unsigned count = 0;
        size_t last_place;
        do {
            at_end();
            last_place = pos_;
            if (!comparison()) return false;
            ++count;
        } while (count < function->max_arguments && take(","));
        if (count < function->min_arguments) return fail("\",\" is missing", pos_);
        return close() && put(function, count, function->blames_last ? last_place : start);
    }

    std::string_view text_;
    const Variables &variables_;
    const LibraryError &error_;
    Expression &expression_;
    std::string &reason_;
    size_t pos_ = 0;
    int depth_ = 0;
};

bool Expression::read(std::string_view text, const Variables &variables, const LibraryError &error,
                      std::string &reason) {
    steps_.clear();
    reads_columns_ = false;
    return ExpressionReader(text, variables, error, *this, reason).run();
}

bool Expression::put_field(const Step &step, const Fields *line, std::string &reason) {
    if (step.field > line->raw.size()) {
        reason = "field " + std::to_string(step.field) + ": the line has " +
                 std::to_string(line->raw.size()) + (line->raw.size() == 1 ? " field" : " fields");
        return false;
    }
    const std::string_view text = line->value(step.field - 1, scratch_);
    OCINumber number{};
    if (!read_decimal(text, false, number, reason)) {
        reason = "field " + std::to_string(step.field) + ": " + in_quotes(text) + ": " + reason;
        return false;
    }
    stack_.push_back(number);
    return true;
}

bool Expression::compute(const Fields *line, const LibraryError &error, OCINumber &result,
                         std::string &reason) {
    stack_.clear();
    for (const Step &step : steps_) {
        if (step.field > 0) {
            if (!put_field(step, line, reason)) return false;
        } else if (step.function == nullptr) {
            stack_.push_back(step.constant);
        } else {
            OCINumber *const arguments = stack_.data() + stack_.size() - step.arguments;
            if (!apply(*step.function, error, arguments, step.arguments, reason)) {
                reason += at_column(step.place);
                return false;
            }
            stack_.resize(stack_.size() - step.arguments + 1);
        }
    }
    result = stack_.back();
    return true;
}

}  // namespace number_tool
