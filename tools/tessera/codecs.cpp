// Text codecs at a shell: values and names of name/value lists, and CIM object paths taken apart.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include <tessera/nvpair.h>
#include <tessera/objpath.h>

#include "cli.h"

namespace tessera_cli {
namespace {

constexpr unsigned kLongValueSize = 1200;  // what the escapes are resolved in

int nvpair_get(const Command &, const Args &args) {
  const auto &list = args.positional[0];
  const auto &name = args.positional[1];
  const bool raw = args.has("raw");
  const auto size = static_cast<unsigned>(
      raw ? list.size() + 1 : std::min<std::size_t>(list.size() + 1, kLongValueSize));
  std::vector<char> value(size);
  const uint32_t status =
      raw ? NvPairListGetValue(list.c_str(), name.c_str(), size, value.data())
          : NvPairListGetLongValue(list.c_str(), name.c_str(), size, value.data());
  switch (status) {
    case NVPAIR_OK:
      std::printf("%s\n", value.data());
      return kOk;
    case NVPAIR_NOT_FOUND:
      fail_status(name, status, "no such name in the list");
      return kNo;
    case NVPAIR_TOO_SMALL:
      return fail_status(name, status, "the value is longer than 1199 characters");
    default:
      return fail_status(name, status,
                         "the list is malformed: a ',' before the '=' of a pair, or a second '='");
  }
}

int nvpair_names(const Command &, const Args &args) {
  const auto &list = args.positional[0];
  std::vector<char> name(list.size() + 1);
  for (int32_t index = 0;; ++index) {
    const uint32_t status =
        NvPairListGetName(list.c_str(), index, static_cast<unsigned>(name.size()), name.data());
    if (status == NVPAIR_NO_INDEX || status == NVPAIR_NO_NAME) {
      return kOk;
    }
    if (status != NVPAIR_OK) {
      return fail_status("name " + std::to_string(index), status, "unreadable");
    }
    std::printf("%s\n", name.data());
  }
}

int objpath(const Command &, const Args &args) {
  const auto &text = args.positional[0];
  // The record and its strings share the buffer; grow it until they fit.
  std::vector<ObjectPath> buffer;
  int32_t status = 504;
  for (std::size_t bytes = 256 + 4 * text.size(); status == 504 && bytes < (1U << 24); bytes *= 2) {
    buffer.assign(bytes / sizeof(ObjectPath) + 1, ObjectPath{});
    status = ObjectPathInit(buffer.data(), static_cast<int32_t>(bytes), text.c_str());
  }
  if (status != 0) {
    return fail_status(text, status,
                       status == 4 ? "not an object path: no '.' behind the last ':', or a blank "
                                     "in a key name"
                                   : "too long to parse");
  }
  const ObjectPath &path = buffer.front();
  if (args.positional.size() == 2) {
    const char *value = ObjectPathGetPropertyValue(&path, args.positional[1].c_str());
    if (value == nullptr) {
      fail(text, "no key property " + args.positional[1]);
      return kNo;
    }
    std::printf("%s\n", value);
    return kOk;
  }
  const bool as_json = args.has("json");
  std::string keys;
  if (!as_json) {
    std::printf("host:       %s\nnamespace:  %s\nclass:      %s\n", path.host, path.nameSpace,
                path.className);
  }
  for (uint16_t i = 0; i < path.pairCount; ++i) {
    ObjectPathPair pair;  // the table stands unaligned behind the class name
    std::memcpy(&pair, reinterpret_cast<const char *>(path.pairs) + i * sizeof pair, sizeof pair);
    if (as_json) {
      keys += std::string(i == 0 ? "" : ", ") + "{\"name\": " + json(pair.name) +
              ", \"value\": " + json(pair.value) + "}";
    } else {
      std::printf("key:        %s=%s\n", pair.name, pair.value);
    }
  }
  if (as_json) {
    std::printf("{\"host\": %s, \"namespace\": %s, \"class\": %s, \"keys\": [%s]}\n",
                json(path.host).c_str(), json(path.nameSpace).c_str(), json(path.className).c_str(),
                keys.c_str());
  }
  return kOk;
}

}  // namespace

std::vector<Command> codec_commands() {
  return {
      {"nvpair get",
       "[OPTIONS] LIST NAME",
       "a value of a name/value list",
       "Prints the value of NAME in LIST, a text such as 'a=1,b=2', with the escapes\n"
       "#EQU# and #CMT# resolved to '=' and ','. As in the tools' lists, the first pair whose\n"
       "name is a prefix of NAME matches. Exit status 3 when no pair does.\n",
       {{"raw", 'r', nullptr, "leave #EQU# and #CMT# as they stand"}},
       2,
       2,
       nvpair_get},
      {"nvpair names",
       "LIST",
       "the names of a name/value list",
       "Prints the names of LIST's pairs, one a line; a backslash takes the next character\n"
       "literally.\n",
       {},
       1,
       1,
       nvpair_names},
      {"objpath",
       "[OPTIONS] PATH [KEY]",
       "take a CIM object path apart",
       "Parses PATH, such as '//host/root/cimv2:CIM_Foo.Key=1,Other=2', and prints its host,\n"
       "namespace, class and key properties, or with KEY that key's value (exit status 3\n"
       "when there is no such key).\n",
       {kJsonOption},
       1,
       2,
       objpath},
  };
}

}  // namespace tessera_cli
