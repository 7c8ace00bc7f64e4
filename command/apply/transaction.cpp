#include "command/apply/transaction.h"

#include <json/value.h>

#include <algorithm>
#include <chrono>

#include "command/apply/bothFamilies.h"
#include "command/apply/keptRules.h"
#include "command/apply/lastReload.h"
#include "command/apply/program.h"
#include "command/apply/refusal.h"
#include "command/apply/restore.h"
#include "command/apply/separateProcess.h"
#include "command/apply/sharedText.h"
#include "command/console.h"
#include "command/plan/plan.h"

namespace zamofw {
namespace {

using Clock = std::chrono::steady_clock;

Json::Value toJson(const std::optional<ProgramResult>& result) {
    Json::Value json;
    if (result) {
        json["status"] = result->status;
        json["signal"] = result->signal;
        json["error"] = result->error;
    }
    return json;
}

std::optional<ProgramResult> resultFrom(const Json::Value& json) {
    if (json.isNull()) {
        return std::nullopt;
    }
    return ProgramResult{
        json["status"].asInt(), json["signal"].asInt(), "", json["error"].asString()};
}

bool isTaken(const std::optional<ProgramResult>& result) {
    return result && result->status == 0;
}

}  // namespace

class Transaction::Child {
  public:
    Child(const ExecutionLock& lock, StartFallback fallback)
        : process_([this, &lock, fallback] {
              const std::string_view v4 = v4_.read();
              const std::string_view v6 = v6_.read();
              const auto keep = [&] {
                  if (fallback == StartFallback::kTheseRules) {
                      keepRules(v4, v6);
                  }
              };
              const Results results = commitBothFamilies({4, v4}, {6, v6}, lock.descriptor(), keep);
              Json::Value json;
              json["v4"] = toJson(results.v4);
              json["v6"] = toJson(results.v6);
              return json;
          }) {}

    Results apply(const RestoreInputs& inputs) {
        v4_.write(inputs.v4);
        v6_.write(inputs.v6);
        const Json::Value results = process_.run();
        return {resultFrom(results["v4"]), resultFrom(results["v6"])};
    }

  private:
    SharedText v4_;
    SharedText v6_;
    SeparateProcess process_;
};

Transaction::Transaction(const ExecutionLock& lock, StartFallback fallback)
    : child_(std::make_unique<Child>(lock, fallback)) {}

Transaction::~Transaction() = default;

// Throws Failure when a program failed for another reason than a line.
Outcome Transaction::applyTexts(const RestoreInputs& inputs, const TextOf& textOf) {
    const Clock::time_point begin = Clock::now();
    ReloadRecord record;
    Results results = child_->apply(inputs);
    Outcome outcome;
    outcome.applied = isTaken(results.v4) && isTaken(results.v6);
    record.setApplied(outcome.applied);
    for (const int family : {4, 6}) {
        const std::optional<ProgramResult>& result = results.of(family);
        if (result && result->status != 0) {
            outcome.refused.push_back(refusalOf(family, textOf(family), *result));
        }
    }
    outcome.lines = inputs.lines;
    outcome.milliseconds =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    return outcome;
}

Outcome Transaction::apply(const RestoreInputs& inputs, const std::function<Plan()>& plan) {
    std::optional<Plan> made;
    return applyTexts(inputs, [&](int family) {
        if (!made) {
            made = plan();
        }
        return restoreText(*made, family);
    });
}

Outcome Transaction::apply(const Plan& plan) {
    return applyTexts(restoreInputs(plan),
                      [&plan](int family) { return restoreText(plan, family); });
}

Outcome Transaction::apply(const RestoreInputs& inputs) {
    return applyTexts(inputs, [&inputs](int family) {
        const std::string& text = family == 4 ? inputs.v4 : inputs.v6;
        const auto lines = std::count(text.begin(), text.end(), '\n');
        return RestoreText{
            text, std::vector<const PlannedLine*>(static_cast<std::size_t>(lines), nullptr)};
    });
}

Outcome applyPlan(const Plan& plan) {
    const ExecutionLock lock;
    return applyPlan(plan, lock);
}

Outcome applyPlan(const Plan& plan, const ExecutionLock& lock) {
    return Transaction(lock).apply(plan);
}

Outcome applyForNow(const Plan& plan, const ExecutionLock& lock) {
    return Transaction(lock, StartFallback::kEarlierRules).apply(plan);
}

Outcome applyInputs(const RestoreInputs& inputs, const ExecutionLock& lock) {
    return Transaction(lock, StartFallback::kEarlierRules).apply(inputs);
}

}  // namespace zamofw
