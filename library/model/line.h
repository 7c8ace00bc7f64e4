// An argument line of iptables or ip6tables, and what it was made for.
#ifndef LIBRARY_MODEL_LINE_H
#define LIBRARY_MODEL_LINE_H

#include <cstddef>
#include <optional>
#include <string>

#include "library/model/names.h"

namespace FW {

enum class AddressFamily { kV4, kV6 };

[[nodiscard]] constexpr Family namesOf(AddressFamily family) {
    return family == AddressFamily::kV4 ? kIpv4 : kIpv6;
}

struct LineOrigin {
    enum class Kind { kBuiltIn, kRule, kDefaultPolicy };

    Kind kind;
    std::string adapter;                  // as the profile names it
    std::optional<std::size_t> position;  // of a profile's rule in the adapter's list, from 0
};

struct Line {
    AddressFamily family;
    std::string key;   // the member of the command list that it belongs to
    std::string text;  // everything after the program's path
    LineOrigin origin;
};

}  // namespace FW

#endif
