#include "command/answers/table.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <ostream>

namespace zamofw {
namespace {

constexpr const char* kGap = "  ";

std::string printable(const std::string& text) {
    std::string result;
    for (const char byte : text) {
        if (static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7f) {
            result += byte;
            continue;
        }
        std::array<char, 8> code = {};
        (void)std::snprintf(code.data(), code.size(), "\\x%02x", static_cast<unsigned>(byte));
        result += code.data();
    }
    return result;
}

std::string aligned(const Row& row, const std::vector<std::size_t>& widths) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
        line += row[i];
        if (i + 1 < row.size()) {
            line += std::string(widths[i] - shownWidth(row[i]), ' ') + kGap;
        }
    }
    return line;
}

void printAligned(const Console& console, const Row& titles, const std::vector<Row>& rows) {
    std::vector<std::size_t> widths;
    for (const std::string& title : titles) {
        widths.push_back(shownWidth(title));
    }
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], shownWidth(row[i]));
        }
    }
    console.out << (console.color ? "\x1b[1m" : "") << aligned(titles, widths)
                << (console.color ? "\x1b[0m" : "") << "\n";
    for (const Row& row : rows) {
        console.out << aligned(row, widths) << "\n";
    }
}

void printPlain(std::ostream& out, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < row.size(); ++i) {
            out << (i == 0 ? "" : "\t") << row[i];
        }
        out << "\n";
    }
}

}  // namespace

std::size_t shownWidth(const std::string& text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

void printTable(const Console& console, const Row& titles, const std::vector<Row>& rows) {
    std::vector<Row> cells = rows;
    for (Row& row : cells) {
        std::transform(row.begin(), row.end(), row.begin(), printable);
    }
    if (console.isTerminal) {
        printAligned(console, titles, cells);
    } else {
        printPlain(console.out, cells);
    }
}

std::string counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

}  // namespace zamofw
