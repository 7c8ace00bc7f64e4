#include "command/document/addressCheck.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "command/document/countryCheck.h"
#include "command/document/textCheck.h"
#include "command/words/addresses.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {
namespace {

bool isNumberUpTo(const std::string& text, unsigned long limit) {
    if (text.empty() || text.find('-') != std::string::npos) {
        return false;
    }
    char* end = nullptr;
    errno = 0;
    const unsigned long number = std::strtoul(text.c_str(), &end, 0);
    return errno == 0 && end == text.c_str() + text.size() && number <= limit;
}

bool isDottedMask(const std::string& text) {
    std::size_t begin = 0;
    for (int part = 0; part < 4; ++part) {
        const std::size_t end = part == 3 ? text.size() : text.find('.', begin);
        if (end == std::string::npos || !isNumberUpTo(text.substr(begin, end - begin), 255)) {
            return false;
        }
        begin = end + 1;
    }
    return true;
}

std::string familyName(int family) {
    return family == 4 ? "IPv4" : "IPv6";
}

// "192.168.1.0/24": how a network or a range in one text is to be written, if it is one.
std::string splitRemedy(const std::string& text, char separator, const char* group) {
    const std::size_t at = text.find(separator);
    if (at == std::string::npos || !parseAddress(text.substr(0, at))) {
        return {};
    }
    return std::string("Write it as two entries, \"") + text.substr(0, at) + "\", \"" +
           text.substr(at + 1) + "\", and `ipGroup` " + group + '.';
}

Fault badAddress(const std::string& text) {
    std::string remedy = splitRemedy(text, '/', "1 (subnet)");
    if (!remedy.empty()) {
        return {"bad-address", quoted(text) + " is a network in one text", remedy};
    }
    remedy = splitRemedy(text, '-', "4 (range)");
    if (!remedy.empty()) {
        return {"bad-address", quoted(text) + " is a range in one text", remedy};
    }
    return {"bad-address",
            quoted(text) + " is neither an IPv4 nor an IPv6 address",
            "Write an address such as 192.168.1.10 or 2001:db8::1. Names are not looked up, and a "
            "number must not begin with a 0."};
}

std::optional<Fault> familyFault(const RuleUnderCheck& rule, const Address& address) {
    const auto type = rule.members.integer(field::kIpType);
    const std::string code = address.family == 4 ? "0 (IPv4)" : "1 (IPv6)";
    if (type == FW::FW_IP_TYPE_BOTH) {
        return Fault{"wrong-family",
                     "the rule is for both families, but the address is an " +
                         familyName(address.family) + " one, which " +
                         (address.family == 4 ? "ip6tables" : "iptables") + " refuses",
                     "Set `ipType` to " + code + '.'};
    }
    if (type && isCode(*type, ruleTable()[field::kIpType].codes) && !rule.wants(address.family)) {
        return Fault{"wrong-family",
                     "an " + familyName(address.family) + " address stands in an " +
                         familyName(10 - address.family) + " rule",
                     "Set `ipType` to " + code + ", or write an " +
                         familyName(10 - address.family) + " address."};
    }
    return std::nullopt;
}

// One rule's entries under check.
class EntryCheck {
  public:
    EntryCheck(const RuleUnderCheck& rule, FindingList& findings)
        : rule_(rule), items_(rule.members.items(field::kIpList)), findings_(findings) {}

    [[nodiscard]] bool has(std::size_t index) const { return index < items_.size(); }

    void report(std::size_t index, Fault fault) {
        const Location list = rule_.whereOf(field::kIpList);
        findings_.error(items_[index].offset, {list, index}, std::move(fault));
    }

    // The address at the index, if there is one that can be judged.
    std::optional<Address> address(std::size_t index) {
        if (!has(index)) {
            return std::nullopt;
        }
        const std::string text(items_[index].text());
        if (std::optional<Fault> fault = entryFault("the address", text)) {
            report(index, std::move(*fault));
            return std::nullopt;
        }
        const std::optional<Address> address = parseAddress(text);
        if (!address) {
            report(index, badAddress(text));
        }
        return address;
    }

    // False when it reported the address.
    bool checkFamily(std::size_t index, const Address& address) {
        std::optional<Fault> fault = familyFault(rule_, address);
        if (fault) {
            report(index, std::move(*fault));
        }
        return !fault;
    }

