// A JSON document with the place of every value and of every member's name.
#ifndef COMMAND_DOCUMENT_DOCUMENT_H
#define COMMAND_DOCUMENT_DOCUMENT_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zamofw {

struct Member;

// A value. Offsets are bytes from the begin of the text.
struct Node {
    enum class Kind { kNull, kBool, kInteger, kReal, kText, kList, kObject };
    Kind kind = Kind::kNull;
    std::size_t offset = 0;
    bool flag = false;            // kBool
    std::int64_t integer = 0;     // kInteger
    double real = 0;              // kReal, also an integer beyond 64 bits
    std::string text;             // kText
    std::vector<Node> items;      // kList
    std::vector<Member> members;  // kObject, in the order of the text, duplicates included

    // The value that a reader sees: of equal members the last one. Null when there is none.
    [[nodiscard]] const Member* find(const std::string& name) const;
};

struct Member {
    std::string name;
    std::size_t nameOffset = 0;
    Node value;
};

struct SyntaxFault {
    std::size_t offset = 0;  // where reading stops
    std::string message;
};

struct Place {
    std::size_t line = 1;    // from 1
    std::size_t column = 1;  // from 1, in characters
};

struct Document {
    std::string file;  // for messages
    std::string text;
    Node root;
    std::optional<SyntaxFault> fault;  // then the root is what was read before it

    [[nodiscard]] Place placeOf(std::size_t offset) const;
};

// "FILE:LINE:COLUMN"
[[nodiscard]] std::string placeText(const Document& document, std::size_t offset);

// "FILE:LINE:COLUMN: MESSAGE" for the syntax fault of a document that has one.
[[nodiscard]] std::string faultText(const Document& document);

[[nodiscard]] Document readDocument(std::string text, const std::string& file);

}  // namespace zamofw

#endif
