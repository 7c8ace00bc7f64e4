// Tables that keep their meaning where a narrow screen makes blocks of their rows.
#ifndef COMMAND_REPORT_TABLE_H
#define COMMAND_REPORT_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "command/report/html.h"

namespace zamofw::report {

struct Column {
    std::string title;
    std::string look;           // a class of the style sheet
    bool isTitleShown = false;  // also where rows are blocks, in front of the value
};

using Cells = std::vector<Html>;

// A table with a head. The first cell of each row names the row. Rows after the first `open` ones
// are folded away in a second table that the reader can open; `what` names them: "rules".
struct Listing {
    std::string caption;
    std::string what;
    std::vector<Column> columns;
    std::vector<Cells> rows;
    std::size_t open = 0;
};
[[nodiscard]] Html table(const Listing& listing);

// "1 rule", "3 rules", "1 234 rules"
[[nodiscard]] std::string amount(std::size_t count, const std::string& what);

// "1 234 567"
[[nodiscard]] std::string grouped(unsigned long long number);

}  // namespace zamofw::report

#endif
