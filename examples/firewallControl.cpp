// A small management program that uses the library's classes, one command each. Run it as root.

#include <syslog.h>
#include <zamofirewall/zamofirewall.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>

namespace {

using Arguments = std::vector<std::string>;

constexpr const char* kUsage = R"(usage: firewall-control COMMAND [ARGUMENT]...
  enable | disable | reload | status
  store FILE            store the profile document (its "name" names it)
  use NAME              put a stored profile into force
  try FILE [ADDRESS]    try an edited profile, on behalf of a client
  adopt NAME            keep the profile that was tried, and reload
  forget NAME           drop the profile that was tried, and reload
  ask ADAPTER PORT      would this TCP port be blocked?
  rename OLD NEW        move an adapter's rules to its new name
  export FILE | import FILE
)";

// The library logs its own failures; the others are told here. Always false.
bool complain(const std::string& text) {
    std::cerr << "firewall-control: " << text << "\n";
    return false;
}

bool readDocument(const std::string& path, Json::Value& document) {
    std::ifstream file(path);
    if (!file) {
        return complain("cannot read " + path + ": " + std::strerror(errno));
    }
    Json::Reader reader;
    try {
        return reader.parse(file, document) ||
               complain(path + " is not JSON:\n" + reader.getFormattedErrorMessages());
    } catch (const Json::Exception& error) {
        return complain(path + " is not usable: " + error.what());
    }
}

bool readProfile(const std::string& path, FW::FWPROFILE& profile) {
    Json::Value document;
    if (!readDocument(path, document)) {
        return false;
    }
    if (!FW::ZAMOFW_PROFILE().jsonToProfile(document, profile)) {
        return complain(path + " is not a profile: a member has the wrong type");
    }
    return !profile.name.empty() || complain(path + " is not a profile: it has no \"name\"");
}

// Closing the policies comes before the first line that needs a chain. So without the chains the
// policies would stay closed.
bool chainsExist() {
    FW::ZAMOFW firewall;
    for (const std::string program : {"/sbin/iptables", "/sbin/ip6tables"}) {
        for (const std::string chain : {"INPUT", "FORWARD"}) {
            for (const std::string& target :
                 {chain + "_FIREWALL", std::string("FIREWALL_RELOADING")}) {
                if (!firewall.cmdExec(program + " -C " + chain + " -j " + target)) {
                    return complain(chain + " does not jump to " + target +
                                    "; as root, run zamofw-chains first");
                }
            }
        }
    }
    return true;
}

bool chainsExistIfEnabled() {
    bool enabled = false;
    return FW::ZAMOFW().fwStatus(enabled) && (!enabled || chainsExist());
}

bool status(const Arguments&) {
    bool enabled = false;
    std::string profile;
    FW::ZAMOFW firewall;
    if (!firewall.fwStatus(enabled) || !firewall.fwProfileConfigGet(profile)) {
        return false;
    }
    std::cout << (enabled ? "enabled" : "disabled") << ", profile " << profile << "\n";
    return true;
}

bool store(const Arguments& arguments) {
    FW::FWPROFILE profile;
    return readProfile(arguments[0], profile) &&
           FW::ZAMOFW_PROFILE().profileSet(profile.name, profile);
}

bool tryOut(const Arguments& arguments) {
    const std::string client = arguments.size() > 1 ? arguments[1] : "";
    FW::FWPROFILE profile;
    return readProfile(arguments[0], profile) &&
           FW::ZAMOFW_PROFILE().CreateTestProfile(profile.name, profile) &&
           FW::ZAMOFW().TestApplyingProfile(profile.name, client);
}

bool adopt(const Arguments& arguments) {
    FW::ZAMOFW_PROFILE profiles;
    return profiles.AdoptTestProfile(arguments[0]) && profiles.RemoveTestProfile(arguments[0]) &&
           FW::ZAMOFW().fwReload(true);
}

bool forget(const Arguments& arguments) {
    return FW::ZAMOFW_PROFILE().RemoveTestProfile(arguments[0]) && FW::ZAMOFW().fwReload(true);
}

bool ask(const Arguments& arguments) {
    FW::PortCompareST port;
    port.port = arguments[1];
    std::map<std::string, FW::FW_POLICY> result;
    if (!FW::ZAMOFW().fwPortIsBlocked(port, arguments[0], result)) {
        return false;
    }
    const auto answer = result.find(arguments[0]);
    if (answer == result.end()) {
        return complain("no adapter is named");
    }
    std::cout << (answer->second == FW::FW_POLICY_DENY      ? "blocked\n"
                  : answer->second == FW::FW_POLICY_PARTIAL ? "blocked for some addresses\n"
                                                            : "allowed\n");
    return true;
}

bool exportTo(const Arguments& arguments) {
    Json::Value document;
    if (!FW::ZAMOFW_PROFILE().exportConfig(document)) {
        return false;
    }
    std::ofstream file(arguments[0]);
    file << Json::StyledWriter().write(document) << std::flush;
    return file.good() || complain("cannot write " + arguments[0] + ": " + std::strerror(errno));
}

bool importFrom(const Arguments& arguments) {
    Json::Value document;
    return readDocument(arguments[0], document) && FW::ZAMOFW_PROFILE().importConfig(document);
}

bool use(const Arguments& arguments) {
    return FW::ZAMOFW().fwProfileConfigSet(arguments[0], /*reload=*/true);
}

bool rename(const Arguments& arguments) {
    return FW::ZAMOFW_PROFILE().profileChangeAdapter(arguments[0], arguments[1], /*reload=*/true);
}

struct Command {
    std::size_t minArguments;
    std::size_t maxArguments;
    bool (*isReady)();
    std::function<bool(const Arguments&)> run;
};

bool always() {
    return true;
}

const std::map<std::string, Command> kCommands = {
    {"enable", {0, 0, chainsExist, [](const Arguments&) { return FW::ZAMOFW().fwEnable(); }}},
    {"disable", {0, 0, always, [](const Arguments&) { return FW::ZAMOFW().fwDisable(); }}},
    {"reload",
     {0, 0, chainsExistIfEnabled, [](const Arguments&) { return FW::ZAMOFW().fwReload(true); }}},
    {"status", {0, 0, always, status}},
    {"store", {1, 1, always, store}},
    {"use", {1, 1, chainsExistIfEnabled, use}},
    {"try", {1, 2, chainsExist, tryOut}},
    {"adopt", {1, 1, chainsExistIfEnabled, adopt}},
    {"forget", {1, 1, chainsExistIfEnabled, forget}},
    {"ask", {2, 2, always, ask}},
    {"rename", {2, 2, chainsExistIfEnabled, rename}},
    {"export", {1, 1, always, exportTo}},
    {"import", {1, 1, always, importFrom}},
};

}  // namespace

int main(int argc, char** argv) {
    const Arguments all(argv + 1, argv + argc);
    const auto command = all.empty() ? kCommands.end() : kCommands.find(all[0]);
    const Arguments arguments(all.begin() + (all.empty() ? 0 : 1), all.end());
    if (command == kCommands.end() || arguments.size() < command->second.minArguments ||
        arguments.size() > command->second.maxArguments) {
        std::cerr << kUsage;
        return 2;
    }
    // Without this the library's lines reach the system log only, if there is one.
    openlog("firewall-control", LOG_PERROR, LOG_USER);
    try {
        if (command->second.isReady() && command->second.run(arguments)) {
            return 0;
        }
        (void)complain(all[0] + " failed");
    } catch (const std::exception& error) {
        (void)complain(std::string("cannot open a lock file: ") + error.what());
    }
    return 1;
}
