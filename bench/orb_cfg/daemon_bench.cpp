// A property read through the mapping daemon, against its peer: the bare exchange of the same
// message over the same socket (connect, send, receive, close) with nothing around it. A second
// case times the daemon's status 4 and the fallback to the in-memory store behind it.
//
// The daemon is bound at its real socket path, so this program runs only inside the private
// namespace:  tools/ns-run build/gcc-release/bench/orb_cfg/bench_orb_cfg_daemon
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "capture_sink.h"
#include "fake_daemon.h"
#include "fake_store.h"
#include "tessera/orb_cfg.h"

namespace {

using tessera::test::FakeDaemon;
using tessera::test::kMappingSocket;
namespace dm = tessera::test::daemon_message;

constexpr const char kName[] = "WEBSERVER/http_port";

// The library's read: message allocated and filled, exchanged, the value delivered.
void BM_CfgmgrGetPropertyThroughDaemon(benchmark::State &state) {
  FakeDaemon daemon(kMappingSocket);
  daemon.reply(dm::success("8080"));
  std::array<char, 1025> out{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(Cfgmgr_Get_Property(kName, out.data(), out.size()));
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_CfgmgrGetPropertyThroughDaemon);

// The peer: the same request over the same socket, by hand.
void BM_BareExchange(benchmark::State &state) {
  FakeDaemon daemon(kMappingSocket);
  daemon.reply(dm::success("8080"));
  std::array<unsigned char, TESSERA_DAEMON_MESSAGE_SIZE> message{};
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path, kMappingSocket);
  const auto length = static_cast<socklen_t>(std::strlen(kMappingSocket) + 3);
  for (auto _ : state) {
    message.fill(0);
    message[0] = 1;
    message[1] = 11;
    std::memcpy(message.data() + dm::kName, kName, sizeof kName);
    const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), length) != 0) {
      state.SkipWithError("connect failed");
    }
    benchmark::DoNotOptimize(::send(fd, message.data(), message.size(), 0));
    benchmark::DoNotOptimize(::recv(fd, message.data(), message.size(), 0));
    ::close(fd);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_BareExchange);

// A store-backed read of the same property, timed with the in-memory store and capture sink.
void time_store_read(benchmark::State &state, int32_t (*read)(const char *, char *, unsigned int)) {
  auto &store = tessera::test::FakeStore::instance();
  auto &sink = tessera::test::CaptureSink::instance();
  store.reset();
  store.set_int("gui_int_http_port", 8080);
  std::array<char, 1025> out{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(read(kName, out.data(), out.size()));
    store.clear_calls();
    sink.reset();
  }
}

// Status 4, then the store: the exchange plus the whole store-backed read.
void BM_CfgmgrGetPropertyStatus4Fallback(benchmark::State &state) {
  FakeDaemon daemon(kMappingSocket);
  daemon.reply(dm::refusal(4));
  time_store_read(state, Cfgmgr_Get_Property);
}
BENCHMARK(BM_CfgmgrGetPropertyStatus4Fallback);

// The fallback's own part, for scale: the same store read without the daemon.
void BM_StoreReadWithoutDaemon(benchmark::State &state) {
  time_store_read(state, Cfgmgr_Get_Property_ori);
}
BENCHMARK(BM_StoreReadWithoutDaemon);

}  // namespace

int main(int argc, char **argv) {
  if (!tessera::test::in_private_namespace()) {
    std::fprintf(stderr,
                 "%s binds the mapping daemon's socket at its real path; run it in the private "
                 "namespace:\n  tools/ns-run %s\n",
                 argv[0], argv[0]);
    return 2;
  }
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
