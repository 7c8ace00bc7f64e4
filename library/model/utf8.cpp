#include "library/model/utf8.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace FW {
namespace {

// The bytes that may start a character, how many follow, and the first character that needs them:
// a shorter form exists for any below it.
struct Form {
    unsigned char mask;
    unsigned char start;
    std::size_t length;
    std::uint32_t first;
};
constexpr std::array<Form, 4> kForms = {{
    {0x80, 0x00, 1, 0},
    {0xE0, 0xC0, 2, 0x80},
    {0xF0, 0xE0, 3, 0x800},
    {0xF8, 0xF0, 4, 0x10000},
}};
constexpr std::uint32_t kLastCharacter = 0x10FFFF;

bool isSurrogate(std::uint32_t character) {
    return character >= 0xD800 && character <= 0xDFFF;
}

// The length of the character at the position; 0 when it is none.
std::size_t characterLength(const std::string& text, std::size_t position) {
    const auto byteAt = [&text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    for (const Form& form : kForms) {
        if ((byteAt(position) & form.mask) != form.start) {
            continue;
        }
        if (form.length > text.size() - position) {
            return 0;
        }
        std::uint32_t character = byteAt(position) & static_cast<unsigned char>(~form.mask);
        for (std::size_t at = position + 1; at < position + form.length; ++at) {
            if ((byteAt(at) & 0xC0U) != 0x80U) {
                return 0;
            }
            character = character << 6U | (byteAt(at) & 0x3FU);
        }
        const bool valid =
            character >= form.first && character <= kLastCharacter && !isSurrogate(character);
        return valid ? form.length : 0;
    }
    return 0;
}

}  // namespace

bool isUtf8(const std::string& text) {
    std::size_t position = 0;
    while (position < text.size()) {
        const std::size_t length = characterLength(text, position);
        if (length == 0) {
            return false;
        }
        position += length;
    }
    return true;
}

}  // namespace FW
