// Work that a kill of the command does not leave half done.
#ifndef COMMAND_APPLY_SEPARATEPROCESS_H
#define COMMAND_APPLY_SEPARATEPROCESS_H

#include <json/value.h>
#include <sys/types.h>

#include <csignal>
#include <functional>

namespace zamofw {

// Does the work in a child process with a session of its own and returns its answer. The child
// inherits all locks, and holds them to its end. It is killed when this process is, except while it
// has an `Unstoppable`. A child that somebody else kills is started once more, so the work must be
// such that it can be done again. Throws the Failure that the work throws.
//
// Nothing helps against a kill of both at once, as that of a whole control group.
[[nodiscard]] Json::Value inSeparateProcess(const std::function<Json::Value()>& work);

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
