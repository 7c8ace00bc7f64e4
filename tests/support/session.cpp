#include "tests/support/session.h"

#include <json/writer.h>
#include <zamo/core.h>

#include <boost/algorithm/hex.hpp>
#include <boost/algorithm/string.hpp>
#include <boost/interprocess/exceptions.hpp>
#include <filesystem>
#include <functional>
#include <map>
#include <utility>

#include "tests/support/fakePlatform.h"
#include "tests/support/lineText.h"
#include "tests/support/ruleText.h"
#include "tests/support/store.h"
#include "zamofirewall/zamofirewall.h"

namespace fs = std::filesystem;

namespace test {
namespace {

using FW::FWPROFILE;
using FW::ZAMO_IPTABLES_MODULES;
using FW::ZAMOFW;
using FW::ZAMOFW_JSON_DB;
using FW::ZAMOFW_PROFILE;
using Answers = std::map<std::string, FW::FW_POLICY>;
using Texts = std::vector<std::string>;

FWPROFILE parseProfile(const std::string& text);

// A part of a command, as whatever type an operation takes. '' is the empty text, NULL no text.
struct Word {
    std::string text;

    operator std::string() const { return text; }
    operator const char*() const { return text == "NULL" ? nullptr : text.c_str(); }
    operator Texts() const { return {text}; }
    operator Json::Value() const { return json(text); }
    operator FWPROFILE() const { return parseProfile(text); }
    operator bool() const { return text == "true"; }
    operator int() const { return std::stoi(text); }
    operator FW::FW_POLICY() const { return parsePolicy(text); }
};

// A command's arguments: single words, or all from one on as they stand.
class Arguments {
  public:
    explicit Arguments(const std::string& text) : words_(split(text, " ")) {}
    Word word(std::size_t index) const {
        const std::string& word = words_.at(index);
        return {word == "''" ? "" : word};
    }
    // The last part takes the rest.
    Word part(std::size_t index, std::size_t count) const {
        return index + 1 < count || from(index) == "''" ? word(index) : Word{from(index)};
    }
    Texts wordsFrom(std::size_t index) const {
        const auto begin = words_.begin() + static_cast<long>(std::min(index, words_.size()));
        return words_[0].empty() ? Texts() : Texts(begin, words_.end());
    }
    std::string from(std::size_t index) const { return boost::join(wordsFrom(index), " "); }
    fs::path path() const {
        return words_[0].rfind("store/", 0) == 0 ? kStore + words_[0].substr(6) : words_[0];
    }

  private:
    Texts words_;
};

using Operation = std::function<std::string(const Arguments&)>;

std::string show(bool result) { return result ? "true" : "false"; }
std::string show(int result) { return std::to_string(result); }
std::string show(const std::string& text) { return text.empty() ? "''" : text; }
template <typename List>
std::string showList(const List& texts) {
    return "[" + boost::join(texts, "|") + "]";
}
std::string show(const Texts& texts) { return showList(texts); }
std::string show(const std::set<std::string>& texts) { return showList(texts); }
std::string show(const Json::Value& value) {
    return boost::trim_right_copy(Json::FastWriter().write(value));
}
std::string show(const Answers& answers) {
    std::string text;
    for (const auto& [adapter, policy] : answers) {
        text += " " + adapter + "=" + policyText(policy);
    }
    return boost::trim_left_copy(text);
}
std::string show(const FWPROFILE& profile) {
    std::string text = profile.name + ": " + show(profile.adapterPolicyMap);
    for (const auto& [adapter, rules] : profile.rules) {
        for (const FW::FWRULE& rule : rules) {
            text += " | " + adapter + " " + ruleText(rule);
        }
    }
    return text;
}
std::string show(const std::map<std::string, FWPROFILE>& profiles) {
    return std::to_string(profiles.size());
}
template <typename Output>
std::string show(bool result, const Output& output) {
    return show(result) + " " + show(output);
}

template <typename Function, std::size_t... indexes>
Operation bindParts(Function function, std::index_sequence<indexes...>) {
    return [function](const Arguments& a) {
        return show(function(a.part(indexes, sizeof...(indexes))...));
    };
}
template <typename Result, typename... Parameters>
Operation call(Result (*function)(Parameters...)) {
    return bindParts(function, std::index_sequence_for<Parameters...>());
}
template <typename Object, typename Result, typename... Parameters>
Operation call(Result (Object::*member)(Parameters...)) {
    return bindParts([member](Parameters... parts) { return (Object().*member)(parts...); },
                     std::index_sequence_for<Parameters...>());
}

// One that fills something. When it fails, only what it changed of `before` is shown.
template <typename Output, typename Function>
Operation fill(Function function, const Output& before) {
    return [function, before](const Arguments& a) {
        Output output = before;
        if (function(a, output)) {
            return show(true, output);
        }
        const bool isKept = show(before) == show(Output()) || show(before) == show(output);
        return isKept ? show(false) : show(false, output);
    };
}
template <typename Output, typename Object>
Operation fill(bool (Object::*member)(Output&), const Output& before = {}) {
    return fill([member](const Arguments&, Output& output) { return (Object().*member)(output); },
                before);
}
template <typename Output, typename Object>
Operation fill(bool (Object::*member)(const std::string&, Output&)) {
    return fill([member](const Arguments& a,
                         Output& output) { return (Object().*member)(a.word(0), output); },
                Output());
}

// A command that shows nothing.
template <typename Action>
Operation prepare(Action action) {
    return [action](const Arguments& a) { return action(a), ""; };
}

// "home eth0=deny global=none, eth0 allow ports 22, deny any": a name, policies, and rules, of
// which those without an adapter are for that of the one before.
FWPROFILE parseProfile(const std::string& text) {
    FWPROFILE profile;
    Texts parts = split(text, ", ");
    for (const std::string& word : split(parts[0], " ")) {
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos) {
            profile.name += word;
        } else {
            profile.adapterPolicyMap[word.substr(0, equals)] = parsePolicy(word.substr(equals + 1));
        }
    }
    std::string adapter;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        std::string first = parts[i].substr(0, parts[i].find(' '));
        if (!isFirstWordOfRule(first)) {
            adapter.swap(first);
            parts[i].erase(0, adapter.size() + 1);
        }
        profile.rules[adapter].push_back(parseRule(parts[i]));
    }
    return profile;
}

