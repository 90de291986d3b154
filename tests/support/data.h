// Tables of tests/data.
#pragma once

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

// "(xy){3}" is "xyxyxy".
inline std::string repeated(std::string s) {
    for (size_t open; (open = s.find('(')) != std::string::npos && s.find('{') < s.npos;) {
        const size_t close = s.find("){", open), end = s.find('}', close);
        const std::string part = s.substr(open + 1, close - open - 1);
        std::string run;
        for (int i = std::stoi(s.substr(close + 2)); i > 0; --i) run += part;
        s.replace(open, end + 1 - open, run);
    }
    return s;
}

// Number bytes in hex.
inline std::vector<int> hex_bytes(const std::string &hex) {
    std::vector<int> bytes;
    for (size_t i = 0; i < hex.size(); i += 2) bytes.push_back(std::stoi(hex.substr(i, 2), {}, 16));
    return bytes;
}

// "|" is the end of a line.
inline std::string ended(std::string s) {
    std::replace(s.begin(), s.end(), '|', '\n');
    return s;
}

struct DataRow {
    std::string line;
    std::vector<std::string> columns;
};

// The rows of a table: columns between blanks, quoted where they hold blanks or are
// empty; "#" starts a comment.
inline std::vector<DataRow> data_rows(const std::string &name) {
    std::ifstream in(OCI_NUMBER_TEST_DATA + name);
    std::vector<DataRow> rows;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        DataRow row{line, {}};
        for (std::string s; words >> std::quoted(s) && s[0] != '#';) {
            row.columns.push_back(repeated(s));
        }
        if (!row.columns.empty()) rows.push_back(row);
    }
    if (rows.empty()) std::abort();  // no table: no test
    return rows;
}
