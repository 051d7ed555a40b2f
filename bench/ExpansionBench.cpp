// Template expansion over texts of growing size, with a placeholder every 40
// characters or so: against a variable list the size of the program's global
// one, some values holding placeholders themselves, and with format items.
#include <benchmark/benchmark.h>

#include <string>

#include "TFormat.h"
#include "TVarList.h"

using namespace Tern;

namespace {

const int cVariables = 200;

const CVarList& Variables() {
  static CVarList vars;
  if (vars.Count() == 0) {
    for (int i = 0; i < cVariables; ++i) {
      std::string name = "Setting" + std::to_string(i);
      std::string value = i % 4 == 0
                              ? "<Setting" + std::to_string(i + 1) + "> more"
                              : "value of setting " + std::to_string(i);
      vars.Set(name.c_str(), value.c_str());
    }
  }
  return vars;
}

// About `size` characters: words and a placeholder every 40 characters,
// some naming no variable.
std::string Text(int size, bool formatItems) {
  std::string text;
  for (int i = 0; static_cast<int>(text.size()) < size; ++i) {
    text += "Copying the file number ";
    if (formatItems)
      text += i % 2 ? "<Count:5d> of <Name>. " : "<Name> <b> <Other:x> ";
    else
      text += "<Setting" + std::to_string((i * 7) % (cVariables + 20)) + ">. ";
  }
  return text;
}

void BM_ExpandVarList(benchmark::State& state) {
  const CVarList& vars = Variables();
  const std::string text = Text(static_cast<int>(state.range(0)), false);
  for (auto _ : state) {
    CStr work(text.c_str(), static_cast<Int>(text.size()));
    benchmark::DoNotOptimize(vars.Expand(work));
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<int64_t>(text.size()));
}

void BM_FormatItems(benchmark::State& state) {
  const std::string text = Text(static_cast<int>(state.range(0)), true);
  for (auto _ : state) {
    CFormat fmt(text.c_str(), nullptr, CFormat::fmtNoGlobalExpansion);
    fmt.Item("Count", static_cast<Int32>(42));
    fmt.Item("Name", "Zendra.dll");
    benchmark::DoNotOptimize(fmt.Result().Length());
  }
  state.SetItemsProcessed(state.iterations() *
                          static_cast<int64_t>(text.size()));
}

}  // namespace

BENCHMARK(BM_ExpandVarList)->RangeMultiplier(10)->Range(100, 1000000);
BENCHMARK(BM_FormatItems)->RangeMultiplier(10)->Range(100, 1000000);
