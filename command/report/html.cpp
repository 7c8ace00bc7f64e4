#include "command/report/html.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

#include <cstddef>
#include <cstdio>

namespace zamofw::report {
namespace {

// More than any line of a rule, and less than what would fill the page.
constexpr std::size_t kLongestText = 1500;

struct Character {
    unsigned code = 0;
    std::size_t size = 0;  // in bytes; 0: the byte begins no character
};

Character characterAt(const std::string& text, std::size_t offset) {
    rapidjson::MemoryStream stream(text.data() + offset, text.size() - offset);
    Character character;
    if (rapidjson::UTF8<>::Decode(stream, &character.code)) {
        character.size = stream.Tell();
    }
    return character;
}

// Control characters, invisible ones, and those that reorder what is around them.
bool isUnseen(unsigned code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0) || code == 0xAD || code == 0x61C ||
           (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
           (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF || (code & 0xFFFEU) == 0xFFFE;
}

std::string codeText(const char* format, unsigned code) {
    char text[16];
    (void)std::snprintf(text, sizeof text, format, code);
    return text;
}

std::string escaped(const std::string& text) {
    std::string result;
    for (std::size_t offset = 0; offset < text.size();) {
        if (offset >= kLongestText) {
            return result + "… (" + std::to_string(text.size() - offset) + " more bytes)";
        }
        const Character character = characterAt(text, offset);
        if (character.size == 0) {
            result += codeText("\\x%02x", static_cast<unsigned char>(text[offset++]));
            continue;
        }
        switch (character.code) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += isUnseen(character.code) ? codeText("\\u{%x}", character.code)
                                                   : text.substr(offset, character.size);
        }
        offset += character.size;
    }
    return result;
}

}  // namespace

Html::Html(const std::string& text) : markup_(escaped(text)) {}

Html::Html(const char* text) : markup_(escaped(text)) {}

Html Html::markup(const char* text) {
    Html html;
    html.markup_ = text;
    return html;
}

Html& Html::operator+=(const Html& more) {
    markup_ += more.markup_;
    return *this;
}

Html element(const char* name, Attributes attributes, const Html& content) {
    Html html = Html::markup("<") + Html(name);
    for (const Attribute& attribute : attributes) {
        if (!attribute.value.empty()) {
            html += Html::markup(" ") + Html(attribute.name) + Html::markup("=\"") +
                    Html(attribute.value) + Html::markup("\"");
        }
    }
    return html + Html::markup(">") + content + Html::markup("</") + Html(name) + Html::markup(">");
}

Html element(const char* name, const Html& content) {
    return element(name, {}, content);
}

Html foreign(const std::string& text) {
    return element("bdi", text);
}

}  // namespace zamofw::report
