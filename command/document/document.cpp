#include "command/document/document.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

namespace zamofw {
namespace {

// The library's reader takes no deeper nesting.
constexpr std::size_t kMaxDepth = 1000;

// The reader names the members of its streams and handlers.
// NOLINTBEGIN(readability-identifier-naming)

// A stream over the whole text, which may hold NULs: the reader must see them as characters that
// are wrong, not as the end.
class TextStream {
  public:
    using Ch = char;

    explicit TextStream(const std::string& text)
        : begin_(text.data()), next_(begin_), end_(begin_ + text.size()) {}
    Ch Peek() const { return *next_; }  // a NUL stands behind the text
    Ch Take() { return isAtEnd() ? '\0' : *next_++; }
    std::size_t Tell() const { return static_cast<std::size_t>(next_ - begin_); }
    bool isAtEnd() const { return next_ == end_; }

    // The reader's interface for writing in place, which it does not use here.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    void Flush() {}
    std::size_t PutEnd(Ch*) { return 0; }

  private:
    const char* begin_;
    const char* next_;
    const char* end_;
};

// Builds the tree from the reader's events. An event comes when its token has been read, so that a
// token's begin is found by going back from there.
class TreeBuilder {
  public:
    TreeBuilder(const TextStream& stream,
                const std::string& text,
                std::pmr::memory_resource& memory)
        : stream_(stream), text_(text), memory_(memory) {}

    bool isTooDeep() const { return tooDeep_; }

    // What was read, also when reading stopped half-way. Once.
    Node takeRoot() {
        while (!open_.empty()) {
            close();
        }
        return pending_.empty() ? Node() : pending_.front().value;
    }

    bool Null() { return add({Node::Kind::kNull, stream_.Tell() - std::strlen("null")}); }
    bool Bool(bool flag) {
        return add({flag, stream_.Tell() - std::strlen(flag ? "true" : "false")});
    }
    bool Int(int value) { return Int64(value); }
    bool Uint(unsigned value) { return Int64(value); }
    bool Int64(std::int64_t value) { return add({value, numberBegin()}); }
    bool Uint64(std::uint64_t value) { return Double(static_cast<double>(value)); }
    bool Double(double) { return add({Node::Kind::kReal, numberBegin()}); }
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        return add({kept(text, length), textBegin(length)});
    }
    bool StartObject() { return open(Node::Kind::kObject); }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        pending_.push_back({kept(text, length), textBegin(length), {}});
        hasName_ = true;
        return true;
    }
    bool EndObject(rapidjson::SizeType) { return close(); }
    bool StartArray() { return open(Node::Kind::kList); }
    bool EndArray(rapidjson::SizeType) { return close(); }

  private:
    bool add(const Node& value) {
        if (!hasName_) {
            pending_.emplace_back();
        }
        hasName_ = false;
        pending_.back().value = value;
        return true;
    }
    bool open(Node::Kind kind) {
        add({kind, stream_.Tell()});  // comes before the bracket is taken
        open_.push_back(pending_.size() - 1);
        tooDeep_ = open_.size() > kMaxDepth;
        return !tooDeep_;
    }
    // The values behind the innermost open one are its contents.
    bool close() {
        const std::size_t position = open_.back();
        open_.pop_back();
        hasName_ = false;
        const auto first = pending_.begin() + static_cast<std::ptrdiff_t>(position) + 1;
        const std::size_t size = pending_.size() - position - 1;
        Node& value = pending_[position].value;
        if (value.kind == Node::Kind::kObject) {
            auto* const members = allocate<Member>(size);
            std::uninitialized_copy(first, pending_.end(), members);
            value = Node(Span<Member>(members, size), value.offset);
        } else {
            auto* const items = allocate<Node>(size);
            std::transform(
                first, pending_.end(), items, [](const Member& item) { return item.value; });
            value = Node(Span<Node>(items, size), value.offset);
        }
        pending_.erase(first, pending_.end());
        return true;
    }
    template <typename Element>
    Element* allocate(std::size_t count) {
        return static_cast<Element*>(memory_.allocate(count * sizeof(Element), alignof(Element)));
    }
    std::string_view kept(const char* text, std::size_t length) {
        char* const copy = allocate<char>(length);
        std::memcpy(copy, text, length);
        return {copy, length};
    }
    std::size_t numberBegin() const {
        const std::size_t before = text_.find_last_not_of("+-.0123456789eE", stream_.Tell() - 1);
        return before == std::string::npos ? 0 : before + 1;
    }
    // Every quote inside a text has a backslash before it. A text with escapes is longer than what
    // it stands for.
    std::size_t textBegin(std::size_t length) const {
        const std::size_t begin = stream_.Tell() - length - 2;
        if (text_[begin] == '"' && (begin == 0 || text_[begin - 1] != '\\')) {
            return begin;
        }
        std::size_t quote = stream_.Tell() - 1;
        std::size_t backslashes = 0;
        do {
            quote = text_.rfind('"', quote - 1);
            const std::size_t before =
                quote == 0 ? std::string::npos : text_.find_last_not_of('\\', quote - 1);
            backslashes = quote - (before == std::string::npos ? 0 : before + 1);
        } while (backslashes % 2 != 0);
        return quote;
    }

