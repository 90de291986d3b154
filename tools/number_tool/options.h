// Options that several commands have.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "forms.h"
#include "stream.h"

namespace number_tool {

// Forms that a command takes, by name.
inline constexpr std::string_view byte_forms_read = "hex|list|raw|base64|digits|sortable";
inline constexpr std::string_view forms_read = "text|hex|list|raw|base64|digits|sortable";
inline constexpr std::string_view byte_forms_written = "hex|list|raw|base64|digits|sortable|json";
inline constexpr std::string_view forms_written = "text|hex|list|raw|base64|digits|sortable|json";

// An option with a value, which `take` is called for as it is.
CLI::Option *add_text(CLI::App &command, const char *names, const char *value_name,
                      std::function<void(const std::string &)> take,
                      const std::string &description);

CLI::Option *add_form(CLI::App &command, const char *names, Form &form, std::string_view forms,
                      const std::string &description);

// A decimal integer; `count` holds the default.
CLI::Option *add_count(CLI::App &command, const char *names, sword &count,
                       const std::string &description);

// The words behind the options, as they are.
void add_values(CLI::App &command, std::vector<std::string> &values);

void add_model(CLI::App &command, std::string &model);
void add_strict(CLI::App &command, bool &is_strict);

// Inputs, columns, refused values, jobs.
void add_stream_options(CLI::App &command, StreamOptions &options);

// Makes the stream's options fit the forms of its values and results. Throws
// CLI::ValidationError for what does not go together.
void settle(StreamOptions &options, Form from, Form to);

}  // namespace number_tool
