#include <gtest/gtest.h>

#include <boost/algorithm/string/replace.hpp>
#include <cstdlib>
#include <filesystem>

#include "tests/support/fakePlatform.h"
#include "tests/support/store.h"
#include "tests/support/systemLog.h"
#include "zamofirewall/profileDatabase.h"
#include "zamofirewall/translator.h"

namespace {

const std::string kGolden = GOLDEN_DIRECTORY "/";

// The files of a case, named after what they show:
//   .json      the profile, what prepare() reads, "established" and "client"
//   .v4, .v6   the command lines in the order of execution, "[adapter] line|", without those of
//              base.v4 and base.v6, which come first where neither of the two is set
//   .log       the log lines, after "failed" where the translation must fail; no file for none
// With REGENERATE_GOLDEN=1 the outputs are written anew; review the difference like code.
std::vector<std::string> goldenCases() {
    std::vector<std::string> names;
    for (const std::filesystem::path file : test::namesIn(kGolden)) {
        if (file.extension() == ".json") {
            names.push_back(file.stem());
        }
    }
    return names;
}

void prepare(const Json::Value& options) {
    test::clearFiles();
    if (options.get("catalogue", true).asBool()) {
        test::writeServices();
    }
    for (const std::string& path : options["files"].getMemberNames()) {
        test::writeFile(path, options["files"][path].asString());
    }
    test::clearPlatform();
    test::FakePlatform& platform = test::platform();
    platform.interfaces.clear();
    for (const Json::Value& interface : options["interfaces"]) {
        platform.interfaces.push_back(interface.asString());
    }
    platform.interfacesFail = options["interfacesFail"].asBool();
    platform.pppoe = options["pppoe"].asString();
    platform.pppoeFails = options["pppoeFails"].asBool();
    for (const std::string& interface : options["routers"].getMemberNames()) {
        platform.routers[interface] = options["routers"][interface].asString();
    }
    const bool toolMissing = options["toolMissing"].asBool();
    platform.fails = [toolMissing](const std::string&) { return toolMissing; };
}

std::string printed(const Json::Value& linesByAdapter) {
    std::string global;
    std::string others;
    for (const std::string& adapter : linesByAdapter.getMemberNames()) {
        std::string& text = adapter == "global" ? global : others;
        for (const Json::Value& line : linesByAdapter[adapter]) {
            const std::string shown = "[" + adapter + "] " + line.asString() + "|";
            text += boost::replace_all_copy(shown, "\n", "\\n") + "\n";
        }
    }
    return global + others;
}

void compare(const std::string& path, const std::string& base, const std::string& actual) {
    if (std::getenv("REGENERATE_GOLDEN") != nullptr && actual.rfind(base, 0) == 0) {
        test::writeFile(path, actual.substr(base.size()));
    }
    EXPECT_TRUE(test::exists(path)) << path << " is missing";
    EXPECT_EQ(actual, base + test::readFile(path)) << path;
}

class Golden : public testing::TestWithParam<std::string> {};

TEST_P(Golden, LinesAndLogAreThoseOfTheFiles) {
    const std::string stem = kGolden + GetParam();
    const Json::Value options = test::json(test::readFile(stem + ".json"));
    prepare(options);
    FW::FWPROFILE profile;
    ASSERT_TRUE(FW::ZAMOFW_JSON_DB().jsonToProfile(options["profile"], profile));
    const bool established = options["established"].asBool();

    test::SystemLog log;
    FW::ZAMOFW_IPTABLES_RULES translator;
    Json::Value commands;
    std::string messages = "failed\n";
    if (translator.fwRulesToIptablesRules(established, profile.rules, profile.adapterPolicyMap,
                                          commands, options["client"].asString())) {
        messages.clear();
    }
    for (const std::string& line : log.take()) {
        messages += line + "\n";
    }

    const bool hasBase = !established && !options.isMember("client");
    for (const std::string family : {"v4", "v6"}) {
        const std::string base = hasBase ? test::readFile(kGolden + "base." + family) : "";
        compare(stem + "." + family, base, printed(commands[family]));
    }
    if (!messages.empty() || test::exists(stem + ".log")) {
        compare(stem + ".log", "", messages);
    }
}

INSTANTIATE_TEST_SUITE_P(Translation, Golden, testing::ValuesIn(goldenCases()),
                         [](const auto& row) { return row.param; });

TEST(Translator, KeepsTheAnswersThatItHasAndAsksAgainForOthers) {
    FW::ZAMOFW_IPTABLES_RULES translator;
    FW::ServPort ports;
    const auto hasAll = [&](bool expected) {
        for (const char* adapter : {"eth0", "vpn", "pppoe"}) {
            EXPECT_EQ(translator.adapterIsEnabled(adapter), expected) << adapter;
        }
        EXPECT_EQ(translator.servToPorts({"ssh"}, ports), expected);
    };
    prepare(test::json("{'catalogue': false, 'interfacesFail': true}"));
    hasAll(false);
    prepare(test::json("{'interfaces': ['eth0', 'tun0'], 'pppoe': 'ppp0'}"));
    hasAll(true);
    prepare(test::json("{'catalogue': false, 'interfaces': ['eth1']}"));
    hasAll(true);
    EXPECT_EQ(ports.dstPorts, (decltype(ports.dstPorts){{FW::FW_PROTOCOL_TCP, {"22", "22"}}}));
}

TEST(Translator, MakesNoLineWithoutAChainAndNoTargetWithoutAVerdict) {
    FW::ZAMOFW_IPTABLES_RULES translator;
    FW::FWRULE rule = test::portRule(FW::FW_POLICY_NONE, {"22"});
    rule.chainList = {"INPUT_FIREWALL"};
    Json::Value args;
    Json::Value commands;
    translator.iptablesRulesInit(args);
    translator.jIptablesCmdInit(commands);
    EXPECT_TRUE(translator.FwRuleToIptablesArg("global", rule, args));
    EXPECT_EQ(args["ip"], test::json("{'v4': [''], 'v6': ['']}"));
    translator.iptablesArgToCmd("eth0", rule, args, commands);
    args["chain"].clear();
    translator.iptablesArgToCmd("eth1", rule, args, commands);
    EXPECT_EQ(commands,
              test::json("{'v4': {'eth0': ['-t filter -A INPUT_FIREWALL -p tcp --dport 22 ']},"
                         " 'v6': null}"));
}

}  // namespace
