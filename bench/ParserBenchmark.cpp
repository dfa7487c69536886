// Parse throughput, in millions of input characters per second, on generated documents: the
// settings files the application reads, an old-style package (one large CDATA section), and
// text broken up by references. Each iteration parses and frees the whole tree, as one import
// does.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "xmlparser/Xml.h"

namespace {

const size_t kMillion = 1000000;

// Many short elements with attributes, some references and comments, in groups.
TString SettingsDocument(size_t characters) {
  TString text =
      L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"
      L"<setting set=\"Daubery\" filter=\"Brushwork\" name=\"Evening &amp; Dusk\">\n";
  for (size_t group = 0; text.size() < characters; ++group) {
    const std::wstring g = std::to_wstring(group);
    text += L"  <group id=\"g" + g + L"\" label=\"Group &quot;" + g + L"&quot;\">\n";
    if (group % 4 == 0) text += L"    <!-- tuned by hand, keep in sync with the preview -->\n";
    for (int param = 0; param < 8; ++param) {
      text += L"    <param keyid=\"k" + std::to_wstring(param) + L"\" type=\"float\" value=\"0." +
              std::to_wstring(group * 8 + param) + L"\"/>\n";
    }
    text += L"    <note>Soft &lt;edge&gt; &#x2014; blend " + g + L"</note>\n  </group>\n";
  }
  return text + L"</setting>";
}

// A package's layout: one CDATA section holding a legacy file's bytes, line ends as CR.
TString PackageDocument(size_t characters) {
  TString text =
      L"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n"
      L"<oldstyle_setting filter=\"Brushwork\" name=\"Old\" set=\"Daubery\">\n"
      L"  <![CDATA[";
  for (size_t i = 0; text.size() < characters; ++i) {
    text += L"Brushwork 1.2 radius=" + std::to_wstring(i % 97) + L" \u00E9\u00FC\u00BF=\u00A7\r";
  }
  return text + L"]]>\n</oldstyle_setting>";
}

// Short runs of text between references.
TString ReferencesDocument(size_t characters) {
  TString text = L"<notes>";
  while (text.size() < characters) {
    text += L"Tom &amp; Ann &lt;say&gt; &quot;hi&quot;&#10;it&apos;s &#x41;rt\n";
  }
  return text + L"</notes>";
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
  static const TString text = SettingsDocument(20 * kMillion);
  Parse(state, text);
}

void BM_Cdata10MB(benchmark::State& state) {
  static const TString text = PackageDocument(10 * kMillion);
  Parse(state, text);
}

void BM_TextAndReferences10MB(benchmark::State& state) {
  static const TString text = ReferencesDocument(10 * kMillion);
  Parse(state, text);
}

BENCHMARK(BM_Settings20MB)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_Cdata10MB)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_TextAndReferences10MB)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace

BENCHMARK_MAIN();
