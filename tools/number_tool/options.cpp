#include "options.h"

#include <charconv>

#include "arguments.h"
#include "messages.h"

namespace number_tool {

namespace {

constexpr unsigned max_jobs = 256;

// Returns false for text that is not all of a decimal integer that fits.
template <typename Number>
bool read_count(std::string_view text, Number &count) {
    const char *const end = text.data() + text.size();
    const auto [parsed, error] = std::from_chars(text.data(), end, count);
    return parsed == end && error == std::errc{};
}

bool is_among(std::string_view name, std::string_view names) {
    const std::string all = "|" + std::string(names) + "|";
    return all.find("|" + std::string(name) + "|") != all.npos;
}

const FormName *find_form(std::string_view name) {
    if (name == old_list_name.name) return &old_list_name;
    for (const FormName &known : form_names) {
        if (known.name == name) return &known;
    }
    return nullptr;
}

std::string_view name_of(Form form) {
    for (const FormName &known : form_names) {
        if (known.form == form) return known.name;
    }
    return {};
}

void add_flag(CLI::App &command, const char *names, bool &flag, const char *group,
              const char *description) {
    command.add_flag(names, flag, description)->group(group);
}

[[noreturn]] void refuse(const char *option, const std::string &text) {
    throw CLI::ValidationError(option, text);
}

void add_columns(CLI::App &command, StreamOptions &options) {
    constexpr const char *group = "Columns";
    add_text(
        command, "-k,--field", "LIST",
        [&](const std::string &list) {
            if (!options.fields.parse(list)) {
                refuse("--field", in_quotes(list) + " is no list of fields such as 2,4-6,9-");
            }
        },
        "Fields of a line that are values: 2, 1,3-5 or 4-; the rest of the line stays as it is")
        ->group(group);
    add_text(
        command, "-d,--delimiter", "C",
        [&](const std::string &delimiter) {
            const std::string c = delimiter == "\\t" ? "\t" : delimiter;
            if (c.size() != 1 || c == "\n" || c == "\"") {
                refuse("--delimiter", in_quotes(delimiter) + " is no byte between fields");
            }
            options.dialect.delimiter = c[0];
            options.dialect.is_by_name = false;
        },
        "Byte between fields (default tab, in CSV a comma)")
        ->group(group);
    command
        .add_flag_callback(
            "--csv", [&] { options.dialect.is_csv = true; },
            "Fields may stand in quotation marks, delimiters and line ends in them; "
            "the default for files named *.csv")
        ->group(group);
    add_flag(command, "--header", options.has_header, group,
             "The first line of each file is no value; that of the first file stays");
}

void add_refusals(CLI::App &command, StreamOptions &options) {
    constexpr const char *group = "Refused values";
    add_text(
        command, "--on-error", "WAY",
        [&](const std::string &way) {
            constexpr std::pair<const char *, OnError> ways[] = {{"fail", OnError::fail},
                                                                 {"skip", OnError::skip},
                                                                 {"keep", OnError::keep},
                                                                 {"null", OnError::null}};
            for (const auto &[name, value] : ways) {
                if (way == name) {
                    options.on_error = value;
                    return;
                }
            }
            refuse("--on-error", in_quotes(way) + " is not fail|skip|keep|null");
        },
        "fail: its line is left out, and the exit status is 1; skip: its line is left out; "
        "keep: it stays as it is; null: the text of --null takes its place (default fail)")
        ->group(group);
    add_text(
        command, "--null", "TEXT",
        [&](const std::string &text) {
            if (command.count("--on-error") > 0 && options.on_error != OnError::null) {
                refuse("--null", "only --on-error null takes a text");
            }
            options.on_error = OnError::null;
            options.null_text = text;
        },
        "What stands in place of a refused value (default nothing); means --on-error null")
        ->group(group);
    add_text(
        command, "--max-errors", "N",
        [&](const std::string &count) {
            if (!read_count(count, options.max_errors)) {
                refuse("--max-errors", in_quotes(count) + " is no count");
            }
        },
        "Stop with status 1 when more than N values are refused")
        ->group(group);
    add_flag(command, "-q,--quiet", options.is_quiet, group,
             "Do not name refused values one by one; their count is told at the end");
}

}  // namespace

CLI::Option *add_text(CLI::App &command, const char *names, const char *value_name,
                      std::function<void(const std::string &)> take,
                      const std::string &description) {
    return command
        .add_option(
            names,
            [take = std::move(take)](const CLI::results_t &words) {
                for (const std::string &word : words) take(value_of(word));
                return true;
            },
            description)
        ->type_name(value_name)
        ->expected(1)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

CLI::Option *add_form(CLI::App &command, const char *names, Form &form, std::string_view forms,
                      const std::string &description) {
    const std::string option = names;
    return add_text(
        command, names, "FORM",
        [&form, forms, option](const std::string &name) {
            const FormName *const found = find_form(name);
            if (found == nullptr || !is_among(name_of(found->form), forms)) {
                refuse(option.c_str(), in_quotes(name) + " is not " + std::string(forms));
            }
            form = found->form;
        },
        description + ": " + std::string(forms) + " (default " + std::string(name_of(form)) + ")");
}

CLI::Option *add_count(CLI::App &command, const char *names, sword &count,
                       const std::string &description) {
    const std::string option = names;
    return add_text(
        command, names, "N",
        [&count, option](const std::string &number) {
            if (!read_count(number, count)) {
                refuse(option.c_str(), in_quotes(number) + " is no decimal integer of 32 bits");
            }
        },
        description);
}

void add_values(CLI::App &command, std::vector<std::string> &values) {
    command
        .add_option("values",
                    [&values](const CLI::results_t &words) {
                        values = values_of(words);
                        return true;
                    })
        ->expected(1, -1)
        ->allow_extra_args()
        ->group("");
}

void add_model(CLI::App &command, std::string &model) {
    add_text(
        command, "-m,--model", "MODEL", [&model](const std::string &text) { model = text; },
        "Format model")
        ->required();
}

void add_strict(CLI::App &command, bool &is_strict) {
    command.add_flag("--strict", is_strict,
                     "Refuse decimal texts with an exponent, a plus sign, or blanks behind");
}

void add_stream_options(CLI::App &command, StreamOptions &options) {
    add_values(command, options.inputs.values);
    add_text(
        command, "-f,--file", "FILE",
        [&options](const std::string &file) { options.inputs.files.push_back(file); },
        "File of values, read after those given as arguments; - is standard input; may be "
        "repeated. Without values and files standard input is read");
    command.add_flag_callback(
        "-z,--zero", [&options] { options.framing = Framing::zeros; },
        "Lines end with a zero byte, read and written");
    add_columns(command, options);
    add_refusals(command, options);
    constexpr const char *group = "Work";
    add_text(
        command, "-j,--jobs", "N",
        [&options](const std::string &count) {
            if (!read_count(count, options.jobs) || options.jobs < 1 || options.jobs > max_jobs) {
                refuse("--jobs", in_quotes(count) + " is no count from 1 to 256");
            }
        },
        "Threads that work on blocks of the input; the order stays (default 1)")
        ->group(group);
    command
        .add_flag_callback(
            "--no-progress", [&options] { options.has_progress = false; },
            "Do not tell on a terminal how far long work is")
        ->group(group);
}

void settle(StreamOptions &options, Form from, Form to) {
    Dialect &dialect = options.dialect;
    if (dialect.is_csv && dialect.is_by_name) dialect.delimiter = ',';
    if (dialect.is_csv) dialect.is_by_name = false;
    const bool has_columns = options.reads_columns || !options.fields.empty();
    if (!dialect.is_by_name && !has_columns) {
        refuse(dialect.is_csv ? "--csv" : "--delimiter", "--field tells which fields are values");
    }
    if (from == Form::raw) {
        if (!options.inputs.values.empty()) {
            refuse("--from raw", "records are read from files or standard input");
        }
        if (has_columns) refuse("--from raw", "records have no fields");
        options.framing = Framing::records;
    }
    if (to == Form::raw) {
        if (has_columns) refuse("--to raw", "records are no fields");
        if (options.on_error == OnError::keep || options.on_error == OnError::null) {
            refuse("--to raw", "no text stands between records: --on-error fail or skip");
        }
        options.ends_results = false;
    }
}

}  // namespace number_tool
