#include "command/document/countryCheck.h"

#include <algorithm>

#include "command/document/textCheck.h"

namespace zamofw {
namespace {

// What one geoip match takes; the library makes one match of the whole list.
constexpr std::size_t kMaxCountries = 15;

// The match turns small letters into capitals, which is then another file than the library's.
bool isCountryCode(std::string_view text) {
    return text.size() == 2 && std::all_of(text.begin(), text.end(), [](char c) {
               return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
           });
}

std::optional<Fault> countryFault(const RuleUnderCheck& rule,
                                  const std::string& code,
                                  const CheckContext& context) {
    if (std::optional<Fault> fault = entryFault("the country", code)) {
        return fault;
    }
    if (!isCountryCode(code)) {
        return Fault{"no-country-data",
                     quoted(code) + " is no country code",
                     "Write two capital letters, one country an entry: [ \"DE\", \"FR\" ]."};
    }
    std::string missing;
    for (const int family : {4, 6}) {
        if (rule.wants(family) && !context.hasCountry(code, family)) {
            missing += (missing.empty() ? "IPv" : " and IPv") + std::to_string(family);
        }
    }
    if (missing.empty()) {
        return std::nullopt;
    }
    return Fault{
        "no-country-data",
        "there is no " + missing + " data for " + quoted(code) +
            " here, so that the country drops out of the rule without a word",
        "Install the country's files in /usr/share/xt_geoip/, take the country out, or set "
        "`ipType` to the family that has data."};
}

}  // namespace

void checkCountries(const RuleUnderCheck& rule,
                    const CheckContext& context,
                    FindingList& findings) {
    const Span<Node> items = rule.members.items(field::kIpList);
    const Location list = rule.whereOf(field::kIpList);
    if (items.size() > kMaxCountries) {
        findings.error(rule.offsetOf(field::kIpList),
                       list,
                       {"too-many-countries",
                        "iptables takes at most " + std::to_string(kMaxCountries) +
                            " countries in one rule, and these are " + std::to_string(items.size()),
                        "Make several rules of it."});
    }
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (std::optional<Fault> fault =
                countryFault(rule, std::string(items[i].text()), context)) {
            findings.error(items[i].offset, {list, i}, std::move(*fault));
        }
    }
}

}  // namespace zamofw
