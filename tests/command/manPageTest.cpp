// The manual pages have the commands of the program's own help, the functions that the library
// exports, and the members that a profile can have: all of them, and no others.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <sstream>

#include "command/commandLine.h"
#include "command/document/memberTable.h"
#include "tests/support/files.h"

namespace zamofw {
namespace {

using Calls = std::vector<std::string>;

Calls sorted(Calls calls) {
    std::sort(calls.begin(), calls.end());
    return calls;
}

// "check [PROFILE] [--all]  what is wrong" -> "check PROFILE --all"
Calls callsInHelp() {
    std::ostringstream out;
    std::ostringstream err;
    const Console console = {false, false, false, false, false, false, out, err};
    EXPECT_EQ(parseCommandLine({"--help"}).answer(console), Status::kDone);
    Calls calls;
    std::istringstream lines(out.str());
    for (std::string line; std::getline(lines, line);) {
        const bool isCall = line.size() > 2 && line.compare(0, 2, "  ") == 0 &&
                            std::islower(static_cast<unsigned char>(line[2])) != 0;
        if (isCall) {
            std::string call = line.substr(2, line.find("  ", 2) - 2);
            call.erase(std::remove_if(call.begin(), call.end(),
                                      [](char byte) { return byte == '[' || byte == ']'; }),
                       call.end());
            calls.push_back(std::move(call));
        }
    }
    return sorted(std::move(calls));
}

// ".It Cm check Oo Ar PROFILE Oc Op Fl -all" -> "check PROFILE --all"
std::string callOfItem(const std::string& item) {
    static const std::set<std::string> kMacros = {"Cm", "Ar", "Oo", "Oc", "Op"};
    std::string call;
    std::string gap;
    std::istringstream words(item);
    for (std::string word; words >> word;) {
        if (word == "Ns") {
            gap = "";
        } else if (word == "Fl") {
            call += gap + "-";
            gap = "";
        } else if (kMacros.count(word) == 0) {
            call += gap + word;
            gap = " ";
        }
    }
    return call;
}

Calls callsInPage() {
    Calls calls;
    std::istringstream lines(test::readFile(MAN_DIRECTORY "/zamofw.8"));
    const std::string start = ".It Cm ";
    for (std::string line; std::getline(lines, line);) {
        const std::string call =
            line.compare(0, start.size(), start) == 0 ? callOfItem(line.substr(start.size())) : "";
        // The verdicts of a rule are an item as well.
        if (!call.empty() && call != "allow | deny | none") {
            calls.push_back(call);
        }
    }
    return sorted(std::move(calls));
}

TEST(ManPage, NamesEveryCommandAndOption) {
    EXPECT_GT(callsInHelp().size(), 40U);
    EXPECT_EQ(callsInPage(), callsInHelp());
}

using Names = std::set<std::string>;

Names exportedNames() {
    Names names;
    std::istringstream lines(test::readFile(EXPORTED_NAMES));
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string prefix;
        words >> prefix;
        for (std::string word; words >> word;) {
            names.insert(prefix + word);
        }
    }
    return names;
}

std::string withoutScope(const std::string& name) {
    const std::size_t colon = name.rfind(':');
    return colon == std::string::npos ? name : name.substr(colon + 1);
}

void replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
        text.replace(at, from.size(), to);
    }
}

// ".Fn FW::ZAMOFW::configSet "const Json::Value& values"" -> "configSet(const Json::Value& values)"
std::string signatureOf(std::string line) {
    replaceAll(line, "\\N'44'", ",");
    replaceAll(line, "\" \"", ", ");
    replaceAll(line, "\"", "");
    const std::string words = line.substr(4);
    const std::size_t blank = words.find(' ');
    const std::string arguments = blank == std::string::npos ? "" : words.substr(blank + 1);
    return withoutScope(words.substr(0, blank)) + '(' + arguments + ')';
}

std::string publicHeaders() {
    std::string text;
    for (const auto& file : std::filesystem::directory_iterator(HEADER_DIRECTORY)) {
        std::istringstream words(test::readFile(file.path().string()));
        for (std::string word; words >> word;) {
            text += (text.empty() || text.back() == '(' ? "" : " ") + word;
        }
    }
    return text;
}

struct Pages {
    Names titles;
    Names aliases;    // further names of pages
    Names declared;   // in a synopsis
    Names described;  // elsewhere
    Names signatures;
};

Pages pagesOfSection3() {
    Pages pages;
    for (const auto& file : std::filesystem::directory_iterator(MAN_DIRECTORY)) {
        if (file.path().extension() != ".3") {
            continue;
        }
        pages.titles.insert(file.path().stem().string());
        bool isSynopsis = false;
        std::istringstream lines(test::readFile(file.path().string()));
        for (std::string line; std::getline(lines, line);) {
            isSynopsis = line.compare(0, 3, ".Sh") == 0 ? line == ".Sh SYNOPSIS" : isSynopsis;
            std::string name;
            std::istringstream words(line);
            for (std::string word; words >> word;) {
                if (word == ".Nm" && words >> name) {
                    pages.aliases.insert(name);
                } else if ((word == ".Fn" || word == "Fn") && words >> name) {
                    (isSynopsis ? pages.declared : pages.described).insert(name);
                }
            }
            if (isSynopsis && line.compare(0, 4, ".Fn ") == 0) {
                pages.signatures.insert(signatureOf(line));
            }
        }
    }
    for (const std::string& title : pages.titles) {
        EXPECT_EQ(pages.aliases.erase(title), 1U) << title;
    }
    return pages;
}

TEST(ManPage, NamesEveryFunction) {
    const Pages pages = pagesOfSection3();
    const Names exported = exportedNames();
    EXPECT_GT(exported.size(), 80U);
    EXPECT_EQ(pages.declared, exported);

    Names functions;
    Names classes;
    for (const std::string& name : exported) {
        const std::string owner = name.substr(0, name.rfind("::"));
        if (owner != name && owner != "FW") {
            classes.insert(withoutScope(owner));
        }
        functions.insert(withoutScope(name));
    }
    for (const std::string& name : classes) {
        functions.erase(name);
        functions.erase('~' + name);
    }
    EXPECT_EQ(pages.described, functions);

    const std::string headers = publicHeaders();
    for (const std::string& signature : pages.signatures) {
        EXPECT_NE(headers.find(signature), std::string::npos) << signature;
    }
    Names others = pages.aliases;
    for (const Names* const known : {&functions, &classes}) {
        for (const std::string& name : *known) {
            EXPECT_EQ(others.erase(name), 1U) << name;
        }
    }
    for (const std::string& name : others) {
        EXPECT_TRUE(headers.find("struct " + name + " {") != std::string::npos ||
                    headers.find("enum " + name + " :") != std::string::npos)
            << name;
    }
}

TEST(ManPage, NamesEveryMemberOfAProfile) {
    Names members;
    for (const MemberTable* const table :
         {&ruleTable(), &profileTable(), &settingsTable(), &exportTable()}) {
        for (const MemberRow& row : *table) {
            members.insert(row.name);
        }
    }
    Names named;
    std::istringstream words(test::readFile(MAN_DIRECTORY "/zamofirewall-profile.5"));
    for (std::string word, name; words >> word;) {
        if ((word == ".Va" || word == "Va") && words >> name) {
            named.insert(name);
        }
    }
    EXPECT_EQ(named, members);
}

}  // namespace
}  // namespace zamofw
