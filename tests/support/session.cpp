#include "tests/support/session.h"

#include <json/writer.h>
#include <zamo/core.h>

#include <array>
#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string.hpp>
#include <boost/interprocess/exceptions.hpp>
#include <filesystem>
#include <functional>
#include <map>
#include <regex>
#include <utility>

#include "tests/support/fakePlatform.h"
#include "tests/support/ruleText.h"
#include "tests/support/store.h"
#include "zamofirewall/zamofirewall.h"

namespace fs = std::filesystem;

namespace test {
namespace {

using FW::ZAMO_IPTABLES_MODULES;
using FW::ZAMOFW;
using FW::ZAMOFW_PROFILE;
using Answers = std::map<std::string, FW::FW_POLICY>;
using Lines = std::vector<std::string>;

constexpr const char* kModuleNote = "/tmp/iptables_serv_mod_list";

// One word of a command, as whatever type an operation takes: '' is the empty text, NULL no text.
struct Word {
    std::string text;

    operator std::string() const { return text; }
    operator const char*() const { return text == "NULL" ? nullptr : text.c_str(); }
    operator bool() const { return text == "true"; }
    operator int() const { return std::stoi(text); }
    operator FW::FW_POLICY() const { return parsePolicy(text); }
};

// A command's arguments: single words, or all from one on as they stand.
class Arguments {
  public:
    explicit Arguments(const std::string& text) {
        boost::split(words_, text, boost::is_any_of(" "));
    }
    Word word(std::size_t index) const {
        return {words_.at(index) == "''" ? "" : words_.at(index)};
    }
    std::string from(std::size_t index) const {
        return boost::join(Lines(words_.begin() + static_cast<long>(index), words_.end()), " ");
    }
    fs::path path() const {
        return words_[0].rfind("store/", 0) == 0 ? kStore + words_[0].substr(6) : words_[0];
    }

