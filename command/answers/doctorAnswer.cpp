#include "command/answers/doctorAnswer.h"

#include <json/value.h>

#include <algorithm>
#include <boost/algorithm/string/replace.hpp>
#include <memory>
#include <ostream>

#include "command/answers/examination.h"
#include "command/answers/table.h"
#include "command/jsonLine.h"

namespace zamofw {
namespace {

// A reload of a usual size has ended by then.
constexpr int kSecondsToLook = 2;
constexpr int kSecondsToRepair = 30;

bool isSame(const Damage& one, const Damage& other) {
    return std::string(one.kind) == other.kind && one.message == other.message;
}

bool isAmong(const Damage& damage, const Damages& damages) {
    return std::any_of(damages.begin(), damages.end(), [&damage](const Damage& other) {
        return isSame(damage, other);
    });
}

// What was there before and is not there any more has been repaired.
Examination repaired(const Console& console, const ExecutionLock& lock) {
    Examination before = examine(&lock);
    if (before.damages.empty()) {
        return before;
    }
    repairDamages(console, lock);
    Examination after = examine(&lock);
    Examination result = {{}, after.problem};
    for (Damage damage : before.damages) {
        damage.isRepaired = !after.problem && !isAmong(damage, after.damages);
        result.damages.push_back(damage);
    }
    for (const Damage& damage : after.damages) {
        if (!isAmong(damage, before.damages)) {
            result.damages.push_back(damage);
        }
    }
    return result;
}

Examination examined(const Console& console, bool repair) {
    const auto lock = ExecutionLock::takenWithin(repair ? kSecondsToRepair : kSecondsToLook);
    if (lock == nullptr) {
        Examination result = examine(nullptr);
        result.damages.insert(result.damages.begin(), reloadLockDamage());
        return result;
    }
    return repair ? repaired(console, *lock) : examine(lock.get());
}

bool isWell(const Examination& result) {
    return !result.problem && std::all_of(result.damages.begin(),
                                          result.damages.end(),
                                          [](const Damage& damage) { return damage.isRepaired; });
}

void showJson(const Console& console, const Examination& result) {
    Json::Value document;
    document["ok"] = isWell(result);
    document["findings"] = Json::arrayValue;
    for (const Damage& damage : result.damages) {
        Json::Value& finding = document["findings"].append(Json::objectValue);
        finding["kind"] = damage.kind;
        finding["message"] = damage.message;
        finding["remedy"] = damage.remedy;
        finding["repaired"] = damage.isRepaired;
    }
    console.out << jsonLine(document) << "\n";
}

std::string indented(const std::string& text) {
    return boost::algorithm::replace_all_copy(text, "\n", "\n    ");
}

void showText(const Console& console, const Examination& result) {
    for (const Damage& damage : result.damages) {
        console.out << indented(damage.message) << " [" << damage.kind << "]\n    "
                    << (damage.isRepaired ? "repaired" : indented(damage.remedy)) << "\n";
    }
    const auto left = static_cast<std::size_t>(
        std::count_if(result.damages.begin(), result.damages.end(), [](const Damage& damage) {
            return !damage.isRepaired;
        }));
    if (result.damages.empty() && !result.problem) {
        console.out << "nothing is wrong\n";
    } else if (!result.damages.empty()) {
        console.out << counted(result.damages.size(), "finding") << ", " << left
                    << " left to mend\n";
    }
}

}  // namespace

Status doctorAnswer(const Console& console, bool repair) {
    requireRoot("looking for damage");
    const Examination result = examined(console, repair);
    if (console.json) {
        showJson(console, result);
    } else {
        showText(console, result);
    }
    if (result.problem) {
        throw Failure(*result.problem);
    }
    return isWell(result) ? Status::kDone : Status::kNo;
}

}  // namespace zamofw
