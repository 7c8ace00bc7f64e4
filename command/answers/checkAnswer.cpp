#include "command/answers/checkAnswer.h"

#include <algorithm>
#include <iterator>
#include <ostream>
#include <tuple>
#include <utility>

#include "command/answers/meaning.h"
#include "command/answers/meaningFindings.h"
#include "command/answers/systemNames.h"
#include "command/answers/table.h"
#include "command/document/check.h"
#include "command/document/findingText.h"
#include "command/document/profileRecord.h"
#include "command/document/storedProfile.h"
#include "command/document/textFile.h"
#include "command/history/configuration.h"

namespace zamofw {
namespace {

std::vector<Document> storedDocuments() {
    requireStoreDirectory();
    std::vector<Document> documents;
    for (const std::string& path : profileFiles()) {
        Document document = readDocument(readText(path), path);
        if (!isTrialCopy(nameIn(document).value_or(""))) {
            documents.push_back(std::move(document));
        }
    }
    return documents;
}

// Below this, nobody waits for long enough to wonder.
constexpr std::size_t kManyBytes = std::size_t{4} << 20U;

void showProgress(const Console& console, const std::vector<Document>& documents) {
    std::size_t bytes = 0;
    for (const Document& document : documents) {
        bytes += document.text.size();
    }
    if (console.canAsk && !console.quiet && bytes >= kManyBytes) {
        console.err << "checking " << counted(documents.size(), "profile") << "...\n";
    }
}

Findings checkWith(analysis::ModelReader& reader,
                   const Document& document,
                   const CheckContext& context,
                   const std::optional<Client>& client) {
    Findings findings = checkProfile(document, context);
    Findings meaning = meaningFindings(document, reader, client);
    std::move(meaning.begin(), meaning.end(), std::back_inserter(findings));
    std::stable_sort(
        findings.begin(), findings.end(), [](const Finding& one, const Finding& other) {
            return std::tie(one.line, one.column) < std::tie(other.line, other.column);
        });
    return findings;
}

Findings checkAll(const Console& console,
                  const CheckContext& context,
                  const std::optional<Client>& client) {
    const std::vector<Document> documents = storedDocuments();
    showProgress(console, documents);
    std::vector<const Document*> pointers;
    Findings findings;
    analysis::ModelReader reader(countryRanges());
    for (const Document& document : documents) {
        pointers.push_back(&document);
        Findings found = checkWith(reader, document, context, client);
        std::move(found.begin(), found.end(), std::back_inserter(findings));
    }
    const Findings names = checkStoredNames(pointers);
    findings.insert(findings.end(), names.begin(), names.end());
    return findings;
}

}  // namespace

Findings checkDocument(const Document& document,
                       const CheckContext& context,
                       const std::optional<Client>& client) {
    analysis::ModelReader reader(countryRanges());
    return checkWith(reader, document, context, client);
}

Status checkAnswer(const Console& console, const CheckRequest& request) {
    if (request.all && (request.target.profile || request.target.file)) {
        wrongUse("--all and a profile contradict each other", "leave one of them out");
    }
    const CheckContext context = systemCheckContext();
    // The connection that is there now says nothing about profiles that are kept for other times.
    const bool isAboutClient = !request.all || request.client || request.port;
    const std::optional<Client> client =
        isAboutClient ? clientOf(request.client, request.port) : std::nullopt;
    const Findings findings =
        request.all ? checkAll(console, context, client)
                    : checkDocument(readTarget(request.target).document, context, client);
    if (console.json) {
        console.out << findingsJson(findings) << "\n";
    } else {
        console.out << findingsText(findings);
        if (findings.empty() && console.isTerminal && !console.quiet) {
            console.out << "no faults found\n";
        }
    }
    return hasError(findings) ? Status::kNo : Status::kDone;
}

}  // namespace zamofw
