// Text and format models both ways, against the plain layout and the grammar: a record, a model on
// a line, and a text.
#include "support.h"
#include "support/lay_out.h"

using namespace fuzz;

namespace {

struct Model {
    explicit Model(std::string_view model) {
        std::string start(model.substr(0, 2));
        for (char &c : start) c = static_cast<char>(std::toupper(c));
        is_tm = start == "TM" && (model.size() == 2 || (model.size() == 3 && model[2] == '9'));
        is_fm = start == "FM";
        body = model.substr(is_fm ? 2 : 0);
        is_good = body.find_first_not_of("09.") == body.npos && body.size() <= 63 &&
                  std::count(body.begin(), body.end(), '.') <= 1;
    }
    // The text, or the number of the error.
    std::string lay_out(const Decimal &value) const {
        std::string plain = value.plain();
        if (plain.size() > 128) return "602";
        if (!is_tm) return ::lay_out(value, (is_fm ? "FM" : "") + std::string(body));
        if (const size_t zero = plain.find("0."); zero == 0 || (zero == 1 && plain[0] == '-')) {
            plain.erase(zero, 1);
        }
        return plain;
    }

    bool is_tm, is_fm, is_good;
    std::string_view body;
};

Outcome read(std::string_view text, std::string_view model, OCINumber &n) {
    const std::vector<OraText> str = exact_copy<OraText>(text), fmt = exact_copy<OraText>(model);
    const OraText none = 0;
    return watched(fuzz::bytes_of(n), {21560, 22061, 22062, 602}, [&](OCIError *err) {
        return OCINumberFromText(err, str.data(), static_cast<ub4>(str.size()),
                                 fmt.empty() ? &none : fmt.data(), static_cast<ub4>(fmt.size()),
                                 nullptr, 0, &n);
    });
}

// Whether the positions of a model have room for the text.
bool matches(const PlainText &text, std::string_view model) {
    const size_t dot = std::min(model.find('.'), model.size());
    if (text.integer.size() > dot) return false;
    if (text.integer.size() < dot) {
        return model.substr(0, dot - text.integer.size()).find('0') == model.npos;
    }
    if (text.has_period && dot == model.size()) return false;
    const size_t digits = text.fraction.find_last_not_of('0') + 1;
    return digits <= (dot == model.size() ? 0 : model.size() - dot - 1);
}

void check_reading(std::string_view text, std::string_view model, OCINumber &n) {
    const Outcome outcome = read(text, model, n);
    if (text.empty()) return;
    const bool is_model = Model(model).body == model &&
                          model.find_first_not_of("09.") == model.npos &&
                          std::count(model.begin(), model.end(), '.') <= 1;
    if (!is_model) {
        REQUIRE(outcome.code == 22061);
        return;
    }
    const PlainText parts(text);
    const bool is_good = parts.is_good && matches(parts, model);
    const Bytes expected = is_good ? parts.value().bytes() : Bytes{1, 0};
    REQUIRE(outcome.code == (is_infinite(expected) ? 22062 : 0));
    if (outcome.code == 0) REQUIRE(value_bytes(n) == expected);
}

void check_writing(const OCINumber &n, std::string_view model, ub1 room) {
    const std::vector<OraText> fmt = exact_copy<OraText>(model);
    const OCINumber before = n;
    // The size, then the text against the end of the memory.
    std::vector<ub1> out(4 + size_t{room}, unused);
    const ub4 capacity = room;
    std::memcpy(out.data(), &capacity, 4);
    const Outcome outcome = watched(out, {21560, 22059, 22061, 22065, 602}, [&](OCIError *err) {
        ub4 size = capacity;
        const sword status = OCINumberToText(err, &n, fmt.data(), static_cast<ub4>(fmt.size()),
                                             nullptr, 0, &size, out.data() + 4);
        std::memcpy(out.data(), &size, 4);
        return status;
    });
    REQUIRE(n == before);
    const Model parsed(model);
    if (room == 0 || model.empty() || !is_normal(n) || !is_finite(n)) return;
    if (!parsed.is_tm && !parsed.is_good) {
        REQUIRE(outcome.code == 22061);
        return;
    }
    const std::string expected = parsed.lay_out(exact(n));
    if (expected == "602" || expected == "22065") {
        // Digits of the same look are in the text then.
        if (outcome.status != OCI_SUCCESS) {
            REQUIRE(std::to_string(outcome.code) == expected);
            return;
        }
    }
    REQUIRE(outcome.code == (expected.size() > room ? 22059 : 0));
    if (outcome.code != 0) return;
    ub4 length;
    std::memcpy(&length, out.data(), 4);
    const std::string text(out.begin() + 4, out.begin() + 4 + length);
    REQUIRE(text == expected);
    if (length < room) REQUIRE(out[4 + length] == 0);
    for (size_t i = length + 1; i < room; ++i) REQUIRE(out[4 + i] == unused);
    OCINumber back = number({});
    check_reading(text, parsed.is_tm ? "" : parsed.body, back);
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed) {
    return mutate(data, size, max_size, seed, 1, 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const auto room = source.take<ub1>();
    const auto record = source.take<OCINumber>();
    const std::string_view model = source.line(), text = source.rest();
    check_writing(record, model, room);
    OCINumber n = number({});
    check_reading(text, model, n);
    // The text's value, without a model in its way.
    const PlainText parts(text);
    if (!parts.is_good || is_infinite(parts.value().bytes())) return 0;
    const OCINumber value = number(parts.value().bytes());
    check_writing(value, model, 0xFF);
    check_writing(value, "TM9", 0xFF);
    return 0;
}
