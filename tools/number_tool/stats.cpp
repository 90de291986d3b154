#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "commands.h"
#include "decimal.h"
#include "exact_sums.h"
#include "library_error.h"
#include "number_bytes.h"
#include "number_stream.h"

namespace number_tool {

namespace {

// What is known of the values of one column.
struct Tally {
    size_t count = 0;
    OCINumber minimum{}, maximum{};
    bool has_positive_infinity = false, has_negative_infinity = false;
    ExactSums sums;  // of the finite values

    void add(const LibraryError &error, OCINumber number) {
        normalize(number);
        take_extremes(error, number, number);
        ++count;
        if (number_bytes::is_positive_infinity(number)) {
            has_positive_infinity = true;
        } else if (number_bytes::is_negative_infinity(number)) {
            has_negative_infinity = true;
        } else {
            sums.add(number);
        }
    }

    void add(const LibraryError &error, const Tally &other) {
        if (other.count == 0) return;
        take_extremes(error, other.minimum, other.maximum);
        count += other.count;
        has_positive_infinity |= other.has_positive_infinity;
        has_negative_infinity |= other.has_negative_infinity;
        sums.add(other.sums);
    }

private:
    void take_extremes(const LibraryError &error, const OCINumber &low, const OCINumber &high) {
        sword order = 0;
        OCINumberCmp(error.handle(), &low, &minimum, &order);
        if (count == 0 || order < 0) minimum = low;
        OCINumberCmp(error.handle(), &high, &maximum, &order);
        if (count == 0 || order > 0) maximum = high;
    }
};

// By number of the field; 0 when lines are values.
using Tallies = std::map<size_t, Tally>;

std::string text_of(const OCINumber &number) {
    char text[max_result];
    std::string reason;
    const char *const end = write_number(Form::text, number, text, reason);
    return std::string(text, static_cast<size_t>(end - text));
}

// Rounds decimal text to a number once.
std::string rounded(const std::string &text) {
    OCINumber number{};
    std::string reason;
    return read_decimal(text, true, number, reason) ? text_of(number) : "~";
}

struct Row {
    const char *name;
    std::string (*cell)(const Tally &tally, size_t refused);
};

constexpr const char *no_value = "none";

// Of sum and mean when there are infinities; empty when there are none.
std::string infinite_sum(const Tally &tally) {
    if (tally.has_positive_infinity && tally.has_negative_infinity) return no_value;
    if (tally.has_positive_infinity) return "~";
    return tally.has_negative_infinity ? "-~" : "";
}

constexpr Row rows[] = {
    {"count", [](const Tally &tally, size_t) { return std::to_string(tally.count); }},
    {"refused", [](const Tally &, size_t refused) { return std::to_string(refused); }},
    {"minimum", [](const Tally &tally,
                   size_t) { return tally.count == 0 ? no_value : text_of(tally.minimum); }},
    {"maximum", [](const Tally &tally,
                   size_t) { return tally.count == 0 ? no_value : text_of(tally.maximum); }},
    {"sum",
     [](const Tally &tally, size_t) {
         std::string infinite = infinite_sum(tally);
         return infinite.empty() ? tally.sums.sum() : infinite;
     }},
    {"mean",
     [](const Tally &tally, size_t) {
         std::string infinite = infinite_sum(tally);
         if (!infinite.empty()) return infinite;
         return tally.count == 0 ? no_value : rounded(tally.sums.mean());
     }},
    {"deviation",
     [](const Tally &tally, size_t) {
         const bool has_one = tally.count > 1 && infinite_sum(tally).empty();
         return has_one ? rounded(tally.sums.deviation()) : no_value;
     }},
};

std::string table(const Tallies &tallies, const Summary &summary) {
    std::string text;
    const auto add_row = [&](const char *name, auto cell) {
        text += name;
        for (const auto &[field, tally] : tallies) text += "\t" + cell(field, tally);
        text += '\n';
    };
    if (tallies.begin()->first != 0) {
        add_row("field", [](size_t field, const Tally &) { return std::to_string(field); });
    }
    for (const Row &row : rows) {
        add_row(row.name, [&](size_t field, const Tally &tally) {
            const auto refused = summary.refused_of_field.find(field);
            return row.cell(tally, refused == summary.refused_of_field.end() ? 0 : refused->second);
        });
    }
    return text;
}

// The sums of the threads come together here.
struct Totals {
    std::mutex mutex;
    std::vector<std::shared_ptr<Tallies>> of_threads;
};

}  // namespace

Command add_stats(CLI::App &tool) {
    struct Options {
        StreamOptions stream;
        Reading from;
    };
    const auto options = std::make_shared<Options>();
    options->stream.results = ResultPlace::nowhere;
    options->stream.ends_results = false;
    CLI::App *const app =
        tool.add_subcommand("stats", "Count, extremes, exact sum, mean, deviation");
    add_form(*app, "--from", options->from.form, forms_read, "Form of the values");
    add_strict(*app, options->from.is_strict);
    add_stream_options(*app, options->stream);
    return {app, "[VALUE]...",
            "One pass over the values, in constant memory. The sum is exact, with all its digits; "
            "mean and standard deviation (of a sample: over the count less 1) are the exact "
            "values, rounded once to a number. With --field there is a column for each field.",
            "ocinumber stats -f amounts.txt\n"
            "ocinumber stats --csv --header --field 2,3 -f accounts.csv",
            [options](Output &out) {
                settle(options->stream, options->from.form, Form::text);
                Totals totals;
                const auto make_operation = [&]() -> Operation {
                    const auto tallies = std::make_shared<Tallies>();
                    {
                        const std::lock_guard lock(totals.mutex);
                        totals.of_threads.push_back(tallies);
                    }
                    return [&options = *options, tallies, error = std::make_shared<LibraryError>()](
                               const Value &value, char *end, std::string &reason) -> char * {
                        OCINumber room;
                        const OCINumber *const number =
                            read_number(options.from, value.text, room, reason);
                        if (number == nullptr) return nullptr;
                        (*tallies)[value.field].add(*error, *number);
                        return end;
                    };
                };
                const Summary summary = for_each_value(options->stream, make_operation, out);
                Tallies all;
                const LibraryError error;
                for (const auto &[first, last] : options->stream.fields.ranges()) {
                    if (first == last) all[first];
                }
                for (const auto &tallies : totals.of_threads) {
                    for (const auto &[field, tally] : *tallies) all[field].add(error, tally);
                }
                if (all.empty()) all[0];
                out.write(table(all, summary));
                return summary.status();
            }};
}

}  // namespace number_tool
