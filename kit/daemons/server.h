// What both daemons are made of: the command line, the log, and a local stream server that takes
// one request per connection and answers it, many connections at once.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "store_client/daemon_message.h"

namespace tessera::kit {

// The reply to the bytes that arrived on one connection: at most one message, fewer when the
// client stopped sending. Called from several threads at once.
using RequestHandler = std::function<wire::DaemonMessage(std::span<const uint8_t> request)>;

// A daemon's whole life. The command line is [-f|--foreground] [-s|--socket PATH]
// [-p|--pid-file PATH] [-v|--verbose] [-h|--help]: the usage and an exit on --help (0) and on a
// bad option (2). Once the store proves usable, it serves `socket` (or PATH) until SIGTERM or
// SIGINT: it creates the socket's directory, takes the place of a stale socket (but not of a live
// one), and, unless in the foreground, goes to the background once listening. Returns the exit
// code.
int run_daemon(int argc, char **argv, const char *program, const char *socket, const char *purpose,
               const RequestHandler &handler);

}  // namespace tessera::kit
