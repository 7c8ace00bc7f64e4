#include "command/apply/backends.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <fstream>
#include <optional>

#include "command/apply/program.h"
#include "command/apply/savedTable.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

// The tables that exist for the legacy programs in this network namespace. Asking for another one
// would make it.
bool hasLegacyTables(int family) {
    std::ifstream names(family == 4 ? "/proc/net/ip_tables_names" : "/proc/net/ip6_tables_names");
    std::string name;
    return static_cast<bool>(names >> name);
}

// A kernel without loadable modules has it built in, or answers that it has not.
bool hasNfTables() {
    if (access("/proc/modules", F_OK) != 0 || access("/sys/module/nf_tables", F_OK) == 0) {
        return true;
    }
    utsname kernel = {};
    (void)uname(&kernel);
    std::ifstream builtIn(std::string("/lib/modules/") + kernel.release + "/modules.builtin");
    for (std::string line; std::getline(builtIn, line);) {
        if (line.find("/nf_tables.ko") != std::string::npos) {
            return true;
        }
    }
    return false;
}

struct Contents {
    std::size_t rules = 0;
    bool hasOurs = false;
};

bool isOurs(const std::string& chain) {
    return chain == FW::kInputChain || chain == FW::kForwardChain || chain == FW::kReloadingChain;
}

// Closed policies count as rules. Nothing when the variant is not installed.
Contents contentsOf(int family, const char* variant) {
    const std::string program =
        std::string("/usr/sbin/") + (family == 4 ? "iptables-" : "ip6tables-") + variant + "-save";
    Contents contents;
    if (access(program.c_str(), X_OK) != 0) {
        return contents;
    }
    for (const auto& [name, table] : parseTables(runProgram({program}).output)) {
        for (const auto& [chain, state] : table) {
            contents.rules += state.rules.size() + (state.policy == "DROP" ? 1U : 0U);
            contents.hasOurs = contents.hasOurs || (name == kFilterTable && isOurs(chain));
        }
    }
    return contents;
}

std::string described(const Contents& contents) {
    return std::to_string(contents.rules) + (contents.rules == 1 ? " rule" : " rules") +
           (contents.hasOurs ? ", and the firewall's chains" : "");
}

}  // namespace

Damages backendDamages() {
    Damages damages;
    for (const int family : {4, 6}) {
        if (!hasLegacyTables(family) || !hasNfTables()) {
            continue;
        }
        const Contents legacy = contentsOf(family, "legacy");
        const Contents nft = contentsOf(family, "nft");
        if (legacy.rules > 0 && nft.rules > 0) {
            const std::string tool = family == 4 ? "iptables" : "ip6tables";
            damages.push_back({"two-backends",
                               "IPv" + std::to_string(family) + ": both variants of " + tool +
                                   " hold rules, and a packet must get past both: legacy (" +
                                   described(legacy) + ") and nft (" + described(nft) + ")",
                               "let all programs use one variant (`update-alternatives --config " +
                                   tool + "`), and remove the rules of the other: `" + tool +
                                   "-legacy-save` and `" + tool + "-nft-save` show them"});
        }
    }
    return damages;
}

}  // namespace zamofw
