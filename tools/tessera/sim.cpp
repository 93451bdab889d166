// The simulated controller: the workstation kit's two daemons and a seeded store.
#include "cli.h"

namespace tessera_cli {

std::vector<Command> sim_commands() { return {}; }

void join_simulation() {}

}  // namespace tessera_cli
