// When rules were put into force the last time, and what came of it.
#ifndef COMMAND_APPLY_LASTRELOAD_H
#define COMMAND_APPLY_LASTRELOAD_H

#include <chrono>
#include <cstdint>
#include <optional>

namespace zamofw {

struct LastReload {
    std::chrono::system_clock::time_point begin;
    std::chrono::nanoseconds duration = {};
    bool isApplied = false;
};

// Measures one from here on. Unless it is told that the rules are in force, it has failed.
class ReloadRecord {
  public:
    ReloadRecord();
    ~ReloadRecord();
    ReloadRecord(const ReloadRecord&) = delete;
    ReloadRecord& operator=(const ReloadRecord&) = delete;

    void setApplied(bool isApplied) { isApplied_ = isApplied; }

  private:
    void write() const;

    std::chrono::system_clock::time_point begin_;
    std::chrono::steady_clock::time_point start_;
    bool isApplied_ = false;
};

// The last one by this command since the start of the system.
[[nodiscard]] std::optional<LastReload> lastReload();

// Differs after every time that somebody has put rules into force, the library's callers included.
struct RulesMark {
    std::int64_t byCommand = 0;
    std::int64_t byLibrary = 0;

    bool operator==(const RulesMark& other) const {
        return byCommand == other.byCommand && byLibrary == other.byLibrary;
    }
};
[[nodiscard]] RulesMark rulesMark();

}  // namespace zamofw

#endif
