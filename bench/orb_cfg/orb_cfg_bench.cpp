// Name translation and a store read end to end. The peer is the plain way of walking the same
// catalogue: a strcmp over every row's text until one is equal.
#include <benchmark/benchmark.h>

#include <array>
#include <cstdio>
#include <cstring>

#include "capture_sink.h"
#include "fake_store.h"
#include "orb_cfg/orb_cfg_internal.h"
#include "tessera/orb_cfg.h"

namespace {

using tessera::orb_cfg::kPropertyRowCount;
using tessera::orb_cfg::property_table;

// The peer: the first row whose legacy path (or store key) equals the name, by strcmp.
int32_t strcmp_scan(const char *name, bool by_key) {
  for (int32_t i = 0; i < kPropertyRowCount; ++i) {
    const char *text = by_key ? property_table[i].store_key() : property_table[i].legacy_path();
    if (std::strcmp(text, name) == 0) {
      return i;
    }
  }
  return -1;
}

// convert_prop_name's work done with the peer's lookup, for the same names.
int32_t convert_by_strcmp(const char *name, char *key) {
  if (std::strchr(name, '/') == nullptr) {
    const int32_t row = strcmp_scan(name, true);
    std::strcpy(key, name);
    return row < 0 ? 0 : property_table[row].type;
  }
  if (const int32_t row = strcmp_scan(name, false); row >= 0) {
    std::strcpy(key, property_table[row].id != 0 ? property_table[row].store_key() : name);
    return property_table[row].type;
  }
  char stem[128];
  int32_t number = 0;
  if (tessera::orb_cfg::splitPropertyIndexSuffix(name, stem, &number) == 0) {
    std::strcpy(key, name);
    return 0;
  }
  if (std::snprintf(key, 128, "%s%d", stem, number) < 0) {
    key[0] = '\0';
  }
  const int32_t row = strcmp_scan(stem, false);
  return row < 0 ? 0 : property_table[row].type;
}

// Legacy path near the end of the catalogue, store key in its middle, an indexed name, a miss.
const char *const kNames[] = {"ENFORCED/IPBLOCK/penaltytime", "rp_str_media_encrypt",
                              "MIR/USER/name3", "NO_SUCH/property"};

void BM_Convert(benchmark::State &state, int32_t (*convert)(const char *, char *)) {
  const char *name = kNames[state.range(0)];
  std::array<char, 128> key{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(convert(name, key.data()));
    benchmark::ClobberMemory();
  }
  state.SetLabel(name);
}
BENCHMARK_CAPTURE(BM_Convert, convert_prop_name, convert_prop_name)->DenseRange(0, 3);
BENCHMARK_CAPTURE(BM_Convert, strcmp_scan, convert_by_strcmp)->DenseRange(0, 3);

// A store-backed read through every step: special rows, translation, typed read, "%d", the cut.
// The in-memory store and the capture sink (which formats the debug report) are timed with it.
void BM_GetPropertyOri(benchmark::State &state) {
  auto &store = tessera::test::FakeStore::instance();
  auto &sink = tessera::test::CaptureSink::instance();
  store.reset();
  store.set_int("firewall_int_ip_block_penalty_time", 300);
  std::array<char, 1025> out{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        Cfgmgr_Get_Property_ori("ENFORCED/IPBLOCK/penaltytime", out.data(), out.size()));
    store.clear_calls();
    sink.reset();
  }
}
BENCHMARK(BM_GetPropertyOri);

}  // namespace
