// A tool as the kit's integration tests run it: libtessera.so.1 with the kit's store client and
// sink, against the daemons. It runs the commands of its command line in order and prints one
// line for each.
//   get NAME | set NAME VALUE         Cfgmgr_Get_Property / Cfgmgr_Set_Property: "status value"
//   dcs-get NAME | dcs-set NAME VALUE the DCSGEN pair
//   sessions | sessions-of USER       ssn_entry_list, of all or of one user: "status id..."
//   info ID                           ssn_entry_getinfo: "status user address text type kvm media
//                                     privilege word"
//   close ID | orb-close ID           ssn_close / ssn_orb_close: "status"
//   load PREFIX COUNT [retry|direct]  writes and reads back COUNT properties PREFIX.N, then reads
//                                     them all again: "halfway" at COUNT/2, at the end "ops N
//                                     failed N wrong N"; with retry each failed call is repeated
//                                     until it succeeds; direct goes to the store without the
//                                     daemon. Exits 1 when a value was wrong or lost.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "tessera/orb_cfg.h"
#include "tessera/session.h"

namespace {

char value[1025];

void info(uint32_t id) {
  char user[SSN_USER_SIZE] = {};
  char text[SSN_ADDRESS_TEXT_SIZE] = {};
  uint32_t one = 0, address = 0, zero = 0, kvm = 0, media = 0, privilege = 0, word = 0, max = 0,
           last = 0;
  uint8_t type = 0;
  const int32_t status = ssn_entry_getinfo(id, user, &one, &address, text, &type, &zero, &kvm,
                                           &media, &privilege, &word, &max, &last);
  std::printf("%d %s %08x %s %u %u %u %u %u\n", status, user, address, text, type, kvm, media,
              privilege, word);
}

// Retries a call that fails while the daemon is away, for up to half a minute.
template <typename Call>
int32_t persist(bool retry, int *failed, Call call) {
  const auto give_up = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  for (;;) {
    const int32_t status = call();
    if (status == 0 || !retry) {
      return status;
    }
    ++*failed;
    if (std::chrono::steady_clock::now() > give_up) {
      std::printf("gave up\n");
      std::exit(3);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

int load(const std::string &prefix, int count, bool retry, bool direct) {
  const auto get = direct ? Cfgmgr_Get_Property_ori : Cfgmgr_Get_Property;
  const auto set = direct ? Cfgmgr_Set_Property_ori : Cfgmgr_Set_Property;
  int failed = 0;
  int wrong = 0;
  long ops = 0;
  auto name_of = [&](int i) { return prefix + "." + std::to_string(i); };
  auto value_of = [&](int i) { return prefix + "-value-" + std::to_string(i * 7919); };
  auto read_back = [&](int i) {
    ++ops;
    value[0] = '\0';
    if (persist(retry, &failed, [&] { return get(name_of(i).c_str(), value, sizeof value); }) !=
        0) {
      ++failed;
    } else if (value_of(i) != value) {
      ++wrong;
    }
  };
  for (int i = 0; i < count; ++i) {
    if (i == count / 2) {
      std::printf("halfway\n");
      std::fflush(stdout);
    }
    ++ops;
    if (persist(retry, &failed, [&] { return set(name_of(i).c_str(), value_of(i).c_str()); }) !=
        0) {
      ++failed;
      continue;
    }
    read_back(i);
  }
  for (int i = 0; i < count; ++i) {
    read_back(i);
  }
  std::printf("ops %ld failed %d wrong %d\n", ops, failed, wrong);
  return wrong == 0 && (retry || failed == 0) ? 0 : 1;
}

}  // namespace

int main(int argc, char **argv) {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  for (int i = 1; i < argc; ++i) {
    const std::string command = argv[i];
    auto next = [&] { return i + 1 < argc ? argv[++i] : const_cast<char *>(""); };
    if (command == "get" || command == "dcs-get") {
      const char *name = next();
      value[0] = '\0';
      const int32_t status = command == "get" ? Cfgmgr_Get_Property(name, value, sizeof value)
                                              : DM_DCSGEN_Get_Property(name, value, sizeof value);
      std::printf("%d %s\n", status, value);
    } else if (command == "set" || command == "dcs-set") {
      const char *name = next();
      const char *text = next();
      std::printf("%d\n", command == "set" ? Cfgmgr_Set_Property(name, text)
                                           : DM_DCSGEN_Set_Property(name, text));
    } else if (command == "sessions" || command == "sessions-of") {
      const char *user = command == "sessions" ? nullptr : next();
      uint32_t ids[SSN_MAX_IDS];
      uint32_t count = 0;
      std::printf("%d", ssn_entry_list(user, 0, 0, ids, &count));
      for (uint32_t n = 0; n < count; ++n) {
        std::printf(" %u", ids[n]);
      }
      std::printf("\n");
    } else if (command == "info") {
      info(static_cast<uint32_t>(std::strtoul(next(), nullptr, 10)));
    } else if (command == "close" || command == "orb-close") {
      const auto id = static_cast<uint32_t>(std::strtoul(next(), nullptr, 10));
      std::printf("%d\n", command == "close" ? ssn_close(id) : ssn_orb_close(id));
    } else if (command == "load") {
      const std::string prefix = next();
      const int count = std::atoi(next());
      const std::string mode = i + 1 < argc ? argv[i + 1] : "";
      i += mode == "retry" || mode == "direct" ? 1 : 0;
      if (load(prefix, count, mode == "retry", mode == "direct") != 0) {
        return 1;
      }
    } else {
      std::fprintf(stderr, "kit_client: unknown command %s\n", command.c_str());
      return 2;
    }
  }
  return 0;
}
