#include <zamo/serviceconf.h>

#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "platform/serviceconf/serviceFile.h"
#include "posix/file.h"

struct ZAMOFwServiceList {
    struct Entry {
        zamo::Service service;
        ZAMOFwService record = {};  // points into the service and to the entry's key
    };
    std::map<std::string, Entry, std::less<>> entries;
};

namespace {

constexpr const char* kShippedDirectory = "/usr/zamo/etc.defaults/services.d/";
constexpr const char* kAddedDirectory = "/usr/zamo/etc/services.d/";
constexpr std::string_view kSuffix = ".json";

using PathsByName = std::map<std::string, std::string>;

// Hidden files are ignored: editors leave such copies.
bool isServiceFile(std::string_view name) {
    return name.size() > kSuffix.size() && name.front() != '.' &&
           name.substr(name.size() - kSuffix.size()) == kSuffix;
}

// Adds the directory's files to `paths`; they replace earlier ones of the same name.
bool collectFiles(const std::string& directory, PathsByName& paths) {
    const posix::DirectoryPtr opened = posix::openDirectory(directory);
    if (opened == nullptr && errno == ENOENT) {
        return true;
    }
    if (opened == nullptr) {
        syslog(LOG_ERR,
               "zamoserviceconf: %s cannot be read: %s",
               directory.c_str(),
               std::strerror(errno));
        return false;
    }
    for (const dirent* entry = readdir(opened.get()); entry != nullptr;
         entry = readdir(opened.get())) {
        const std::string name = entry->d_name;
        if (!isServiceFile(name)) {
            continue;
        }
        paths[name.substr(0, name.size() - kSuffix.size())] = directory + name;
    }
    return true;
}

void addService(const std::string& name,
                const std::string& path,
                ZAMOFwServiceList& catalogue) try {
    zamo::Service service = zamo::readServiceFile(path);
    const auto position = catalogue.entries.try_emplace(name).first;
    ZAMOFwServiceList::Entry& entry = position->second;
    entry.service = std::move(service);
    entry.record.name = position->first.c_str();
    entry.record.valid = entry.service.enabled ? 1 : 0;
    entry.record.dstProtocol = entry.service.destination.protocol;
    entry.record.dstPorts = entry.service.destination.ports.get();
    entry.record.srcProtocol = entry.service.source.protocol;
    entry.record.srcPorts = entry.service.source.ports.get();
} catch (const std::bad_alloc&) {
    throw;
} catch (const std::exception& problem) {
    syslog(LOG_ERR, "zamoserviceconf: %s is left out: %s", path.c_str(), problem.what());
}

}  // namespace

ZAMO_EXPORT int ZAMOFwServiceEnum(ZAMOFwServiceList** catalogue) try {
    if (catalogue == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    *catalogue = nullptr;

    PathsByName paths;
    if (!collectFiles(kShippedDirectory, paths) || !collectFiles(kAddedDirectory, paths)) {
        return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }
    auto loaded = std::make_unique<ZAMOFwServiceList>();
    for (const auto& [name, path] : paths) {
        addService(name, path, *loaded);
    }
    const int count = static_cast<int>(loaded->entries.size());
    if (count > 0) {
        *catalogue = loaded.release();
    }
    return count;
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT const ZAMOFwService* ZAMOFWServiceFind(const ZAMOFwServiceList* catalogue,
                                                   const char* name) {
    if (catalogue == nullptr || name == nullptr) {
        return nullptr;
    }
    const auto found = catalogue->entries.find(std::string_view(name));
    return found == catalogue->entries.end() ? nullptr : &found->second.record;
}

ZAMO_EXPORT void ZAMOFwServiceFree(ZAMOFwServiceList* catalogue) {
    delete catalogue;
}
