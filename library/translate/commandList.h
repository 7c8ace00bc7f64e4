// Lines as the JSON object that programs get.
#ifndef LIBRARY_TRANSLATE_COMMANDLIST_H
#define LIBRARY_TRANSLATE_COMMANDLIST_H

#include <json/value.h>

#include "library/translate/lines.h"

namespace FW {

// A sink that appends to the command list `cmds`, which must outlive it. Lines that come together
// mostly go to the same place.
[[nodiscard]] inline LineSink commandList(Json::Value& cmds) {
    return [&cmds](const std::vector<Line>& lines) {
        const Line* previous = nullptr;
        Json::Value* list = nullptr;
        for (const Line& line : lines) {
            if (previous == nullptr || line.family != previous->family ||
                line.key != previous->key) {
                list = &cmds[namesOf(line.family).key][line.key];
            }
            list->append(line.text);
            previous = &line;
        }
    };
}

}  // namespace FW

#endif
