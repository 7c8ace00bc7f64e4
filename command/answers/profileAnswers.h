// `zamofw profile ...`: the stored profiles.
#ifndef COMMAND_ANSWERS_PROFILEANSWERS_H
#define COMMAND_ANSWERS_PROFILEANSWERS_H

#include <string>
#include <vector>

#include "command/console.h"
#include "command/document/target.h"

namespace zamofw {

// {"profiles":[{"name":S,"in_force":B,"adapters":N,"rules":N}]}. `adapters` are those that have
// rules or a default, `global` only with rules: its default is always none.
[[nodiscard]] Status profileList(const Console& console);

// The document as it is stored.
[[nodiscard]] Status profileShow(const Console& console, const TargetWords& target);

// `call` of these is the command line, as it goes into the change log.
[[nodiscard]] Status profileCreate(const Console& console,
                                   const std::vector<std::string>& call,
                                   const std::string& name);
[[nodiscard]] Status profileCopy(const Console& console,
                                 const std::vector<std::string>& call,
                                 const std::string& from,
                                 const std::string& to);
[[nodiscard]] Status profileRename(const Console& console,
                                   const std::vector<std::string>& call,
                                   const std::string& oldName,
                                   const std::string& newName);

// Asks, since the rules are gone then. The profile in force cannot be deleted.
[[nodiscard]] Status profileDelete(const Console& console,
                                   const std::vector<std::string>& call,
                                   const std::string& name);

struct ProfileSetRequest {
    std::string name;
    std::string file;    // "-": standard input
    bool force = false;  // errors do not refuse the document
};

// Stores the document under the name, whatever name it carries. Asks when other rules would be
// lost.
[[nodiscard]] Status profileSet(const Console& console,
                                const std::vector<std::string>& call,
                                const ProfileSetRequest& request);

// Hands a private copy of the document to $VISUAL or $EDITOR, and stores it when it is free of
// errors; else asks whether to edit it again.
[[nodiscard]] Status profileEdit(const Console& console,
                                 const std::vector<std::string>& call,
                                 const std::string& name,
                                 bool force);

}  // namespace zamofw

#endif
