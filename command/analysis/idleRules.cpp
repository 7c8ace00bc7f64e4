// Both questions are put to boxes: does any packet of this region miss all of those boxes?

#include "command/analysis/idleRules.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "command/analysis/boxSpace.h"

namespace zamofw::analysis {
namespace {

using RuleKey = std::pair<std::string, std::size_t>;  // adapter and position

// The boxes of the mask up to a given one.
BoxMask before(std::size_t box, BoxMask mask) {
    const std::size_t word = box / kWordBits;
    mask[word] &= (Word{1} << box % kWordBits) - 1;
    std::fill(mask.begin() + static_cast<std::ptrdiff_t>(word) + 1, mask.end(), 0);
    return mask;
}

template <typename Visit>
void forEachBox(const BoxMask& mask, Visit visit) {
    for (std::size_t word = 0; word < mask.size(); ++word) {
        for (Word bits = mask[word]; bits != 0; bits &= bits - 1) {
            if (!visit(word * kWordBits + static_cast<std::size_t>(__builtin_ctzll(bits)))) {
                return;
            }
        }
    }
}

// One family's part of the answers.
class FamilyJudge {
  public:
    explicit FamilyJudge(const FamilyModel& model, const Interfaces& interfaces)
        : space_({&model}, interfaces),
          all_(space_.maskOf(space_.list(0))),
          boxesOf_(space_.rules().size()) {
        for (std::size_t i = 0; i < space_.boxes().size(); ++i) {
            boxesOf_[space_.boxes()[i].rule].push_back(i);
        }
    }

    [[nodiscard]] const BoxSpace& space() const { return space_; }

    [[nodiscard]] bool isReached(std::size_t rule) const {
        return std::any_of(boxesOf_[rule].begin(), boxesOf_[rule].end(), [&](std::size_t box) {
            return space_
                .uncovered(space_.regionOf(space_.boxes()[box]), before(box, withoutRule(rule)))
                .has_value();
        });
    }

    [[nodiscard]] bool changesVerdict(std::size_t rule) const {
        return std::any_of(boxesOf_[rule].begin(), boxesOf_[rule].end(), [&](std::size_t box) {
            return isNeeded(box, withoutRule(rule));
        });
    }

    // The rules that decide about packets of a rule that is never reached.
    [[nodiscard]] std::vector<std::size_t> deciders(std::size_t rule) const {
        std::vector<bool> decides(space_.rules().size());
        const BoxMask others = withoutRule(rule);
        for (const std::size_t box : boxesOf_[rule]) {
            const BoxMask earlier = before(box, others);
            forEachBox(both(earlier, space_.boxesTouching(space_.boxes()[box])),
                       [&](std::size_t other) {
                           const std::size_t owner = space_.boxes()[other].rule;
                           decides[owner] = decides[owner] || takes(box, other, earlier);
                           return true;
                       });
        }
        std::vector<std::size_t> found;
        for (std::size_t i = 0; i < decides.size(); ++i) {
            if (decides[i]) {
                found.push_back(i);
            }
        }
        return found;
    }

  private:
    static BoxMask both(BoxMask one, const BoxMask& other) {
        for (std::size_t word = 0; word < one.size(); ++word) {
            one[word] &= other[word];
        }
        return one;
    }

    [[nodiscard]] BoxMask withoutRule(std::size_t rule) const {
        BoxMask mask = all_;
        for (const std::size_t box : boxesOf_[rule]) {
            mask[box / kWordBits] &= ~(Word{1} << box % kWordBits);
        }
        return mask;
    }

    // Whether a packet of `box` is the first time held by `other`.
    [[nodiscard]] bool takes(std::size_t box, std::size_t other, const BoxMask& mask) const {
        std::optional<Region> common =
            space_.intersection(space_.regionOf(space_.boxes()[box]), space_.boxes()[other]);
        return common && space_.uncovered(std::move(*common), before(other, mask)).has_value();
    }

    // Whether a packet that the box decides about gets the other verdict without its rule.
    [[nodiscard]] bool isNeeded(std::size_t box, const BoxMask& others) const {
        const Box& own = space_.boxes()[box];
        const std::optional<Cell> reached =
            space_.uncovered(space_.regionOf(own), before(box, others));
        if (!reached) {
            return false;
        }
        const std::optional<std::size_t> next = space_.firstAt(*reached, others);
        // What no box holds is allowed.
        if ((next ? space_.boxes()[*next].isAllowed : true) != own.isAllowed) {
            return true;
        }
        if (!own.isAllowed && space_.uncovered(space_.regionOf(own), others)) {
            return true;
        }
        bool isNeeded = false;
        forEachBox(both(others, space_.boxesTouching(own)), [&](std::size_t other) {
            isNeeded = other > box && space_.boxes()[other].isAllowed != own.isAllowed &&
                       takes(box, other, others);
            return !isNeeded;
        });
        return isNeeded;
    }

    BoxSpace space_;
    BoxMask all_;
    std::vector<std::vector<std::size_t>> boxesOf_;
};

// Where the rule is in each family's space, if it has lines there.
struct RuleParts {
    Origin origin;
    std::vector<std::pair<const FamilyJudge*, std::size_t>> parts;
};

void addParts(const FamilyJudge& judge, std::map<RuleKey, RuleParts>& rules) {
    const std::vector<Origin>& origins = judge.space().rules();
    for (std::size_t i = 0; i < origins.size(); ++i) {
        if (origins[i].kind == Origin::Kind::kRule) {
            RuleParts& rule = rules[{origins[i].adapter, origins[i].position.value_or(0)}];
            rule.origin = origins[i];
            rule.parts.emplace_back(&judge, i);
        }
    }
}

std::vector<Origin> decidersOf(const RuleParts& rule) {
    std::vector<Origin> by;
    for (const auto& [judge, index] : rule.parts) {
        for (const std::size_t decider : judge->deciders(index)) {
            const Origin& origin = judge->space().rules()[decider];
            if (std::find(by.begin(), by.end(), origin) == by.end()) {
                by.push_back(origin);
            }
        }
    }
    return by;
}

}  // namespace

IdleRules idleRules(const Model& model) {
    const Interfaces interfaces = interfacesFor(interfacesOf(model));
    const FamilyJudge v4(model.v4, interfaces);
    const FamilyJudge v6(model.v6, interfaces);
    std::map<RuleKey, RuleParts> rules;
    addParts(v4, rules);
    addParts(v6, rules);
    for (const UnknownLine& unknown : model.unknown) {
        rules.erase({unknown.line->adapter, unknown.line->position.value_or(0)});
    }
    IdleRules idle;
    for (const auto& [key, rule] : rules) {
        const auto any = [&rule = rule](auto question) {
            return std::any_of(rule.parts.begin(), rule.parts.end(), [&](const auto& part) {
                return (part.first->*question)(part.second);
            });
        };
        if (!any(&FamilyJudge::isReached)) {
            idle.shadowed.push_back({rule.origin, decidersOf(rule)});
        } else if (!any(&FamilyJudge::changesVerdict)) {
            idle.redundant.push_back(rule.origin);
        }
    }
    return idle;
}

}  // namespace zamofw::analysis
