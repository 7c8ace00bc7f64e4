#ifndef LIBRARY_PROFILES_PROFILEDELETION_H
#define LIBRARY_PROFILES_PROFILEDELETION_H

#include <string>

#include "library/store/documents.h"

namespace FW {

// ZAMOFW_PROFILE::profileDelete(), as a step of an operation.
[[nodiscard]] bool deleteUnlessInForce(Documents& documents, const std::string& name);

}  // namespace FW

#endif
