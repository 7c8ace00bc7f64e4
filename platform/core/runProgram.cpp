#include <zamo/core.h>

#include <exception>

#include "platform/base/childProcess.h"
#include "platform/base/export.h"
#include "platform/base/fail.h"
#include "platform/base/watchedChild.h"

namespace {

int run(const char* path, const char* const argv[]) {
    const int status = zamo::runChild(path, argv);
    if (status < 0) {
        return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }
    return status == 0 ? 0 : -1;
}

// The thread waits for the program, so that it leaves no zombie.
int startInBackground(const char* path, const char* const argv[]) {
    zamo::WatchedChild child;
    if (!child.startWithThread(path, argv, {})) {
        return ZAMO_FAIL(ZAMO_ERR_SYSTEM);
    }
    child.detach();
    return 0;
}

}  // namespace

ZAMO_EXPORT int VLIBCExecv(const char* path, const char* const argv[], int wait) try {
    if (path == nullptr || argv == nullptr || argv[0] == nullptr) {
        return ZAMO_FAIL(ZAMO_ERR_BAD_PARAMETERS);
    }
    return wait != 0 ? run(path, argv) : startInBackground(path, argv);
} catch (const std::exception&) {
    return ZAMO_FAIL(ZAMO_ERR_NO_MEMORY);
}
