// What the store and the daemons both need before they create their file: its directory.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace tessera::kit {

// Creates the directories that lead to `path` (mkdir -p of its directory), each 0755. False, with
// errno set, when one can't be made.
inline bool make_parent_directories(const std::string &path) {
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    if (::mkdir(path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST) {
      return false;
    }
  }
  return true;
}

}  // namespace tessera::kit
