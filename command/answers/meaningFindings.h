// What a check finds in the meaning of a profile's rules.
#ifndef COMMAND_ANSWERS_MEANINGFINDINGS_H
#define COMMAND_ANSWERS_MEANINGFINDINGS_H

#include <optional>
#include <string>

#include "command/analysis/explanation.h"
#include "command/document/document.h"
#include "command/document/finding.h"

namespace zamofw {

// A client that must not be locked out, and the ways on which its packets may come.
struct Client {
    std::string address;
    analysis::PacketQuestion question;
    std::vector<std::string> interfaces;  // none: any that a rule names
};

// The client that the options name, or else that of the SSH connection; none when there is neither.
// Wrong use when an option makes no sense.
[[nodiscard]] std::optional<Client> clientOf(const std::optional<std::string>& address,
                                             const std::optional<std::string>& port);

// `shadowed`, `redundant` and `lockout`, in the order of the text. None for a document that the
// library would not read, and none about rules that it would not translate. Documents that are
// checked together share the reader, and with it the countries that it has read.
[[nodiscard]] Findings meaningFindings(const Document& document,
                                       analysis::ModelReader& reader,
                                       const std::optional<Client>& client);

// `lockout` alone.
[[nodiscard]] Findings lockoutFindings(const Document& document, const Client& client);

}  // namespace zamofw

#endif
