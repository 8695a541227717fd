// The one question of many that the backend puts to the kernel: who is that process?
#pragma once

#include <stddef.h>
#include <sys/proc.h>

#define CTL_KERN 1
#define KERN_PROC 14
#define KERN_PROC_PID 1

/// Succeeds and sets `*size` to 0 for a process that does not exist.
extern "C" int sysctl(int* name, unsigned length, void* old, size_t* size, void* fresh,
                      size_t freshSize);