    void prefix(std::size_t index, const std::optional<Address>& address) {
        const std::string text(items_[index].text());
        if (std::optional<Fault> fault = entryFault("the prefix length", text)) {
            report(index, std::move(*fault));
        } else if (!isPrefixOrMask(text, address ? address->family : 0)) {
            report(index, prefixFault(text, address));
        }
    }

    // Reports a list that is too short.
    void atLeast(std::size_t count, const char* wanted) {
        if (items_.size() < count) {
            findings_.error(rule_.offsetOf(field::kIpList),
                            rule_.whereOf(field::kIpList),
                            {"missing-values",
                             std::string("`ipList` needs ") + wanted + ", but has " +
                                 (items_.empty() ? "no entry" : "one entry"),
                             "Add what is missing, or set `ipGroup` to 5 (every address)."});
        }
    }

    // Whether the first entry says the whole pair.
    [[nodiscard]] bool isPairInOne(char separator) const {
        return items_.size() == 1 &&
               !splitRemedy(std::string(items_[0].text()), separator, "").empty();
    }

  private:
    static Fault prefixFault(const std::string& text, const std::optional<Address>& address) {
        const bool isV6 = address && address->family == 6;
        return {"bad-prefix",
                quoted(text) + " is neither a prefix length nor a mask of an " +
                    (address ? familyName(address->family) : "IPv4 or IPv6") + " network",
                isV6 ? "Write a number from 0 to 128."
                     : "Write a number from 0 to 32, or a mask such as 255.255.255.0."};
    }

    const RuleUnderCheck& rule_;
    Span<Node> items_;
    FindingList& findings_;
};

void checkHost(EntryCheck& entries) {
    entries.atLeast(1, "an address");
    if (const auto address = entries.address(0)) {
        (void)entries.checkFamily(0, *address);
    }
}

void checkSubnet(EntryCheck& entries) {
    const auto address = entries.address(0);
    if (address) {
        (void)entries.checkFamily(0, *address);
    }
    if (entries.has(1)) {
        entries.prefix(1, address);
    } else if (!entries.isPairInOne('/')) {
        entries.atLeast(2, "the network's address and its prefix length or mask");
    }
}

void checkRange(EntryCheck& entries) {
    const auto first = entries.address(0);
    const auto last = entries.address(1);
    if (!entries.isPairInOne('-')) {
        entries.atLeast(2, "the first and the last address");
    }
    if (!first || !last) {
        for (std::size_t i = 0; i < 2; ++i) {
            const auto& end = i == 0 ? first : last;
            if (end) {
                (void)entries.checkFamily(i, *end);
            }
        }
        return;
    }
    if (first->family != last->family) {
        entries.report(1,
                       {"wrong-family",
                        "the range begins with an " + familyName(first->family) +
                            " address and ends with an " + familyName(last->family) + " one",
                        "Write both ends in one family, and `ipType` to match."});
        return;
    }
    (void)entries.checkFamily(0, *first);
    if (last->bytes < first->bytes) {
        entries.report(1,
                       {"reversed-range",
                        "the range ends before it begins, so that it matches nothing",
                        "Put the lower address first."});
    }
}

}  // namespace

bool isPrefixOrMask(const std::string& text, int family) {
    if (text.find('\0') != std::string::npos) {
        return false;
    }
    const bool forV4 = isNumberUpTo(text, 32) || isDottedMask(text);
    const auto mask = parseAddress(text);
    const bool forV6 = isNumberUpTo(text, 128) || (mask && mask->family == 6);
    return (family != 6 && forV4) || (family != 4 && forV6);
}

void checkAddresses(const RuleUnderCheck& rule,
                    const CheckContext& context,
                    FindingList& findings) {
    if (!rule.members.isSound(field::kIpList)) {
        return;
    }
    EntryCheck entries(rule, findings);
    switch (rule.members.integer(field::kIpGroup).value_or(FW::FW_IP_GROUP_NONE)) {
        case FW::FW_IP_GROUP_HOST:
            checkHost(entries);
            return;
        case FW::FW_IP_GROUP_SUBNET:
            checkSubnet(entries);
            return;
        case FW::FW_IP_GROUP_RANGE:
            checkRange(entries);
            return;
        case FW::FW_IP_GROUP_COUNTRY:
            entries.atLeast(1, "a country");
            checkCountries(rule, context, findings);
            return;
        default:
            return;
    }
}

}  // namespace zamofw
