#include <zamo/core.h>

#include <cstdio>

#include "platform/base/export.h"

namespace {

struct LastError {
    int code;
    int line;
    char file[256];
};

thread_local LastError lastError = {};

}  // namespace

ZAMO_EXPORT void VLIBCErrSetEx(int code, const char* file, int line) {
    lastError.code = code;
    lastError.line = line;
    (void)snprintf(lastError.file, sizeof lastError.file, "%s", file != nullptr ? file : "");
}

ZAMO_EXPORT int VLIBCErrGet(void) {
    return lastError.code;
}

ZAMO_EXPORT const char* VLIBCErrorGetFile(void) {
    return lastError.file;
}

ZAMO_EXPORT int VLIBCErrorGetLine(void) {
    return lastError.line;
}
