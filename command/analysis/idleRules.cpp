// Both questions are put to boxes: does any packet of this region miss all of those boxes?

#include "command/analysis/idleRules.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "command/analysis/boxSpace.h"

namespace zamofw::analysis {
namespace {

using RuleKey = std::pair<std::string, std::size_t>;  // adapter and position

template <typename Visit>
void forEachBox(const BoxMask& mask, Visit visit) {
    for (std::size_t word = 0; word < mask.size(); ++word) {
        for (Word bits = mask[word]; bits != 0; bits &= bits - 1) {
            if (!visit(word * kWordBits + firstBitOf(bits))) {
                return;
            }
        }
    }
}

template <typename Question>
bool any(const BoxMask& mask, Question question) {
    bool isFound = false;
    forEachBox(mask, [&](std::size_t box) {
        isFound = question(box);
        return !isFound;
    });
    return isFound;
}

// One family's part of the answers.
class FamilyJudge {
  public:
    FamilyJudge(const FamilyModel& model, const Interfaces& interfaces)
        : space_({&model}, interfaces),
          all_(space_.maskOf(space_.list(0))),
          allowed_(all_.size()),
          reached_(all_.size()),
          boxesOf_(space_.rules().size()) {
        // A box that is never reached adds nothing to those before it.
        for (std::size_t i = 0; i < space_.boxes().size(); ++i) {
            const Box& box = space_.boxes()[i];
            boxesOf_[box.rule].push_back(i);
            allowed_[i / kWordBits] |= box.isAllowed ? bitOf(i) : 0;
            if (space_.uncovered(box, box, reached_, i)) {
                reached_[i / kWordBits] |= bitOf(i);
            }
        }
    }

    [[nodiscard]] const BoxSpace& space() const { return space_; }

    [[nodiscard]] bool isReached(std::size_t rule) const {
        return std::any_of(boxesOf_[rule].begin(), boxesOf_[rule].end(), [&](std::size_t box) {
            return (reached_[box / kWordBits] & bitOf(box)) != 0;
        });
    }

    [[nodiscard]] bool changesVerdict(std::size_t rule) const {
        BoxMask others = all_;
        for (const std::size_t box : boxesOf_[rule]) {
            others[box / kWordBits] &= ~bitOf(box);
        }
        return std::any_of(boxesOf_[rule].begin(), boxesOf_[rule].end(), [&](std::size_t box) {
            return isNeeded(box, others);
        });
    }

    // The rules that decide about packets of a rule that is never reached.
    [[nodiscard]] std::vector<std::size_t> deciders(std::size_t rule) const {
        std::vector<std::size_t> found;
        for (const std::size_t box : boxesOf_[rule]) {
            addDeciders(box, found);
        }
        std::sort(found.begin(), found.end());
        found.erase(std::unique(found.begin(), found.end()), found.end());
        return found;
    }

  private:
    static BoxMask both(BoxMask one, const BoxMask& other) {
        for (std::size_t word = 0; word < one.size(); ++word) {
            one[word] &= other[word];
        }
        return one;
    }

    // Goes through the boxes before one until they hold all of it. A packet that none of them has
    // held so far names a box that decides, and shows that there is more to come until then.
    void addDeciders(std::size_t box, std::vector<std::size_t>& found) const {
        const Box& own = space_.boxes()[box];
        std::optional<std::size_t> known;
        forEachBox(both(reached_, space_.boxesTouching(own)), [&](std::size_t i) {
            if (i >= box) {
                return false;
            }
            if (!known || *known < i) {
                const std::optional<Cell> open = space_.uncovered(own, own, reached_, i);
                if (!open) {
                    return false;
                }
                known = space_.firstAt(*open, reached_);
            }
            const Box& other = space_.boxes()[i];
            if (i == *known || space_.uncovered(own, other, reached_, i)) {
                found.push_back(other.rule);
            }
            return true;
        });
    }

    // Whether a packet that the box decides about gets the other verdict without its rule.
    [[nodiscard]] bool isNeeded(std::size_t box, const BoxMask& others) const {
        const Box& own = space_.boxes()[box];
        const std::optional<Cell> reached = space_.uncovered(own, own, others, box);
        if (!reached) {
            return false;
        }
        const std::optional<std::size_t> next = space_.firstAt(*reached, others);
        // What no box holds is allowed.
        if ((next ? space_.boxes()[*next].isAllowed : true) != own.isAllowed) {
            return true;
        }
        const BoxMask opposite = laterOpposite(box, others);
        return any(opposite,
                   [&](std::size_t i) {
                       return space_.showsUncovered(own, space_.boxes()[i], others, i);
                   }) ||
               (!own.isAllowed && space_.uncovered(own, own, others)) ||
               any(opposite, [&](std::size_t i) {
                   return space_.uncovered(own, space_.boxes()[i], others, i).has_value();
               });
    }

    // The boxes after one that touch it and have the other verdict.
    [[nodiscard]] BoxMask laterOpposite(std::size_t box, const BoxMask& others) const {
        const Box& own = space_.boxes()[box];
        BoxMask mask = both(others, space_.boxesTouching(own));
        const std::size_t first = box / kWordBits;
        std::fill_n(mask.begin(), first, 0);
        mask[first] &= ~(bitOf(box) | (bitOf(box) - 1));
        for (std::size_t word = first; word < mask.size(); ++word) {
            mask[word] &= own.isAllowed ? ~allowed_[word] : allowed_[word];
        }
        return mask;
    }

    BoxSpace space_;
    BoxMask all_;
    BoxMask allowed_;  // those that allow
    BoxMask reached_;  // the boxes that decide about any packet
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

// In a family they differ, and only what both have is looked for.
std::vector<Origin> decidersOf(const RuleParts& rule) {
    std::vector<Origin> by;
    std::set<std::tuple<Origin::Kind, std::string, std::size_t>> known;
    for (const auto& [judge, index] : rule.parts) {
        const bool isLast = &judge == &rule.parts.back().first;
        for (const std::size_t decider : judge->deciders(index)) {
            const Origin& origin = judge->space().rules()[decider];
            const auto key = [&origin] {
                return std::tuple(origin.kind, origin.adapter, origin.position.value_or(0));
            };
            const bool isKnown = !known.empty() && known.count(key()) != 0;
            if (!isKnown) {
                by.push_back(origin);
            }
            if (!isLast) {
                known.insert(key());
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
