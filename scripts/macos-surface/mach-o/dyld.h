// The running program's path, from Apple's dyld documentation: copies it into
// `buf` and answers 0, or answers -1 and sets `*bufsize` to the size needed.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

int _NSGetExecutablePath(char* buf, uint32_t* bufsize);

#ifdef __cplusplus
}
#endif
