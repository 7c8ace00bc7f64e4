#include "command/apply/verification.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <unordered_map>
#include <utility>

#include "command/apply/jumps.h"
#include "command/apply/programs.h"
#include "command/apply/rehearsal.h"
#include "command/apply/restoreError.h"
#include "command/plan/lineDiff.h"

namespace zamofw {
namespace {

using Kind = Difference::Kind;
using Differences = std::vector<Difference>;
using Texts = std::vector<std::string>;

// The steps from the expected texts to those that are there. What is removed at one place and added
// at another has moved: that is one step.
struct Step {
    Kind kind;
    std::size_t index;  // in the expected texts; of an extra one in those that are there
};

std::vector<Step> stepsBetween(const Texts& expected, const Texts& there) {
    const std::vector<Edit> edits = lineDiff(expected, there);
    std::unordered_map<std::string, std::size_t> added;
    for (const Edit& edit : edits) {
        if (edit.kind == Edit::Kind::kAdded) {
            ++added[there[edit.newIndex]];
        }
    }
    std::unordered_map<std::string, std::size_t> moved;
    std::vector<Step> steps;
    for (const Edit& edit : edits) {
        if (edit.kind == Edit::Kind::kRemoved) {
            const std::string& text = expected[edit.oldIndex];
            const auto partner = added.find(text);
            const bool isMoved = partner != added.end() && moved[text] < partner->second;
            moved[text] += isMoved ? 1U : 0U;
            steps.push_back({isMoved ? Kind::kMoved : Kind::kMissing, edit.oldIndex});
        }
    }
    for (const Edit& edit : edits) {
        if (edit.kind == Edit::Kind::kAdded) {
            std::size_t& partners = moved[there[edit.newIndex]];
            if (partners > 0) {
                --partners;
            } else {
                steps.push_back({Kind::kExtra, edit.newIndex});
            }
        }
    }
    return steps;
}

// One family: the real packet filter beside the one that holds nothing but the plan.
class Comparison {
  public:
    Comparison(const Rehearsal& rehearsal, const SavedTables& there, const SavedTables& normal)
        : rehearsal_(rehearsal), there_(there), normal_(normal) {}

    [[nodiscard]] Differences run() {
        const SavedTable& filter = tableOf(there_, kFilterTable);
        comparePolicies(filter);
        for (const char* const chain : kOurChains) {
            if (filter.find(chain) == filter.end()) {
                add(Kind::kChain, chain, std::string("-N ") + chain);
            }
        }
        for (const Hook& hook : kHooks) {
            compareJumps(hook, filter);
        }
        for (const Refusal& refusal : rehearsal_.refused()) {
            add(Kind::kMissing,
                chainOf(refusal.line),
                refusal.line,
                PlannedLine{refusal.line,
                            refusal.adapter,
                            refusal.position ? LineKind::kRule : LineKind::kDefault,
                            refusal.position,
                            refusal.name});
        }
        compareRules();
        return std::move(differences_);
    }

  private:
    void add(Kind kind,
             std::string chain,
             std::string line,
             std::optional<PlannedLine> origin = std::nullopt) {
        differences_.push_back(
            {rehearsal_.family(), kind, std::move(chain), std::move(line), std::move(origin)});
    }

    void comparePolicies(const SavedTable& filter) {
        for (const Hook& hook : kHooks) {
            const auto chain = filter.find(hook.name);
            if (chain != filter.end() && chain->second.policy != "ACCEPT") {
                add(Kind::kPolicy,
                    hook.name,
                    std::string("-P ") + hook.name + " " + chain->second.policy);
            }
        }
    }

    void compareJumps(const Hook& hook, const SavedTable& filter) {
        const Texts& rules = rulesOf(filter, hook.name);
        Texts there;
        for (const std::size_t place : jumpsThere(hook, filter)) {
            there.push_back(rules[place]);
        }
        const Texts expected = jumpsOf(hook);
        for (const Step& step : stepsBetween(expected, there)) {
            add(Kind::kJump, hook.name, (step.kind == Kind::kExtra ? there : expected)[step.index]);
        }
    }

