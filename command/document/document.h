// A JSON document with the place of every value and of every member's name.
#ifndef COMMAND_DOCUMENT_DOCUMENT_H
#define COMMAND_DOCUMENT_DOCUMENT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>

namespace zamofw {

struct Member;

// Elements in a row that belong to somebody else.
template <typename Element>
class Span {
  public:
    Span() = default;
    Span(const Element* first, std::size_t size) : first_(first), size_(size) {}

    [[nodiscard]] const Element* begin() const { return first_; }
    [[nodiscard]] const Element* end() const { return first_ + size_; }
    [[nodiscard]] std::size_t size() const { return size_; }
    [[nodiscard]] bool empty() const { return size_ == 0; }
    [[nodiscard]] const Element& operator[](std::size_t index) const { return first_[index]; }

  private:
    const Element* first_ = nullptr;
    std::size_t size_ = 0;
};

// A value. What it refers to belongs to its document, so that the hundred thousand values of a
// large profile are small, made without an allocation each, and never freed one by one.
class Node {
  public:
    enum class Kind : std::uint32_t { kNull, kBool, kInteger, kReal, kText, kList, kObject };

    Node() : Node(Kind::kNull, 0) {}
    // A value without contents.
    Node(Kind itsKind, std::size_t begin)
        : offset(static_cast<std::uint32_t>(begin)), kind(itsKind), size_(0) {}
    Node(bool flag, std::size_t begin);
    Node(std::int64_t integer, std::size_t begin);
    Node(std::string_view text, std::size_t begin);
    Node(Span<Node> items, std::size_t begin);
    Node(Span<Member> members, std::size_t begin);

    // Of a value of another kind they are false, 0 or empty.
    [[nodiscard]] bool flag() const { return kind == Kind::kBool && contents_.flag; }
    [[nodiscard]] std::int64_t integer() const {
        return kind == Kind::kInteger ? contents_.integer : 0;
    }
    [[nodiscard]] std::string_view text() const {
        return kind == Kind::kText ? std::string_view(contents_.text, size_) : std::string_view();
    }
    [[nodiscard]] Span<Node> items() const {
        return kind == Kind::kList ? Span<Node>(contents_.items, size_) : Span<Node>();
    }
    // In the order of the text, duplicates included.
    [[nodiscard]] Span<Member> members() const;

    // The value that a reader sees: of equal members the last one. Null when there is none.
    [[nodiscard]] const Member* find(std::string_view name) const;

    // In bytes from the begin of the text. No document comes near to 2^29 bytes.
    std::uint32_t offset;
    Kind kind : 3;  // an integer beyond 64 bits is a kReal

  private:
    std::uint32_t size_ : 29;
    union {
        bool flag;
        std::int64_t integer;
        const char* text;
        const Node* items;
        const Member* members;
    } contents_ = {};
};

struct Member {
    std::string_view name;
    std::size_t nameOffset = 0;
    Node value;
};

inline Span<Member> Node::members() const {
    return kind == Kind::kObject ? Span<Member>(contents_.members, size_) : Span<Member>();
}

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
    // What the values refer to, except texts without escapes, which stay in `text`.
    std::unique_ptr<std::pmr::memory_resource> memory;
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
