// What became of the rules at a start that could not put its own into force, for `status`.
#ifndef COMMAND_APPLY_STARTNOTE_H
#define COMMAND_APPLY_STARTNOTE_H

#include <optional>
#include <string>

namespace zamofw {

struct StartNote {
    std::string time;           // RFC 3339
    bool hasLastRules = false;  // the last rules that were in force are; otherwise the door is open
    std::string cause;
};

void writeStartNote(const StartNote& note);

// Of this start of the system.
[[nodiscard]] std::optional<StartNote> readStartNote();

// Once rules are in force, or shall not be, the note is of no more interest.
void dropStartNote();

}  // namespace zamofw

#endif
