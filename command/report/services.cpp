// The services and ports that a profile's rules name.

#include <algorithm>
#include <optional>
#include <tuple>

#include "command/report/serviceMatrix.h"
#include "command/words/ports.h"
#include "command/words/values.h"

namespace zamofw::report {
namespace {

// Whether it makes lines that look at what a packet is for.
bool namesServices(const FW::FWRULE& rule) {
    return rule.enable &&
           (rule.policy == FW::FW_POLICY_ALLOW || rule.policy == FW::FW_POLICY_DENY) &&
           rule.ipGroup != FW::FW_IP_GROUP_NONE;
}

using Key = std::vector<std::tuple<std::string, analysis::Number, analysis::Number>>;

Key keyOf(const Traffic& traffic) {
    Key key;
    for (const auto& [protocol, ports] : traffic) {
        for (const analysis::Interval& interval : ports) {
            key.emplace_back(protocol, interval.first, interval.last);
        }
    }
    return key;
}

class Collection {
  public:
    void add(const std::string& name, const Traffic& traffic) {
        const auto [known, isNew] = byPackets_.try_emplace(keyOf(traffic), services_.size());
        if (isNew) {
            services_.push_back({name, traffic, 1});
        } else {
            ++services_[known->second].uses;
        }
    }

    void addNamed(const FW::FWRULE& rule, const std::map<std::string, Traffic>& catalogue) {
        for (const std::string& name : rule.portList) {
            const auto service = catalogue.find(name);
            if (service != catalogue.end() && !service->second.empty()) {
                add(name, service->second);
            }
        }
    }

    void addPorts(const FW::FWRULE& rule) {
        const bool isTcp = (rule.protocol & FW::FW_PROTOCOL_TCP) != 0;
        const bool isUdp = (rule.protocol & FW::FW_PROTOCOL_UDP) != 0;
        for (const std::string& entry : rule.portList) {
            const std::optional<analysis::Interval> ports = portRange(entry);
            if (!ports || entry == kEveryPort) {
                continue;
            }
            Traffic traffic;
            if (isTcp) {
                traffic["tcp"] = {*ports};
            }
            if (isUdp) {
                traffic["udp"] = {*ports};
            }
            add((isTcp && isUdp ? "tcp+udp " : isTcp ? "tcp " : "udp ") + entry, traffic);
        }
    }

    std::vector<Service> sorted() {
        // Those without ports at the end.
        const auto key = [](const Service& service) {
            const auto& [protocol, ports] = *service.traffic.begin();
            const bool hasPorts = protocol == "tcp" || protocol == "udp";
            return std::make_tuple(!hasPorts, ports.front().first, protocol, service.name);
        };
        std::sort(
            services_.begin(), services_.end(), [&key](const Service& one, const Service& other) {
                return key(one) < key(other);
            });
        return std::move(services_);
    }

  private:
    std::vector<Service> services_;
    std::map<Key, std::size_t> byPackets_;
};

}  // namespace

std::optional<analysis::Interval> portRange(const std::string& entry) {
    const std::size_t dash = entry.find('-');
    const auto low = numberFromText(entry.substr(0, dash), kHighestPort);
    const auto high =
        dash == std::string::npos ? low : numberFromText(entry.substr(dash + 1), kHighestPort);
    if (!low || !high || *high < *low) {
        return std::nullopt;
    }
    return analysis::Interval{*low, *high};
}

std::vector<Service> servicesOf(const FW::FWPROFILE& profile,
                                const std::map<std::string, Traffic>& catalogue) {
    Collection services;
    // A service has a better name than its port, so that services come first.
    for (const bool named : {true, false}) {
        for (const auto& [adapter, rules] : profile.rules) {
            for (const FW::FWRULE& rule : rules) {
                const bool isNamed = rule.portGroup == FW::FW_PORT_GROUP_SERVICE ||
                                     rule.portGroup == FW::FW_PORT_GROUP_RESERVED_SERVICE;
                if (!namesServices(rule) || isNamed != named) {
                    continue;
                }
                if (isNamed) {
                    services.addNamed(rule, catalogue);
                } else if (rule.portGroup != FW::FW_PORT_GROUP_PORT) {
                    continue;
                } else if (rule.protocol == FW::FW_PROTOCOL_ICMP) {
                    services.add("icmp", {{"icmp", {{0, 0}}}});
                } else if (rule.protocol == FW::FW_PROTOCOL_IGMP) {
                    services.add("igmp", {{"igmp", {{0, 0}}}});
                } else if (rule.portDirect == 0) {
                    services.addPorts(rule);
                }
            }
        }
    }
    return services.sorted();
}

}  // namespace zamofw::report
