// Markup that no text can break.
#ifndef COMMAND_REPORT_HTML_H
#define COMMAND_REPORT_HTML_H

#include <initializer_list>
#include <string>

namespace zamofw::report {

// A piece of markup. A text that becomes one is escaped, so that a name can neither bring markup
// along nor hide what it says: control characters, those that turn the direction of writing, and
// bytes that are not UTF-8 are shown as codes. A very long text is cut.
class Html {
  public:
    Html() = default;
    Html(const std::string& text);  // NOLINT(google-explicit-constructor)
    Html(const char* text);         // NOLINT(google-explicit-constructor)

    // Markup of our own, taken as it is.
    [[nodiscard]] static Html markup(const char* text);

    Html& operator+=(const Html& more);
    [[nodiscard]] friend Html operator+(Html one, const Html& other) { return one += other; }

    [[nodiscard]] bool empty() const { return markup_.empty(); }
    [[nodiscard]] const std::string& str() const { return markup_; }

  private:
    std::string markup_;
};

struct Attribute {
    const char* name;
    std::string value;  // escaped when it is written; empty: left out
};
using Attributes = std::initializer_list<Attribute>;

// <name attributes>content</name>
[[nodiscard]] Html element(const char* name, Attributes attributes, const Html& content);
[[nodiscard]] Html element(const char* name, const Html& content);

// A text of somebody else, whose direction of writing does not reach the text around it.
[[nodiscard]] Html foreign(const std::string& text);

}  // namespace zamofw::report

#endif
