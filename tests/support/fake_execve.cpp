#include "fake_execve.h"

#include <cerrno>
#include <cstdlib>

#include <unistd.h>

#include "tessera/store_client.h"

extern "C" int32_t tattletale_standin1_execve(const char *path, char *const argv[],
                                              char *const envp[]) {
  if (const char *error = std::getenv(tessera::test::kExecveFailVariable); error != nullptr) {
    errno = static_cast<int>(std::strtol(error, nullptr, 10));
    return -1;
  }
  return ::execve(path, argv, envp);
}
