// A key/value file: "KEY\nVALUE\nTEXT".

#include "fuzz/harness.h"
#include "platform/core/keyValueText.h"

void fuzz::run(const std::string& text) {
    const std::size_t first = text.find('\n');
    const std::size_t second = first == std::string::npos ? first : text.find('\n', first + 1);
    if (second == std::string::npos) {
        return;
    }
    const std::string key(zamo::trimBlanks(text.substr(0, first)));
    const std::string value = text.substr(first + 1, second - first - 1);
    const std::string file = text.substr(second + 1);
    if (!zamo::isStorable(key, value)) {
        return;
    }
    const std::string changed = zamo::withValue(file, key, value);
    require(zamo::findValue(changed, key) == value, "what was written is read");
    require(zamo::withValue(changed, key, value) == changed, "writing it again changes nothing");
    const std::string other = key == "other" ? "another" : "other";
    require(zamo::findValue(changed, other) == zamo::findValue(file, other),
            "another key keeps its value");
}
