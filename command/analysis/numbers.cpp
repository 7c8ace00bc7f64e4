#include "command/analysis/numbers.h"

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace zamofw::analysis {
namespace {

// A mask with more intervals than this is kept as a pattern.
constexpr int kMostFreeBits = 6;

Number lowBits(int count) {
    return count >= 128 ? ~Number{0} : (Number{1} << count) - 1;
}

// Walks the binary tree of numbers. Blocks in which nothing was found are remembered by what was
// left to be decided there, since patterns repeat in every block.
class PartWalk {
  public:
    PartWalk(const Interval& interval,
             const std::vector<PatternTerm>& terms,
             const std::function<bool(const Interval&)>& take)
        : interval_(interval), all_(terms), take_(take) {}

    bool run() {
        std::vector<std::size_t> terms(all_.size());
        for (std::size_t i = 0; i < terms.size(); ++i) {
            terms[i] = i;
        }
        return visit(0, 128, std::move(terms));
    }

  private:
    // Whether the terms that the bits above the block decide are kept; takes those out.
    bool settle(Number base, int freeBits, std::vector<std::size_t>& terms) const {
        std::vector<std::size_t> open;
        for (const std::size_t index : terms) {
            const PatternTerm& term = all_[index];
            const Number above = ~lowBits(freeBits);
            const bool differs = ((base ^ term.pattern.value) & term.pattern.mask & above) != 0;
            const bool isDecided = differs || (term.pattern.mask & ~above) == 0;
            if (!isDecided) {
                open.push_back(index);
            } else if (differs == term.isWanted) {
                return false;
            }
        }
        terms = std::move(open);
        return true;
    }

    bool visit(Number base, int freeBits, std::vector<std::size_t> terms) {
        const Number last = base | lowBits(freeBits);
        if (last < interval_.first || base > interval_.last || !settle(base, freeBits, terms)) {
            return true;
        }
        if (terms.empty()) {
            isAnyFound_ = true;
            return take_({std::max(base, interval_.first), std::min(last, interval_.last)});
        }
        const bool isInside = base >= interval_.first && last <= interval_.last;
        const std::pair<int, std::vector<std::size_t>> state(freeBits, terms);
        if (isInside && barren_.count(state) != 0) {
            return true;
        }
        const bool wasAnyFound = std::exchange(isAnyFound_, false);
        const int half = freeBits - 1;
        if (!visit(base, half, terms) || !visit(base | (Number{1} << half), half, terms)) {
            return false;
        }
        if (isInside && !isAnyFound_) {
            barren_.insert(state);
        }
        isAnyFound_ = isAnyFound_ || wasAnyFound;
        return true;
    }

    const Interval& interval_;
    const std::vector<PatternTerm>& all_;
    const std::function<bool(const Interval&)>& take_;
    std::set<std::pair<int, std::vector<std::size_t>>> barren_;
    bool isAnyFound_ = false;
};

// Whether the lists differ in one term alone, which one of them wants and the other does not.
// Then the term can be left out of their union.
bool leaveOutOpposite(std::vector<PatternTerm>& one, const std::vector<PatternTerm>& other) {
    if (one.size() != other.size()) {
        return false;
    }
    std::size_t opposite = one.size();
    for (std::size_t i = 0; i < one.size(); ++i) {
        if (one[i].pattern.value != other[i].pattern.value ||
            one[i].pattern.mask != other[i].pattern.mask) {
            return false;
        }
        if (one[i].isWanted != other[i].isWanted) {
            if (opposite != one.size()) {
                return false;
            }
            opposite = i;
        }
    }
    if (opposite == one.size()) {
        return false;
    }
    one.erase(one.begin() + static_cast<std::ptrdiff_t>(opposite));
    return true;
}

}  // namespace

Intervals normalized(Intervals intervals) {
    std::sort(intervals.begin(), intervals.end(), [](const Interval& one, const Interval& other) {
        return one.first < other.first;
    });
    Intervals merged;
    for (const Interval& interval : intervals) {
        if (!merged.empty() &&
            (merged.back().last == ~Number{0} || interval.first <= merged.back().last + 1)) {
            merged.back().last = std::max(merged.back().last, interval.last);
        } else {
            merged.push_back(interval);
        }
    }
    return merged;
}

bool contains(const Intervals& intervals, Number number) {
    const auto after = std::upper_bound(
        intervals.begin(), intervals.end(), number, [](Number value, const Interval& interval) {
            return value < interval.first;
        });
    return after != intervals.begin() && number <= std::prev(after)->last;
}

bool contains(const NumberSet& set, Number number) {
    return set.pattern ? set.pattern->matches(number) : contains(set.intervals, number);
}

NumberSet maskedSet(Number address, Number mask, int bits) {
    int suffix = 0;  // zeros at the end of the mask
    while (suffix < bits && ((mask >> suffix) & 1) == 0) {
        ++suffix;
    }
    std::vector<int> freeBits;
    for (int bit = suffix; bit < bits; ++bit) {
        if (((mask >> bit) & 1) == 0) {
            freeBits.push_back(bit);
        }
    }
    const Number base = address & mask;
    if (freeBits.size() > kMostFreeBits) {
        return {{}, BitPattern{base, mask}};
    }
    Intervals intervals;
    for (std::size_t choice = 0; choice < std::size_t{1} << freeBits.size(); ++choice) {
        Number first = base;
        for (std::size_t i = 0; i < freeBits.size(); ++i) {
            first |= Number{(choice >> i) & 1} << freeBits[i];
        }
        intervals.push_back({first, first | lowBits(suffix)});
    }
    return {normalized(std::move(intervals)), std::nullopt};
}

bool forEachPart(const Interval& interval,
                 const std::vector<PatternTerm>& terms,
                 const std::function<bool(const Interval&)>& take) {
    return PartWalk(interval, terms, take).run();
}

void joinTerms(std::vector<std::vector<PatternTerm>>& lists) {
    for (std::size_t i = 0; i < lists.size(); ++i) {
        for (std::size_t j = 0; j < i; ++j) {
            if (leaveOutOpposite(lists[j], lists[i])) {
                lists.erase(lists.begin() + static_cast<std::ptrdiff_t>(i));
                joinTerms(lists);
                return;
            }
        }
    }
}

Number numberOf(const Address& address) {
    Number number = 0;
    for (std::size_t i = 0; i < address.size(); ++i) {
        number = number << 8 | address.bytes[i];
    }
    return number;
}

std::string addressText(Number address, int family) {
    std::array<unsigned char, 16> bytes = {};
    const std::size_t size = family == 4 ? 4 : 16;
    for (std::size_t i = 0; i < size; ++i) {
        bytes[size - 1 - i] = static_cast<unsigned char>(address >> (8 * i) & 0xFF);
    }
    std::array<char, INET6_ADDRSTRLEN> text = {};
    (void)inet_ntop(family == 4 ? AF_INET : AF_INET6, bytes.data(), text.data(), text.size());
    return text.data();
}

Number lastAddress(int family) {
    return lowBits(family == 4 ? 32 : 128);
}

Intervals hostAddresses(int family) {
    if (family == 6) {
        const Number globalUnicast = Number{0x2001} << 112;
        return {{globalUnicast, globalUnicast | lowBits(112)}, {1, lowBits(120)}};
    }
    return {{0x01000000, 0x7EFFFFFF}, {0x80000000, 0xDFFFFFFF}};
}

Intervals clientPorts() {
    return {{49152, 65535}, {1024, 49151}, {1, 1023}};
}

}  // namespace zamofw::analysis