    const TextStream& stream_;
    const std::string& text_;
    std::pmr::memory_resource& memory_;
    // Values whose list or object is still open, an element of a list without a name.
    std::vector<Member> pending_;
    std::vector<std::size_t> open_;  // the positions of the open ones in it
    bool hasName_ = false;           // the last of them waits for its value
    bool tooDeep_ = false;
};

// NOLINTEND(readability-identifier-naming)

std::string faultMessage(const rapidjson::ParseResult& result, bool tooDeep) {
    return tooDeep ? "the nesting is deeper than " + std::to_string(kMaxDepth) + " levels"
                   : rapidjson::GetParseError_En(result.Code());
}

bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

Node::Node(bool flag, std::size_t begin) : Node(Kind::kBool, begin) {
    contents_.flag = flag;
}

Node::Node(std::int64_t integer, std::size_t begin) : Node(Kind::kInteger, begin) {
    contents_.integer = integer;
}

Node::Node(std::string_view text, std::size_t begin) : Node(Kind::kText, begin) {
    size_ = static_cast<std::uint32_t>(text.size());
    contents_.text = text.data();
}

Node::Node(Span<Node> items, std::size_t begin) : Node(Kind::kList, begin) {
    size_ = static_cast<std::uint32_t>(items.size());
    contents_.items = items.begin();
}

Node::Node(Span<Member> members, std::size_t begin) : Node(Kind::kObject, begin) {
    size_ = static_cast<std::uint32_t>(members.size());
    contents_.members = members.begin();
}

std::string_view Node::text() const {
    return kind == Kind::kText ? std::string_view(contents_.text, size_) : std::string_view();
}

Span<Node> Node::items() const {
    return kind == Kind::kList ? Span<Node>(contents_.items, size_) : Span<Node>();
}

Span<Member> Node::members() const {
    return kind == Kind::kObject ? Span<Member>(contents_.members, size_) : Span<Member>();
}

const Member* Node::find(std::string_view name) const {
    const Member* found = nullptr;
    for (const Member& member : members()) {
        found = member.name == name ? &member : found;
    }
    return found;
}

Place Document::placeOf(std::size_t offset) const {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
    const auto feed = std::find(std::make_reverse_iterator(end), text.rend(), '\n');
    Place place;
    place.line += static_cast<std::size_t>(std::count(text.begin(), feed.base(), '\n'));
    place.column += static_cast<std::size_t>(
        std::count_if(feed.base(), end, [](char byte) { return !continuesCharacter(byte); }));
    return place;
}

std::string placeText(const Document& document, std::size_t offset) {
    const Place place = document.placeOf(offset);
    return document.file + ":" + std::to_string(place.line) + ":" + std::to_string(place.column);
}

std::string faultText(const Document& document) {
    return placeText(document, document.fault->offset) + ": " + document.fault->message;
}

Document readDocument(std::string text, const std::string& file) {
    Document document;
    document.file = file;
    document.text = std::move(text);
    TextStream stream(document.text);
    auto memory = std::make_unique<std::pmr::monotonic_buffer_resource>();
    TreeBuilder builder(stream, document.text, *memory);
    constexpr unsigned kFlags = rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag |
                                rapidjson::kParseValidateEncodingFlag;
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, builder);
    document.root = builder.takeRoot();
    document.memory = std::move(memory);
    if (result.IsError()) {
        document.fault = SyntaxFault{builder.isTooDeep() ? stream.Tell() : result.Offset(),
                                     faultMessage(result, builder.isTooDeep())};
    } else if (!stream.isAtEnd()) {
        document.fault = SyntaxFault{stream.Tell(), "a NUL byte stands in the text"};
    }
    return document;
}

}  // namespace zamofw
