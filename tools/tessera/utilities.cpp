// Utilities for a shell: a file in the trace log's hex dump form and the library's checks of
// addresses, domain names and mail addresses.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <tessera/strlib.h>
#include <tessera/trace.h>

#include "cli.h"

namespace tessera_cli {
namespace {

int hexdump(const Command &, const Args &args) {
  const auto &path = args.positional[0];
  std::FILE *file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    return fail(path, std::strerror(errno));
  }
  std::vector<unsigned char> bytes;
  unsigned char chunk[65536];
  std::size_t got = 0;
  while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0 && bytes.size() <= INT32_MAX) {
    bytes.insert(bytes.end(), chunk, chunk + got);
  }
  const bool failed = std::ferror(file) != 0;
  const int error = errno;
  if (file != stdin) {
    std::fclose(file);
  }
  if (failed) {
    return fail(path, std::strerror(error));
  }
  if (bytes.size() > INT32_MAX) {
    return fail(path, "larger than 2 GiB, more than a dump takes");
  }
  // The dump is trace output: it appears only with a level, component and target set.
  TraceLogSetLevel(1);
  TraceLogSetComponent(1);
  TraceLogSetTarget(1);
  TraceHexDump(1, path == "-" ? "standard input" : path.c_str(), bytes.data(),
               static_cast<int32_t>(bytes.size()));
  return kOk;
}

struct Check {
  const char *kind;
  const char *what;
  int32_t (*passes)(const char *text);
};

constexpr Check kChecks[] = {
    {"ip", "an IPv4 address", StrIsValidIPv4Address},
    {"domain", "a domain name", StrIsValidDomainName},
    {"email", "a mail address", StrIsValidEmailAddress},
};

int check(const Command &command, const Args &args) {
  const auto &kind = args.positional[0];
  const auto &text = args.positional[1];
  for (const auto &c : kChecks) {
    if (kind == c.kind) {
      const bool passes = c.passes(text.c_str()) == 1;
      if (!args.has("quiet")) {
        std::printf("%s: %s %s\n", text.c_str(), passes ? "valid as" : "not valid as", c.what);
      }
      return passes ? kOk : kNo;
    }
  }
  return usage_error(command, "unknown check '" + kind + "' (ip, domain or email)");
}

}  // namespace

std::vector<Command> utility_commands() {
  return {
      {"check",
       "[OPTIONS] ip|domain|email TEXT",
       "check an address, domain or mail address",
       "Checks TEXT as the controller's tools do: ip, a dotted IPv4 address with four\n"
       "fields of at most 255; domain, a name with a dot and a letter; email, a mail\n"
       "address. Exit status 0 when it passes, 3 when it doesn't.\n",
       {{"quiet", 'q', nullptr, "print nothing; the exit status tells"}},
       2,
       2,
       check},
      {"hexdump",
       "FILE",
       "print a file as the trace log dumps memory",
       "Prints the bytes of FILE (- for standard input) in the trace log's hex dump: 16\n"
       "bytes a line in hexadecimal and as characters. The address column is where the\n"
       "bytes lie in memory, as in a tool's own trace.\n",
       {},
       1,
       1,
       hexdump},
  };
}

}  // namespace tessera_cli
