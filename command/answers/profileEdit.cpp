#include <ostream>

#include "command/answers/changeAnswer.h"
#include "command/answers/editor.h"
#include "command/answers/profileAnswers.h"
#include "command/answers/profileReplacement.h"
#include "command/answers/profileStore.h"
#include "command/answers/systemNames.h"
#include "command/document/check.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

// --yes answers what is lost, and says nothing about editing again: that could go on for ever.
bool wantsToEditAgain(const Console& console) {
    return console.canAsk && !console.yes && console.confirm("edit it again?");
}

}  // namespace

Status profileEdit(const Console& console,
                   const std::vector<std::string>& call,
                   const std::string& name,
                   bool force) {
    requireRoot("editing a profile");
    requireStoredProfile(name);
    if (!console.canAsk && !isEditorChosen()) {
        wrongUse("there is no terminal for an editor",
                 "name an editor that needs none in the variable EDITOR, or use `zamofw profile "
                 "set " +
                     shellQuoted({name}) + " FILE`");
    }
    const CheckContext context = systemCheckContext();
    const std::string before = readTarget({name, {}}).document.text;
    EditedFile file(before);
    while (true) {
        const Document document = readDocument(file.edit(), name);
        if (document.text == before) {
            answerChange(console, false, "nothing to change");
            return Status::kDone;
        }
        if (!isAccepted(console, checkProfile(document, context), force)) {
            if (wantsToEditAgain(console)) {
                continue;
            }
            console.err << "what you wrote is in " << file.keep() << "\n";
            return refusedChange(console);
        }
        if (readTarget({name, {}}).document.text != before) {
            failed("the profile " + shown(name) + " was changed by somebody else meanwhile",
                   "what you wrote is in " + file.keep());
        }
        // Who edits a document sees what goes.
        return replaceProfile(
            console, call, name, renamedDocument(document, name), Loss::kAccepted);
    }
}

}  // namespace zamofw
