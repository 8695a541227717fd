// posix_spawn with what macOS adds: a flag that leaves every file of the parent behind.
#pragma once

#include_next <spawn.h>

#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000

extern "C" {
int standinSetSpawnFlags(posix_spawnattr_t* attributes, int flags);
int standinSpawn(pid_t* child, const char* program, const posix_spawn_file_actions_t* files,
                 const posix_spawnattr_t* attributes, char* const* words, char* const* environment);
}

#define posix_spawnattr_setflags standinSetSpawnFlags
#define posix_spawn standinSpawn
