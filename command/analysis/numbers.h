// Sets of numbers: what a line says about addresses, ports, protocols and interfaces.
#ifndef COMMAND_ANALYSIS_NUMBERS_H
#define COMMAND_ANALYSIS_NUMBERS_H

#include <functional>
#include <optional>
#include <string>
#include <vector>

#ifndef __SIZEOF_INT128__
#include <boost/multiprecision/cpp_int.hpp>
#endif

#include "command/words/addresses.h"

namespace zamofw::analysis {

// Wide enough for an IPv6 address. Compilers for 32 bits have no such type of their own.
#ifdef __SIZEOF_INT128__
__extension__ using Number = unsigned __int128;
#else
using Number = boost::multiprecision::uint128_t;
#endif

struct Interval {
    Number first;
    Number last;
};
[[nodiscard]] inline bool operator==(const Interval& one, const Interval& other) {
    return one.first == other.first && one.last == other.last;
}

// Ascending, neither overlapping nor adjacent.
using Intervals = std::vector<Interval>;

[[nodiscard]] Intervals normalized(Intervals intervals);
[[nodiscard]] bool contains(const Intervals& intervals, Number number);

// The numbers that agree with `value` in the bits of `mask`: what a mask that is no prefix says,
// which can be more intervals than anybody can list.
struct BitPattern {
    Number value;
    Number mask;

    [[nodiscard]] bool matches(Number number) const { return ((number ^ value) & mask) == 0; }
};

struct NumberSet {
    Intervals intervals;
    std::optional<BitPattern> pattern;  // then the intervals are empty
};
[[nodiscard]] bool contains(const NumberSet& set, Number number);

// The addresses of `bits` bits that a mask leaves; as intervals when they are few.
[[nodiscard]] NumberSet maskedSet(Number address, Number mask, int bits);

// A pattern that numbers must match, or must not.
struct PatternTerm {
    BitPattern pattern;
    bool isWanted;
};

// The parts of an interval that keep every term, in ascending order, until `take` returns false.
// False then.
bool forEachPart(const Interval& interval,
                 const std::vector<PatternTerm>& terms,
                 const std::function<bool(const Interval&)>& take);

// Joins lists of terms of which the union can be said with fewer.
void joinTerms(std::vector<std::vector<PatternTerm>>& lists);

[[nodiscard]] Number numberOf(const Address& address);
[[nodiscard]] std::string addressText(Number address, int family);
[[nodiscard]] Number lastAddress(int family);

// Where examples are best taken from: addresses of hosts, ports that a client would have.
[[nodiscard]] Intervals hostAddresses(int family);
[[nodiscard]] Intervals clientPorts();

}  // namespace zamofw::analysis

#endif