  private:
    Lines words_;
};

using Operation = std::function<std::string(const Arguments&)>;

std::string show(bool result) { return result ? "true\n" : "false\n"; }
std::string show(int result) { return std::to_string(result) + "\n"; }
std::string show(const std::string& text) { return (text.empty() ? "''" : text) + "\n"; }
std::string show(const Lines& lines) { return "[" + boost::join(lines, "|") + "]\n"; }
std::string show(const Json::Value& value) { return Json::FastWriter().write(value); }
std::string show(const Answers& answers) {
    std::string text;
    for (const auto& [adapter, policy] : answers) {
        text += " " + adapter + "=" + policyText(policy);
    }
    return text + "\n";
}

template <typename Function, std::size_t... indexes>
Operation bindWords(Function function, std::index_sequence<indexes...>) {
    return [function](const Arguments& a) { return show(function(a.word(indexes)...)); };
}

// Operations whose arguments are all words.
template <typename... Parameters>
Operation call(int (*function)(Parameters...)) {
    return bindWords(function, std::index_sequence_for<Parameters...>());
}
template <typename Object, typename Result, typename... Parameters>
Operation call(Result (Object::*member)(Parameters...)) {
    return bindWords([member](Parameters... words) { return (Object().*member)(words...); },
                     std::index_sequence_for<Parameters...>());
}

// One that fills something and needs no words.
template <typename Output, typename Object>
Operation fill(bool (Object::*member)(Output&)) {
    return [member](const Arguments&) {
        Output output{};
        const bool result = (Object().*member)(output);
        return show(result) + (result ? show(output) : "");
    };
}

std::string profileText(const Arguments& a) {
    FW::FWPROFILE profile;
    if (!ZAMOFW_PROFILE().profileGet(a.word(0), profile)) {
        return "false\n";
    }
    std::string text = profile.name + ":" + show(profile.adapterPolicyMap);
    for (const auto& [adapter, rules] : profile.rules) {
        for (const FW::FWRULE& rule : rules) {
            text += adapter + ": " + ruleText(rule) + "\n";
        }
    }
    return text;
}

// FILE NAME [ADAPTER=POLICY ...]: writes a profile without rules.
std::string writeProfileFile(const Arguments& a) {
    FW::FWPROFILE profile;
    profile.name = a.word(1).text;
    Lines policies;
    const std::string text = a.from(2);
    boost::split(policies, text, boost::is_any_of(" "));
    for (const std::string& entry : policies) {
        const std::size_t equals = entry.find('=');
        if (equals != std::string::npos) {
            profile.adapterPolicyMap[entry.substr(0, equals)] =
                parsePolicy(entry.substr(equals + 1));
        }
    }
    writeProfile(a.path().filename(), profile);
    return "";
}

// FILE ADAPTER RULE: appends a rule to a profile's file.
std::string writeRule(const Arguments& a) {
    FW::FWPROFILE profile;
    if (!ZAMOFW_PROFILE().jsonToProfile(json(readFile(a.path())), profile)) {
        return "no profile\n";
    }
    profile.rules[a.word(1)].push_back(parseRule(a.from(2)));
    writeProfile(a.path().filename(), profile);
    return "";
}

// In place of whatever has the name.
std::string makeDirectory(const Arguments& a) {
    fs::remove_all(a.path());
    fs::create_directories(a.path());
    return "";
}

std::string showFile(const Arguments& a) {
    const std::string text = readFile(a.path());
    return a.path().extension() == ".json" ? show(json(text)) : text;
}

std::string failEvents(const Arguments& a) {
    const std::string text = a.from(0);
    platform().fails = [text](const std::string& event) {
        return !text.empty() && event.find(text) != std::string::npos;
    };
    return "";
}

// From the event on no lock of the settings can be opened.
std::string breakLocks(const Arguments& a) {
    platform().onEvent = [text = a.from(0)](const std::string& event) {
        if (event.find(text) != std::string::npos) {
            fs::remove_all("/run/lock/firewall");
            fs::create_directories("/run/lock/firewall/firewall_settings.json.lock");
        }
    };
    return "";
}

std::string lastError(const Arguments&) {
    const int code = VLIBCErrGet();
    VLIBCErrSetEx(0, "", 0);
    return show(code);
}

// ADAPTER PORT [some] [source] [tcp|udp|both]
std::string askPort(const Arguments& a) {
    const FW::FWRULE query = parseRule("allow ports " + a.from(1));
    Answers answers;
    const bool result = ZAMOFW().fwPortIsBlocked(
        {query.portDirect, query.protocol, query.portList[0]}, a.word(0), answers);
    return show(result) + show(answers);
}

std::string askService(const Arguments& a) {
    Answers answers;
    const bool result = ZAMOFW().fwServIsBlocked(a.word(0), a.word(1), answers);
    return show(result) + show(answers);
}

// NAME RULE: stores a profile with this rule on two adapters.
std::string setProfile(const Arguments& a) {
    FW::FWPROFILE profile;
    profile.name = a.word(0).text;
    profile.rules = {{"eth0", {parseRule(a.from(1))}}, {"global", {parseRule(a.from(1))}}};
    profile.adapterPolicyMap = {{"eth1", FW::FW_POLICY_DENY}, {"global", FW::FW_POLICY_DENY}};
    return show(ZAMOFW_PROFILE().profileSet(a.word(0), profile));
}

std::string createTrial(const Arguments& a) {
    FW::FWPROFILE profile;
    profile.rules["eth0"] = {parseRule(a.from(1))};
    return show(ZAMOFW_PROFILE().CreateTestProfile(a.word(0), profile));
}

// FILE HEX: writes bytes.
std::string writeBytes(const Arguments& a) {
    writeFile(a.path(), boost::algorithm::unhex(a.from(1)));
    return "";
}

// COUNTRY 4|6: its ranges.
std::string countryRanges(const Arguments& a) {
    Json::Value ranges;
    const bool result = FW::FW_GEOIP().countryIPGet(a.word(0), a.word(1).text == "6", ranges);
    return show(result) + (result ? show(ranges) : "");
}

// 4|6 COUNTRY...: those with data.
std::string sanctify(const Arguments& a) {
    Lines countries;
    const std::string words = a.from(1);
    if (!words.empty()) {
        boost::split(countries, words, boost::is_any_of(" "));
    }
    Lines usable;
    const bool result = FW::FW_GEOIP().geoipSanctify(countries, a.word(0).text == "6", usable);
    return show(result) + show(usable);
}

std::string listCountries(const Arguments&) {
    Lines countries;
    const bool result = FW::FW_GEOIP().countryEnum(countries);
    std::sort(countries.begin(), countries.end());
    return show(result) + show(countries);
}

std::string listAdapters(const Arguments&) {
    std::set<std::string> adapters = {"kept"};
    const bool result = ZAMOFW().fwAdapterEnum(adapters);
    return show(result) + show(Lines(adapters.begin(), adapters.end()));
}

// FILE KEY: a value in a key/value file.
std::string getValue(const Arguments& a) {
    std::array<char, 16> value = {'x'};
    const int length = VLIBCFileGetKeyValue(a.path().c_str(), a.word(1), value.data(), 16, 0);
    return show(length) + (length < 0 ? "" : show(std::string("[") + value.data() + "]"));
}

// FILE KEY VALUE; "~" in the key and the value stands for a line feed.
std::string setValue(const Arguments& a) {
    const std::string key = boost::replace_all_copy(a.word(1).text, "~", "\n");
    const std::string value = boost::replace_all_copy(a.from(2), "~", "\n");
    const int result = VLIBCFileSetKeyValue(a.path().c_str(), key.c_str(), value.c_str(), 0);
    return result < 0 ? "refused\n" : showFile(a);
}

const std::map<std::string, Operation> kOperations = {
    {"file", [](const Arguments& a) { return writeFile(a.path(), a.from(1) + "\n"), ""; }},
    {"mkdir", makeDirectory},
    {"rm", [](const Arguments& a) { return fs::remove_all(a.path()), ""; }},
    {"bytes", writeBytes},
    {"ls", [](const Arguments& a) { return show(namesIn(a.path())); }},
    {"show", showFile},
    {"profile", writeProfileFile},
    {"rule", writeRule},
    {"rules", profileText},
    {"fail", failEvents},
    {"breakLocks", breakLocks},
    {"interfacesFail", [](const Arguments&) { return platform().interfacesFail = true, ""; }},
    {"lastError", lastError},
    {"getValue", getValue},
    {"setValue", setValue},
    {"fwEnable", call(&ZAMOFW::fwEnable)},
    {"fwDisable", call(&ZAMOFW::fwDisable)},
    {"fwReset", call(&ZAMOFW::fwReset)},
    {"fwReload", call(&ZAMOFW::fwReload)},
    {"fwUpdate", call(&ZAMOFW::fwUpdate)},
    {"fwClear", call(&ZAMOFW::fwClear)},
    {"cmdExec", [](const Arguments& a) { return show(ZAMOFW().cmdExec(a.from(0))); }},
    {"fwExec", [](const Arguments& a) { return show(ZAMOFW().fwExec(json(a.from(0)))); }},
    {"fwAdapterEnum", listAdapters},
    {"fwStatus", fill(&ZAMOFW::fwStatus)},
    {"fwProfileConfigGet", fill(&ZAMOFW::fwProfileConfigGet)},
    {"fwProfileConfigSet", call(&ZAMOFW::fwProfileConfigSet)},
    {"configGet", fill(&ZAMOFW::configGet)},
    {"configSet", [](const Arguments& a) { return show(ZAMOFW().configSet(json(a.from(0)))); }},
    {"fwPortIsBlocked", askPort},
    {"fwServIsBlocked", askService},
    {"tryProfile", call(static_cast<bool (ZAMOFW::*)(std::string)>(&ZAMOFW::TestApplyingProfile))},
    {"tryProfileFor", call(static_cast<bool (ZAMOFW::*)(std::string, const std::string&)>(
                          &ZAMOFW::TestApplyingProfile))},
    {"profileEnum", fill<Lines, ZAMOFW_PROFILE>(&ZAMOFW_PROFILE::profileEnum)},
    {"profileEnumAll",
     [](const Arguments&) {
         std::map<std::string, FW::FWPROFILE> profiles;
         const bool result = ZAMOFW_PROFILE().profileEnum(profiles);
         return show(result) + show(static_cast<int>(profiles.size()));
     }},
    {"profileMetaCreate", fill(&FW::ZAMOFW_JSON_DB::profileMetaCreate)},
    {"profilePathGet", call(&FW::ZAMOFW_JSON_DB::profilePathGet)},
    {"profileDbLoad",
     [](const Arguments& a) {
         Json::Value document;
         return show(ZAMOFW_PROFILE().profileDbLoad(a.word(0), document));
     }},
    {"profileSet", setProfile},
    {"profileExist", call(&ZAMOFW_PROFILE::profileExist)},
    {"profileCreate", call(&ZAMOFW_PROFILE::profileCreate)},
    {"profileRename", call(&ZAMOFW_PROFILE::profileRename)},
    {"profileDelete", call(&ZAMOFW_PROFILE::profileDelete)},
    {"profileAddServToReserve", call(&ZAMOFW_PROFILE::profileAddServToReserve)},
    {"profileRemoveServ", call(&ZAMOFW_PROFILE::profileRemoveServ)},
    {"profileChangeAdapter", call(&ZAMOFW_PROFILE::profileChangeAdapter)},
    {"CreateTestProfile", createTrial},
    {"AdoptTestProfile", call(&ZAMOFW_PROFILE::AdoptTestProfile)},
    {"RemoveTestProfile", call(&ZAMOFW_PROFILE::RemoveTestProfile)},
    {"countryIPGet", countryRanges},
    {"geoipSanctify", sanctify},
    {"countryEnum", listCountries},
    {"exportConfig", fill(&FW::ZAMOFW_JSON_DB::exportConfig)},
    {"importConfig",
     [](const Arguments& a) { return show(ZAMOFW_PROFILE().importConfig(json(a.from(0)))); }},
    {"isModuleLoad",
     [](const Arguments& a) { return show(ZAMO_IPTABLES_MODULES::isModuleLoad(a.from(0))); }},
    {"moduleInsert",
     [](const Arguments& a) {
         return show(ZAMO_IPTABLES_MODULES::moduleInsert(a.word(0), {a.word(1)}));
     }},
    {"iptablesModListGet",
     [](const Arguments& a) {
         Lines modules = {"old"};
         const bool result = ZAMO_IPTABLES_MODULES::iptablesModListGet(a.word(0), modules);
         return show(result) + show(modules);
     }},
    {"ZAMOIptablesCodeModeLoad", call(ZAMOIptablesCodeModeLoad)},
    {"ZAMOIptablesCoreModUnload", call(ZAMOIptablesCoreModUnload)},
    {"ZAMOIptablesNATModLoad", call(ZAMOIptablesNATModLoad)},
    {"ZAMOIptablesNATModUnload", call(ZAMOIptablesNATModUnload)},
    {"ZAMOFwRuleHup", call(ZAMOFwRuleHup)},
    {"ZAMOFwReset", [](const Arguments&) { return ZAMOFwReset(), ""; }},
    {"VLIBFwServRemoveRec", call(VLIBFwServRemoveRec)},
    {"VLIBFwChangeAdatper", call(VLIBFwChangeAdatper)},
    {"ZAMOFwPortsCheckAllowByAdapter", call(ZAMOFwPortsCheckAllowByAdapter)},
    {"VLIBFwRuleReserveServInsert", call(VLIBFwRuleReserveServInsert)},
};

Lines guard(const std::string& policy, const std::string& edit) {
    Lines lines;
    for (const std::string program : {"/sbin/iptables", "/sbin/ip6tables"}) {
        lines.push_back(program + " --policy INPUT " + policy);
        lines.push_back(program + " --policy FORWARD " + policy);
        lines.push_back(program + " " + edit +
                        " FIREWALL_RELOADING -m state --state ESTABLISHED,RELATED -j ACCEPT");
    }
    return lines;
}

const std::map<std::string, Lines> kKnownRuns = {
    {"close the policies", guard("DROP", "-A")},
    {"open the policies", guard("ACCEPT", "-D")},
    {"flush the chains",
     {"/sbin/iptables -F INPUT_FIREWALL", "/sbin/ip6tables -F INPUT_FIREWALL",
      "/sbin/iptables -F FORWARD_FIREWALL", "/sbin/ip6tables -F FORWARD_FIREWALL"}},
};

bool isRuleEvent(const std::string& event) {
    return event.rfind("tool ", 0) == 0 || event.find(" -A INPUT_FIREWALL ") != std::string::npos ||
           event.find(" -A FORWARD_FIREWALL ") != std::string::npos;
}

// Cuts the next thing to show off the events.
std::string takeEvent(Lines& events) {
    for (const auto& [name, run] : kKnownRuns) {
        if (events.size() >= run.size() && std::equal(run.begin(), run.end(), events.begin())) {
            events.erase(events.begin(), events.begin() + static_cast<long>(run.size()));
            return name;
        }
    }
    const auto end = std::find_if_not(events.begin(), events.end(), isRuleEvent);
    const long rules = end - events.begin();
    std::string text = rules > 1 ? std::to_string(rules) + " rule events, the last: " + *(end - 1)
                                 : events.front();
    events.erase(events.begin(), rules > 1 ? end : events.begin() + 1);
    return text;
}

std::string takeEvents() {
    Lines events;
    events.swap(platform().events);
    std::string text;
    while (!events.empty()) {
        text += "> " + takeEvent(events) + "\n";
    }
    return text;
}

}  // namespace

std::string Session::runFailingAtEach(const std::string& command) {
    const std::string settings = readFile(kSettings);
    const std::string note = readFile(kModuleNote);
    std::string text;
    std::string failed = "none yet";
    for (std::size_t failing = 1; !failed.empty(); ++failing) {
        std::size_t seen = 0;
        failed.clear();
        platform().fails = [&](const std::string& event) {
            return ++seen == failing && !(failed = event).empty();
        };
        writeFile(kSettings, settings);
        writeFile(kModuleNote, note);
        const std::string outcome = run(command);
        text += (failed.empty() ? "-- nothing fails" : "-- " + failed) + "\n" + outcome;
    }
    platform().fails = nullptr;
    return text;
}

// "{a*3}" -> "aaa"
std::string expanded(std::string text) {
    static const std::regex form("\\{([^{}*]+)\\*(\\d+)\\}");
    for (std::smatch parts; std::regex_search(text, parts, form);) {
        std::string times;
        for (int i = 0; i < std::stoi(parts[2]); ++i) {
            times += parts[1];
        }
        text = parts.prefix().str() + times + parts.suffix().str();
    }
    return text;
}

std::string Session::run(const std::string& text) {
    const std::string command = expanded(text);
    const std::size_t blank = command.find(' ');
    if (command.substr(0, blank) == "failEach") {
        return runFailingAtEach(command.substr(blank + 1));
    }
    const auto operation = kOperations.find(command.substr(0, blank));
    if (operation == kOperations.end()) {
        return "unknown command\n";
    }
    std::string outcome;
    try {
        outcome = operation->second(
            Arguments(blank == std::string::npos ? "" : command.substr(blank + 1)));
    } catch (const boost::interprocess::interprocess_exception&) {
        outcome = "throws\n";
    }
    outcome += takeEvents();
    for (const std::string& line : log_.take()) {
        outcome += "! " + boost::replace_all_copy(line, "\n", "\\n") + "\n";
    }
    return outcome;
}

}  // namespace test
