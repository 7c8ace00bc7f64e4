#include "command/document/findingList.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "command/document/bytes.h"
#include "command/words/suggestion.h"

namespace zamofw {
namespace {

constexpr std::size_t kLongestQuote = 60;

// Moves a place forward through the text.
class Cursor {
  public:
    explicit Cursor(const std::string& text) : text_(text) {}

    Place moveTo(std::size_t offset) {
        for (; offset_ < std::min(offset, text_.size()); ++offset_) {
            if (text_[offset_] == '\n') {
                ++place_.line;
                place_.column = 1;
            } else if (!continuesCharacter(text_[offset_])) {
                ++place_.column;
            }
        }
        return place_;
    }

  private:
    const std::string& text_;
    std::size_t offset_ = 0;
    Place place_;
};

}  // namespace

void FindingList::error(std::size_t offset, const Location& where, Fault fault) {
    add(Severity::kError, offset, where, std::move(fault));
}

void FindingList::warning(std::size_t offset, const Location& where, Fault fault) {
    add(Severity::kWarning, offset, where, std::move(fault));
}

void FindingList::shadowed(std::size_t offset,
                           const Location& where,
                           Fault fault,
                           std::vector<FindingPlace> by) {
    add(Severity::kWarning, offset, where, std::move(fault));
    found_.back().second.by = std::move(by);
}

void FindingList::add(Severity severity, std::size_t offset, const Location& where, Fault fault) {
    Finding finding;
    finding.severity = severity;
    finding.kind = fault.kind;
    finding.file = document_.file;
    finding.path = where.pointer();
    finding.message = std::move(fault.message);
    finding.remedy = std::move(fault.remedy);
    found_.emplace_back(offset, std::move(finding));
}

const std::string& FindingList::suggestionFor(
    const std::string& what,
    std::string_view word,
    const std::function<std::vector<std::string>()>& candidates) {
    const auto [known, isNew] = suggestions_.try_emplace({what, std::string(word)});
    if (isNew) {
        known->second = suggestion(known->first.second, candidates());
    }
    return known->second;
}

Findings FindingList::take() {
    std::stable_sort(found_.begin(), found_.end(), [](const auto& one, const auto& other) {
        return one.first < other.first;
    });
    Cursor cursor(document_.text);
    Findings findings;
    for (auto& [offset, finding] : found_) {
        const Place place = cursor.moveTo(offset);
        finding.line = place.line;
        finding.column = place.column;
        findings.push_back(std::move(finding));
    }
    found_.clear();
    return findings;
}

std::string quoted(std::string_view text) {
    std::string shown = "`";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i >= kLongestQuote && !continuesCharacter(text[i])) {
            shown += "...";
            break;
        }
        if (isControl(text[i])) {
            std::array<char, 8> escape = {};
            (void)std::snprintf(escape.data(),
                                escape.size(),
                                "\\x%02x",
                                static_cast<unsigned>(static_cast<unsigned char>(text[i])));
            shown += escape.data();
        } else {
            shown += text[i];
        }
    }
    return shown + '`';
}

}  // namespace zamofw
