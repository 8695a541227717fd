// The kernel's record of a process, as far as the backend reads it.
#pragma once

#include <sys/time.h>
#include <sys/types.h>

#define SZOMB 5

struct extern_proc {
  union {
    struct timeval __p_starttime;
  } p_un;
  char p_stat;
  pid_t p_pid;
};

struct eproc {
  pid_t e_ppid;
};

struct kinfo_proc {
  struct extern_proc kp_proc;
  struct eproc kp_eproc;
};
