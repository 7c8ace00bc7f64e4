// Running command lines, and the fixed ones around a rebuild of the rules.

#include <zamo/core.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "library/logging/log.h"
#include "library/model/names.h"
#include "library/store/jsonFile.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr std::size_t kBufferSize = 1024;
constexpr std::size_t kMaxArguments = 255;
// A word may still begin while this much is used. It is less than the buffer on purpose: the last
// word may fill the buffer, but no other may follow it.
constexpr std::size_t kMaxUsedBefore = 1022;

bool logFailedCommand(const std::string& line) {
    return FW_FAILURE("Failed to execute \"%s\"", line.c_str());
}

// One line in both families, under "global".
Json::Value guardLines(const char* policy, const char* edit) {
    Json::Value list;
    for (const Family& family : kFamilies) {
        Json::Value& lines = list[family.key][kGlobalAdapter];
        lines.append(std::string("--policy INPUT ") + policy);
        lines.append(std::string("--policy FORWARD ") + policy);
        lines.append(std::string(edit) +
                     " FIREWALL_RELOADING -m state --state ESTABLISHED,RELATED -j ACCEPT");
    }
    return list;
}

// Runs one array of a command list.
bool runLines(ZAMOFW& controller, const char* program, const Json::Value& lines) {
    if (!lines.isArray() && !lines.isNull()) {
        return logFailedCommand(program);
    }
    for (const Json::Value& arguments : lines) {
        if (!arguments.isConvertibleTo(Json::stringValue)) {
            return logFailedCommand(program);
        }
        const std::string line = std::string(program) + " " + arguments.asString();
        if (!controller.cmdExec(line)) {
            return logFailedCommand(line);
        }
    }
    return true;
}

bool runFamily(ZAMOFW& controller, const Family& family, const Json::Value& members) {
    if (!isObjectOrNull(members)) {
        return logFailedCommand(family.program);
    }
    if (!runLines(controller, family.program, members[kGlobalAdapter])) {
        return false;
    }
    for (const std::string& adapter : members.getMemberNames()) {
        if (adapter != kGlobalAdapter && !runLines(controller, family.program, members[adapter])) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool ZAMOFW::cmdExec(const std::string& line) {
    std::array<char, kBufferSize> buffer = {};
    std::array<const char*, kMaxArguments + 1> arguments = {};
    std::size_t count = 0;
    std::size_t used = 0;

    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find(' ', begin), line.size());
        const std::string_view word = std::string_view(line).substr(begin, end - begin);
        begin = end + 1;
        if (count >= kMaxArguments || used > kMaxUsedBefore) {
            return FW_FAILURE("#Arguments exceeds limit");
        }
        if (word.empty()) {
            continue;
        }
        const int length = std::snprintf(&buffer[used],
                                         buffer.size() - used,
                                         "%.*s",
                                         static_cast<int>(word.size()),
                                         word.data());
        arguments[count++] = &buffer[used];
        used += static_cast<std::size_t>(length) + 1;
    }
    if (used == 0 || used > buffer.size()) {
        return FW_FAILURE("cmd is empty or arguments exceeding limit");
    }
    if (VLIBCExecv(arguments[0], arguments.data(), /*wait=*/1) == -1) {
        return FW_FAILURE("Failed to execute %s", arguments[0]);
    }
    return true;
}

bool ZAMOFW::fwExec(Json::Value list) {
    if (!isObjectOrNull(list)) {
        return logFailedCommand(kFamilies[0].program);
    }
    for (const Family& family : kFamilies) {
        if (!runFamily(*this, family, list[family.key])) {
            return false;
        }
    }
    return true;
}

bool ZAMOFW::fwDefaultDrop() {
    if (!fwExec(guardLines("DROP", "-A"))) {
        return FW_FAILURE("Failed to fwExec() to set default drop.");
    }
    return true;
}

bool ZAMOFW::fwDefaultAccept() {
    if (!fwExec(guardLines("ACCEPT", "-D"))) {
        return FW_FAILURE("Failed to fwExec() to set default accept.");
    }
    return true;
}

bool ZAMOFW::fwClear() {
    bool cleared = true;
    for (const char* chain : kFirewallChains) {
        for (const Family& family : kFamilies) {
            const std::string line = std::string(family.program) + " -F " + chain;
            if (!cmdExec(line)) {
                cleared = logFailedCommand(line);
            }
        }
    }
    return cleared;
}

}  // namespace FW
