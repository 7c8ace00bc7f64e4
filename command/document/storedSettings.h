// The firewall's settings as they are stored.
#ifndef COMMAND_DOCUMENT_STOREDSETTINGS_H
#define COMMAND_DOCUMENT_STOREDSETTINGS_H

#include <string>

namespace zamofw {

struct StoredSettings {
    bool isEnabled = false;
    std::string profile = "default";
};

// Reads them without the library, whose lock files only root may open. A file that is missing
// stands for the defaults. Throws Failure when it cannot be read or used.
[[nodiscard]] StoredSettings storedSettings();

}  // namespace zamofw

#endif
