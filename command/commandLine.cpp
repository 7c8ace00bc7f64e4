#include "command/commandLine.h"

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>
#include <array>
#include <iterator>
#include <ostream>
#include <set>

#include "command/commandTable.h"
#include "command/words/quoting.h"
#include "command/words/suggestion.h"

namespace zamofw {
namespace {

constexpr const char* kEndOfOptions = "--";
constexpr const char* kSeeHelp = "`zamofw --help` shows the commands";
constexpr const char* kRootOptions =
    "  --json       one JSON document on standard output instead of text\n"
    "  --yes        answer every question with yes\n"
    "  --quiet      only results and faults: no log lines, no progress, no word of success\n"
    "  --no-color   no colours (the variable NO_COLOR does the same)\n"
    "  --version    the version\n"
    "  --help       this text, or that of a command\n";

Commands allCommands() {
    Commands all;
    for (const auto& commands : {firewallCommands,
                                 profileCommands,
                                 ruleCommands,
                                 catalogueCommands,
                                 inspectionCommands,
                                 kernelCommands,
                                 historyCommands,
                                 reportCommands,
                                 trialCommands,
                                 watchCommands}) {
        const Commands part = commands();
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

bool isHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

// Takes the global options out of the words.
GlobalOptions takeGlobalOptions(Words& words) {
    GlobalOptions options;
    const std::array<std::pair<const char*, bool*>, 4> flags = {{{"--json", &options.json},
                                                                 {"--yes", &options.yes},
                                                                 {"--quiet", &options.quiet},
                                                                 {"--no-color", &options.noColor}}};
    const auto takeFlag = [&flags](const std::string& word) {
        for (const auto& [name, flag] : flags) {
            if (word.rfind(std::string(name) + "=", 0) == 0) {
                wrongUse("`" + std::string(name) + "` takes no value", "say it alone");
            }
            if (word == name) {
                *flag = true;
                return true;
            }
        }
        return false;
    };
    const auto end = std::find(words.begin(), words.end(), kEndOfOptions);
    words.erase(std::remove_if(words.begin(), end, takeFlag), end);
    return options;
}

std::string callOf(const Command& command) {
    return std::string(command.name) + (*command.operands == '\0' ? "" : " ") + command.operands;
}

// The calls with what they do, in two columns.
std::string tableOf(const Commands& commands) {
    std::size_t width = 0;
    for (const Command& command : commands) {
        width = std::max(width, callOf(command).size());
    }
    width = std::min<std::size_t>(width, 48);
    std::string text;
    for (const Command& command : commands) {
        const std::string call = callOf(command);
        const std::string gap = call.size() > width ? "\n" + std::string(width + 4, ' ')
                                                    : std::string(width - call.size() + 2, ' ');
        text += "  " + call + gap + command.summary + "\n";
    }
    return text;
}

std::string rootHelp() {
    return "zamofw: the administrator's command of the firewall\n\n"
           "usage: zamofw [--json] [--yes] [--quiet] [--no-color] COMMAND ...\n\n" +
           tableOf(allCommands()) + "\n" + kRootOptions +
           "\nexit status: 0 done or yes, 1 no, 2 wrong use, 3 failed, 4 needs root\n";
}

Answer print(const std::string& text) {
    return [text](const Console& console) {
        console.out << text;
        return Status::kDone;
    };
}

// Empty when no command of two words begins with this one.
std::string helpOfGroup(const Commands& commands, const std::string& group) {
    Commands members;
    std::copy_if(commands.begin(),
                 commands.end(),
                 std::back_inserter(members),
                 [&group](const Command& command) {
                     return std::string(command.name).rfind(group + " ", 0) == 0;
                 });
    return members.empty() ? "" : "usage: zamofw " + group + " ...\n\n" + tableOf(members);
}

// The words that may come after `group`, or the first words of all commands.
Words namesBelow(const Commands& commands, const std::string& group) {
    const std::string prefix = group.empty() ? "" : group + " ";
    std::set<std::string> names;
    for (const Command& command : commands) {
        const std::string name = command.name;
        if (name.rfind(prefix, 0) == 0) {
            const std::size_t begin = prefix.size();
            names.insert(name.substr(begin, name.find(' ', begin) - begin));
        }
    }
    return {names.begin(), names.end()};
}

std::string listed(const Words& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

[[noreturn]] void unknownCommand(const Commands& commands,
                                 const std::string& group,
                                 const std::string& word) {
    const Words names = namesBelow(commands, group);
    const std::string near = suggestion(word, names);
    wrongUse("there is no command " + shown((group.empty() ? "" : group + " ") + word) +
                 (near.empty() ? "" : ": " + near),
             group.empty() ? kSeeHelp : "after `" + group + "` comes one of: " + listed(names));
}

// The command that the words begin with.
const Command& findCommand(const Commands& commands, const Words& words) {
    const auto named = [&commands](const std::string& name) {
        return std::find_if(commands.begin(), commands.end(), [&name](const Command& command) {
            return name == command.name;
        });
    };
    const auto single = named(words[0]);
    if (single != commands.end()) {
        return *single;
    }
    if (namesBelow(commands, words[0]).empty()) {
        unknownCommand(commands, "", words[0]);
    }
    if (words.size() == 1) {
        wrongUse("a word is missing after " + shown(words[0]),
                 "it is one of: " + listed(namesBelow(commands, words[0])));
    }
    const auto pair = named(words[0] + " " + words[1]);
    if (pair == commands.end()) {
        unknownCommand(commands, words[0], words[1]);
    }
    return *pair;
}

std::string usageOf(const Command& command) {
    return "usage: zamofw " + callOf(command);
}

Words optionNames(const CLI::App& app) {
    Words names;
    for (const CLI::Option* const option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

[[noreturn]] void unexpectedWord(const CLI::App& app, const Command& command) {
    const Words rest = app.remaining();
    const std::string word = rest.empty() ? "" : rest.front();
    if (word.size() > 1 && word.front() == '-') {
        const std::string name = word.substr(0, word.find('='));
        const std::string near = suggestion(name, optionNames(app));
        wrongUse("`" + std::string(command.name) + "` has no option " + shown(name) +
                     (near.empty() ? "" : ": " + near),
                 usageOf(command));
    }
    wrongUse(shown(word) + " is a word too many", usageOf(command));
}

// The library says "--format: 1 required TEXT missing".
[[noreturn]] void wrongCount(const std::string& message, const Command& command) {
    const std::string name = message.substr(0, message.find(':'));
    if (message.find("missing") != std::string::npos) {
        wrongUse("the value of " + shown(name) + " is missing", usageOf(command));
    }
    wrongUse(message.find("t Most") != std::string::npos ? shown(name) + " is said twice" : message,
             usageOf(command));
}

void parse(CLI::App& app, const Words& words, const Command& command) {
    Words reversed(words.rbegin(), words.rend());
    try {
        app.parse(reversed);
    } catch (const CLI::ExtrasError&) {
        unexpectedWord(app, command);
    } catch (const CLI::ArgumentMismatch& problem) {
        wrongCount(problem.what(), command);
    } catch (const CLI::RequiredError& problem) {
        const std::string message = problem.what();
        wrongUse(message.substr(0, message.find(" is required")) + " is missing", usageOf(command));
    } catch (const CLI::ParseError& problem) {
        wrongUse(problem.what(), usageOf(command));
    }
}

std::string helpOf(const Command& command) {
    std::string text = usageOf(command) + "\n\n" + command.summary + "\n";
    if (command.declare != nullptr) {
        CLI::App app;
        app.set_help_flag();
        (void)command.declare(app, {});
        for (const CLI::Option* const option : app.get_options()) {
            if (!option->get_description().empty()) {
                text += "\n  " + option->get_name() + "\n      " + option->get_description();
            }
        }
        text += "\n";
    }
    return text;
}

Answer answerOf(const Command& command, const Words& words, const Words& given) {
    const auto end = std::find(words.begin(), words.end(), kEndOfOptions);
    if (std::any_of(words.begin(), end, isHelp)) {
        return print(helpOf(command));
    }
    if (command.takeWords != nullptr) {
        const Call call = {words, given};
        return [take = command.takeWords, call](const Console& console) {
            return take(console, call);
        };
    }
    CLI::App app;
    app.set_help_flag();
    Answer answer = command.declare(app, given);
    parse(app, words, command);
    return answer;
}

Answer rootAnswer(const std::string& option) {
    if (option == "--version") {
        return print("zamofw " ZAMOFW_VERSION "\n");
    }
    if (isHelp(option)) {
        return print(rootHelp());
    }
    const std::string near =
        suggestion(option, {"--json", "--yes", "--quiet", "--no-color", "--version", "--help"});
    wrongUse("there is no option " + shown(option) + " before the command" +
                 (near.empty() ? "" : ": " + near),
             kSeeHelp);
}

}  // namespace

CommandLine parseCommandLine(const std::vector<std::string>& given) {
    Words words = given;
    CommandLine line;
    line.options = takeGlobalOptions(words);
    const bool asksHelp = !words.empty() && words[0] == "help";
    if (asksHelp) {
        words.erase(words.begin());
        words.emplace_back("--help");
    }
    if (words.empty()) {
        wrongUse("a command is missing", kSeeHelp);
    }
    if (words[0].size() > 1 && words[0].front() == '-') {
        line.answer = rootAnswer(words[0]);
        return line;
    }
    const Commands commands = allCommands();
    if (words.size() == 2 && isHelp(words[1])) {
        const std::string help = helpOfGroup(commands, words[0]);
        if (!help.empty()) {
            line.answer = print(help);
            return line;
        }
    }
    const Command& command = findCommand(commands, words);
    const std::string name = command.name;
    words.erase(words.begin(), words.begin() + 1 + std::count(name.begin(), name.end(), ' '));
    line.answer = answerOf(command, words, given);
    return line;
}

}  // namespace zamofw
