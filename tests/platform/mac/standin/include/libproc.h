// The path of a process's program.
#pragma once

#include <stdint.h>

#define PROC_PIDPATHINFO_MAXSIZE 4096

/// The length of the path, 0 when there is none. A larger buffer is refused.
extern "C" int proc_pidpath(int pid, void* buffer, uint32_t size);
