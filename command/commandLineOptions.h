// What the declarations of several commands have in common.
#ifndef COMMAND_COMMANDLINEOPTIONS_H
#define COMMAND_COMMANDLINEOPTIONS_H

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <memory>
#include <optional>
#include <string>

#include "command/document/target.h"

namespace zamofw {

inline CLI::Option* addOperand(CLI::App& app, const char* name, std::string& value) {
    return app.add_option(name, value)->required();
}

inline void addOptional(CLI::App& app,
                        const char* name,
                        std::optional<std::string>& value,
                        const char* description = "") {
    app.add_option_function<std::string>(
        name, [&value](const std::string& text) { value = text; }, description);
}

inline void addTarget(CLI::App& app, TargetWords& target) {
    addOptional(app, "PROFILE", target.profile);
    addOptional(app, "--file", target.file, "a document that is not stored; - is standard input");
}

inline void addForce(CLI::App& app, bool& force) {
    app.add_flag("--force", force, "errors of the document are shown, and do not refuse it");
}

}  // namespace zamofw

#endif
