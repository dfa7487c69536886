// Parse throughput, in millions of input characters per second, on generated documents: the
// settings files the application reads, an old-style package (one large CDATA section), and
// text broken up by references. Each iteration parses and frees the whole tree, as one import
// does.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "bench/Inputs.h"
#include "ovlib/general_framework/OVUtil.h"
#include "platform/Memory.h"
#include "xmlparser/Xml.h"

namespace {

const size_t kMillion = 1000000;

// The text of a generated UTF-8 document, as the application decodes it.
TString Decoded(const std::string& bytes) {
  TString text;
  ConvertFileBufferToWString(std::vector<unsigned char>(bytes.begin(), bytes.end()), text);
  return text;
}

void Parse(benchmark::State& state, const TString& text) {
  for (auto _ : state) {
    Xml::Parser parser;
    std::unique_ptr<Xml::Document> document(
        parser.Parse(text.data(), static_cast<int>(text.size())));
    benchmark::DoNotOptimize(document.get());
  }
  state.counters["MB/s"] = benchmark::Counter(static_cast<double>(text.size()) / kMillion,
                                              benchmark::Counter::kIsIterationInvariantRate);
}

void BM_Settings20MB(benchmark::State& state) {
  static const TString text = Decoded(Bench::SettingsDocument(20 * kMillion));
  Parse(state, text);
}

void BM_Cdata10MB(benchmark::State& state) {
  static const TString text = Decoded(Bench::PackageDocument(10 * kMillion));
  Parse(state, text);
}

void BM_TextAndReferences10MB(benchmark::State& state) {
  static const TString text = Decoded(Bench::ReferencesDocument(10 * kMillion));
  Parse(state, text);
}

BENCHMARK(BM_Settings20MB)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_Cdata10MB)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_TextAndReferences10MB)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace

int main(int argc, char** argv) {
  // Documents take their memory as the programs' do.
  Xml::SetMemoryFunctions({AllocateMemoryBlock, FreeMemoryBlock, PrepareMemoryForWriting});
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
