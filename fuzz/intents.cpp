// A file of intents.

#include <algorithm>

#include "command/answers/assertAnswer.h"
#include "command/console.h"
#include "fuzz/harness.h"

void fuzz::run(const std::string& text) {
    const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1;
    try {
        std::size_t previous = 0;
        for (const zamofw::IntentLine& intent :
             zamofw::intentsFromText(text, "intents", vocabulary())) {
            require(intent.line > previous && intent.line <= lines,
                    "an intent's line is in the file");
            require(!intent.intent.in || !intent.intent.in->empty(), "an interface has a name");
            requireSameWords(intent.rule);
            // What is shown of an intent is the intent.
            const auto again = zamofw::intentsFromText(intent.text, "again", vocabulary());
            require(again.size() == 1 && again[0].text == intent.text, "an intent's text says it");
            previous = intent.line;
        }
    } catch (const zamofw::Failure& failure) {
        require(failure.status() == zamofw::Status::kWrongUse, "a wrong intent is wrong use");
        require(std::string(failure.what()).rfind("intents:", 0) == 0, "it is named with its line");
    }
}
