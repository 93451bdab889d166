// What the kit's tests share: a scratch store per test, the store client's own orb_* functions,
// and child processes (the daemons and the client program) with their output.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "scratch.h"
#include "tessera/store_client.h"
#include "tessera_store.h"

namespace tessera::kit::test {

// A fresh database in a directory of its own, named by TESSERA_STORE_DB while it lives.
class ScratchStore {
 public:
  ScratchStore();
  ~ScratchStore();
  ScratchStore(const ScratchStore &) = delete;
  ScratchStore &operator=(const ScratchStore &) = delete;
  std::string path() const { return dir_.file("store.db"); }

 private:
  tessera::test::ScratchDir dir_;
};

// The orb_* functions of libtessera-store.so itself. A test program defines its own in-memory
// store client, which would win a plain call; these are looked up in the library.
struct Orb {
  decltype(&orb_config_get_bool) get_bool;
  decltype(&orb_config_get_int) get_int;
  decltype(&orb_config_get_str) get_str;
  decltype(&orb_config_get_str_n) get_str_n;
  decltype(&orb_config_set_int) set_int;
  decltype(&orb_config_set_str) set_str;
  decltype(&orb_config_set_str_n) set_str_n;
  decltype(&orb_session_get_info) session_info;
  decltype(&orb_session_get_children_info) children_info;
  decltype(&orb_session_get_type_info) type_info;
  decltype(&orb_function_execute) execute;
  decltype(&orb_event_occurred) event;
};
const Orb &orb();

// Sessions for seeding.
tessera_store_session session(uint32_t id, const char *type, const char *user = "",
                              const char *address = "", uint32_t parent = 0);
inline int add_session(const tessera_store_session &s) {
  return tessera_store_add_session(&s);
}

// A program of the kit run as a child process, its standard output (and with `errors` its
// standard error too) kept in a pipe.
class Child {
 public:
  explicit Child(std::vector<std::string> argv, bool errors = false);
  ~Child();  // kills and reaps the process if it still runs
  Child(const Child &) = delete;
  Child &operator=(const Child &) = delete;

  pid_t pid() const { return pid_; }
  // Waits for the next line of output (without its line feed); empty at the end of output.
  std::string line();
  // Waits for the exit and returns the status as waitpid gives it; reads the rest of the output.
  int wait();
  void signal(int number);
  const std::string &output() const { return output_; }

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  std::string output_;
  std::size_t taken_ = 0;
};

// Runs a program to its end: its exit code (or 128 + signal) and output.
struct Outcome {
  int code;
  std::string output;
};
Outcome run(std::vector<std::string> argv);

// Paths of the kit's programs, as built.
inline const std::string kMappingd = TESSERA_KIT_MAPPINGD;
inline const std::string kSessiond = TESSERA_KIT_SESSIOND;
inline const std::string kClient = TESSERA_KIT_CLIENT;

// The client's load command as `clients` processes at once, client c on the properties BASEc.0
// to BASEc.(count-1); `mode` is "retry", "direct" or "".
std::vector<std::unique_ptr<Child>> start_load(const std::string &base, int clients, int count,
                                               const std::string &mode);
// Gives the mapping daemon the even ones of those properties in one transaction; the odd ones stay
// the store's. False when the store fails.
bool own_half(const std::string &base, int clients, int count);

// A daemon of the kit in the foreground, serving `socket` once it is listening.
class Daemon {
 public:
  Daemon(const std::string &program, const char *socket);
  ~Daemon();  // SIGTERM, then waits
  Daemon(const Daemon &) = delete;
  Daemon &operator=(const Daemon &) = delete;
  // Stops it with `number` and returns its wait status.
  int stop(int number);
  void restart();
  // Waits for a line of its log that holds `text` and returns it; empty when the log ends first.
  std::string log_line_with(const std::string &text);

 private:
  std::string program_;
  std::string socket_;
  std::unique_ptr<Child> child_;
};

// A stream connection to `socket`; -1 when nothing accepts connections there.
int connect_to(const char *socket);
// True once something accepts connections at `socket`.
bool wait_for_socket(const char *socket, std::chrono::milliseconds limit);

}  // namespace tessera::kit::test
