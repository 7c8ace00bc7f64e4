#include "command/answers/rehearseAnswer.h"

#include <json/value.h>

#include <ostream>

#include "command/answers/refusalText.h"
#include "command/answers/table.h"
#include "command/apply/rehearsal.h"
#include "command/jsonLine.h"
#include "command/plan/plan.h"

namespace zamofw {
namespace {

// One line of a terminal, written again and again.
class Progress {
  public:
    explicit Progress(const Console& console)
        : console_(console), isShown_(console.canAsk && !console.quiet) {}
    ~Progress() {
        if (isWritten_) {
            console_.err << "\r" << std::string(kWidth, ' ') << "\r" << std::flush;
        }
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::string text) {
        if (isShown_) {
            text.resize(kWidth, ' ');
            console_.err << "\r" << text << std::flush;
            isWritten_ = true;
        }
    }

  private:
    static constexpr std::size_t kWidth = 60;
    const Console& console_;
    bool isShown_;
    bool isWritten_ = false;
};

std::vector<Refusal> rehearsed(const Console& console, const Plan& plan, std::size_t lines) {
    Progress progress(console);
    if (lines >= kManyLines) {
        progress.show("rehearsing " + std::to_string(lines) + " lines...");
    }
    return rehearse(plan, [&progress](std::size_t count) {
        progress.show("looking for refused lines: " + counted(count, "line") + " so far");
    });
}

void showText(const Console& console,
              const std::string& profile,
              std::size_t lines,
              const std::vector<Refusal>& refused) {
    console.out << refusalsText(refused);
    if (refused.empty()) {
        console.out << "this kernel takes all " << lines << " lines of `" << profile << "`\n";
    } else {
        console.out << "this kernel refuses " << refused.size() << " of the " << lines
                    << " lines of `" << profile << "`\n";
    }
}

}  // namespace

Status rehearseAnswer(const Console& console, const TargetWords& words) {
    requireRoot("trying lines in a network namespace");
    const Target target = readTarget(words);
    const Plan plan = planProfile(profileOf(target));
    const std::size_t lines = plan.v4.size() + plan.v6.size();
    const std::vector<Refusal> refused = rehearsed(console, plan, lines);
    if (console.json) {
        Json::Value document;
        document["ok"] = refused.empty();
        document["lines"] = Json::UInt64{lines};
        document["refused"] = refusalsJson(refused);
        console.out << jsonLine(document) << "\n";
    } else {
        showText(console, target.name, lines, refused);
    }
    return refused.empty() ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
