#include "command/report/table.h"

namespace zamofw::report {
namespace {

// The roles are those that the elements have anyway. They say so because browsers take them away
// from a table that is laid out as blocks.
Html headOf(const std::vector<Column>& columns) {
    Html cells;
    for (const Column& column : columns) {
        cells += element("th",
                         {{"scope", "col"}, {"role", "columnheader"}, {"class", column.look}},
                         element("span", column.title));
    }
    return element("thead", {{"role", "rowgroup"}}, element("tr", {{"role", "row"}}, cells));
}

Html rowOf(const std::vector<Column>& columns, const Cells& cells) {
    Html row;
    for (std::size_t i = 0; i < cells.size() && i < columns.size(); ++i) {
        const Column& column = columns[i];
        const std::string label = column.isTitleShown && !cells[i].empty() ? column.title : "";
        row += i == 0 ? element("th",
                                {{"scope", "row"}, {"role", "rowheader"}, {"class", column.look}},
                                cells[i])
                      : element("td",
                                {{"role", "cell"}, {"class", column.look}, {"data-title", label}},
                                cells[i]);
    }
    return element("tr", {{"role", "row"}}, row) + Html::markup("\n");
}

Html tableOf(const Listing& listing, std::size_t begin, std::size_t end) {
    const std::size_t count = listing.rows.size();
    std::string caption = listing.caption;
    if (begin != 0 || end != count) {
        caption += ", " + grouped(begin + 1) + " to " + grouped(end) + " of " + grouped(count);
    }
    Html body;
    for (std::size_t i = begin; i < end; ++i) {
        body += rowOf(listing.columns, listing.rows[i]);
    }
    return element("table",
                   {{"class", "list"}, {"role", "table"}},
                   element("caption", caption) + headOf(listing.columns) + Html::markup("\n") +
                       element("tbody", {{"role", "rowgroup"}}, body)) +
           Html::markup("\n");
}

}  // namespace

Html table(const Listing& listing) {
    const std::size_t count = listing.rows.size();
    // One more row takes no more room than the words that fold it away.
    if (count <= listing.open + 1) {
        return tableOf(listing, 0, count);
    }
    return tableOf(listing, 0, listing.open) +
           element("details",
                   element("summary", grouped(count - listing.open) + " more " + listing.what) +
                       tableOf(listing, listing.open, count));
}

std::string amount(std::size_t count, const std::string& what) {
    return grouped(count) + " " + what + (count == 1 ? "" : "s");
}

std::string grouped(unsigned long long number) {
    std::string digits = std::to_string(number);
    // A narrow blank that no line breaks at.
    for (std::size_t end = digits.size(); end > 3; end -= 3) {
        digits.insert(end - 3, "\u202f");
    }
    return digits;
}

}  // namespace zamofw::report
