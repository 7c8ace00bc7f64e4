// Lists of records as text.
#ifndef COMMAND_ANSWERS_TABLE_H
#define COMMAND_ANSWERS_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "command/console.h"

namespace zamofw {

using Row = std::vector<std::string>;

// On a terminal aligned columns below their titles, else a line per row with tabs between the
// columns. Control characters are written as \xNN.
void printTable(const Console& console, const Row& titles, const std::vector<Row>& rows);

// Its width on a terminal, each character taken for one column.
[[nodiscard]] std::size_t shownWidth(const std::string& text);

// "1 rule", "3 rules".
[[nodiscard]] std::string counted(std::size_t count, const std::string& what);

}  // namespace zamofw

#endif
