// The program starter of the platform, as the workstation has it: plain execve.
#include <unistd.h>

#include "tessera/store_client.h"

extern "C" int32_t tattletale_standin1_execve(const char *path, char *const argv[],
                                              char *const envp[]) {
  return ::execve(path, argv, envp);
}
