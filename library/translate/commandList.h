// Lines as the JSON object that programs get.
#ifndef LIBRARY_TRANSLATE_COMMANDLIST_H
#define LIBRARY_TRANSLATE_COMMANDLIST_H

#include <json/value.h>

#include "library/translate/lines.h"

namespace FW {

// A sink that appends to the command list `cmds`, which must outlive it.
[[nodiscard]] inline LineSink commandList(Json::Value& cmds) {
    return [&cmds](const std::vector<Line>& lines) {
        for (const Line& line : lines) {
            cmds[namesOf(line.family).key][line.key].append(line.text);
        }
    };
}

}  // namespace FW

#endif
