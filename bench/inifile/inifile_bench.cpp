// Reading generated INI files into a document and freeing it, against inih and iniparser on the
// same files; writing a document; the heap a document takes per key.
#include <benchmark/benchmark.h>

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include <ini.h>
#include <iniparser/iniparser.h>

#include "scratch.h"
#include "tessera/inifile.h"

namespace {

struct Shape {
  int sections;
  int keys;
};
constexpr Shape kSmall{20, 20};
constexpr Shape kLarge{2000, 50};

// The folder of the run's files, removed at exit.
const tessera::test::ScratchDir &scratch() {
  static const tessera::test::ScratchDir dir;
  return dir;
}

// A file of `shape.sections` sections of `shape.keys` keys each, made once per run.
const std::string &file_of(const Shape &shape) {
  static std::string paths[2];
  std::string &path = paths[shape.sections == kSmall.sections ? 0 : 1];
  if (path.empty()) {
    path = scratch().file(shape.sections == kSmall.sections ? "small.ini" : "large.ini");
    std::ofstream out(path);
    out << "; generated for the benchmark\n";
    for (int s = 0; s < shape.sections; ++s) {
      out << "[section_" << s << "]\n";
      for (int k = 0; k < shape.keys; ++k) {
        out << "key_" << k << " = value of key " << k << " in section " << s << '\n';
      }
      out << '\n';
    }
  }
  return path;
}

const Shape &shape_of(const benchmark::State &state) {
  return state.range(0) == 0 ? kSmall : kLarge;
}

void label(benchmark::State &state) {
  const Shape &shape = shape_of(state);
  state.SetLabel(state.range(0) == 0 ? "small" : "large");
  state.counters["keys"] = benchmark::Counter(
      static_cast<double>(shape.sections) * shape.keys * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate);
}

std::size_t heap_in_use() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

void BM_TesseraOpenClose(benchmark::State &state) {
  const std::string &path = file_of(shape_of(state));
  for (auto _ : state) {
    InifileDocument *document = nullptr;
    if (inifileOpen(path.c_str(), &document) != 0) {
      state.SkipWithError("inifileOpen failed");
      break;
    }
    benchmark::DoNotOptimize(document);
    inifileClose(document);
  }
  label(state);
}

int count_key(void *user, const char *, const char *, const char *) {
  ++*static_cast<long *>(user);
  return 1;
}

void BM_InihParse(benchmark::State &state) {
  const std::string &path = file_of(shape_of(state));
  for (auto _ : state) {
    long keys = 0;
    ini_parse(path.c_str(), count_key, &keys);
    benchmark::DoNotOptimize(keys);
  }
  label(state);
}

void BM_IniparserLoadFree(benchmark::State &state) {
  const std::string &path = file_of(shape_of(state));
  for (auto _ : state) {
    dictionary *dict = iniparser_load(path.c_str());
    benchmark::DoNotOptimize(dict);
    iniparser_freedict(dict);
  }
  label(state);
}

// Writing a read document; bytes per second of the written file.
void BM_TesseraSave(benchmark::State &state) {
  InifileDocument *document = nullptr;
  inifileOpen(file_of(shape_of(state)).c_str(), &document);
  const std::string out = scratch().file("saved.ini");
  for (auto _ : state) {
    inifileSave(document, out.c_str());
  }
  std::ifstream saved(out, std::ios::binary | std::ios::ate);
  state.SetBytesProcessed(static_cast<int64_t>(saved.tellg()) * state.iterations());
  inifileClose(document);
  label(state);
}

// Heap a document holds per key: all of it (value fields included, untouched until used) and
// the part that is written, hence resident.
void BM_TesseraHeapPerKey(benchmark::State &state) {
  const Shape &shape = shape_of(state);
  const std::string &path = file_of(shape);
  const double keys = static_cast<double>(shape.sections) * shape.keys;
  double heap = 0;
  double resident = 0;
  for (auto _ : state) {
    malloc_trim(0);
    const std::size_t heap_before = heap_in_use();
    struct rusage before {};
    getrusage(RUSAGE_SELF, &before);
    InifileDocument *document = nullptr;
    inifileOpen(path.c_str(), &document);
    struct rusage after {};
    getrusage(RUSAGE_SELF, &after);
    heap = static_cast<double>(heap_in_use() - heap_before);
    resident = static_cast<double>(after.ru_minflt - before.ru_minflt) *
               static_cast<double>(sysconf(_SC_PAGESIZE));
    inifileClose(document);
  }
  state.counters["heap_per_key"] = heap / keys;
  state.counters["touched_per_key"] = resident / keys;
  label(state);
}

void BM_IniparserHeapPerKey(benchmark::State &state) {
  const Shape &shape = shape_of(state);
  const std::string &path = file_of(shape);
  double heap = 0;
  for (auto _ : state) {
    const std::size_t heap_before = heap_in_use();
    dictionary *dict = iniparser_load(path.c_str());
    heap = static_cast<double>(heap_in_use() - heap_before);
    iniparser_freedict(dict);
  }
  state.counters["heap_per_key"] = heap / (static_cast<double>(shape.sections) * shape.keys);
  label(state);
}

BENCHMARK(BM_TesseraOpenClose)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_InihParse)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_IniparserLoadFree)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TesseraSave)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TesseraHeapPerKey)->Arg(1)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_IniparserHeapPerKey)->Arg(0)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
