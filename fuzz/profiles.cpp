// A profile document: how it is read, what a check finds, and what a sound one makes root do.

#include <json/value.h>

#include <cstring>
#include <sstream>

#include "command/document/profileRecord.h"
#include "command/plan/plan.h"
#include "fuzz/harness.h"
#include "zamofirewall/profileDatabase.h"

namespace {

constexpr const char* kOptions =
    " -t -A -i -o -s -d -p -m -j --sport --dport --sports --dports --src-range --dst-range "
    "--source-country --destination-country ";

// Every option that a rule may become, and no other: whatever its texts say, they stay values.
void requireKnownOptions(const std::string& line) {
    std::istringstream words(line);
    for (std::string option, value; words >> option;) {
        fuzz::require(std::strstr(kOptions, (" " + option + " ").c_str()) != nullptr,
                      "a rule has only its own options");
        fuzz::require(static_cast<bool>(words >> value), "an option has a value");
        fuzz::require(value[0] != '-', "a value is not an option");
    }
}

void requireSoundLines(const FW::FWPROFILE& profile) {
    const zamofw::Plan plan = zamofw::planOfAllAdapters(profile);
    for (const int family : {4, 6}) {
        for (const zamofw::PlannedLine& line : family == 4 ? plan.v4 : plan.v6) {
            if (line.kind != zamofw::LineKind::kBuiltIn) {
                requireKnownOptions(line.line);
            }
            zamofw::requireSayable(line, family);
        }
    }
}

}  // namespace

void fuzz::run(const std::string& text) {
    const zamofw::Document document = zamofw::readDocument(text, "fuzz.json");
    const zamofw::Findings findings = zamofw::checkProfile(document, context());
    requirePlaces(findings, text);
    require(!document.fault || zamofw::hasError(findings), "a syntax fault is an error");
    if (zamofw::hasError(findings)) {
        return;
    }
    require(zamofw::isReadByLibrary(document), "the library reads what has no error");
    const FW::FWPROFILE profile = zamofw::profileRecord(document);
    const zamofw::Document again = zamofw::readDocument(storedText(profile), "again.json");
    require(storedText(zamofw::profileRecord(again)) == again.text, "what is stored is read again");
    for (const auto& [adapter, rules] : profile.rules) {
        for (const FW::FWRULE& rule : rules) {
            requireSameWords(rule);
        }
    }
    requireSoundLines(profile);
}
