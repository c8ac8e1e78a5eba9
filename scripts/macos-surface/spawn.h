// posix_spawn as POSIX has it (from the host's C library, which the check
// builds against) and the two extensions Apple's posix_spawn(2) and
// posix_spawn_file_actions_addclose(3) manual pages add to it.
#pragma once

#include_next <spawn.h>

#define POSIX_SPAWN_CLOEXEC_DEFAULT 0x4000

#ifdef __cplusplus
extern "C" {
#endif

int posix_spawn_file_actions_addinherit_np(posix_spawn_file_actions_t* file_actions, int filedes);

#ifdef __cplusplus
}
#endif
