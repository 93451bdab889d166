// What the three parts of `tessera sim` share: the daemons it runs, where it keeps their pid
// files, logs and the namespace mark, and the entry points of the namespace set-up (sim_ns.cpp)
// and of the seeding (sim_seed.cpp). The daemons' lifecycle and the commands are in sim.cpp.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "cli.h"

namespace tessera_cli::sim {

struct Daemon {
  const char *program;
  const char *socket;
};
inline constexpr Daemon kDaemons[] = {
    {"tessera-mappingd", "/var/run/tolvex/dmmappingSocket"},
    {"tessera-sessiond", "/var/run/tolvex/ipmiextdSocket"},
};

// Where the pid files, logs and the namespace mark live; fixed before the namespace is joined,
// where the user id reads differently.
const std::string &sim_dir();
std::string namespace_mark();
bool exists(const std::string &path);
// The daemon's process id when it runs (not a zombie, and the program is the daemon), else 0.
pid_t running_pid(const Daemon &daemon);

// The namespace's entry point: a running daemon, when the simulation runs in a namespace.
pid_t namespace_pid();
// Moves the calling process into a new user and mount namespace, as root inside, with an empty
// tmpfs of its own at /var/run/tolvex. Returns an empty text, or what went wrong.
std::string enter_new_namespace();
bool can_write_tolvex();

// The kit store's database, or "unavailable".
std::string store_path();
// `sim seed`, where the kit's store is built; none otherwise.
std::vector<Command> seed_commands();

}  // namespace tessera_cli::sim