void startAnew(const Arguments& a) {
    clearHost();
    platform().interfaces = a.wordsFrom(0);
}

// In place of whatever has the name.
void makeDirectory(const Arguments& a) {
    fs::remove_all(a.path());
    fs::create_directories(a.path());
}

void failEvents(const Arguments& a) {
    platform().fails = [text = a.from(0)](const std::string& event) {
        return !text.empty() && event.find(text) != std::string::npos;
    };
}

// From the event on no lock of the settings can be opened.
void breakLocks(const Arguments& a) {
    platform().onEvent = [text = a.from(0)](const std::string& event) {
        if (event.find(text) != std::string::npos) {
            makeDirectory(Arguments("/run/lock/firewall"));
            makeDirectory(Arguments("/run/lock/firewall/firewall_settings.json.lock"));
        }
    };
}

// INTERFACE ANSWER, where "\n" is a line feed
void setRouter(const Arguments& a) {
    platform().routers[a.word(0)] = boost::replace_all_copy(a.part(1, 2).text, "\\n", "\n");
}

std::string showFile(const Arguments& a) {
    const std::string text = readFile(a.path());
    return a.path().extension() == ".json" ? show(json(text)) : boost::trim_right_copy(text);
}

std::string showLastError(const Arguments&) {
    const int code = VLIBCErrGet();
    VLIBCErrSetEx(0, "", 0);
    return show(code);
}

// The answers that the next question finds.
Answers answersBefore;

void setAnswers(const Arguments& a) { answersBefore = parseProfile(a.from(0)).adapterPolicyMap; }

// ADAPTER PORT [source] [tcp|udp|both]
std::string askPort(const Arguments& a) {
    const FW::FWRULE query = parseRule("allow ports " + a.from(1));
    Answers answers = std::move(answersBefore);
    const bool result = ZAMOFW().fwPortIsBlocked(
        {query.portDirect, query.protocol, query.portList.at(0)}, a.word(0), answers);
    return result ? show(result, answers) : show(result);
}

std::string askService(const Arguments& a) {
    Answers answers = std::move(answersBefore);
    const bool result = ZAMOFW().fwServIsBlocked(a.word(1), a.word(0), answers);
    return result ? show(result, answers) : show(result);
}

// The usual lines are shown only for no profile.
std::string translate(bool established, const std::string& client, const std::string& text) {
    const FWPROFILE profile = parseProfile(text);
    Json::Value lines;
    const bool result = FW::ZAMOFW_IPTABLES_RULES().fwRulesToIptablesRules(
        established, profile.rules, profile.adapterPolicyMap, lines, client);
    Json::Value usual;
    if (established || !text.empty()) {
        (void)FW::ZAMOFW_IPTABLES_RULES().fwRulesToIptablesRules(false, {}, {}, usual);
    }
    platform().events.clear();
    return show(result) + lineText(lines, usual);
}

