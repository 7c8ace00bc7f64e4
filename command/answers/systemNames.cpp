#include "command/answers/systemNames.h"

#include <zamo/serviceconf.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>

#include "library/model/names.h"
#include "zamofirewall/controller.h"

namespace zamofw {
namespace {

namespace fs = std::filesystem;

// Shipped and added services. The catalogue finds a service by its name, but does not list them.
constexpr std::array<const char*, 2> kServiceDirectories = {"/usr/zamo/etc.defaults/services.d/",
                                                            "/usr/zamo/etc/services.d/"};
constexpr const char* kServiceExtension = ".json";

// The library takes a country for usable when its file holds this much.
constexpr std::uintmax_t kLeastCountryData = 8;
constexpr std::size_t kCountryCodeLength = 2;

using Catalogue = std::unique_ptr<ZAMOFwServiceList, void (*)(ZAMOFwServiceList*)>;
using Visit = std::function<void(const fs::path& path)>;

// A directory that is missing or cannot be read is an empty one.
void forEachFile(const char* directory, const Visit& visit) {
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        visit(entry->path());
    }
}

Catalogue loadCatalogue() {
    ZAMOFwServiceList* loaded = nullptr;
    (void)ZAMOFwServiceEnum(&loaded);
    return {loaded, ZAMOFwServiceFree};
}

std::map<std::string, std::int32_t> services() {
    const Catalogue catalogue = loadCatalogue();
    std::map<std::string, std::int32_t> found;
    for (const char* const directory : kServiceDirectories) {
        forEachFile(directory, [&](const fs::path& path) {
            const std::string name = path.stem();
            const ZAMOFwService* const service =
                path.extension() == kServiceExtension
                    ? ZAMOFWServiceFind(catalogue.get(), name.c_str())
                    : nullptr;
            if (service != nullptr) {
                found[name] = service->dstProtocol;
            }
        });
    }
    return found;
}

bool isIdle(const ZAMOFwService& service) {
    const auto isEmpty = [](const VLIBCSzList* list) {
        return list == nullptr || VLIBCSzListCount(list) == 0;
    };
    return service.valid == 0 || (isEmpty(service.srcPorts) && isEmpty(service.dstPorts));
}

void addCountries(int family, std::map<std::string, std::set<int>>& countries) {
    const std::string extension = family == 4 ? ".iv4" : ".iv6";
    forEachFile(FW::kCountryDirectory, [&](const fs::path& path) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(path, error);
        const std::string code = path.stem();
        if (!error && size >= kLeastCountryData && path.extension() == extension &&
            code.size() == kCountryCodeLength) {
            countries[code].insert(family);
        }
    });
}

}  // namespace

Vocabulary systemVocabulary() {
    Vocabulary vocabulary;
    vocabulary.services = services();
    addCountries(4, vocabulary.countries);
    addCountries(6, vocabulary.countries);
    return vocabulary;
}

CheckContext systemCheckContext(const Vocabulary& vocabulary) {
    CheckContext context;
    const Catalogue catalogue = loadCatalogue();
    for (const auto& [name, protocol] : vocabulary.services) {
        context.services.insert(name);
        const ZAMOFwService* const service = ZAMOFWServiceFind(catalogue.get(), name.c_str());
        if (service != nullptr && isIdle(*service)) {
            context.idleServices.insert(name);
        }
    }
    (void)FW::ZAMOFW().fwAdapterEnum(context.adapters);
    context.hasCountry = [countries = vocabulary.countries](const std::string& code, int family) {
        const auto found = countries.find(code);
        return found != countries.end() && found->second.count(family) != 0;
    };
    return context;
}

}  // namespace zamofw
