// Entity encoding and decoding of a 4 KiB text. The peer, where libxml2 is installed, is its
// xmlEncodeSpecialChars and xmlStringDecodeEntities; both allocate their result, which the
// library's functions write into the caller's buffer instead.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tessera/http.h"

#ifdef TESSERA_BENCH_LIBXML2
#include <libxml/entities.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#endif

namespace {

constexpr std::size_t kTextSize = 4096;

// Markup-like text: about one character in eight is special.
std::string make_text() {
  const std::string piece = "<td class=\"name\">Tom & Jerry's</td> plain words here. ";
  std::string text;
  while (text.size() < kTextSize) {
    text += piece;
  }
  text.resize(kTextSize);
  return text;
}

std::string encoded_text() {
  const std::string text = make_text();
  std::vector<char> out(text.size() * 6 + 8);
  HttpEncodeSpecialCharacters(text.c_str(), out.data(), static_cast<unsigned>(out.size()));
  return out.data();
}

void BM_HttpEncodeSpecialCharacters(benchmark::State &state) {
  const std::string text = make_text();
  std::vector<char> out(text.size() * 6 + 8);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        HttpEncodeSpecialCharacters(text.c_str(), out.data(), static_cast<unsigned>(out.size())));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_HttpEncodeSpecialCharacters);

void BM_HttpDecodeSpecialCharacters(benchmark::State &state) {
  const std::string text = encoded_text();
  std::vector<char> out(text.size() + 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        HttpDecodeSpecialCharacters(text.c_str(), out.data(), static_cast<unsigned>(text.size())));
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_HttpDecodeSpecialCharacters);

#ifdef TESSERA_BENCH_LIBXML2
const xmlChar *as_xml(const std::string &text) {
  return reinterpret_cast<const xmlChar *>(text.c_str());
}

void BM_LibXml2EncodeSpecialChars(benchmark::State &state) {
  const std::string text = make_text();
  for (auto _ : state) {
    xmlChar *out = xmlEncodeSpecialChars(nullptr, as_xml(text));
    benchmark::DoNotOptimize(out);
    xmlFree(out);
  }
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_LibXml2EncodeSpecialChars);

void BM_LibXml2StringDecodeEntities(benchmark::State &state) {
  const std::string text = encoded_text();
  xmlParserCtxtPtr context = xmlNewParserCtxt();
  for (auto _ : state) {
    // The context counts entity use across calls to stop expansion attacks; each round is new.
    context->nbentities = 0;
    context->sizeentcopy = 0;
    xmlChar *out = xmlStringDecodeEntities(context, as_xml(text), XML_SUBSTITUTE_REF, 0, 0, 0);
    benchmark::DoNotOptimize(out);
    xmlFree(out);
  }
  xmlFreeParserCtxt(context);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_LibXml2StringDecodeEntities);
#endif

}  // namespace
