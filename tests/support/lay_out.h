// Text under a format model the slow way.
#pragma once

#include <algorithm>
#include <string>

#include "support/exact.h"

// The layout in terms of strings: the number's parts over the model's parts.
inline std::string lay_out(const Decimal &value, const std::string &model) {
    const auto split = [](const std::string &s, std::string &integer, std::string &fraction) {
        const size_t dot = std::min(s.find('.'), s.size());
        integer = s.substr(0, dot);
        fraction = s.substr(std::min(dot + 1, s.size()));
    };
    const bool fm = model.starts_with("FM");
    const std::string body = model.substr(fm ? 2 : 0);
    std::string imodel, fmodel, integer, fraction;
    split(body, imodel, fmodel);
    const std::string plain = value.plain();
    const bool negative = plain[0] == '-', whole = plain.find('.') == plain.npos;
    split(plain.substr(negative), integer, fraction);
    if (fraction.size() > fmodel.size()) {
        const bool up = fraction[fmodel.size()] >= '5';
        fraction.resize(fmodel.size());
        // Only a carry leaves no zeros at the end of the fraction.
        const std::string sum = value.rounded(-static_cast<long>(fmodel.size())).plain();
        if (up) split(sum.substr(negative), integer, fraction);
    }
    if (integer == "0" && !(fraction.empty() && (whole || fmodel.empty()))) integer.clear();
    if (integer.size() > imodel.size()) return "22065";

    const size_t first_digit = imodel.size() - integer.size();
    const size_t shown = std::min(first_digit, imodel.find('0'));
    const size_t padding = fmodel.size() - fraction.size();
    std::string out =
        std::string(shown, ' ') + (negative ? '-' : ' ') + std::string(first_digit - shown, '0') +
        integer + (body.find('.') == body.npos ? "" : ".") + fraction + std::string(padding, '0');
    if (fm) {
        out.resize(out.size() - std::min(padding, fmodel.size() - (fmodel.rfind('0') + 1)));
        out.erase(0, out.find_first_not_of(' '));
    }
    return out;
}
