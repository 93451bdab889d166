// Property operations per second (a write, a read back and a second read per property) by 1, 2
// and 8 client processes at once: through the mapping daemon, half of the properties its own and
// half falling back to the store, against the same load on the store alone (the _ori entry
// points, no daemon). The daemon binds its real socket, so the program runs itself in the
// private namespace of tools/ns-run.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "fake_daemon.h"
#include "kit_support.h"
#include "store_client/daemon_message.h"

namespace {

using namespace tessera::kit::test;

constexpr const char *kBase = "bench.c";  // client c's properties: bench.cC.N
constexpr int kCount = 250;               // properties per client and run
constexpr int kMaxClients = 8;

void BM_PropertyOperations(benchmark::State &state, const char *mode) {
  const int clients = static_cast<int>(state.range(0));
  for (auto _ : state) {
    for (auto &child : start_load(kBase, clients, kCount, mode)) {
      if (child->wait() != 0) {
        state.SkipWithError("a client failed");
      }
    }
  }
  state.SetItemsProcessed(state.iterations() * clients * kCount * 3);
}
// 1, 2 and 8 clients; each run is long enough to count once, a few times over.
void clients(benchmark::internal::Benchmark *bench) {
  bench->Arg(1)->Arg(2)->Arg(8)->UseRealTime()->Unit(benchmark::kMillisecond)->Iterations(3);
}
BENCHMARK_CAPTURE(BM_PropertyOperations, through_daemon, "")->Apply(clients);
BENCHMARK_CAPTURE(BM_PropertyOperations, store_only, "direct")->Apply(clients);

}  // namespace

int main(int argc, char **argv) {
  if (!tessera::test::in_private_namespace()) {
    std::vector<char *> args{const_cast<char *>(TESSERA_NS_RUN), argv[0]};
    args.insert(args.end(), argv + 1, argv + argc);
    args.push_back(nullptr);
    ::execv(args[0], args.data());
    return 127;
  }
  ScratchStore store;
  own_half(kBase, kMaxClients, kCount);
  Daemon mapping(kMappingd, tessera::wire::kMappingSocketPath);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
