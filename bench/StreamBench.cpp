// Log-style writes through a file stream (text mode, indentation, CRC-32)
// against fwrite of exactly the bytes the stream stores, line by line.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>
#include <vector>

#include "BenchSupport.h"
#include "TStream.h"

using namespace Tern;

namespace {

// The log's mode, with the additive checksum of the configuration files or
// with CRC-32.
const UInt32 cLogMode = smText | smChecksum | smWriteOnly;
const UInt32 cCRCLogMode = cLogMode | smCRC32;
const int cIndentWidth = 4;

std::vector<std::string> LogLines(int count) {
  std::vector<std::string> lines;
  for (int i = 0; i < count; ++i)
    lines.push_back("Success (Copying file, 0x00000200): Rules\\Speech " +
                    std::to_string(i) + ".rules\n");
  return lines;
}

void Indent(CStream& stream) {
  stream.SetIndentWidth(cIndentWidth);
  stream.IncIndent();
  stream.IncIndent();
}

// The bytes a stream in `mode` stores for `lines`, line by line.
std::vector<std::string> StoredLines(const std::vector<std::string>& lines,
                                     UInt32 mode) {
  std::vector<std::string> stored;
  CMemStream mem(mode);
  Indent(mem);
  for (const std::string& line : lines) {
    const std::size_t before = mem.Data().size();
    mem.WriteString(line.c_str(), static_cast<Int>(line.size()));
    stored.emplace_back(mem.Data().begin() + static_cast<long>(before),
                        mem.Data().end());
  }
  return stored;
}

std::size_t TotalSize(const std::vector<std::string>& texts) {
  std::size_t bytes = 0;
  for (const std::string& text : texts) bytes += text.size();
  return bytes;
}

void BM_StreamWrite(benchmark::State& state) {
  const UInt32 mode = state.range(1) ? cCRCLogMode : cLogMode;
  const auto lines = LogLines(static_cast<int>(state.range(0)));
  const std::size_t bytes = TotalSize(StoredLines(lines, mode));
  const std::string path = Bench::ScratchPath("stream.log");
  for (auto _ : state) {
    CFileStream log;
    log.Open(path.c_str(), fsmCreateAlways | mode);
    Indent(log);
    for (const std::string& line : lines)
      log.WriteString(line.c_str(), static_cast<Int>(line.size()));
    benchmark::DoNotOptimize(log.GetChecksum());
    log.Close();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.SetItemsProcessed(state.iterations() * state.range(0));
  std::remove(path.c_str());
}

void BM_Fwrite(benchmark::State& state) {
  const auto lines = LogLines(static_cast<int>(state.range(0)));
  const auto stored = StoredLines(lines, cLogMode);
  const std::size_t bytes = TotalSize(stored);
  const std::string path = Bench::ScratchPath("fwrite.log");
  for (auto _ : state) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    for (const std::string& line : stored)
      std::fwrite(line.data(), 1, line.size(), file);
    std::fclose(file);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
  state.SetItemsProcessed(state.iterations() * state.range(0));
  std::remove(path.c_str());
}

}  // namespace

// Second argument: 0 the additive checksum, 1 CRC-32.
BENCHMARK(BM_StreamWrite)
    ->ArgsProduct({{1000, 10000, 100000}, {0, 1}})
    ->UseRealTime();
BENCHMARK(BM_Fwrite)->Arg(1000)->Arg(10000)->Arg(100000)->UseRealTime();
