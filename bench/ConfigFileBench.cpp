// Reading and writing configuration files of 100 to 100,000 variables with
// 50-character values.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

#include "BenchSupport.h"
#include "TVarList.h"

using namespace Tern;

namespace {

void Fill(CVarList& vars, int count) {
  std::string value(50, 'v');
  for (int i = 0; i < count; ++i) {
    std::string name = "Variable" + std::to_string(i);
    value.replace(0, name.size(), name);
    vars.Set(name.c_str(), value.c_str(), i % 10 == 0);
  }
}

void BM_ConfigWrite(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  CVarList vars;
  Fill(vars, count);
  const std::string path = Bench::ScratchPath("write.ovc");
  for (auto _ : state) benchmark::DoNotOptimize(vars.WriteFile(path.c_str()));
  state.SetItemsProcessed(state.iterations() * count);
  std::remove(path.c_str());
}

void BM_ConfigRead(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  const std::string path = Bench::ScratchPath("read.ovc");
  {
    CVarList vars;
    Fill(vars, count);
    vars.WriteFile(path.c_str());
  }
  for (auto _ : state) {
    auto* vars = new CVarList;
    CError err = vars->ReadFile(path.c_str());
    // Reading ends here; throwing the list away is not part of it.
    state.PauseTiming();
    if (Failed(err) || vars->Count() != count) state.SkipWithError("bad read");
    delete vars;
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * count);
  std::remove(path.c_str());
}

void BM_Set(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  for (auto _ : state) {
    CVarList vars;
    Fill(vars, count);
    benchmark::DoNotOptimize(vars.Count());
  }
  state.SetItemsProcessed(state.iterations() * count);
}

}  // namespace

BENCHMARK(BM_ConfigWrite)
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->UseRealTime();
BENCHMARK(BM_ConfigRead)
    ->RangeMultiplier(10)
    ->Range(100, 100000)
    ->UseRealTime();
BENCHMARK(BM_Set)->RangeMultiplier(10)->Range(100, 100000);
