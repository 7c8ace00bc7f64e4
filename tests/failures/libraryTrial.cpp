// A trial as a management program begins it: the library's copy of a profile, put into force.

#include "zamofirewall/zamofirewall.h"

int main(int argc, char** argv) {
    const std::string name = argc > 1 ? argv[1] : "";
    FW::ZAMOFW_PROFILE profiles;
    FW::FWPROFILE profile;
    return profiles.profileGet(name, profile) && profiles.CreateTestProfile(name, profile) &&
                   FW::ZAMOFW().TestApplyingProfile(name, "10.1.0.2")
               ? 0
               : 1;
}
