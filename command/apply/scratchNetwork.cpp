#include "command/apply/scratchNetwork.h"

#include <fcntl.h>
#include <sched.h>

#include <cstdio>
#include <cstdlib>

namespace zamofw {

ScratchNetwork::ScratchNetwork() : own_(posix::openFile("/proc/self/ns/net", O_RDONLY)) {
    entered_ = static_cast<bool>(own_) && unshare(CLONE_NEWNET) == 0;
}

ScratchNetwork::~ScratchNetwork() {
    if (entered_ && setns(own_.get(), CLONE_NEWNET) != 0) {
        // Whatever would come next would be done to the wrong packet filter.
        std::perror("the network namespace cannot be entered again");
        std::_Exit(3);
    }
}

}  // namespace zamofw
