#include "command/report/serviceMatrix.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <tuple>
#include <utility>

namespace zamofw::report {
namespace {

using analysis::Hook;
using analysis::Interval;
using analysis::Intervals;
using analysis::SourceClass;

// What fits on a page of paper.
constexpr std::size_t kMostColumns = 14;
constexpr std::size_t kMostGroups = 6;
constexpr std::size_t kMostRows = 8;
constexpr std::size_t kMostAddresses = 4;

constexpr analysis::Number kLastPort = 65535;

using Reaches = std::vector<Reach>;
// By family, IPv4 first. Sources that no picture tells apart are in one entry.
using Sources = std::array<Intervals, 2>;
using Rows = std::map<Reaches, Sources>;

constexpr std::array<int, 2> kFamilies = {4, 6};

Intervals otherPorts(const Intervals& ports) {
    Intervals others;
    analysis::Number next = 0;
    for (const Interval& interval : ports) {
        if (interval.first > next) {
            others.push_back({next, interval.first - 1});
        }
        next = interval.last + 1;
    }
    if (next <= kLastPort) {
        others.push_back({next, kLastPort});
    }
    return others;
}

Reach merged(Reach one, Reach other) {
    return one == other ? one : Reach::kPartly;
}

Reach reachOf(const Intervals& allowed, const Interval& ports) {
    const auto next = std::lower_bound(
        allowed.begin(),
        allowed.end(),
        ports.first,
        [](const Interval& interval, const auto& port) { return interval.last < port; });
    if (next == allowed.end() || next->first > ports.last) {
        return Reach::kDenied;
    }
    return next->first <= ports.first && ports.last <= next->last ? Reach::kAllowed
                                                                  : Reach::kPartly;
}

Reach reachOf(const SourceClass& sources, const Traffic& traffic) {
    std::vector<Reach> parts;
    for (const auto& [name, ports] : traffic) {
        const auto allowed = std::find_if(
            sources.allowed.begin(), sources.allowed.end(), [&protocol = name](const auto& entry) {
                return entry.name == protocol;
            });
        for (const Interval& interval : ports) {
            if (allowed == sources.allowed.end()) {
                parts.push_back(Reach::kDenied);
            } else {
                parts.push_back(allowed->ports ? reachOf(*allowed->ports, interval)
                                               : Reach::kAllowed);
            }
        }
    }
    Reach reach = parts.empty() ? Reach::kDenied : parts.front();
    for (const Reach part : parts) {
        reach = merged(reach, part);
    }
    return reach;
}

template <typename Iterator>
Traffic unionOf(Iterator begin, Iterator end) {
    Traffic all;
    for (auto service = begin; service != end; ++service) {
        for (const auto& [protocol, ports] : service->traffic) {
            Intervals& known = all[protocol];
            known.insert(known.end(), ports.begin(), ports.end());
        }
    }
    for (auto& [protocol, ports] : all) {
        ports = analysis::normalized(std::move(ports));
    }
    return all;
}

// What no service has.
Traffic everythingElse(const Traffic& services, const std::vector<std::string>& protocols) {
    Traffic rest;
    for (const std::string& protocol : protocols) {
        const auto known = services.find(protocol);
        const Intervals ports = known == services.end() ? Intervals() : known->second;
        if (protocol == "tcp" || protocol == "udp") {
            rest[protocol] = otherPorts(ports);
        } else if (ports.empty()) {
            rest[protocol] = {{0, 0}};
        }
    }
    return rest;
}

// Protocols that have no name but that lines name by number.
void addNumbered(const std::vector<std::string>& protocols, std::vector<Service>& services) {
    for (const std::string& protocol : protocols) {
        const bool isNumber = protocol.find_first_not_of("0123456789") == std::string::npos;
        const bool isKnown =
            std::any_of(services.begin(), services.end(), [&protocol](const Service& service) {
                return service.traffic.count(protocol) != 0;
            });
        if (isNumber && !isKnown) {
            services.push_back({"protocol " + protocol, {{protocol, {{0, 0}}}}, 1});
        }
    }
}

// The services that get a column. Those for which there is no room become one, at the end.
std::size_t foldServices(std::vector<Service>& services) {
    if (services.size() <= kMostColumns + 1) {
        return 0;
    }
    std::vector<std::size_t> uses;
    uses.reserve(services.size());
    for (const Service& service : services) {
        uses.push_back(service.uses);
    }
    std::sort(uses.rbegin(), uses.rend());
    const std::size_t least = uses[kMostColumns - 1];
    auto spare = std::count(uses.begin(), uses.begin() + kMostColumns, least);
    const auto folded = std::stable_partition(
        services.begin(), services.end(), [least, &spare](const Service& service) {
            return service.uses > least || (service.uses == least && spare-- > 0);
        });
    const auto count = static_cast<std::size_t>(services.end() - folded);
    Service more = {std::to_string(count) + " more", unionOf(folded, services.end()), 0};
    services.erase(folded, services.end());
    services.push_back(std::move(more));
    return count;
}

struct Way {
    bool toMachine = true;
    bool throughMachine = true;
    Rows rows;
    std::vector<std::string> interfaces;
};

// The ways into the machine and through it, those with the same rows together.
std::vector<Way> waysOf(const std::vector<SourceClass>& classes,
                        const std::vector<Service>& services) {
    std::vector<std::string> interfaces;
    std::map<std::string, std::array<Rows, 2>> rows;
    for (const SourceClass& entry : classes) {
        Reaches cells;
        for (const Service& service : services) {
            cells.push_back(reachOf(entry, service.traffic));
        }
        if (rows.count(entry.in) == 0) {
            interfaces.push_back(entry.in);
        }
        Rows& way = rows[entry.in][entry.hook == Hook::kInput ? 0 : 1];
        Intervals& sources = way[std::move(cells)][entry.family == 4 ? 0 : 1];
        sources.insert(sources.end(), entry.sources.begin(), entry.sources.end());
    }
    std::vector<Way> ways;
    const auto add = [&ways](Way way, const std::string& interface) {
        for (auto& [cells, sources] : way.rows) {
            for (Intervals& family : sources) {
                family = analysis::normalized(std::move(family));
            }
        }
        const auto same = std::find_if(ways.begin(), ways.end(), [&way](const Way& other) {
            return other.toMachine == way.toMachine && other.throughMachine == way.throughMachine &&
                   other.rows == way.rows;
        });
        Way& place = same != ways.end() ? *same : ways.emplace_back(std::move(way));
        place.interfaces.push_back(interface);
    };
    for (const std::string& interface : interfaces) {
        auto& [input, forward] = rows[interface];
        if (input == forward) {
            add({true, true, std::move(input), {}}, interface);
        } else {
            add({true, false, std::move(input), {}}, interface);
            add({false, true, std::move(forward), {}}, interface);
        }
    }
    return ways;
}

// Among the first ones are those of all interfaces that no rule names.
void keepRest(std::vector<Way>& ways) {
    if (ways.size() <= kMostGroups + 1) {
        return;
    }
    const auto isRest = [](const Way& way) {
        return way.interfaces.back() == analysis::Interfaces::kOther;
    };
    const auto first = std::find_if(ways.begin() + kMostGroups - 1, ways.end(), isRest);
    if (first != ways.end()) {
        std::rotate(ways.begin() + kMostGroups - 1, first, first + 1);
    }
}

// How much of the addresses of both families it is.
long double shareOf(const Sources& sources) {
    long double share = 0;
    for (std::size_t i = 0; i < kFamilies.size(); ++i) {
        for (const Interval& interval : sources[i]) {
            share += std::ldexp(static_cast<long double>(interval.last - interval.first) + 1,
                                kFamilies[i] == 4 ? -32 : -128);
        }
    }
    return share;
}

// The cells of those who have most of a family's addresses.
const Reaches& largestOf(const Rows& rows, std::size_t family) {
    const auto shareIn = [family](const Sources& sources) {
        Sources one;
        one[family] = sources[family];
        return shareOf(one);
    };
    return std::max_element(rows.begin(),
                            rows.end(),
                            [&shareIn](const auto& one, const auto& other) {
                                return shareIn(one.second) < shareIn(other.second);
                            })
        ->first;
}

struct OpenRow {
    MatrixRow row;
    Sources sources;
};

// Says which addresses a row has.
void nameSources(OpenRow& open) {
    for (std::size_t family = 0; family < kFamilies.size(); ++family) {
        if ((family == 0 ? open.row.v4 : open.row.v6) != Rest::kNone) {
            continue;
        }
        for (const Interval& range : open.sources[family]) {
            if (open.row.addresses.size() < kMostAddresses) {
                open.row.addresses.push_back(rangeText(range, kFamilies[family]));
            } else {
                ++open.row.moreAddresses;
            }
        }
    }
}

// Rows with addresses in the order of these, then the one for all others, then the rest.
bool comesBefore(const OpenRow& one, const OpenRow& other) {
    const auto key = [](const OpenRow& open) {
        const bool hasV4 = !open.sources[0].empty();
        const Intervals& addresses = open.sources[hasV4 ? 0 : 1];
        return std::make_tuple(open.row.v6 != Rest::kNone && open.row.v4 == Rest::kNone,
                               open.row.v4 != Rest::kNone,
                               open.row.folded != 0,
                               !hasV4,
                               addresses.empty() ? 0 : addresses.front().first);
    };
    return key(one) < key(other);
}

// Leaves the widest rows, and one for all others.
void foldRows(std::vector<OpenRow>& rows) {
    const auto rest = std::stable_partition(rows.begin(), rows.end(), [](const OpenRow& open) {
        return open.row.v4 == Rest::kNone && open.row.v6 == Rest::kNone;
    });
    const auto count = static_cast<std::size_t>(rest - rows.begin());
    if (count <= kMostRows + 1) {
        return;
    }
    std::stable_sort(rows.begin(), rest, [](const OpenRow& one, const OpenRow& other) {
        return shareOf(one.sources) > shareOf(other.sources);
    });
    const auto begin = rows.begin() + kMostRows;
    MatrixRow folded = begin->row;
    folded.addresses.clear();
    folded.moreAddresses = 0;
    folded.folded = count - kMostRows;
    for (auto open = begin; open != rest; ++open) {
        std::transform(open->row.cells.begin(),
                       open->row.cells.end(),
                       folded.cells.begin(),
                       folded.cells.begin(),
                       merged);
    }
    *begin = {std::move(folded), {}};
    rows.erase(begin + 1, rest);
}

MatrixGroup groupOf(const Way& way) {
    const std::array<Reaches, 2> largest = {largestOf(way.rows, 0), largestOf(way.rows, 1)};
    std::vector<OpenRow> rows;
    for (const auto& [cells, sources] : way.rows) {
        OpenRow open;
        open.sources = sources;
        open.row.cells = cells;
        const auto restOf = [&, &cells = cells, &sources = sources](std::size_t family) {
            const Interval all = {0, analysis::lastAddress(kFamilies[family])};
            return cells != largest[family]            ? Rest::kNone
                   : sources[family] == Intervals{all} ? Rest::kEvery
                                                       : Rest::kOther;
        };
        open.row.v4 = restOf(0);
        open.row.v6 = restOf(1);
        nameSources(open);
        rows.push_back(std::move(open));
    }
    // Of rows that are equally wide, the first ones are kept.
    std::stable_sort(rows.begin(), rows.end(), comesBefore);
    foldRows(rows);
    std::stable_sort(rows.begin(), rows.end(), comesBefore);
    MatrixGroup group = {way.interfaces, way.toMachine, way.throughMachine, {}};
    for (OpenRow& open : rows) {
        group.rows.push_back(std::move(open.row));
    }
    return group;
}

}  // namespace

ServiceMatrix serviceMatrix(const std::vector<SourceClass>& classes,
                            std::vector<Service> services,
                            const std::vector<std::string>& protocols) {
    addNumbered(protocols, services);
    const Traffic all = unionOf(services.begin(), services.end());
    ServiceMatrix matrix;
    matrix.folded = foldServices(services);
    services.push_back(
        {services.empty() ? "everything" : "everything else", everythingElse(all, protocols), 0});
    for (const Service& service : services) {
        matrix.columns.push_back(service.name);
    }
    std::vector<Way> ways = waysOf(classes, services);
    keepRest(ways);
    for (const Way& way : ways) {
        if (ways.size() <= kMostGroups + 1 || matrix.groups.size() < kMostGroups) {
            matrix.groups.push_back(groupOf(way));
        } else {
            matrix.leftOut.insert(
                matrix.leftOut.end(), way.interfaces.begin(), way.interfaces.end());
        }
    }
    return matrix;
}

std::string rangeText(const Interval& range, int family) {
    std::string first = analysis::addressText(range.first, family);
    if (range.first == range.last) {
        return first;
    }
    const analysis::Number distance = range.last - range.first;
    const bool isNetwork = (distance & (distance + 1)) == 0 && (range.first & distance) == 0;
    if (!isNetwork) {
        return first + "-" + analysis::addressText(range.last, family);
    }
    int prefix = family == 4 ? 32 : 128;
    for (analysis::Number rest = distance; rest != 0; rest >>= 1U) {
        --prefix;
    }
    return first + "/" + std::to_string(prefix);
}

}  // namespace zamofw::report
