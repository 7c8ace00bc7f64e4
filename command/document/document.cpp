#include "command/document/document.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "command/document/bytes.h"

namespace zamofw {
namespace {

// The library's reader takes no deeper nesting.
constexpr std::size_t kMaxDepth = 1000;

// The reader names the members of its streams and handlers.
// NOLINTBEGIN(readability-identifier-naming)

// A stream over the whole text, which may hold NULs: the reader must see them as characters that
// are wrong, not as the end.
//
// The reader believes that it writes the decoded texts in place. A text without escapes is there
// already, so that nothing needs to be written; one with escapes goes into a buffer.
class TextStream {
  public:
    using Ch = char;

    explicit TextStream(const std::string& text)
        : begin_(text.data()), next_(begin_), end_(begin_ + text.size()) {}
    Ch Peek() const { return *next_; }  // a NUL stands behind the text
    Ch Take() { return *next_++; }      // never asked for that one
    std::size_t Tell() const { return static_cast<std::size_t>(next_ - begin_); }
    bool isAtEnd() const { return next_ == end_; }
    void skipBlanks() {
        while (isBlank(*next_)) {
            ++next_;
            skipSpaces<8>();
            skipSpaces<4>();
        }
    }

    // The reader takes and puts one byte at a time; what needs no look is skipped at once.
    Ch* PutBegin() {
        first_ = next_;
        while (isPlain(*next_)) {
            ++next_;
        }
        decoded_ = next_;
        hasEscapes_ = false;
        return const_cast<Ch*>(first_);
    }
    // What was just taken is put, unless it belongs to an escape.
    void Put(Ch character) {
        if (!hasEscapes_ && decoded_ + 1 != next_) {
            buffer_.assign(first_, decoded_);
            hasEscapes_ = true;
        }
        if (hasEscapes_) {
            buffer_ += character;
        } else {
            ++decoded_;
        }
    }
    void Flush() {}
    std::size_t PutEnd(Ch*) {
        return hasEscapes_ ? buffer_.size() : static_cast<std::size_t>(decoded_ - first_);
    }

    // The last text if it had escapes, else null.
    const char* bufferedText() const { return hasEscapes_ ? buffer_.data() : nullptr; }

  private:
    static bool isPlain(char byte) {
        return byte >= ' ' && byte <= '~' && byte != '"' && byte != '\\';
    }
    // Whole steps of this width, as the indentation of a profile is made of.
    template <std::size_t kWidth>
    void skipSpaces() {
        while (static_cast<std::size_t>(end_ - next_) >= kWidth &&
               std::memcmp(next_, "        ", kWidth) == 0) {
            next_ += kWidth;
        }
    }
    static bool isBlank(char byte) {
        return byte == ' ' || byte == '\n' || byte == '\r' || byte == '\t';
    }

    const char* begin_;
    const char* next_;
    const char* end_;
    const char* first_ = nullptr;    // of the text that is being read
    const char* decoded_ = nullptr;  // the end of what was put of it
    bool hasEscapes_ = false;
    std::string buffer_;
};

// The reader's own is slower, and most of a profile are blanks.
void SkipWhitespace(TextStream& stream) {
    stream.skipBlanks();
}

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
        add({kind, stream_.Tell() - 1});  // comes when the bracket has been taken
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
    // What lies in the document's text stays there.
    std::string_view kept(const char* text, std::size_t length) {
        const char* const buffered = stream_.bufferedText();
        if (buffered == nullptr) {
            return {text, length};
        }
        char* const copy = allocate<char>(length);
        std::memcpy(copy, buffered, length);
        return {copy, length};
    }
    std::size_t numberBegin() const {
        std::size_t begin = stream_.Tell();
        while (begin > 0 && isOfNumber(text_[begin - 1])) {
            --begin;
        }
        return begin;
    }
    static bool isOfNumber(char byte) {
        return (byte >= '0' && byte <= '9') || byte == '+' || byte == '-' || byte == '.' ||
               byte == 'e' || byte == 'E';
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

bool isAscii(const std::string& text) {
    unsigned char bits = 0;
    for (const char byte : text) {
        bits |= static_cast<unsigned char>(byte);
    }
    return bits < 0x80U;
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
    // A short text would move with the document.
    document.text.reserve(2 * sizeof(std::string));
    TextStream stream(document.text);
    auto memory = std::make_unique<std::pmr::monotonic_buffer_resource>();
    TreeBuilder builder(stream, document.text, *memory);
    constexpr unsigned kFlags = rapidjson::kParseCommentsFlag | rapidjson::kParseInsituFlag;
    constexpr unsigned kValidatingFlags = kFlags | rapidjson::kParseValidateEncodingFlag;
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = isAscii(document.text)
                                              ? reader.Parse<kFlags>(stream, builder)
                                              : reader.Parse<kValidatingFlags>(stream, builder);
    document.root = builder.takeRoot();
    document.memory = std::move(memory);
    if (result.IsError()) {
        document.fault = SyntaxFault{builder.isTooDeep() ? stream.Tell() - 1 : result.Offset(),
                                     faultMessage(result, builder.isTooDeep())};
    } else if (!stream.isAtEnd()) {
        document.fault = SyntaxFault{stream.Tell(), "a NUL byte stands in the text"};
    }
    return document;
}

}  // namespace zamofw
