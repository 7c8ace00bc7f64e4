// An exported configuration.

#include "fuzz/harness.h"

void fuzz::run(const std::string& text) {
    const zamofw::Document document = zamofw::readDocument(text, "export.json");
    const zamofw::Findings findings = zamofw::checkExport(document, context());
    requirePlaces(findings, text);
    require(!document.fault || zamofw::hasError(findings), "a syntax fault is an error");
    if (zamofw::hasError(findings)) {
        return;
    }
    const zamofw::Member* const profiles = document.root.find("config_profiles");
    require(profiles != nullptr, "an export has profiles");
    for (const zamofw::Member& profile : profiles->value.members()) {
        require(profile.value.find("name") != nullptr, "each profile of an export has a name");
        require(profile.name.find('/') == std::string_view::npos, "it stays in its directory");
    }
}
