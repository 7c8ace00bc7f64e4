#include <zamo/core.h>

#include <cstddef>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "platform/base/export.h"
#include "platform/base/fail.h"

struct VLIBCSzList {
    std::vector<std::string> texts;
};

ZAMO_EXPORT VLIBCSzList* VLIBCSzListAlloc(int capacity) try {
    if (capacity < 0) {
        (void)ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
        return nullptr;
    }
    auto list = std::make_unique<VLIBCSzList>();
    list->texts.reserve(static_cast<std::size_t>(capacity));
    return list.release();
} catch (const std::exception&) {
    (void)ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
    return nullptr;
}

ZAMO_EXPORT int VLIBCSzListPush(VLIBCSzList** list, const char* text) try {
    if (list == nullptr || *list == nullptr || text == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    (*list)->texts.emplace_back(text);
    return 0;
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}

ZAMO_EXPORT const char* VLIBCSzListGet(const VLIBCSzList* list, int index) {
    if (index < 0 || index >= VLIBCSzListCount(list)) {
        return nullptr;
    }
    return list->texts[static_cast<std::size_t>(index)].c_str();
}

ZAMO_EXPORT int VLIBCSzListCount(const VLIBCSzList* list) {
    return list != nullptr ? static_cast<int>(list->texts.size()) : 0;
}

ZAMO_EXPORT void VLIBCSzListFree(VLIBCSzList* list) {
    delete list;
}