    void compareRules() {
        for (const auto& [name, table] : normal_) {
            for (const auto& [chain, state] : table) {
                compareChain(name, chain, state);
            }
        }
    }

    void compareChain(const std::string& table, const std::string& chain, const SavedChain& state) {
        Texts expected = state.rules;
        const std::vector<const PlannedLine*> lines = rehearsal_.plannedIn(table, chain);
        // In front are the jumps that every rehearsal has.
        expected.erase(expected.begin(),
                       expected.begin() + static_cast<std::ptrdiff_t>(stageRules(table, chain)));
        const bool isOurs =
            table == kFilterTable &&
            std::find(kOurChains.begin(), kOurChains.end(), chain) != kOurChains.end();
        const Texts& there = rulesOf(tableOf(there_, table), chain);
        for (const Step& step : stepsBetween(expected, there)) {
            if (step.kind != Kind::kExtra) {
                add(step.kind,
                    chain,
                    inTable(table, expected[step.index]),
                    lines.size() == expected.size() ? std::optional(*lines[step.index])
                                                    : std::nullopt);
            } else if (isOurs) {
                add(chain == FW::kReloadingChain ? Kind::kGuard : Kind::kExtra,
                    chain,
                    there[step.index]);
            }
        }
    }

    static std::size_t stageRules(const std::string& table, const std::string& chain) {
        const auto isHook = [&chain](const Hook& hook) { return chain == hook.name; };
        return table == kFilterTable && std::any_of(kHooks.begin(), kHooks.end(), isHook) ? 2 : 0;
    }

    static std::string inTable(const std::string& table, const std::string& line) {
        return table == kFilterTable ? line : "-t " + table + " " + line;
    }

    // Of a line as it is planned.
    static std::string chainOf(const std::string& line) {
        const std::vector<std::string> words = splitRule(line);
        const auto option = std::find(words.begin(), words.end(), "-A");
        return option == words.end() || option + 1 == words.end() ? "" : *(option + 1);
    }

    const Rehearsal& rehearsal_;
    const SavedTables& there_;
    const SavedTables& normal_;
    Differences differences_;
};

void requireTaken(const Rehearsal& rehearsal, const ProgramResult& result) {
    if (result.status != 0) {
        failedProgram(rehearsal.family(), restoreProgram(rehearsal.family()), result);
    }
}

// The lines as the kernel lists them, with their indices. In the scratch network.
SavedFamilies normalForms(Rehearsal& v4, Rehearsal& v6) {
    const std::array<Rehearsal*, 2> both = {&v4, &v6};
    for (Rehearsal* const rehearsal : both) {
        rehearsal->prepare();
    }
    Program first = v4.start();
    Program second = v6.start();
    const std::array<ProgramResult, 2> results = {first.finish(), second.finish()};
    for (std::size_t i = 0; i < both.size(); ++i) {
        if (results[i].status != 0) {
            both[i]->findRefused(results[i], nullptr);
            both[i]->prepare();
            requireTaken(*both[i], both[i]->start().finish());
        }
    }
    return savedFamilies();
}

}  // namespace

Differences differencesTo(const Plan& plan) {
    const SavedFamilies there = savedFamilies();
    Rehearsal v4(plan, 4, there.v4);
    Rehearsal v6(plan, 6, there.v6);
    SavedFamilies normal;
    {
        const ScratchNetwork network;
        requireEntered(network);
        normal = normalForms(v4, v6);
    }
    Differences differences = Comparison(v4, there.v4, normal.v4).run();
    for (Difference& difference : Comparison(v6, there.v6, normal.v6).run()) {
        differences.push_back(std::move(difference));
    }
    return differences;
}

}  // namespace zamofw
