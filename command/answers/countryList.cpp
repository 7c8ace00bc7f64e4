#include <json/value.h>

#include <filesystem>
#include <ostream>

#include "command/answers/countryAnswers.h"
#include "command/answers/systemNames.h"
#include "command/answers/table.h"
#include "command/jsonLine.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

// The first and the last address of a range, in bytes. Reading the ranges of every country only to
// count them would take a second.
constexpr std::uintmax_t kIpv4Range = 8;
constexpr std::uintmax_t kIpv6Range = 32;

std::uint64_t rangeCount(const std::string& file, std::uintmax_t rangeSize) {
    std::error_code error;
    const std::uintmax_t size =
        std::filesystem::file_size(std::string(FW::kCountryDirectory) + file, error);
    return error ? 0 : size / rangeSize;
}

}  // namespace

Status countryList(const Console& console) {
    Json::Value json(Json::objectValue);
    json["countries"] = Json::Value(Json::arrayValue);
    std::vector<Row> rows;
    for (const auto& [code, families] : systemVocabulary().countries) {
        const std::uint64_t v4 = rangeCount(code + ".iv4", kIpv4Range);
        const std::uint64_t v6 = rangeCount(code + ".iv6", kIpv6Range);
        Json::Value entry(Json::objectValue);
        entry["code"] = code;
        entry["v4"] = static_cast<Json::UInt64>(v4);
        entry["v6"] = static_cast<Json::UInt64>(v6);
        json["countries"].append(entry);
        rows.push_back({code, std::to_string(v4), std::to_string(v6)});
    }
    if (console.json) {
        console.out << jsonLine(json) << "\n";
    } else if (rows.empty() && !console.quiet) {
        console.err << "there is no country data in " << FW::kCountryDirectory << "\n";
    } else {
        printTable(console, {"COUNTRY", "IPV4 RANGES", "IPV6 RANGES"}, rows);
    }
    return Status::kDone;
}

}  // namespace zamofw
