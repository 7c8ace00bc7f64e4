// A cheap look for 6in4 tunnels.
#ifndef COMMAND_PLAN_TUNNELLOOK_H
#define COMMAND_PLAN_TUNNELLOOK_H

namespace zamofw {

// Whether the machine has an interface that could be a 6in4 tunnel, up or not. True as well when
// the interfaces cannot be listed: then only the network tool knows.
[[nodiscard]] bool mayHaveTunnel();

}  // namespace zamofw

#endif
