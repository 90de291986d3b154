// All that may be seen of calls of the text and real conversions, by a table.
#include <regex>

#include "support/data.h"
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
    const auto &[function, input, model, given] = std::tie(c[0], c[1], c[2], c[4]);
    const bool nls = given.find('n') != given.npos;
    const bool has_number = function.starts_with("To") && input != "-";
    std::vector<OCINumber> numbers;
    std::vector<const OCINumber *> pointers;
    std::istringstream inputs(input);
    for (std::string s; has_number && std::getline(inputs, s, ',');)
        numbers.push_back(s.starts_with("bytes:") ? number(hex_bytes(s.substr(6)))
                          : s == "-"              ? number({})
                                                  : from_text(s));
    for (const OCINumber &n : numbers) pointers.push_back(n == number({}) ? nullptr : &n);
    take_log();
    const OCINumber *n = has_number ? &numbers[0] : nullptr;
    const double real = 0.1;
    ub4 size = static_cast<ub4>(std::stoul(c[3]));
    OCINumber out[2] = {number({}), number({})};
    void *const rsl = given.find('o') != given.npos ? out : nullptr;
    const OraText *const language = nls ? bytes("x") : nullptr;
    const auto length = static_cast<ub4>(model.size());
    sword status = 99;
    if (function == "ToText")
        status = OCINumberToText(err, n, bytes(model), model == "-" ? 7 : length, language, nls,
                                 given.find('s') != given.npos ? &size : nullptr,
                                 static_cast<OraText *>(rsl));
    if (function == "FromText")
        status = OCINumberFromText(err, bytes(input), size, bytes(model), model == "-" ? 0 : length,
                                   language, nls, static_cast<OCINumber *>(rsl));
    if (function == "ToReal") status = OCINumberToReal(err, n, size, rsl);
    if (function == "FromReal")
        status = OCINumberFromReal(err, input == "-" ? nullptr : &real, size,
                                   static_cast<OCINumber *>(rsl));
    if (function == "ToRealArray")
        status = OCINumberToRealArray(err, has_number ? pointers.data() : nullptr,
                                      static_cast<uword>(std::stoul(model)), size, rsl);
    return {status, std::string(reinterpret_cast<char *>(out), sizeof out) + std::to_string(size)};
}

TEST(ConversionTraces, Calls) {
    const std::regex address("0x[0-9a-f]+");
    ASSERT_FALSE(data_rows("conversion_traces.txt").empty());
    for (const auto &[line, c] : data_rows("conversion_traces.txt")) {
        SCOPED_TRACE(line);
        ErrorHandle err;
        const Outcome outcome = call(c[4].starts_with("h") ? err.get() : nullptr, c);
        std::string log;
        for (size_t i = 8; i < c.size(); ++i) log += c[i] + "\n";
        EXPECT_EQ(take_masked_log(), log);
        EXPECT_EQ(std::to_string(outcome.status), c[5]);
        EXPECT_EQ(std::to_string(err.code()), c[6]);
        EXPECT_EQ(std::regex_replace(err.message(), address, "P"),
                  std::regex_replace(c[7], std::regex("\\|"), "\n"));
        EXPECT_TRUE(err.other_fields_untouched());
        const std::string untouched(2 * sizeof(OCINumber), static_cast<char>(unused));
        if (c[5] != "0" && c[1].find(',') == std::string::npos)
            EXPECT_EQ(outcome.output, untouched + c[3]);
    }
}

// A quoted text is cut where the handle's message ends.
TEST(ConversionTraces, LongMessages) {
    ErrorHandle err;
    OCINumber n = from_text("1");
    OraText buf[9];
    ub4 size = 9;
    const std::string x(5000, 'x');
    EXPECT_EQ(OCINumberToText(err, &n, bytes(x), 4294967295, nullptr, 0, &size, buf), OCI_ERROR);
    EXPECT_EQ(err.message(), ("OCI-22061: invalid format text [" + x).substr(0, 3072));
    EXPECT_EQ(OCINumberFromText(err, bytes(x), 5000, bytes("9"), 1, nullptr, 0, &n), OCI_ERROR);
    EXPECT_EQ(err.message(), ("OCI-22062: invalid input string [" + x).substr(0, 3072));
    take_log();
}

}  // namespace
