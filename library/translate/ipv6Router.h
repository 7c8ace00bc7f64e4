#ifndef LIBRARY_TRANSLATE_IPV6ROUTER_H
#define LIBRARY_TRANSLATE_IPV6ROUTER_H

#include <string>

namespace FW {

// Asks the network tool which interface carries IPv6 for `interface`: a 6in4 tunnel, or the
// interface itself. When the tool fails, that is logged and the answer is the interface itself.
[[nodiscard]] std::string ipv6RouterInterface(const std::string& interface);

}  // namespace FW

#endif
