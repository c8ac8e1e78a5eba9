#include "support/TestData.h"

#include "base/FileIO.h"

#include <cctype>
#include <sstream>
#include <stdexcept>

namespace korvane {

std::filesystem::path testDataPath(std::string_view relative) {
    return std::filesystem::path(KORVANE_TEST_DATA_DIR) / relative;
}

std::string testDataBytes(std::string_view relative) {
    const auto path = testDataPath(relative);
    auto bytes = readFileBytes(path);
    if (!bytes) {
        throw std::runtime_error("the repository's test data is missing: " + path.string());
    }
    return std::move(*bytes);
}

namespace {

std::string unescaped(std::string_view field) {
    std::string bytes;
    for (std::size_t i = 0; i < field.size(); ++i) {
        if (field[i] != '\\' || i + 1 == field.size()) {
            bytes += field[i];
        } else if (const char kind = field[++i]; kind == 'x') {
            bytes += static_cast<char>(std::stoi(std::string(field.substr(i + 1, 2)), nullptr, 16));
            i += 2;
        } else {
            bytes += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : kind;
        }
    }
    return bytes;
}

} // namespace

std::vector<std::vector<std::string>> testDataRows(std::string_view relative) {
    std::vector<std::vector<std::string>> rows;
    std::istringstream lines(testDataBytes(relative));
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line.starts_with("#")) {
            continue;
        }
        std::vector<std::string> row;
        for (std::size_t start = 0;; ++start) {
            const std::size_t tab = line.find('\t', start);
            row.push_back(unescaped(std::string_view(line).substr(start, tab - start)));
            if (tab == std::string::npos) {
                break;
            }
            start = tab;
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

std::string testNameOf(std::string_view path) {
    std::string name(path);
    std::erase_if(name, [](char c) { return !std::isalnum(static_cast<unsigned char>(c)); });
    return name;
}

} // namespace korvane
