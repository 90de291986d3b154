// convert, and its short ones encode and decode.
#include <memory>

#include "commands.h"
#include "number_stream.h"

namespace number_tool {

namespace {

Command add_conversion(CLI::App &tool, const char *name, const char *summary, Form from,
                       std::string_view forms_from, Form to, std::string_view forms_to) {
    const auto options = std::make_shared<NumberStream>();
    options->from.form = from;
    options->to = to;
    CLI::App *const app = tool.add_subcommand(name, summary);
    if (!forms_from.empty())
        add_form(*app, "--from", options->from.form, forms_from, "Form of the values");
    if (!forms_to.empty()) add_form(*app, "--to", options->to, forms_to, "Form of the results");
    if (from == Form::text) add_strict(*app, options->from.is_strict);
    add_stream_options(*app, options->stream);
    return {app, "[VALUE]...", {}, {}, [options](Output &out) {
                return options->convert(out).status();
            }};
}

}  // namespace

std::vector<Command> add_conversions(CLI::App &tool) {
    Command convert = add_conversion(tool, "convert", "Numbers of one form to another", Form::text,
                                     forms_read, Form::text, forms_written);
    convert.details =
        "Reads numbers in one form and writes them in another; text to text makes decimal text "
        "canonical. The order of sortable texts as bytes is the order of the numbers, so that "
        "sort, join, uniq and comm work on them.";
    convert.examples =
        "ocinumber convert --to json 1.5\n"
        "ocinumber convert --to sortable -f amounts.txt | LC_ALL=C sort |\n"
        "    ocinumber convert --from sortable";
    Command encode = add_conversion(tool, "encode", "Decimal texts to number bytes", Form::text, {},
                                    Form::hex, byte_forms_written);
    encode.details =
        "Values are decimal texts, one a line: a sign, digits with at most one period, an "
        "exponent, blanks around them; ~ and -~ are the infinities. More than 20 base-100 digits "
        "are rounded half away from zero; below 1E-128 a value becomes zero.";
    encode.examples =
        "ocinumber encode 123 -0.5             03C20218 and 033F3366\n"
        "ocinumber encode --to list 123        Len=3: 194,2,24\n"
        "ocinumber encode --to raw --file amounts.txt > amounts.raw\n"
        "ocinumber encode --field 2 --csv --header --file accounts.csv";
    Command decode = add_conversion(tool, "decode", "Number bytes to decimal texts", Form::hex,
                                    byte_forms_read, Form::text, {});
    decode.details =
        "Values are number bytes, one number a line, or 22-byte records with --from raw. Hex "
        "starts at the length byte, in either case, with blanks between bytes or not. Words in "
        "front of a list's Len= are skipped. Infinities become ~ and -~.";
    decode.examples =
        "ocinumber decode 03C20218             123\n"
        "ocinumber decode --from list 'Len=3: 194,2,24'\n"
        "ocinumber decode --from raw --file amounts.raw";
    return {convert, encode, decode};
}

}  // namespace number_tool
