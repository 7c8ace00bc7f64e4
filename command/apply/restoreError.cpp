#include "command/apply/restoreError.h"

#include <sys/stat.h>

#include <array>
#include <boost/algorithm/string/predicate.hpp>
#include <cstdlib>
#include <string_view>

#include "command/apply/kernelState.h"
#include "command/apply/programs.h"
#include "command/apply/xtablesLock.h"
#include "command/console.h"

namespace zamofw {
namespace {

using boost::algorithm::contains;
using boost::algorithm::starts_with;

std::string remedyFor(int family, const std::string& words) {
    struct stat status = {};
    if (family == 6 && stat("/proc/net/if_inet6", &status) != 0) {
        return "this kernel has no IPv6, but the firewall covers both families: start it without "
               "ipv6.disable=1, or load its module";
    }
    if (contains(words, "Permission denied") || contains(words, "Operation not permitted")) {
        return "it takes root with the capability CAP_NET_ADMIN; a container may have to be given "
               "it";
    }
    if (contains(words, "initialize") || contains(words, "Table does not exist") ||
        contains(words, "generation id")) {
        return "load the module of the packet filter (modprobe ip_tables iptable_filter, "
               "ip6_tables ip6table_filter or nf_tables), or choose the other variant with "
               "update-alternatives --config iptables";
    }
    return "";
}

}  // namespace

std::size_t namedLine(const std::string& error) {
    constexpr std::array<const char*, 2> kStarts = {"Error occurred at line: ", ": line "};
    for (const char* const start : kStarts) {
        const std::size_t found = error.find(start);
        if (found != std::string::npos) {
            return std::strtoul(
                error.c_str() + found + std::string_view(start).size(), nullptr, 10);
        }
    }
    return 0;
}

std::optional<std::size_t> missingTable(const std::vector<std::string>& lines,
                                        const std::string& error) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (starts_with(lines[i], "*") && lines[i] != "*filter" &&
            contains(error, "table '" + lines[i].substr(1) + "'")) {
            return i;
        }
    }
    return std::nullopt;
}

void throwUnlessAboutLine(int family, const std::string& program, const ProgramResult& result) {
    if (result.status < 0) {
        failed(program + " was ended by signal " + std::to_string(result.signal));
    }
    throwIfLockIsHeld(result);
    constexpr std::array<const char*, 5> kNotALine = {"you must be root",
                                                      "Operation not permitted",
                                                      "initialize",
                                                      "Table does not exist",
                                                      "generation id"};
    for (const char* const words : kNotALine) {
        if (contains(result.error, words)) {
            failedProgram(family, program, result);
        }
    }
}

// "-F CHAIN" and ":CHAIN - [0:0]" are about one of the firewall's chains.
void throwIfChainIsMissing(int family, const std::string& line) {
    if (starts_with(line, "-F ")) {
        chainIsMissing(family, line.substr(3));
    }
    if (starts_with(line, ":")) {
        chainIsMissing(family, line.substr(1, line.find(' ') - 1));
    }
}

void throwIfLockIsHeld(const ProgramResult& result) {
    if (result.status > 0 && contains(result.error, "xtables lock")) {
        xtablesLockIsHeld(causeIn(result.error).c_str());
    }
}

void failedProgram(int family, const std::string& program, const ProgramResult& result) {
    const std::string words = causeIn(result.error);
    failed(program + " failed with status " + std::to_string(result.status) +
               (words.empty() ? "" : ":\n" + words),
           remedyFor(family, words));
}

}  // namespace zamofw
