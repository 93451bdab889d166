// A list lookup by name, against glibc's getsubopt(3), the C library's own reader of
// 'name=value,name=value' texts. getsubopt rewrites the text, so its rounds include a copy of the
// list (a memcpy of 200 bytes, a few nanoseconds).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "tessera/nvpair.h"

namespace {

// 16 pairs of 'keyNN=valueNN'; the lookups search the last one, so they walk the whole list.
std::string make_list() {
  std::string list;
  for (int i = 0; i < 16; ++i) {
    char pair[32];
    std::snprintf(pair, sizeof pair, "%skey%02d=value%02d", i == 0 ? "" : ",", i, i);
    list += pair;
  }
  return list;
}

// The library's value readers, the plain and the resolving one.
template <uint32_t (*Reader)(const char *, const char *, unsigned int, char *)>
void BM_ValueReader(benchmark::State &state) {
  const std::string list = make_list();
  char value[32];
  for (auto _ : state) {
    benchmark::DoNotOptimize(Reader(list.c_str(), "key15", sizeof value, value));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(list.size()));
}
BENCHMARK(BM_ValueReader<NvPairListGetValue>)->Name("BM_NvPairListGetValue");
BENCHMARK(BM_ValueReader<NvPairListGetLongValue>)->Name("BM_NvPairListGetLongValue");

// The peer: the same lookup with getsubopt, which needs a writable copy of the list.
void BM_Getsubopt(benchmark::State &state) {
  const std::string list = make_list();
  std::string work = list;
  char key[] = "key15";
  char *const tokens[] = {key, nullptr};
  for (auto _ : state) {
    std::memcpy(work.data(), list.c_str(), list.size() + 1);
    char *options = work.data();
    char *value = nullptr;
    while (*options != '\0' && getsubopt(&options, tokens, &value) != 0) {
    }
    benchmark::DoNotOptimize(value);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(list.size()));
}
BENCHMARK(BM_Getsubopt);

}  // namespace
