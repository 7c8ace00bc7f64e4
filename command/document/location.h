// The way from the root of a document to one of its values.
#ifndef COMMAND_DOCUMENT_LOCATION_H
#define COMMAND_DOCUMENT_LOCATION_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace zamofw {

// One step, which knows the step before it: a chain on the stack, so that a way costs nothing until
// somebody asks for it as text. A step must not outlive its parent and its name.
class Location {
  public:
    Location() = default;  // the root
    Location(const Location& parent, std::string_view name) : parent_(&parent), name_(name) {}
    Location(const Location& parent, std::size_t index) : parent_(&parent), index_(index) {}
    Location(const Location&, std::string&&) = delete;

    // As JSON pointer: "/rules/eth0/2/policy".
    [[nodiscard]] std::string pointer() const;

  private:
    const Location* parent_ = nullptr;
    std::optional<std::string_view> name_;  // none for an element of a list
    std::size_t index_ = 0;
};

}  // namespace zamofw

#endif
