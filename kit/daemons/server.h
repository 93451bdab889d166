// What both daemons are made of: the command line, the log, and a local stream server that takes
// one request per connection and answers it, many connections at once.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>

#include "orb_cfg/daemon_message.h"

namespace tessera::kit {

struct DaemonOptions {
  const char *program = "";
  std::string socket;    // the path to serve
  std::string pid_file;  // written once serving, removed at the end; none when empty
  bool foreground = false;
  bool verbose = false;  // log every request
};

// The command line: [-f|--foreground] [-s|--socket PATH] [-p|--pid-file PATH] [-v|--verbose]
// [-h|--help]. Prints the usage and exits on --help (0) and on a bad option (2).
DaemonOptions parse_options(int argc, char **argv, const char *program, const char *socket,
                            const char *purpose);

// A line to standard error in the foreground, to syslog as a daemon.
void log_line(int priority, const char *format, ...) __attribute__((format(printf, 2, 3)));

// The reply to the bytes that arrived on one connection: at most one message, fewer when the
// client stopped sending. Called from several threads at once.
using RequestHandler = std::function<orb_cfg::DaemonMessage(std::span<const uint8_t> request)>;

// Serves `options.socket` until SIGTERM or SIGINT: creates its directory, takes the place of a
// stale socket (but not of a live one), and, unless in the foreground, goes to the background
// once listening. Returns the exit code.
int serve(const DaemonOptions &options, const RequestHandler &handler);

// A daemon's whole life: its command line, a check that the store can be used, and serve().
int run_daemon(int argc, char **argv, const char *program, const char *socket, const char *purpose,
               const RequestHandler &handler);

}  // namespace tessera::kit
