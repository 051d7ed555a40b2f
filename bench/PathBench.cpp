// Parsing operating-system path strings of growing length into paths, and
// appending relative paths component by component.
#include <benchmark/benchmark.h>

#include <string>

#include "TFileSystem.h"

using namespace Tern;

namespace {

std::string PathText(int components) {
  std::string text = "C:\\Program Files (x86)";
  for (int i = 0; i < components; ++i)
    text += (i % 2 ? "/" : "\\") + std::string("Folder ") + std::to_string(i);
  return text + "\\Zendra.dll";
}

void BM_PathSet(benchmark::State& state) {
  const std::string text = PathText(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    CPath path(text.c_str());
    benchmark::DoNotOptimize(path.Text().Length());
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<int64_t>(text.size()));
}

void BM_PathAppend(benchmark::State& state) {
  const std::string text = PathText(static_cast<int>(state.range(0)));
  const CPath relative(text.substr(3).c_str());
  const CPath base("C:\\");
  for (auto _ : state) {
    CPath path = base;
    path.Append(relative);
    benchmark::DoNotOptimize(path.Text().Length());
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<int64_t>(text.size()));
}

}  // namespace

BENCHMARK(BM_PathSet)->RangeMultiplier(4)->Range(1, 1024);
BENCHMARK(BM_PathAppend)->RangeMultiplier(4)->Range(1, 1024);
