// The words of the `profile` commands.

#include "command/answers/profileAnswers.h"
#include "command/answers/reloadAnswer.h"
#include "command/commandLineOptions.h"
#include "command/commandTable.h"

namespace zamofw {
namespace {

Answer list(CLI::App&, const Words&) {
    return profileList;
}

Answer show(CLI::App& app, const Words&) {
    const auto target = std::make_shared<TargetWords>();
    addTarget(app, *target);
    return [target](const Console& console) { return profileShow(console, *target); };
}

Answer create(CLI::App& app, const Words& given) {
    const auto name = std::make_shared<std::string>();
    addOperand(app, "NAME", *name);
    return [name, given](const Console& console) { return profileCreate(console, given, *name); };
}

using TwoNames = Status (*)(const Console&, const Words&, const std::string&, const std::string&);

Answer twoNames(
    CLI::App& app, const Words& given, const char* first, const char* second, TwoNames answer) {
    const auto names = std::make_shared<std::pair<std::string, std::string>>();
    addOperand(app, first, names->first);
    addOperand(app, second, names->second);
    return [names, given, answer](const Console& console) {
        return answer(console, given, names->first, names->second);
    };
}

Answer copy(CLI::App& app, const Words& given) {
    return twoNames(app, given, "FROM", "TO", profileCopy);
}

Answer rename(CLI::App& app, const Words& given) {
    return twoNames(app, given, "OLD", "NEW", profileRename);
}

Answer remove(CLI::App& app, const Words& given) {
    const auto name = std::make_shared<std::string>();
    addOperand(app, "NAME", *name);
    return [name, given](const Console& console) { return profileDelete(console, given, *name); };
}

Answer use(CLI::App& app, const Words& given) {
    struct Options {
        std::string name;
        bool noReload = false;
        bool force = false;
    };
    const auto options = std::make_shared<Options>();
    addOperand(app, "NAME", options->name);
    app.add_flag("--no-reload", options->noReload, "choose it, and leave the kernel's rules alone");
    addForce(app, options->force);
    return [options, given](const Console& console) {
        return profileUseAnswer(console,
                                {options->name,
                                 !options->noReload,
                                 options->force ? Errors::kShow : Errors::kRefuse,
                                 given});
    };
}

Answer set(CLI::App& app, const Words& given) {
    const auto request = std::make_shared<ProfileSetRequest>();
    addOperand(app, "NAME", request->name);
    addOperand(app, "FILE", request->file);
    addForce(app, request->force);
    return
        [request, given](const Console& console) { return profileSet(console, given, *request); };
}

Answer edit(CLI::App& app, const Words& given) {
    const auto name = std::make_shared<std::string>();
    const auto force = std::make_shared<bool>(false);
    addOperand(app, "NAME", *name);
    addForce(app, *force);
    return [name, force, given](const Console& console) {
        return profileEdit(console, given, *name, *force);
    };
}

}  // namespace

Commands profileCommands() {
    return {
        {"profile list", "", "the stored profiles", list, nullptr},
        {"profile show", "[PROFILE] [--file FILE]", "the document of a profile", show, nullptr},
        {"profile create", "NAME", "a new profile without rules", create, nullptr},
        {"profile copy", "FROM TO", "a copy under another name", copy, nullptr},
        {"profile rename", "OLD NEW", "another name for a profile", rename, nullptr},
        {"profile delete", "NAME", "throw a profile away", remove, nullptr},
        {"profile use",
         "NAME [--no-reload] [--force]",
         "choose the profile in force",
         use,
         nullptr},
        {"profile set", "NAME FILE [--force]", "store a document as profile", set, nullptr},
        {"profile edit", "NAME [--force]", "edit a profile with $EDITOR", edit, nullptr},
    };
}

}  // namespace zamofw
