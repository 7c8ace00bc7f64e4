#ifndef PLATFORM_BASE_FAIL_H
#define PLATFORM_BASE_FAIL_H

#include <zamo/core.h>

// Sets the thread's last error to this source line and evaluates to -1; does not change errno.
#define ZAMO_FAIL(code) (VLIBCErrSetEx((code), __FILE_NAME__, __LINE__), -1)

#endif
