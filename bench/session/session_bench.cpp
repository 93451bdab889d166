// Address texts and type keywords, which tools convert for every session they show, against the
// C library's own conversions.
#include <benchmark/benchmark.h>

#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>

#include "tessera/session.h"

namespace {

constexpr const char *kAddresses[] = {"192.168.0.1", "10.0.0.254", "127.0.0.1", "172.16.31.7"};
constexpr const char *kKeywords[] = {"SSH", "webgui", "redfish", "vKVM", "Bogus"};

void BM_ssn_atoip(benchmark::State &state) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ssn_atoip(kAddresses[i++ & 3]));
  }
}

void BM_sscanf_dotted(benchmark::State &state) {
  std::size_t i = 0;
  for (auto _ : state) {
    int a = 0, b = 0, c = 0, d = 0;
    benchmark::DoNotOptimize(std::sscanf(kAddresses[i++ & 3], "%d.%d.%d.%d", &a, &b, &c, &d));
    benchmark::DoNotOptimize(a + b + c + d);
  }
}

void BM_inet_pton(benchmark::State &state) {
  std::size_t i = 0;
  in_addr address{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(inet_pton(AF_INET, kAddresses[i++ & 3], &address));
  }
}

void BM_ssn_iptostr(benchmark::State &state) {
  char text[SSN_IP_TEXT_SIZE];
  uint32_t address = 0x0100A8C0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(ssn_iptostr(text, address++));
  }
}

void BM_inet_ntop(benchmark::State &state) {
  char text[INET_ADDRSTRLEN];
  in_addr address{0x0100A8C0};
  for (auto _ : state) {
    benchmark::DoNotOptimize(inet_ntop(AF_INET, &address, text, sizeof text));
    ++address.s_addr;
  }
}

void BM_str2ssntype(benchmark::State &state) {
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(str2ssntype(kKeywords[i++ % 5]));
  }
}

BENCHMARK(BM_ssn_atoip);
BENCHMARK(BM_sscanf_dotted);
BENCHMARK(BM_inet_pton);
BENCHMARK(BM_ssn_iptostr);
BENCHMARK(BM_inet_ntop);
BENCHMARK(BM_str2ssntype);

}  // namespace
