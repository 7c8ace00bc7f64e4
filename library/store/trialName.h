#ifndef LIBRARY_STORE_TRIALNAME_H
#define LIBRARY_STORE_TRIALNAME_H

#include <string>

namespace FW {

// The name of the copy that a trial of the profile works on.
inline std::string trialName(const std::string& profile) {
    return ".test_" + profile;
}

}  // namespace FW

#endif
