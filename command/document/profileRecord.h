// From a document to the record of its profile.
#ifndef COMMAND_DOCUMENT_PROFILERECORD_H
#define COMMAND_DOCUMENT_PROFILERECORD_H

#include <functional>
#include <map>
#include <optional>
#include <string>

#include "command/document/document.h"
#include "zamofirewall/ruleModel.h"

namespace zamofw {

// The name that makes the document a profile, also when only its begin is well formed.
[[nodiscard]] std::optional<std::string> nameIn(const Document& document);

// Whether the library takes the text; it takes some that are not well formed.
[[nodiscard]] bool isReadByLibrary(const Document& document);

// What ZAMOFW_JSON_DB::jsonToProfile() makes of the document. Throws Failure, with line and column,
// where the library would read no profile.
[[nodiscard]] FW::FWPROFILE profileRecord(const Document& document);

// An adapter of a document whose members have the types that the library writes.
struct PlainAdapter {
    Span<Node> rules;
    std::optional<FW::FW_POLICY> policy;
};

// The adapters by name, without the records of their rules, which take more memory than all else.
// None when the document is not of this kind.
[[nodiscard]] std::optional<std::map<std::string, PlainAdapter>> plainAdapters(
    const Document& document);

// One rule after the other, each until the next one is read. False when one is not plain.
[[nodiscard]] bool visitRules(const PlainAdapter& adapter,
                              const std::function<void(const FW::FWRULE& rule)>& visit);

}  // namespace zamofw

#endif
