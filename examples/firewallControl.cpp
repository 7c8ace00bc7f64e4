// A small management program: what the library's classes are for, one command each.
//
//   firewall-control enable | disable | reload | status
//   firewall-control store FILE            store the profile document (its "name" names it)
//   firewall-control use NAME              put a stored profile into force
//   firewall-control try FILE [ADDRESS]    try an edited profile out, for a client's address
//   firewall-control adopt NAME            keep what was tried, and reload
//   firewall-control forget NAME           drop what was tried, and reload
//   firewall-control ask ADAPTER PORT      would this TCP port be blocked?
//   firewall-control rename OLD NEW        move an adapter's rules to its new name
//   firewall-control export FILE | import FILE

#include <zamofirewall/zamofirewall.h>

#include <fstream>
#include <functional>
#include <iostream>

namespace {

using Arguments = std::vector<std::string>;

bool readDocument(const std::string& path, Json::Value& document) {
    std::ifstream file(path);
    return Json::Reader().parse(file, document);
}

bool readProfile(const std::string& path, FW::FWPROFILE& profile) {
    Json::Value document;
    return readDocument(path, document) && FW::ZAMOFW_PROFILE().jsonToProfile(document, profile);
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
    switch (result[arguments[0]]) {
        case FW::FW_POLICY_DENY:
            std::cout << "blocked\n";
            return true;
        case FW::FW_POLICY_PARTIAL:
            std::cout << "blocked for some addresses\n";
            return true;
        default:
            std::cout << "allowed\n";
            return true;
    }
}

bool exportTo(const Arguments& arguments) {
    Json::Value document;
    if (!FW::ZAMOFW_PROFILE().exportConfig(document)) {
        return false;
    }
    std::ofstream file(arguments[0]);
    file << Json::StyledWriter().write(document) << std::flush;
    return file.good();
}

bool importFrom(const Arguments& arguments) {
    Json::Value document;
    return readDocument(arguments[0], document) && FW::ZAMOFW_PROFILE().importConfig(document);
}

struct Command {
    std::size_t minArguments;
    std::size_t maxArguments;
    std::function<bool(const Arguments&)> run;
};

const std::map<std::string, Command> kCommands = {
    {"enable", {0, 0, [](const Arguments&) { return FW::ZAMOFW().fwEnable(); }}},
    {"disable", {0, 0, [](const Arguments&) { return FW::ZAMOFW().fwDisable(); }}},
    {"reload", {0, 0, [](const Arguments&) { return FW::ZAMOFW().fwReload(true); }}},
    {"status", {0, 0, status}},
    {"store", {1, 1, store}},
    {"use", {1, 1, [](const Arguments& a) { return FW::ZAMOFW().fwProfileConfigSet(a[0], true); }}},
    {"try", {1, 2, tryOut}},
    {"adopt", {1, 1, adopt}},
    {"forget", {1, 1, forget}},
    {"ask", {2, 2, ask}},
    {"rename",
     {2,
      2,
      [](const Arguments& a) {
          return FW::ZAMOFW_PROFILE().profileChangeAdapter(a[0], a[1], /*reload=*/true);
      }}},
    {"export", {1, 1, exportTo}},
    {"import", {1, 1, importFrom}},
};

}  // namespace

int main(int argc, char** argv) {
    const Arguments all(argv + 1, argv + argc);
    const auto command = all.empty() ? kCommands.end() : kCommands.find(all[0]);
    const Arguments arguments(all.begin() + (all.empty() ? 0 : 1), all.end());
    if (command == kCommands.end() || arguments.size() < command->second.minArguments ||
        arguments.size() > command->second.maxArguments) {
        std::cerr << "usage: firewall-control COMMAND [ARGUMENT]...; see the head of its source\n";
        return 2;
    }
    try {
        if (command->second.run(arguments)) {
            return 0;
        }
        std::cerr << "failed; see the system log\n";
    } catch (const std::exception& error) {
        std::cerr << "no lock can be had: " << error.what() << "\n";
    }
    return 1;
}
