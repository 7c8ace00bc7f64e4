#ifndef POSIX_GROUPSIGNAL_H
#define POSIX_GROUPSIGNAL_H

namespace posix {

// Whether a started program was ended by a signal that was meant for its parent.
//
// A program leaves its parent's process group just after its start. A signal to the whole group (a
// hangup, Ctrl-C) may reach it before that, and ends it before it has run. If the parent holds the
// signal back, it has it pending too, and can start the program again.
[[nodiscard]] bool endedByParentsSignal(int waitStatus) noexcept;

// A signal reaches a group once, so that a second start usually succeeds.
constexpr int kMaxStarts = 4;

}  // namespace posix

#endif
