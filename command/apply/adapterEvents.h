// Word from the kernel that the state of the network interfaces may have changed.
#ifndef COMMAND_APPLY_ADAPTEREVENTS_H
#define COMMAND_APPLY_ADAPTEREVENTS_H

#include <chrono>
#include <memory>
#include <optional>

#include "posix/descriptor.h"

struct mnl_socket;

namespace zamofw {

class AdapterEvents {
  public:
    enum class Event {
        kNone,      // the time is over
        kAdapters,  // a link, an address or the name of the PPPoE interface may have changed
        kStop,      // somebody wants this process to end
    };

    // From here on nothing is missed, and signals to end are events. Throws Failure.
    AdapterEvents();
    ~AdapterEvents();
    AdapterEvents(const AdapterEvents&) = delete;
    AdapterEvents& operator=(const AdapterEvents&) = delete;

    // Waits for the next one, at most for the time, without end if there is none.
    [[nodiscard]] Event wait(std::optional<std::chrono::milliseconds> atMost);

    // After kAdapters: waits until there was none for half a second, or five seconds are over.
    // Interfaces seldom change alone. kStop, or else kAdapters.
    [[nodiscard]] Event waitForQuiet();

  private:
    void readLinks();
    void readFiles();

    struct Closer {
        void operator()(mnl_socket* socket) const;
    };
    std::unique_ptr<mnl_socket, Closer> links_;
    posix::Descriptor files_;
    posix::Descriptor signals_;
};

}  // namespace zamofw

#endif
