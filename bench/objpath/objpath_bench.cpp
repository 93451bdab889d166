// Parsing an object path of a typical size, and a key lookup in the parsed record. No other
// library parses this format; the copy of the same bytes into the buffer is the floor to compare
// with.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "tessera/objpath.h"

namespace {

const std::string kPath =
    "//mc.example.com/root/cimv2:CIM_EthernetPort.CreationClassName=\"CIM_EthernetPort\","
    "DeviceID=\"eth0\",SystemCreationClassName=\"CIM_ComputerSystem\",SystemName=\"mc\"";

alignas(ObjectPath) unsigned char buffer[1024];
ObjectPath *const record = reinterpret_cast<ObjectPath *>(reinterpret_cast<std::uintptr_t>(buffer));

void BM_ObjectPathInit(benchmark::State &state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(ObjectPathInit(record, sizeof buffer, kPath.c_str()));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kPath.size()));
}
BENCHMARK(BM_ObjectPathInit);

// The floor: zeroing the buffer and copying the text into it, which any parse does at least.
void BM_ZeroAndCopy(benchmark::State &state) {
  for (auto _ : state) {
    std::memset(buffer, 0, sizeof buffer);
    std::memcpy(buffer + sizeof(ObjectPath), kPath.c_str(), kPath.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(kPath.size()));
}
BENCHMARK(BM_ZeroAndCopy);

void BM_ObjectPathGetPropertyValue(benchmark::State &state) {
  ObjectPathInit(record, sizeof buffer, kPath.c_str());
  for (auto _ : state) {
    benchmark::DoNotOptimize(ObjectPathGetPropertyValue(record, "SystemName"));
  }
}
BENCHMARK(BM_ObjectPathGetPropertyValue);

}  // namespace
