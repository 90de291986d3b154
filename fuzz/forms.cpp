// The tool's forms of numbers: what is read is a number, and the same one when it is written in any
// form and read again; what is refused has a reason.
#include "forms.h"

#include "decimal.h"
#include "stream.h"
#include "support.h"

using namespace fuzz;
using namespace number_tool;

namespace {

Bytes normal_bytes(OCINumber n) {
    normalize(n);
    return value_bytes(n);
}

void check_writing(const OCINumber &n) {
    for (const auto &[name, form] : form_names) {
        std::vector<char> out(max_result);
        std::string reason;
        char *const end = write_number(form, n, out.data(), reason);
        REQUIRE(end != nullptr);
        if (form == Form::json) continue;
        out.resize(static_cast<size_t>(end - out.data()));
        OCINumber room;
        const OCINumber *const back =
            read_number({form, false}, {out.data(), out.size()}, room, reason);
        REQUIRE(back != nullptr);
        const bool keeps_zeros = form != Form::text && form != Form::sortable;
        REQUIRE(value_bytes(*back) == (keeps_zeros ? value_bytes(n) : normal_bytes(n)));
    }
    if (is_finite(n)) REQUIRE(normal_bytes(n) == exact(n).bytes());
}

void check_faults(const OCINumber &n) {
    const GivenBytes given{n, OCI_NUMBER_SIZE};
    const Faults faults = find_faults(given);
    for (const Fault &fault : faults) REQUIRE(!describe(fault, given).empty());
    REQUIRE((faults.malformed() == nullptr) == is_well_formed(n));
    REQUIRE((faults.begin() == faults.end()) == is_normal(n));
    std::vector<char> out(max_result);
    const char *const end =
        write_record_text({reinterpret_cast<const char *>(&n), sizeof n}, out.data());
    REQUIRE((end != nullptr) == is_finite(n));
    if (end == nullptr) return;
    REQUIRE(std::string(out.data(), static_cast<size_t>(end - out.data())) == exact(n).plain());
}

// Decimal text with an exponent that the exact value can bear.
void check_value(std::string_view text, const OCINumber &n) {
    const size_t first = text.find_first_not_of(" \t"), e = text.find_first_of("eE");
    if (text.find('~') != text.npos || first == text.npos || text.size() > 1000) return;
    const std::string exponent(e == text.npos ? "0" : text.substr(e + 1));
    if (exponent.size() > 4) return;
    const size_t start = first + (text[first] == '+');
    const PlainText plain(
        text.substr(start, std::min(e, text.find_last_not_of(" \t") + 1) - start));
    REQUIRE(plain.is_good);
    REQUIRE(value_bytes(n) == plain.value().shifted(std::stol(exponent)).bytes());
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t max_size,
                                          unsigned seed) {
    return mutate(data, size, max_size, seed, 1, 1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Source source(data, size);
    const auto choice = source.take<ub1>();
    const auto record = source.take<OCINumber>();
    check_faults(record);
    if (is_well_formed(record)) check_writing(record);

    const Form form = form_names[choice % 8].form;
    const bool is_strict = choice & 8;
    const std::vector<char> bytes = exact_copy<char>(source.rest());
    const std::string_view text(bytes.data(), bytes.size());
    if (form == Form::json) return 0;  // written only
    std::string reason;
    OCINumber room = number({});
    const OCINumber *const n = read_number({form, is_strict}, text, room, reason);
    if (n == nullptr) {
        REQUIRE(!reason.empty());
        return 0;
    }
    REQUIRE(is_well_formed(*n));
    if (form == Form::text) check_value(text, *n);
    check_writing(*n);
    return 0;
}
