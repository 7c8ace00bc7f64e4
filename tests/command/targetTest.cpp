#include "command/document/target.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <json/reader.h>
#include <unistd.h>

#include <algorithm>
#include <initializer_list>
#include <vector>

#include "command/console.h"
#include "command/document/profileRecord.h"
#include "posix/descriptor.h"
#include "tests/support/store.h"
#include "zamofirewall/profileDatabase.h"

namespace zamofw {
namespace {

// "STATUS: message (remedy)" where it fails.
template <typename Work>
std::string resultOf(Work work) {
    try {
        return work();
    } catch (const Failure& failure) {
        return std::to_string(static_cast<int>(failure.status())) + ": " + failure.what() + " (" +
               failure.remedy() + ")";
    }
}

std::string textOf(const FW::FWPROFILE& profile) {
    Json::Value document;
    FW::ZAMOFW_JSON_DB().profileToJson(profile, document);
    std::string text = document.toStyledString();
    for (const auto& [adapter, rules] : profile.rules) {
        for (const FW::FWRULE& rule : rules) {
            text += " " + std::to_string(rule.ruleIndex);
        }
    }
    return text;
}

TEST(ProfileRecord, IsWhatTheLibraryReads) {
    const std::string rule =
        "{'ruleID': 3, 'enable': true, 'adapterDirect': 1, 'policy': 1, 'blLog': true, 'labelList':"
        " ['a', 'b'], 'name': '\\u00e9', 'table': 'nat', 'chainList': ['X'], 'ipType': 2,"
        " 'ipDirect': 1, 'ipGroup': 4, 'ipList': ['1', '2'], 'portDirect': 1, 'portGroup': 2,"
        " 'protocol': 32, 'portList': ['ssh']}";
    for (std::string text : std::vector<std::string>{
             "{'name': 'a', 'adapterPolicyMap': {'eth0': 1}, 'rules': {'eth0': [" + rule +
                 ", {}]}}",
             "{'rules': {'eth0': [" + rule + "], 'eth1': [], 'eth0': [{}]}, 'name': 1}",
             "{'rules': {'eth0': [{'policy': 1}], 'eth0': []}}",
             "{'rules': {'eth0': [{'policy': 1}]}, 'rules': {'eth1': [{}]}}",
             "{'rules': {'eth0': [{'enable': 1, 'policy': 1.0, 'name': null, 'ipList': null}]}}",
             "{'rules': {'eth0': [{'portList': [22, true]}]}}",
             "{'rules': {'eth0': [null]}, 'adapterPolicyMap': null}",
             "{'name': null, 'adapterPolicyMap': {'eth0': 1, 'eth1': null}}",
             "{'rules': {'eth1': null, 'eth0': [{'enable': null, 'policy': null, 'name': null}]}}",
             "{'rules': {'eth0': [{'table': null, 'chainList': null, 'labelList': null}]}}",
             "{'rules': {'eth0': [{'ipList': null, 'portList': null, 'ruleID': null}]}}",
             "{'rules': {'eth0': [{'policy': 1, 'policy': null}], 'eth1': [{}], 'eth1': null}}",
             "// comment\n{'rules': null, 'adapterPolicyMap': {'eth0': 010}} behind",
             "{'adapterPolicyMap': {'eth0': 2147483648}}",
             "{'adapterPolicyMap': {'eth0': '1'}}",
             "{'rules': {'eth0': {'0': {}}}}",
             "{'rules': {'eth0': [[]]}}",
             "[]",
             "7",
             "{'rules': {'eth0': [{'chainList': 'X'}]}}",
             "{'rules': {'eth0': 0}}"}) {
        std::replace(text.begin(), text.end(), '\'', '"');
        Json::Value value;
        FW::FWPROFILE expected;
        const bool isRead = Json::Reader().parse(text, value) &&
                            FW::ZAMOFW_JSON_DB().jsonToProfile(value, expected);
        const Document document = readDocument(text, "x.json");
        if (isRead) {
            EXPECT_EQ(textOf(profileRecord(document)), textOf(expected)) << text;
        } else {
            EXPECT_THROW((void)profileRecord(document), Failure) << text;
        }
    }
}

TEST(ProfileRecord, TellsWhereTheLibraryWouldReadNoProfile) {
    struct Row {
        const char* text;
        const char* place;
    };
    for (const Row& row :
         std::initializer_list<Row>{{"{\"name\": \"a\",\n \"rules\": }", "x.json:2:11: "},
                                    {"", "x.json:1:1: "},
                                    {"\n[]", "x.json:2:1: a profile is a JSON object"},
                                    {"{\"rules\": {\"eth0\": [{},\n  {\"policy\": \"deny\"}]}}",
                                     "x.json:2:3: a member of this "},
                                    {"{\"adapterPolicyMap\": []}", "x.json:1:1: "}}) {
        const Document document = readDocument(row.text, "x.json");
        const std::string result = resultOf([&] { return textOf(profileRecord(document)); });
        EXPECT_EQ(result.rfind("3: " + std::string(row.place), 0), 0U) << result;
    }
}

std::string targetOf(const TargetWords& words) {
    return resultOf([&words] {
        const Target target = readTarget(words);
        return target.name + " " + target.document.file + (target.isStored ? " stored" : "");
    });
}

class Targets : public testing::Test {
  protected:
    Targets() {
        test::clearFiles();
        store("10", "{\"name\": \"home\"} trailing");
        store("2", "{\"name\": \"home\", \"rules\": ");
        store("3", "{\"name\": \"h\\u006fme\"}");
        store("4", "{\"name\": \"office\", \"rules\": {\"eth0\": }}");
        store("5", "{\"name\": \".test_homes\"}");
        test::writeFile(test::kStore + std::string(".0.json"), "{\"name\": \"home\"}");
    }
    static void store(const std::string& number, const std::string& text) {
        test::writeFile(test::kStore + number + ".json", text);
    }
};

TEST_F(Targets, AreFoundAsTheLibraryFindsThem) {
    const std::string directory = test::kStore;
    EXPECT_EQ(targetOf({"home", {}}), "home " + directory + "10.json stored");
    EXPECT_EQ(FW::ZAMOFW_JSON_DB().profilePathGet("home"), directory + "10.json");
    EXPECT_EQ(targetOf({"office", {}}), "office " + directory + "4.json stored");
    test::writeSettings(true, "home");
    EXPECT_EQ(targetOf({}), "home " + directory + "10.json stored");
    EXPECT_EQ(targetOf({{}, directory + "3.json"}), "home " + directory + "3.json");
    test::writeFile("/tmp/x", "{}");
    EXPECT_EQ(targetOf({"/tmp/x", {}}), "/tmp/x /tmp/x");
}

TEST_F(Targets, ComeFromStandardInput) {
    const posix::Descriptor saved(dup(STDIN_FILENO));
    test::writeFile("/tmp/in", "{\"name\": \"piped\"}");
    const posix::Descriptor input = posix::openFile("/tmp/in", O_RDONLY);
    ASSERT_EQ(dup2(input.get(), STDIN_FILENO), STDIN_FILENO);
    EXPECT_EQ(targetOf({"-", {}}), "piped -");
    EXPECT_EQ(targetOf({{}, "-"}), "- -");
    (void)dup2(saved.get(), STDIN_FILENO);
}

TEST_F(Targets, SayWhatIsWrong) {
    const auto has = [](const TargetWords& words, const std::string& part) {
        const std::string result = targetOf(words);
        EXPECT_NE(result.find(part), std::string::npos) << result;
    };
    has({"hom", {}}, "2: there is no profile `hom`: did you mean `home`?");
    has({".test_home", {}}, "(`zamofw profile list` shows the names)");
    has({"", {}}, "2: there is no profile ``");
    has({"homes", "x"}, "2: both a profile and --file are given");
    has({"./none", {}}, "3: cannot read ./none: No such file or directory");
    has({{}, "/tmp"}, "3: cannot read /tmp: Is a directory");
    has({{}, "/dev/zero"}, "3: cannot read /dev/zero: File too large");
    test::writeSettings(true, "gone");
    has({}, "3: the profile in force, `gone`, is not stored");
    test::writeFile(std::string(test::kStore) + "3.json", "{\"rules\": {},}");
    has({}, "is not found, and a profile has faults:\n/usr/zamo/etc/firewall.d/3.json:1:14: ");
    test::writeFile(test::kSettings, "{");
    has({}, "3: the profile in force is unknown: cannot read /usr/zamo/etc/");
    test::clearFiles();
    has({"home", {}}, "2: there is no profile `home` (none is stored");
}

}  // namespace
}  // namespace zamofw
