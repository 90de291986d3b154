// All that may be seen of calls of the conversions and constants, by a table.
#include "support/surroundings.h"
#include "support/values.h"

namespace {

const OraText *bytes(const std::string &s) {
    return s == "-" ? nullptr : reinterpret_cast<const OraText *>(s.data());
}

struct Outcome {
    sword status;
    std::string output;  // its bytes and the buffer's size, as they are after the call
};

Outcome call(OCIError *err, const std::vector<std::string> &c) {
    const std::string &function = c[0], &input = c[1], &model = c[2], &given = c[4];
    const auto is_given = [&given](char mark) { return given.find(mark) != given.npos; };
    ub4 size = static_cast<ub4>(std::stoul(c[3]));
    OCINumber out[2] = {number({}), number({})};
    void *const rsl = is_given('o') ? out : nullptr;
    auto *const result = static_cast<OCINumber *>(rsl);
    const auto finish = [&](sword status) {
        return Outcome{
            status, std::string(reinterpret_cast<char *>(out), sizeof out) + std::to_string(size)};
    };

    if (function.starts_with("Set")) {
        (function == "SetPi" ? OCINumberSetPi : OCINumberSetZero)(err, result);
        return finish(OCI_SUCCESS);
    }
    if (function == "FromReal") {
        const float single = parsed<float>(input);
        const double twice = parsed<double>(input);
        const long double extended = parsed<long double>(input);
        const void *real = &twice;
        if (size == sizeof single) real = &single;
        if (size == sizeof extended) real = &extended;
        return finish(OCINumberFromReal(err, input == "-" ? nullptr : real, size, result));
    }
    const uword flag = model == "signed"     ? OCI_NUMBER_SIGNED
                       : model == "unsigned" ? OCI_NUMBER_UNSIGNED
                                             : 1;
    if (function == "FromInt") {
        ub8 value = input == "-" ? 0 : std::stoull(input);
        const void *const integer = input == "-" ? nullptr : low_part(value, size);
        return finish(OCINumberFromInt(err, integer, size, flag, result));
    }
    const bool nls = is_given('n');
    const OraText *const language = nls ? bytes("x") : nullptr;
    const auto length = static_cast<ub4>(model.size());
    if (function == "FromText") {
        return finish(OCINumberFromText(err, bytes(input), size, bytes(model),
                                        model == "-" ? 0 : length, language, nls, result));
    }
    std::vector<OCINumber> numbers;
    std::vector<const OCINumber *> pointers;
    std::istringstream inputs(input);
    for (std::string s; std::getline(inputs, s, ',');)
        numbers.push_back(s == "-" ? number({}) : from_text(s));
    for (const OCINumber &n : numbers) pointers.push_back(n == number({}) ? nullptr : &n);
    const OCINumber *const n = pointers[0];
    if (function == "ToInt") return finish(OCINumberToInt(err, n, size, flag, rsl));
    if (function == "ToReal") return finish(OCINumberToReal(err, n, size, rsl));
    if (function == "ToRealArray") {
        return finish(OCINumberToRealArray(err, n == nullptr ? nullptr : pointers.data(),
                                           static_cast<uword>(std::stoul(model)), size, rsl));
    }
    return finish(OCINumberToText(err, n, bytes(model), model == "-" ? 7 : length, language, nls,
                                  is_given('s') ? &size : nullptr, static_cast<OraText *>(rsl)));
}

TEST(ConversionTraces, Calls) {
    for (const auto &[line, c] : data_rows("conversion_traces.txt")) {
        if (!has_long_double && c[0] == "FromReal" && c[3] == "16") continue;
        SCOPED_TRACE(line);
        ErrorHandle err;
        take_log();
        const int live = heap.live;
        heap.fail = c[4].find('m') != std::string::npos;
        const Outcome outcome = call(c[4].starts_with("h") ? err.get() : nullptr, c);
        heap.fail = false;
        std::string log;
        for (size_t i = 8; i < c.size(); ++i) log += c[i] + "\n";
        EXPECT_EQ(take_masked_log(), log);
        EXPECT_EQ(std::to_string(outcome.status), c[5]);
        EXPECT_EQ(std::to_string(err.code()), c[6]);
        EXPECT_EQ(masked(err.message()), ended(c[7]));
        EXPECT_TRUE(err.other_fields_untouched());
        EXPECT_EQ(heap.live, live);
        const std::string untouched(2 * sizeof(OCINumber), static_cast<char>(unused));
        if (c[5] != "0" && c[1].find(',') == std::string::npos)
            EXPECT_EQ(outcome.output, untouched + c[3]);
    }
}

// A quoted text is cut where the handle's message ends, however long it is said to be; in
// the log, to as many characters.
TEST(ConversionTraces, LongMessage) {
    ErrorHandle err;
    const OCINumber n = from_text("1");
    OraText buf[9];
    ub4 size = 9;
    const std::string x(5000, 'x');
    EXPECT_EQ(OCINumberToText(err, &n, bytes(x), 4294967295, nullptr, 0, &size, buf), OCI_ERROR);
    EXPECT_EQ(err.message(), ("OCI-22061: invalid format text [" + x).substr(0, 3072));
    EXPECT_TRUE(err.other_fields_untouched());
    take_log();
    OCINumber result;
    EXPECT_EQ(OCINumberFromText(err, bytes(x), 5000, bytes("9"), 1, nullptr, 0, &result),
              OCI_ERROR);
    EXPECT_NE(take_masked_log().find(" [" + x.substr(0, 3072) + "]"), std::string::npos);
}

}  // namespace
