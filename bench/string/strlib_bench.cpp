// The tokenizer on command lines of growing length, against a splitter into standard containers
// that grows its vector in place; and the mail and domain checks against std::regex.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <regex>
#include <string>

#include "tessera/strlib.h"
#include "tests/string/strlib_test.h"

namespace {

// "--option0=value0 'quoted 1' --option2=value2 ..." with `count` tokens.
std::string command_line(int64_t count) {
  std::string line;
  for (int64_t i = 0; i < count; ++i) {
    const std::string n = std::to_string(i);
    line += i % 3 == 1 ? "'quoted " + n + "'" : "--option" + n + "=value" + n;
    line += ' ';
  }
  line.pop_back();
  return line;
}

void BM_StrTokenize(benchmark::State &state) {
  const std::string line = command_line(state.range(0));
  for (auto _ : state) {
    char **argv = StrTokenize(line.c_str());
    benchmark::DoNotOptimize(argv);
    std::free(static_cast<void *>(argv));
  }
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_StrTokenize)->Arg(10)->Arg(100)->Arg(1000)->Complexity();

void BM_ReferenceSplit(benchmark::State &state) {
  const std::string line = command_line(state.range(0));
  for (auto _ : state) benchmark::DoNotOptimize(tessera::test::reference_tokens(line));
  state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_ReferenceSplit)->Arg(10)->Arg(100)->Arg(1000)->Complexity();

const char *const kMail = "first.last+tag@mail.example-domain.com";
const char *const kDomain = "controller-07.rack3.datacenter.example.com";

void BM_StrIsValidEmailAddress(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(StrIsValidEmailAddress(kMail));
}
BENCHMARK(BM_StrIsValidEmailAddress);

void BM_RegexMail(benchmark::State &state) {
  // Allowed characters before and after the '@', dots kept apart in the domain part.
  const std::regex mail(R"([!#-'*+\-./0-9=?A-Z^-~"]+@)"
                        R"([!#-'*+\-0-9=?A-Z^-~]+(\.[!#-'*+\-0-9=?A-Z^-~]+)+)");
  for (auto _ : state) benchmark::DoNotOptimize(std::regex_match(kMail, mail));
}
BENCHMARK(BM_RegexMail);

void BM_StrIsValidDomainName(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(StrIsValidDomainName(kDomain));
}
BENCHMARK(BM_StrIsValidDomainName);

void BM_StrIsDomainName(benchmark::State &state) {
  for (auto _ : state) benchmark::DoNotOptimize(StrIsDomainName(kDomain));
}
BENCHMARK(BM_StrIsDomainName);

void BM_RegexDomain(benchmark::State &state) {
  const std::regex domain(R"([A-Za-z0-9][A-Za-z0-9-]*(\.[A-Za-z0-9-]+)*\.?)");
  for (auto _ : state) benchmark::DoNotOptimize(std::regex_match(kDomain, domain));
}
BENCHMARK(BM_RegexDomain);

}  // namespace
