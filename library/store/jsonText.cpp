#include "library/store/jsonText.h"

#include <json/reader.h>
#include <json/writer.h>
#include <locale.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <locale>

namespace FW {
namespace {

// The writer formats numbers by the C locale of the thread.
class PlainNumbers {
  public:
    PlainNumbers()
        : plain_(newlocale(LC_NUMERIC_MASK, "C", nullptr)), previous_(uselocale(plain_)) {}
    ~PlainNumbers() {
        (void)uselocale(previous_);
        if (plain_ != nullptr) {
            freelocale(plain_);
        }
    }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

  private:
    locale_t plain_;
    locale_t previous_;
};

// The reader converts numbers by the global C++ locale, which a library must not change.
bool readsPlainNumbers() {
    const auto& format = std::use_facet<std::numpunct<char>>(std::locale());
    return format.decimal_point() == '.' && format.grouping().empty();
}

constexpr const char* kDigits = "0123456789";

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

// The fraction of a number, moved into its exponent: "1.5" as "15e-1", and "1.5e3" as "15e2".
// Returns its length. What is no number is left for the parser to refuse.
std::size_t appendFraction(const char* text, std::string& out) {
    constexpr int kMaxExponentLength = 6;
    const char* const digits = text + 1;
    const char* const digitsEnd = digits + std::strspn(digits, kDigits);
    const char* end = digitsEnd;
    long exponent = digits - digitsEnd;
    if (*end == 'e' || *end == 'E') {
        const char* const power = end + 1;
        const char* const powerDigits = power + (*power == '+' || *power == '-' ? 1 : 0);
        end = powerDigits + std::strspn(powerDigits, kDigits);
        if (end == powerDigits || end - powerDigits > kMaxExponentLength) {
            out.push_back('.');
            return 1;
        }
        exponent += std::strtol(power, nullptr, 10);
    }
    out.append(digits, digitsEnd).append("e").append(std::to_string(exponent));
    return static_cast<std::size_t>(end - text);
}

// The end of the string or comment that starts here; the position itself when none does.
std::size_t endOfOpaque(const std::string& text, std::size_t position) {
    const auto behind = [&text](const char* end, std::size_t from) {
        const std::size_t found = text.find(end, from);
        return found == std::string::npos ? text.size() : found + std::strlen(end);
    };
    if (text[position] == '"') {
        std::size_t at = position + 1;
        while (at < text.size() && text[at] != '"') {
            at += text[at] == '\\' ? 2U : 1U;
        }
        return std::min(at + 1, text.size());
    }
    if (text.compare(position, 2, "//") == 0) {
        return behind("\n", position);
    }
    return text.compare(position, 2, "/*") == 0 ? behind("*/", position + 2) : position;
}

// Writes every fraction so that no decimal point is needed.
std::string withoutFractions(const std::string& text) {
    std::string out;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = endOfOpaque(text, at);
        const bool inNumber = !out.empty() && (isDigit(out.back()) || out.back() == '-');
        if (end != at) {
            out.append(text, at, end - at);
            at = end;
        } else if (text[at] == '.' && inNumber) {
            at += appendFraction(text.c_str() + at, out);
        } else {
            out.push_back(text[at++]);
        }
    }
    return out;
}

}  // namespace

// The parser throws instead of failing when the nesting is deeper than it supports.
bool parseJson(const std::string& text, Json::Value& value) {
    try {
        return Json::Reader().parse(readsPlainNumbers() ? text : withoutFractions(text),
                                    value,
                                    /*collectComments=*/true);
    } catch (const Json::Exception&) {
        return false;
    }
}

std::string renderJson(const Json::Value& value) {
    const PlainNumbers plainNumbers;
    return Json::StyledWriter().write(value);
}

bool isObjectOrNull(const Json::Value& value) {
    return value.isObject() || value.isNull();
}

const Json::Value* nameMember(const Json::Value& document) {
    if (!document.isObject() || !document["name"].isString()) {
        return nullptr;
    }
    return &document["name"];
}

}  // namespace FW
