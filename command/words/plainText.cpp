#include "command/words/plainText.h"

#include <rapidjson/encodings.h>
#include <rapidjson/memorystream.h>

namespace zamofw {
namespace {

// NUL and its kin, DEL, and the second row of control characters, which some terminals obey.
bool isControl(unsigned code) {
    return code < 0x20 || (code >= 0x7F && code < 0xA0);
}

}  // namespace

bool isPlainText(const std::string& text) {
    // This stream knows its end: the decoder takes all bytes that a character should have, also
    // when the text ends before.
    rapidjson::MemoryStream stream(text.data(), text.size());
    while (stream.Tell() < text.size()) {
        unsigned code = 0;
        if (!rapidjson::UTF8<>::Decode(stream, &code) || isControl(code)) {
            return false;
        }
    }
    return true;
}

}  // namespace zamofw
