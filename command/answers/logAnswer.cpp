#include <ostream>

#include "command/answers/historyAnswers.h"
#include "command/answers/table.h"
#include "command/history/changeLog.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"

namespace zamofw {
namespace {

Row rowOf(const Json::Value& entry) {
    std::vector<std::string> words = {"zamofw"};
    for (const Json::Value& word : entry["command"]) {
        words.push_back(word.isString() ? word.asString() : "?");
    }
    return {entry["time"].asString(),
            entry["user"].asString(),
            entry["from"].isString() ? entry["from"].asString() : "-",
            resultText(entry["result"].asInt()),
            shellQuoted(words)};
}

}  // namespace

std::string resultText(int result) {
    switch (static_cast<Status>(result)) {
        case Status::kDone:
            return "done";
        case Status::kNo:
            return "refused";
        case Status::kWrongUse:
            return "wrong use";
        case Status::kFailed:
            return "failed";
        case Status::kNotPermitted:
            return "not permitted";
    }
    return "status " + std::to_string(result);
}

Status logAnswer(const Console& console, std::optional<std::size_t> count) {
    std::vector<Row> rows;
    for (const Json::Value& entry : loggedChanges(count)) {
        if (console.json) {
            console.out << jsonLine(entry) << "\n";
        } else {
            rows.push_back(rowOf(entry));
        }
    }
    if (!console.json) {
        printTable(console, {"TIME", "USER", "FROM", "RESULT", "COMMAND"}, rows);
    }
    return Status::kDone;
}

}  // namespace zamofw
