// Collects what a check of one document finds.
#ifndef COMMAND_DOCUMENT_FINDINGLIST_H
#define COMMAND_DOCUMENT_FINDINGLIST_H

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "command/document/document.h"
#include "command/document/finding.h"
#include "command/document/location.h"

namespace zamofw {

// A fault of a text, before its place is known.
struct Fault {
    const char* kind;
    std::string message;
    std::string remedy;
};

class FindingList {
  public:
    explicit FindingList(const Document& document) : document_(document) {}

    // `offset` is where the finding points, `where` the value that it is about.
    void error(std::size_t offset, const Location& where, Fault fault);
    void warning(std::size_t offset, const Location& where, Fault fault);

    // A rule that no packet reaches, because of `by`.
    void shadowed(std::size_t offset,
                  const Location& where,
                  Fault fault,
                  std::vector<FindingPlace> by);

    // The suggestion for a word, from the candidates that `what` stands for. Kept, since a slip is
    // often in every rule of a file, and the search costs more than the rest of the check.
    const std::string& suggestionFor(const std::string& what,
                                     std::string_view word,
                                     const std::function<std::vector<std::string>()>& candidates);

    // What was collected, in the order of the text. Counts the lines of the text once for all.
    [[nodiscard]] Findings take();

  private:
    void add(Severity severity, std::size_t offset, const Location& where, Fault fault);

    const Document& document_;
    std::vector<std::pair<std::size_t, Finding>> found_;
    std::map<std::pair<std::string, std::string>, std::string> suggestions_;
};

// A text of the document in a message: in backquotes, without control characters, not too long.
[[nodiscard]] std::string quoted(std::string_view text);

}  // namespace zamofw

#endif
