#include "fuzz/harness.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "zamofirewall/zamofirewall.h"

namespace fuzz {
namespace {

std::size_t charactersIn(const std::string& line) {
    std::size_t count = 0;
    for (const char byte : line) {
        count += (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U ? 1 : 0;
    }
    return count;
}

FW::FWPROFILE profileOf(const FW::FWRULE& rule) {
    FW::FWPROFILE profile;
    profile.rules["eth0"] = {rule};
    return profile;
}

}  // namespace

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text << std::flush;
    require(file.good(), "the file of the input can be written");
}

const zamofw::CheckContext& context() {
    static const zamofw::ServiceNames services = {{"ssh", "http", "off"}, {"off"}};
    static const zamofw::CheckContext result = {
        []() -> const zamofw::ServiceNames& { return services; },
        {"eth0", "global"},
        [](const std::string& code, int family) {
            return code == "DE" || (code == "LI" && family == 4);
        }};
    return result;
}

const zamofw::Vocabulary& vocabulary() {
    static const zamofw::Vocabulary result = {
        {{"ssh", FW::FW_PROTOCOL_TCP}, {"dns", FW::FW_PROTOCOL_UDP}, {"sip", FW::FW_PROTOCOL_BOTH}},
        {{"DE", {4, 6}}, {"LI", {4}}}};
    return result;
}

void requirePlaces(const zamofw::Findings& findings, const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text + '\n');
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    for (const zamofw::Finding& finding : findings) {
        require(finding.line >= 1 && finding.line <= lines.size(),
                "a finding's line is in the file");
        require(finding.column >= 1 && finding.column <= charactersIn(lines[finding.line - 1]) + 1,
                "a finding's column is in its line");
        require(!finding.message.empty() && !finding.remedy.empty(), "a finding says what to do");
    }
}

std::string storedText(const FW::FWPROFILE& profile) {
    Json::Value json;
    FW::ZAMOFW_JSON_DB().profileToJson(profile, json);
    return json.toStyledString();
}

void requireSameWords(const FW::FWRULE& rule) {
    if (const auto words = zamofw::wordsOfRule(rule, vocabulary())) {
        require(storedText(profileOf(zamofw::ruleFromWords(*words, vocabulary()))) ==
                    storedText(profileOf(rule)),
                "the words of a rule make it again");
    }
}

}  // namespace fuzz

// NOLINTNEXTLINE(readability-identifier-naming): the fuzzer calls it
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    fuzz::run(size == 0 ? "" : std::string(reinterpret_cast<const char*>(data), size));
    return 0;
}
