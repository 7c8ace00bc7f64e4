// The check of 20 profiles with 1,000 rules each against their parsing.

#include <benchmark/benchmark.h>
#include <json/reader.h>
#include <json/writer.h>

#include "bench/firewall.h"
#include "bench/measure.h"
#include "command/document/check.h"
#include "zamofirewall/zamofirewall.h"

namespace {

constexpr int kProfiles = 20;

std::string documentText() {
    Json::Value document;
    FW::ZAMOFW_JSON_DB().profileToJson(bench::profileWith(1000), document);
    return Json::StyledWriter().write(document);
}

// `parse` and `check` work on the same text.
const std::string& text() {
    static const std::string made = documentText();
    return made;
}

void parse(benchmark::State& state) {
    for (auto _ : state) {
        for (int i = 0; i < kProfiles; ++i) {
            Json::Value document;
            bench::require(Json::Reader().parse(text(), document), "parsing");
        }
    }
}
BENCHMARK(parse)->UseRealTime()->Iterations(1)->Repetitions(9);

void check(benchmark::State& state) {
    const zamofw::ServiceNames services = {{"ssh"}, {}};
    const zamofw::CheckContext context = {
        [&services]() -> const zamofw::ServiceNames& { return services; },
        {"eth0", "global"},
        [](const std::string&, int) { return false; }};
    for (auto _ : state) {
        for (int i = 0; i < kProfiles; ++i) {
            const zamofw::Document document = zamofw::readDocument(text(), "bench.json");
            bench::require(zamofw::checkProfile(document, context).empty(), "a sound profile");
        }
    }
}
BENCHMARK(check)->UseRealTime()->Iterations(1)->Repetitions(9);

}  // namespace

int main() {
    auto times = bench::runBenchmarks();
    bench::printRow(
        "check of 20 profiles of 1,000 rules", times["check"], "parsing them", times["parse"], 3);
}
