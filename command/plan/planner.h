// The translation of a profile one rule at a time, for whoever takes the lines.
#ifndef COMMAND_PLAN_PLANNER_H
#define COMMAND_PLAN_PLANNER_H

#include <json/value.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "command/plan/plan.h"
#include "command/plan/plannedLine.h"
#include "library/model/names.h"
#include "zamofirewall/ruleModel.h"
#include "zamofirewall/translator.h"

namespace zamofw {

// What an adapter's list is made of: its rules, then its default policy.
struct Step {
    const FW::FWRULE& rule;
    const std::string& adapter;
    LineKind kind;
    std::optional<std::size_t> position;
};

// A line of it, whose text is missing.
[[nodiscard]] PlannedLine originOf(const Step& step);

// What becomes of packets of established connections.
struct Established {
    bool isAccepted = true;
    std::string exceptFrom;  // an address, or empty
};

// The translator's argument set of a rule: lists of texts.
struct Arguments {
    const Json::Value& tables;
    const Json::Value& chains;
    const Json::Value& adapters;
    const Json::Value& v4;
    const Json::Value& v6;
    const Json::Value& ports;
    const Json::Value& policies;
    // Most rules have these fields in common with the rule before: another number tells that the
    // tables, chains, adapters or policies were filled again.
    std::size_t commonFill = 0;
};

class LineTaker {
  public:
    LineTaker() = default;
    virtual ~LineTaker() = default;
    LineTaker(const LineTaker&) = delete;
    LineTaker& operator=(const LineTaker&) = delete;

    // Whether it makes the lines of a step by itself, from the argument set of the translator.
    virtual bool takeArguments(const Step& step, const Arguments& arguments) {
        (void)step;
        (void)arguments;
        return false;
    }

    // The lines of a step for one family (4 or 6). They run under `key`, an interface or the name
    // of one.
    virtual void take(const Step& step,
                      int family,
                      const std::string& key,
                      const Json::Value& lines) = 0;
};

class Planner {
  public:
    enum class Adapters { kPresent, kAll };

    Planner(bool mayHaveTunnel, Adapters adapters, LineTaker& taker);
    ~Planner();
    Planner(const Planner&) = delete;
    Planner& operator=(const Planner&) = delete;

    void addBuiltInLines(const Established& established = {});

    // False when its rules cannot be visited.
    [[nodiscard]] bool addAdapter(const PlannedAdapter& adapter);

  private:
    class Scratch;

    [[nodiscard]] std::optional<std::string> tunnelOf(const std::string& adapter);
    void addStep(const std::optional<std::string>& tunnel, const Step& step);
    [[nodiscard]] bool translate(const std::string& key, const FW::FWRULE& rule, const Step& step);
    void hand(Json::Value& lines, int family, const std::string& key, const Step& step);

    LineTaker& taker_;
    FW::ZAMOFW_IPTABLES_RULES translator_;
    bool mayHaveTunnel_;
    Adapters adapters_;
    bool isAbsentPppoe_ = false;  // the adapter that is being translated
    std::unique_ptr<Scratch> scratch_;
};

}  // namespace zamofw

#endif
