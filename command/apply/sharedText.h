#ifndef COMMAND_APPLY_SHAREDTEXT_H
#define COMMAND_APPLY_SHAREDTEXT_H

#include <string>
#include <string_view>

#include "posix/descriptor.h"

namespace zamofw {

// A text that a child process reads, though it is written after the child's start. All of it throws
// Failure when there is no memory.
class SharedText {
  public:
    SharedText();
    ~SharedText();
    SharedText(const SharedText&) = delete;
    SharedText& operator=(const SharedText&) = delete;

    void write(const std::string& text) const;
    // The view holds as long as this object.
    [[nodiscard]] std::string_view read();

  private:
    posix::Descriptor file_;
    std::string_view text_;
};

}  // namespace zamofw

#endif
