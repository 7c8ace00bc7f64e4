// What a check finds in a document.
#ifndef COMMAND_DOCUMENT_FINDING_H
#define COMMAND_DOCUMENT_FINDING_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace zamofw {

enum class Severity { kError, kWarning };

// A rule of the document, or the default policy of an adapter.
struct FindingPlace {
    std::string adapter;
    std::optional<std::size_t> position;  // from 1; none for the default
};

struct Finding {
    Severity severity = Severity::kError;
    std::string kind;      // "unknown-member", ...; the list is fixed
    std::string file;      // the path, or "-" for standard input
    std::size_t line = 1;  // both counted from 1, in characters
    std::size_t column = 1;
    std::string path;     // JSON pointer
    std::string message;  // what is wrong
    std::string remedy;   // what to do about it
    // Of a rule that no packet reaches: what leaves it nothing.
    std::vector<FindingPlace> by = {};
};

using Findings = std::vector<Finding>;

}  // namespace zamofw

#endif
