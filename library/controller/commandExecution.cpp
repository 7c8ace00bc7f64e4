#include "library/controller/commandExecution.h"

#include <zamo/core.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "library/logging/log.h"
#include "library/store/jsonFile.h"
#include "zamofirewall/controller.h"

namespace FW {
namespace {

constexpr const char* kLogModule = "zamoFW";
constexpr std::size_t kBufferSize = 1024;
constexpr std::size_t kMaxArguments = 255;
// A word may start only while no more than this is in use. The limit is below the buffer's size on
// purpose: the last word may fill the buffer, but no word may follow it.
constexpr std::size_t kMaxUsedBefore = 1022;

// Logs like FW_FAILURE, and is false like it.
bool commandFailure(const std::string& line) {
    return FW_FAILURE("Failed to execute \"%s\"", line.c_str());
}

// Appends the lines of an array. False at the first value that is not a text.
bool appendLines(const Family& family, const Json::Value& array, std::vector<CommandLine>& lines) {
    if (!array.isArray() && !array.isNull()) {
        return false;
    }
    for (const Json::Value& arguments : array) {
        if (!arguments.isConvertibleTo(Json::stringValue)) {
            return false;
        }
        lines.push_back({family, arguments.asString()});
    }
    return true;
}

bool appendFamily(const Family& family,
                  const Json::Value& adapters,
                  std::vector<CommandLine>& lines) {
    if (!isObjectOrNull(adapters) || !appendLines(family, adapters[kGlobalAdapter], lines)) {
        return false;
    }
    for (const std::string& adapter : adapters.getMemberNames()) {
        if (adapter != kGlobalAdapter && !appendLines(family, adapters[adapter], lines)) {
            return false;
        }
    }
    return true;
}

}  // namespace

bool runCommand(const std::string& line) {
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

bool runLines(const std::vector<CommandLine>& lines) {
    for (const CommandLine& line : lines) {
        const std::string command = std::string(line.family.program) + " " + line.arguments;
        if (!runCommand(command)) {
            return commandFailure(command);
        }
    }
    return true;
}

bool runCommandList(const Json::Value& list) {
    if (!isObjectOrNull(list)) {
        return commandFailure(kIpv4.program);
    }
    std::vector<CommandLine> lines;
    for (const Family& family : kFamilies) {
        if (!appendFamily(family, list[family.key], lines)) {
            // The lines before the wrong value have run, as they would before any other failure.
            return runLines(lines) && commandFailure(family.program);
        }
    }
    return runLines(lines);
}

bool flushChains() {
    bool flushed = true;
    for (const char* chain : kFirewallChains) {
        for (const Family& family : kFamilies) {
            flushed = runLines({{family, std::string("-F ") + chain}}) && flushed;
        }
    }
    return flushed;
}

bool ZAMOFW::cmdExec(const std::string& line) {
    return runCommand(line);
}

bool ZAMOFW::fwExec(Json::Value list) {
    return runCommandList(list);
}

bool ZAMOFW::fwClear() {
    return flushChains();
}

}  // namespace FW