// A rule of eth0: its lines alone.
std::string translateRule(const Arguments& a) {
    const std::string text = translate(false, "", ", eth0 " + a.from(0));
    return text == "true" ? "no line" : boost::erase_first_copy(text, "true | eth0 / ");
}

std::string countryRanges(const Arguments& a) {
    Json::Value ranges;
    std::string text = show(FW::FW_GEOIP().countryIPGet(a.word(0), a.word(1).text == "6", ranges));
    for (const Json::Value& range : ranges) {
        text += " | " + range["ip_begin"].asString() + "-" + range["ip_end"].asString();
    }
    return text;
}

std::string usableCountries(const Arguments& a) {
    Texts usable;
    const bool result = FW::FW_GEOIP().geoipSanctify(a.wordsFrom(1), a.word(0).text == "6", usable);
    return show(result, usable);
}

std::string listCountries(const Arguments&) {
    Texts countries;
    const bool result = FW::FW_GEOIP().countryEnum(countries);
    std::sort(countries.begin(), countries.end());
    return show(result, countries);
}

bool jsonToProfile(const Arguments& a, FWPROFILE& profile) {
    return ZAMOFW_JSON_DB().jsonToProfile(json(a.from(0)), profile);
}

bool listModules(const Arguments& a, Texts& modules) {
    return ZAMO_IPTABLES_MODULES::iptablesModListGet(a.word(0), modules);
}

