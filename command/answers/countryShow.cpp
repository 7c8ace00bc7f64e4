#include <json/value.h>

#include <boost/algorithm/string/case_conv.hpp>
#include <ostream>

#include "command/answers/countryAnswers.h"
#include "command/answers/systemNames.h"
#include "command/jsonLine.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"
#include "library/model/names.h"
#include "zamofirewall/geoip.h"

namespace zamofw {
namespace {

Json::Value rangesOf(const std::string& code, bool isV6) {
    Json::Value ranges(Json::arrayValue);
    Json::Value read(Json::arrayValue);
    (void)FW::FW_GEOIP().countryIPGet(code, isV6, read);
    for (const Json::Value& range : read) {
        Json::Value pair(Json::arrayValue);
        pair.append(range["ip_begin"]);
        pair.append(range["ip_end"]);
        ranges.append(pair);
    }
    return ranges;
}

std::string knownCode(const std::string& word) {
    const Vocabulary vocabulary = systemVocabulary();
    for (const std::string& code : {word, boost::algorithm::to_upper_copy(word)}) {
        if (vocabulary.countries.count(code) != 0) {
            return code;
        }
    }
    std::vector<std::string> codes;
    for (const auto& [code, families] : vocabulary.countries) {
        codes.push_back(code);
    }
    const std::string near = suggestion(word, codes);
    wrongUse("there is no data for a country " + shown(word) + (near.empty() ? "" : ": " + near),
             codes.empty() ? std::string("there is no country data in ") + FW::kCountryDirectory
                           : "`zamofw country list` shows the countries with data");
}

}  // namespace

Status countryShow(const Console& console, const std::string& word) {
    const std::string code = knownCode(word);
    const Vocabulary vocabulary = systemVocabulary();
    const std::set<int>& families = vocabulary.countries.at(code);
    Json::Value json(Json::objectValue);
    json["code"] = code;
    json["v4"] = families.count(4) != 0 ? rangesOf(code, false) : Json::Value(Json::arrayValue);
    json["v6"] = families.count(6) != 0 ? rangesOf(code, true) : Json::Value(Json::arrayValue);
    if (console.json) {
        console.out << jsonLine(json) << "\n";
        return Status::kDone;
    }
    for (const char* const family : {"v4", "v6"}) {
        for (const Json::Value& range : json[family]) {
            console.out << range[0].asString() << "-" << range[1].asString() << "\n";
        }
    }
    return Status::kDone;
}

}  // namespace zamofw
