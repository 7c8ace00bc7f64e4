#include "command/answers/systemNames.h"

#include <array>
#include <filesystem>
#include <memory>
#include <optional>
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

using Countries = std::map<std::string, std::set<int>>;
using Visit = std::function<void(const fs::path& path)>;

// A directory that is missing or cannot be read is an empty one.
void forEachFile(const char* directory, const Visit& visit) {
    std::error_code error;
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        visit(entry->path());
    }
}

bool isIdle(const ZAMOFwService& service) {
    const auto isEmpty = [](const VLIBCSzList* list) {
        return list == nullptr || VLIBCSzListCount(list) == 0;
    };
    return service.valid == 0 || (isEmpty(service.srcPorts) && isEmpty(service.dstPorts));
}

Countries countriesWithData() {
    Countries countries;
    forEachFile(FW::kCountryDirectory, [&countries](const fs::path& path) {
        std::error_code error;
        const std::uintmax_t size = fs::file_size(path, error);
        const std::string code = path.stem();
        const fs::path extension = path.extension();
        if (!error && size >= kLeastCountryData && code.size() == kCountryCodeLength &&
            (extension == ".iv4" || extension == ".iv6")) {
            countries[code].insert(extension == ".iv4" ? 4 : 6);
        }
    });
    return countries;
}

ServiceNames serviceNames() {
    ServiceNames names;
    forEachService([&names](const std::string& name, const ZAMOFwService& service) {
        names.known.insert(name);
        if (isIdle(service)) {
            names.idle.insert(name);
        }
    });
    return names;
}

// A value that is made when it is first asked for.
template <typename Value>
std::function<const Value&()> whenAsked(Value (*make)()) {
    return [made = std::make_shared<std::optional<Value>>(), make]() -> const Value& {
        if (!*made) {
            *made = make();
        }
        return **made;
    };
}

}  // namespace

ServiceCatalogue loadServiceCatalogue() {
    ZAMOFwServiceList* loaded = nullptr;
    (void)ZAMOFwServiceEnum(&loaded);
    return {loaded, ZAMOFwServiceFree};
}

void forEachService(const VisitService& visit) {
    const ServiceCatalogue catalogue = loadServiceCatalogue();
    std::set<std::string> names;
    for (const char* const directory : kServiceDirectories) {
        forEachFile(directory, [&names](const fs::path& path) {
            if (path.extension() == kServiceExtension) {
                names.insert(path.stem());
            }
        });
    }
    for (const std::string& name : names) {
        const ZAMOFwService* const service = ZAMOFWServiceFind(catalogue.get(), name.c_str());
        if (service != nullptr) {
            visit(name, *service);
        }
    }
}

Vocabulary systemVocabulary() {
    Vocabulary vocabulary;
    forEachService([&vocabulary](const std::string& name, const ZAMOFwService& service) {
        vocabulary.services[name] = service.dstProtocol;
    });
    vocabulary.countries = countriesWithData();
    return vocabulary;
}

CheckContext systemCheckContext() {
    CheckContext context;
    context.services = whenAsked(serviceNames);
    (void)FW::ZAMOFW().fwAdapterEnum(context.adapters);
    context.hasCountry = [countries = whenAsked(countriesWithData)](const std::string& code,
                                                                    int family) {
        const auto found = countries().find(code);
        return found != countries().end() && found->second.count(family) != 0;
    };
    return context;
}

}  // namespace zamofw
