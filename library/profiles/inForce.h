// What the blocked queries judge by: the profile in force.
#ifndef LIBRARY_PROFILES_INFORCE_H
#define LIBRARY_PROFILES_INFORCE_H

#include <json/value.h>

#include <cstddef>
#include <memory>
#include <string>

#include "library/store/documents.h"
#include "zamofirewall/ruleModel.h"

namespace FW {

// A query reads the settings and the profile for every port that it asks about, and writes the log
// lines of that each time. As long as the files have not changed, the profile stays the same
// object.
class InForce {
  public:
    // False is a failure that is logged.
    [[nodiscard]] bool read();

    [[nodiscard]] bool isEnabled() const { return enabled_; }

    // Null unless the firewall is enabled.
    [[nodiscard]] const std::shared_ptr<const FWPROFILE>& profile() const { return profile_; }

  private:
    [[nodiscard]] bool readProfile(const std::string& name);

    Documents documents_;
    bool enabled_ = false;
    std::string name_;
    std::size_t readings_ = 0;  // of the documents, when the profile was made of one of them
    std::shared_ptr<const FWPROFILE> profile_;
};

}  // namespace FW

#endif