const std::map<std::string, Operation> kOperations = {
    {"anew", prepare(startAnew)},
    {"file", prepare([](const Arguments& a) { writeFile(a.path(), a.from(1)); })},
    {"settings", prepare([](const Arguments& a) { writeFile(kSettings, a.from(0)); })},
    {"bytes",
     prepare([](const Arguments& a) { writeFile(a.path(), boost::algorithm::unhex(a.from(1))); })},
    {"mkdir", prepare(makeDirectory)},
    {"rm", prepare([](const Arguments& a) { fs::remove_all(a.path()); })},
    {"profile", prepare([](const Arguments& a) {
         writeProfile(a.word(0).text + ".json", parseProfile(a.from(1)));
     })},
    {"fail", prepare(failEvents)},
    {"breakLocks", prepare(breakLocks)},
    {"interfacesFail", prepare([](const Arguments&) { platform().interfacesFail = true; })},
    {"pppoe", prepare([](const Arguments& a) { platform().pppoe = a.from(0); })},
    {"pppoeFails", prepare([](const Arguments&) { platform().pppoeFails = true; })},
    {"router", prepare(setRouter)},
    {"ls", [](const Arguments& a) { return show(namesIn(a.path())); }},
    {"show", showFile},
    {"lastError", showLastError},
    {"answers", prepare(setAnswers)},
    {"fwEnable", call(&ZAMOFW::fwEnable)},
    {"fwDisable", call(&ZAMOFW::fwDisable)},
    {"fwReset", call(&ZAMOFW::fwReset)},
    {"fwReload", call(&ZAMOFW::fwReload)},
    {"fwUpdate", call(&ZAMOFW::fwUpdate)},
    {"fwClear", call(&ZAMOFW::fwClear)},
    {"cmdExec", call(&ZAMOFW::cmdExec)},
    {"fwExec", call(&ZAMOFW::fwExec)},
    {"fwAdapterEnum", fill(&ZAMOFW::fwAdapterEnum, {"kept"})},
    {"fwStatus", fill(&ZAMOFW::fwStatus)},
    {"fwProfileConfigGet", fill(&ZAMOFW::fwProfileConfigGet)},
    {"fwProfileConfigSet", call(&ZAMOFW::fwProfileConfigSet)},
    {"configGet", fill(&ZAMOFW::configGet)},
    {"configSet", call(&ZAMOFW::configSet)},
    {"fwPortIsBlocked", askPort},
    {"fwServIsBlocked", askService},
    {"tryProfile", call<ZAMOFW, bool, std::string>(&ZAMOFW::TestApplyingProfile)},
    {"tryProfileFor",
     call<ZAMOFW, bool, std::string, const std::string&>(&ZAMOFW::TestApplyingProfile)},
    {"translate", [](const Arguments& a) { return translate(false, "", a.from(0)); }},
    {"lines", translateRule},
    {"translateFor", [](const Arguments& a) { return translate(a.word(0), a.word(1), a.from(2)); }},
    {"profileEnum", fill<Texts, ZAMOFW_PROFILE>(&ZAMOFW_PROFILE::profileEnum)},
    {"countProfiles",
     fill<std::map<std::string, FWPROFILE>, ZAMOFW_PROFILE>(&ZAMOFW_PROFILE::profileEnum)},
    {"profileMetaCreate", fill(&ZAMOFW_JSON_DB::profileMetaCreate)},
    {"profilePathGet", call(&ZAMOFW_JSON_DB::profilePathGet)},
    {"profileDbLoad", fill(&ZAMOFW_JSON_DB::profileDbLoad)},
    {"jsonToProfile", fill(jsonToProfile, FWPROFILE())},
    {"profileGet", fill(&ZAMOFW_PROFILE::profileGet)},
    {"profileSet", call(&ZAMOFW_PROFILE::profileSet)},
    {"profileExist", call(&ZAMOFW_PROFILE::profileExist)},
    {"profileCreate", call(&ZAMOFW_PROFILE::profileCreate)},
    {"profileRename", call(&ZAMOFW_PROFILE::profileRename)},
    {"profileDelete", call(&ZAMOFW_PROFILE::profileDelete)},
    {"profileAddServToReserve", call(&ZAMOFW_PROFILE::profileAddServToReserve)},
    {"profileRemoveServ", call(&ZAMOFW_PROFILE::profileRemoveServ)},
    {"profileChangeAdapter", call(&ZAMOFW_PROFILE::profileChangeAdapter)},
    {"CreateTestProfile", call(&ZAMOFW_PROFILE::CreateTestProfile)},
    {"AdoptTestProfile", call(&ZAMOFW_PROFILE::AdoptTestProfile)},
    {"RemoveTestProfile", call(&ZAMOFW_PROFILE::RemoveTestProfile)},
    {"countryIPGet", countryRanges},
    {"geoipSanctify", usableCountries},
    {"countryEnum", listCountries},
    {"exportConfig", fill(&ZAMOFW_JSON_DB::exportConfig)},
    {"importConfig", call(&ZAMOFW_JSON_DB::importConfig)},
    {"isModuleLoad", call(ZAMO_IPTABLES_MODULES::isModuleLoad)},
    {"moduleInsert", call(ZAMO_IPTABLES_MODULES::moduleInsert)},
    {"iptablesModListGet", fill(listModules, Texts{"old"})},
    {"ZAMOIptablesCodeModeLoad", call(ZAMOIptablesCodeModeLoad)},
    {"ZAMOIptablesCoreModUnload", call(ZAMOIptablesCoreModUnload)},
    {"ZAMOIptablesNATModLoad", call(ZAMOIptablesNATModLoad)},
    {"ZAMOIptablesNATModUnload", call(ZAMOIptablesNATModUnload)},
    {"ZAMOFwRuleHup", call(ZAMOFwRuleHup)},
    {"ZAMOFwReset", prepare([](const Arguments&) { ZAMOFwReset(); })},
    {"VLIBFwServRemoveRec", call(VLIBFwServRemoveRec)},
    {"VLIBFwChangeAdatper", call(VLIBFwChangeAdatper)},
    {"ZAMOFwPortsCheckAllowByAdapter", call(ZAMOFwPortsCheckAllowByAdapter)},
    {"VLIBFwRuleReserveServInsert", call(VLIBFwRuleReserveServInsert)},
};

}  // namespace

void clearHost() {
    clearFiles();
    clearPlatform();
    writeServices();
    writeModuleList();
}

Session::Session() { clearHost(); }

std::string Session::run(const std::string& commands) {
    Texts outcomes;
    for (const std::string& command : split(commands, "; ")) {
        const std::string outcome = runOne(command);
        if (!outcome.empty()) {
            outcomes.push_back(boost::replace_all_copy(outcome, kStore, "store/"));
        }
    }
    return boost::join(outcomes, "; ");
}

std::string Session::runOne(const std::string& command) {
    const std::size_t blank = command.find(' ');
    const Operation& operation = kOperations.at(command.substr(0, blank));
    std::string outcome;
    try {
        const Arguments arguments(blank == std::string::npos ? "" : command.substr(blank + 1));
        outcome = operation(arguments);
    } catch (const boost::interprocess::interprocess_exception&) {
        outcome = "throws";
    }
    outcome += eventText(platform().events);
    platform().events.clear();
    outcome += logText(log_.take());
    return boost::trim_copy(outcome);
}

}  // namespace test
