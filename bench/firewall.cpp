#include "bench/firewall.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "bench/measure.h"
#include "zamofirewall/zamofirewall.h"

namespace fs = std::filesystem;

namespace bench {
namespace {

const std::string kStore = "/usr/zamo/etc/firewall.d/";

FW::FWRULE rule(int number) {
    FW::FWRULE rule;
    rule.ruleIndex = number;
    rule.portGroup = FW::FW_PORT_GROUP_PORT;
    rule.portList = {std::to_string(1000 + number), "20000-20100"};
    rule.ipList = {"10.9." + std::to_string(number / 250) + "." + std::to_string(number % 250)};
    if (number % 4 == 3) {
        rule.ipType = FW::FW_IP_TYPE_BOTH;
        rule.ipGroup = FW::FW_IP_GROUP_ALL;
    }
    return rule;
}

}  // namespace

FW::FWPROFILE profileWith(int rules) {
    FW::FWPROFILE profile;
    profile.name = "bench";
    profile.adapterPolicyMap["eth0"] = FW::FW_POLICY_DENY;
    for (int number = 0; number < rules; ++number) {
        profile.rules["eth0"].push_back(rule(number));
    }
    return profile;
}

void store(const std::vector<FW::FWPROFILE>& profiles) {
    for (const auto& entry : fs::directory_iterator(kStore)) {
        fs::remove(entry.path());
    }
    int number = 0;
    for (const FW::FWPROFILE& profile : profiles) {
        Json::Value document;
        FW::ZAMOFW_JSON_DB().profileToJson(profile, document);
        const std::string path = kStore + std::to_string(number++) + ".json";
        require(FW::jsonFileDump(document, path), "storing a profile");
    }
    Json::Value settings;
    settings["status"] = true;
    settings["profile"] = profiles[0].name;
    require(FW::ZAMOFW().configSet(settings), "storing the settings");
}

void reload() {
    require(FW::ZAMOFW().fwReload(true), "the reload");
}

bool startPlainly(const std::vector<std::string>& arguments, bool read, int expected) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    pid_t child = -1;
    int error = 0;
    if (read) {
        int ends[2];
        posix_spawn_file_actions_t actions;
        require(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        error = posix_spawn(&child, argv[0], &actions, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&actions);
        close(ends[1]);
        char buffer[256];
        while (::read(ends[0], buffer, sizeof buffer) > 0) {
        }
        close(ends[0]);
    } else {
        error = posix_spawn(&child, argv[0], nullptr, nullptr, argv.data(), environ);
    }
    int status = 0;
    return error == 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
           WEXITSTATUS(status) == expected;
}

}  // namespace bench
