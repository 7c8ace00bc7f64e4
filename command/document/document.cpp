#include "command/document/document.h"

#include <rapidjson/error/en.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <cstring>
#include <utility>

namespace zamofw {
namespace {

// The library's reader takes no deeper nesting, and freeing a tree is recursive.
constexpr std::size_t kMaxDepth = 1000;
constexpr std::size_t kMostReserved = 32;

// The reader names the members of its streams and handlers.
// NOLINTBEGIN(readability-identifier-naming)

// A stream over the whole text, which may hold NULs: the reader must see them as characters that
// are wrong, not as the end.
class TextStream {
  public:
    using Ch = char;

    explicit TextStream(const std::string& text) : text_(text) {}
    Ch Peek() const { return position_ < text_.size() ? text_[position_] : '\0'; }
    Ch Take() { return position_ < text_.size() ? text_[position_++] : '\0'; }
    std::size_t Tell() const { return position_; }
    bool isAtEnd() const { return position_ >= text_.size(); }

    // The reader's interface for writing in place, which it does not use here.
    Ch* PutBegin() { return nullptr; }
    void Put(Ch) {}
    void Flush() {}
    std::size_t PutEnd(Ch*) { return 0; }

  private:
    const std::string& text_;
    std::size_t position_ = 0;
};

// Builds the tree from the reader's events. An event comes when its token has been read, so that a
// token's begin is found by going back from there.
class TreeBuilder {
  public:
    TreeBuilder(const TextStream& stream, const std::string& text, Node& root)
        : stream_(stream), text_(text) {
        open_.push_back(&root);
    }

    bool isTooDeep() const { return tooDeep_; }

    bool Null() { return add(Node::Kind::kNull, stream_.Tell() - std::strlen("null")) != nullptr; }
    bool Bool(bool flag) {
        Node* const node =
            add(Node::Kind::kBool, stream_.Tell() - std::strlen(flag ? "true" : "false"));
        node->flag = flag;
        return true;
    }
    bool Int(int value) { return Int64(value); }
    bool Uint(unsigned value) { return Int64(value); }
    bool Int64(std::int64_t value) {
        Node* const node = add(Node::Kind::kInteger, numberBegin());
        node->integer = value;
        node->real = static_cast<double>(value);
        return true;
    }
    bool Uint64(std::uint64_t value) { return Double(static_cast<double>(value)); }
    bool Double(double value) {
        add(Node::Kind::kReal, numberBegin())->real = value;
        return true;
    }
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        add(Node::Kind::kText, textBegin(length))->text.assign(text, length);
        return true;
    }
    bool StartObject() {
        if (!start(Node::Kind::kObject)) {
            return false;
        }
        // Rules have equally many members; growing each list step by step takes twice the memory.
        open_.back()->members.reserve(lastMembers_);
        return true;
    }
    bool Key(const char* text, rapidjson::SizeType length, bool) {
        open_.back()->members.push_back({std::string(text, length), textBegin(length), {}});
        return true;
    }
    bool EndObject(rapidjson::SizeType count) {
        lastMembers_ = std::min<std::size_t>(count, kMostReserved);
        return end();
    }
    bool StartArray() { return start(Node::Kind::kList); }
    bool EndArray(rapidjson::SizeType) { return end(); }

  private:
    Node* add(Node::Kind kind, std::size_t offset) {
        Node* node = open_.back();
        if (hasRoot_) {
            node = node->kind == Node::Kind::kObject ? &node->members.back().value
                                                     : &node->items.emplace_back();
        }
        hasRoot_ = true;
        node->kind = kind;
        node->offset = offset;
        return node;
    }
    bool start(Node::Kind kind) {
        Node* const node = add(kind, stream_.Tell());  // comes before the bracket is taken
        open_.push_back(node);
        tooDeep_ = open_.size() > kMaxDepth + 1;
        return !tooDeep_;
    }
    bool end() {
        open_.pop_back();
        return true;
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
    std::vector<Node*> open_;  // the root first; a node moves only when it is closed
    std::size_t lastMembers_ = 0;
    bool hasRoot_ = false;
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

const Member* Node::find(const std::string& name) const {
    const auto found = std::find_if(members.rbegin(),
                                    members.rend(),
                                    [&name](const Member& member) { return member.name == name; });
    return found == members.rend() ? nullptr : &*found;
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
    TreeBuilder builder(stream, document.text, document.root);
    constexpr unsigned kFlags = rapidjson::kParseCommentsFlag | rapidjson::kParseIterativeFlag |
                                rapidjson::kParseValidateEncodingFlag;
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, builder);
    if (result.IsError()) {
        document.fault = SyntaxFault{builder.isTooDeep() ? stream.Tell() : result.Offset(),
                                     faultMessage(result, builder.isTooDeep())};
    } else if (!stream.isAtEnd()) {
        document.fault = SyntaxFault{stream.Tell(), "a NUL byte stands in the text"};
    }
    return document;
}

}  // namespace zamofw
