// What the harnesses share. Each reads its input with one reader, and requires of the result what
// must hold for every input.
#ifndef FUZZ_HARNESS_H
#define FUZZ_HARNESS_H

#include <string>

#include "command/document/check.h"
#include "command/words/ruleWords.h"

namespace fuzz {

// One input of a harness.
void run(const std::string& text);

// Ends the program, so that the input is kept.
void require(bool holds, const char* what);

void writeFile(const std::string& path, const std::string& text);

// A machine with some services and countries.
[[nodiscard]] const zamofw::CheckContext& context();
[[nodiscard]] const zamofw::Vocabulary& vocabulary();

// They point at a character of the text, or just behind the last one of a line.
void requirePlaces(const zamofw::Findings& findings, const std::string& text);

// A profile as it is stored.
[[nodiscard]] std::string storedText(const FW::FWPROFILE& profile);

// The words of a rule, if there are any, make the same rule.
void requireSameWords(const FW::FWRULE& rule);

}  // namespace fuzz

#endif
