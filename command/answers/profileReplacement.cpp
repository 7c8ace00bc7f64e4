#include "command/answers/profileReplacement.h"

#include <json/reader.h>

#include "command/answers/changeAnswer.h"
#include "command/answers/profileStore.h"
#include "command/answers/table.h"
#include "command/history/change.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

struct Stored {
    bool isThere = false;
    bool isReadable = false;
    std::string text;  // as the store writes it
    std::size_t rules = 0;
};

Stored storedUnder(const std::string& name) {
    Stored stored;
    stored.isThere = isStoredProfile(name);
    if (stored.isThere) {
        try {
            const Document document = readTarget({name, {}}).document;
            stored.text = renamedDocument(document, name);
            stored.rules = ruleCount(jsonOfDocument(document));
            stored.isReadable = true;
        } catch (const Failure&) {
            stored.isReadable = false;
        }
    }
    return stored;
}

}  // namespace

Replacement replacementBy(const Console& console,
                          const std::string& name,
                          const std::string& document,
                          Loss loss) {
    const Stored stored = storedUnder(name);
    if (!stored.isThere) {
        return Replacement::kNew;
    }
    if (stored.isReadable && stored.text == document) {
        return Replacement::kSame;
    }
    const bool isLost = !stored.isReadable || stored.rules > 0;
    const std::string lost = stored.isReadable ? "with its " + counted(stored.rules, "rule")
                                               : "whose document cannot be read";
    const bool isAccepted = loss == Loss::kAccepted || !isLost ||
                            console.confirm("the profile " + shown(name) + " " + lost +
                                            " would be replaced; replace it?");
    return isAccepted ? Replacement::kOther : Replacement::kRefused;
}

Status replaceProfile(const Console& console,
                      const std::vector<std::string>& call,
                      const std::string& name,
                      const std::string& document,
                      Loss loss) {
    const Replacement replacement = replacementBy(console, name, document, loss);
    if (replacement == Replacement::kSame) {
        answerChange(console, false, "nothing to change: " + shown(name) + " is stored like this");
        return Status::kDone;
    }
    if (replacement == Replacement::kRefused) {
        return refusedChange(console);
    }
    return recordedChange(call, [&] {
        storeDocument(name, document);
        answerChange(console,
                     true,
                     "the profile " + shown(name) +
                         (replacement == Replacement::kNew ? " is made" : " is replaced"));
        noteReload(console, name);
        return Status::kDone;
    });
}

}  // namespace zamofw
