// Work that a kill of the command does not leave half done.
#ifndef COMMAND_APPLY_SEPARATEPROCESS_H
#define COMMAND_APPLY_SEPARATEPROCESS_H

#include <json/value.h>
#include <sys/types.h>

#include <csignal>
#include <functional>
#include <optional>

#include "posix/descriptor.h"

namespace zamofw {

// A child process with a session of its own, which waits until its work is wanted. It is cheap when
// it is made before this process has much memory: both then have little to copy. It inherits all
// locks, and holds them to its end. It is killed when this process is, except while it has an
// `Unstoppable`. A child that somebody else kills is started once more, so the work must be such
// that it can be done again.
//
// Nothing helps against a kill of both at once, as that of a whole control group.
class SeparateProcess {
  public:
    using Work = std::function<Json::Value()>;

    // The work sees the memory of this process as it is now.
    explicit SeparateProcess(Work work);
    ~SeparateProcess() { end(); }
    SeparateProcess(const SeparateProcess&) = delete;
    SeparateProcess& operator=(const SeparateProcess&) = delete;

    // Has the work done and returns its answer. Throws the Failure that the work throws.
    [[nodiscard]] Json::Value run();

  private:
    void start();
    [[nodiscard]] std::optional<Json::Value> answer();
    void end();

    Work work_;
    posix::Descriptor channel_;
    pid_t child_ = -1;
};

// While this lives, the work goes on when its parent is killed and when somebody asks it to end.
class Unstoppable {
  public:
    Unstoppable();
    ~Unstoppable();
    Unstoppable(const Unstoppable&) = delete;
    Unstoppable& operator=(const Unstoppable&) = delete;

  private:
    pid_t parent_;
    sigset_t previous_ = {};
};

}  // namespace zamofw

#endif
