// The adapters of a profile: their names, rules and default policies.
#ifndef COMMAND_DOCUMENT_ADAPTERCHECK_H
#define COMMAND_DOCUMENT_ADAPTERCHECK_H

#include "command/document/check.h"
#include "command/document/findingList.h"
#include "command/document/location.h"

namespace zamofw {

// Either node may be null, for a profile without rules or without policies. A node that could not
// be read is not known: then nothing is said about rules without a policy.
struct Adapters {
    const Node* rules = nullptr;
    const Node* policies = nullptr;
    bool arePoliciesKnown = true;
};

void checkAdapters(const Adapters& adapters,
                   const Location& profile,
                   const CheckContext& context,
                   FindingList& findings);

}  // namespace zamofw

#endif
