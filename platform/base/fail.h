#ifndef PLATFORM_BASE_FAIL_H
#define PLATFORM_BASE_FAIL_H

#include <zamo/core.h>

// Sets the thread's last error to this place in the source and yields -1; errno stays as it is.
#define ZAMO_FAIL(code) (VLIBCErrSetEx((code), __FILE_NAME__, __LINE__), -1)

#endif
