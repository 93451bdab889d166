// Source file names for reports.
#include <cstring>

#include "tessera/trace.h"

extern "C" const char *TraceFileName(const char *path) {
  const char *slash = std::strrchr(path, '/');
  return slash != nullptr ? slash + 1 : path;
}
