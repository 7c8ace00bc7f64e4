// A plan as input for the restore programs.

#include <algorithm>
#include <map>
#include <optional>
#include <string_view>

#include "command/console.h"
#include "command/plan/plan.h"
#include "command/plan/restoreLine.h"
#include "library/model/names.h"

namespace zamofw {
namespace {

constexpr std::string_view kFilter = "filter";
constexpr std::string_view kFilterPrefix = "-t filter -A ";
constexpr std::string_view kCommit = "COMMIT\n";
constexpr std::string_view kNoTablePrefix = "-A ";

// A word of cmdExec() may begin while this much is used.
constexpr std::size_t kMaxUsedBefore = 1022;

[[noreturn]] void cannotSay(const PlannedLine& line, const std::string& why) {
    throw UnsayableLine(line, why);
}

bool isPlain(std::string_view line) {
    return line.size() <= kSurelyShort && !hasSpecial(line);
}

// The words as cmdExec() would hand them over: what the blanks separate, each up to its first NUL.
std::vector<std::string_view> wordsOf(const PlannedLine& planned, const FW::Family& family) {
    const std::string_view line = planned.line;
    std::vector<std::string_view> words;
    std::size_t used = std::string_view(family.program).size() + 1;
    for (std::size_t begin = 0; begin < line.size();) {
        const std::size_t end = std::min(line.find(' ', begin), line.size());
        const std::string_view word = line.substr(begin, end - begin);
        begin = end + 1;
        if (words.size() + 1 >= kMaxWords || used > kMaxUsedBefore) {
            cannotSay(planned, "it is longer than 255 words or 1024 bytes");
        }
        if (!word.empty()) {
            words.push_back(word.substr(0, word.find('\0')));
            used += words.back().size() + 1;
        }
    }
    if (used > kMaxBytes) {
        cannotSay(planned, "it is longer than 1024 bytes");
    }
    return words;
}

// A word that holds a separator or a quote stands in quotes, where a backslash takes the next
// character as it is.
std::string quoted(std::string_view word) {
    if (!word.empty() && !hasSpecial(word)) {
        return std::string(word);
    }
    std::string text = "\"";
    for (const char byte : word) {
        if (byte == '"' || byte == '\\') {
            text += '\\';
        }
        text += byte;
    }
    return text + '"';
}

bool isTableName(std::string_view word) {
    constexpr std::string_view kLetters =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";
    return !word.empty() && word.find_first_not_of(kLetters) == std::string_view::npos;
}

struct TableLine {
    std::string_view table;
    std::string text;
};

// The line without its table, word by word.
TableLine tableLine(const PlannedLine& planned, const FW::Family& family) {
    if (planned.line.find('\n') != std::string::npos) {
        cannotSay(planned, "there is a line feed in it");
    }
    std::vector<std::string_view> words = wordsOf(planned, family);
    TableLine result = {kFilter, ""};
    if (words.size() >= 2 && words[0] == "-t") {
        result.table = words[1];
        words.erase(words.begin(), words.begin() + 2);
        if (!isTableName(result.table)) {
            cannotSay(planned, "there is no table of that name");
        }
    }
    // Anything else at the begin would be taken for a comment, a chain or a table.
    if (words.empty() || words[0].empty() || words[0][0] != '-') {
        cannotSay(planned, "it does not begin with an option");
    }
    for (const std::string_view word : words) {
        result.text += (result.text.empty() ? "" : " ") + quoted(word);
    }
    return result;
}

// The lines of one table.
struct Section {
    RestoreText lines;

    void append(std::string_view line, const PlannedLine* origin) {
        lines.text.append(line).append("\n");
        lines.origins.push_back(origin);
    }
    // Nearly all lines are of one table.
    void reserveFor(const std::vector<PlannedLine>& planned) {
        std::size_t size = lines.text.size() + kCommit.size();
        for (const PlannedLine& line : planned) {
            size += line.line.size() + 1;
        }
        lines.text.reserve(size);
        lines.origins.reserve(lines.origins.size() + planned.size() + 1);
    }
};

void appendPlanned(const PlannedLine& planned,
                   const FW::Family& family,
                   Section& filter,
                   std::map<std::string, Section>& others) {
    if (const std::optional<std::string_view> line = plainFilterLine(planned.line)) {
        filter.append(*line, &planned);
        return;
    }
    const TableLine parsed = tableLine(planned, family);
    (parsed.table == kFilter ? filter : others[std::string(parsed.table)])
        .append(parsed.text, &planned);
}

}  // namespace

// Without branches and an early end, the compiler looks at many bytes in one step.
bool hasSpecial(std::string_view text) {
    unsigned found = 0;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        found |= static_cast<unsigned>(byte < ' ') | static_cast<unsigned>(byte == '"') |
                 static_cast<unsigned>(byte == '\\');
    }
    return found != 0;
}

std::optional<std::string_view> plainFilterLine(std::string_view line) {
    const bool namesFilter = line.substr(0, kFilterPrefix.size()) == kFilterPrefix;
    if ((!namesFilter && line.substr(0, kNoTablePrefix.size()) != kNoTablePrefix) ||
        !isPlain(line)) {
        return std::nullopt;
    }
    return line.substr(namesFilter ? kFilterPrefix.size() - kNoTablePrefix.size() : 0);
}

std::vector<std::string> filterHead(int family) {
    std::vector<std::string> head = {
        family == 4 ? "# IPv4" : "# IPv6", "*filter", "-P INPUT ACCEPT", "-P FORWARD ACCEPT"};
    for (const char* const chain : FW::kFirewallChains) {
        head.push_back(std::string("-F ") + chain);
    }
    head.push_back(std::string("-F ") + FW::kReloadingChain);
    return head;
}

UnsayableLine::UnsayableLine(const PlannedLine& line, std::string why)
    : Failure(Status::kFailed,
              "a line of " + originText(line) + " cannot be put into force: " + why + "\n  " +
                  line.line,
              "run `zamofw check`; it names the member of the rule that is to be mended"),
      why_(std::move(why)) {}

void requireSayable(const PlannedLine& line, int family) {
    Section filter;
    std::map<std::string, Section> others;
    appendPlanned(line, family == 4 ? FW::kIpv4 : FW::kIpv6, filter, others);
}

RestoreText restoreText(const Plan& plan, int family) {
    const FW::Family& names = family == 4 ? FW::kIpv4 : FW::kIpv6;
    const std::vector<PlannedLine>& lines = family == 4 ? plan.v4 : plan.v6;
    Section filter;
    for (const std::string& line : filterHead(family)) {
        filter.append(line, nullptr);
    }
    filter.reserveFor(lines);
    std::map<std::string, Section> others;
    for (const PlannedLine& line : lines) {
        appendPlanned(line, names, filter, others);
    }
    filter.append("COMMIT", nullptr);
    for (const auto& [table, section] : others) {
        filter.append("*" + table, nullptr);
        filter.lines.text += section.lines.text;
        filter.lines.origins.insert(
            filter.lines.origins.end(), section.lines.origins.begin(), section.lines.origins.end());
        filter.append("COMMIT", nullptr);
    }
    return std::move(filter.lines);
}

std::string restoreInput(const Plan& plan, int family) {
    return restoreText(plan, family).text;
}

RestoreInputs restoreInputs(const Plan& plan) {
    return {restoreInput(plan, 4), restoreInput(plan, 6), plan.v4.size() + plan.v6.size()};
}

}  // namespace zamofw
