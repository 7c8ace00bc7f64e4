// What single bytes of a text are.
#ifndef COMMAND_DOCUMENT_BYTES_H
#define COMMAND_DOCUMENT_BYTES_H

namespace zamofw {

// A byte of a character in UTF-8 other than its first.
[[nodiscard]] constexpr bool continuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

[[nodiscard]] constexpr bool isControl(char byte) {
    return static_cast<unsigned char>(byte) < 0x20U || byte == 0x7F;
}

}  // namespace zamofw

#endif
