#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "Ovc.h"
#include "TStream.h"
#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;
using namespace std::string_literals;
using TestSupport::ReadFileBytes;
using TestSupport::ScratchFile;

namespace {

// The plain bytes of a file of NUL-ended `records`: the header, the records,
// the end marker and the byte sum of all that in decimal.
std::string PlainFile(const std::string& records) {
  const std::string body = "Orvane Configuration File 1.0\0"s + records + '\0';
  unsigned long sum = 0;
  for (unsigned char b : body) sum += b;
  return body + std::to_string(sum) + '\0';
}

// The format's scrambling, written out independently of the stream: add
// 0x3F, swap the nibbles.
std::vector<Byte> Scrambled(const std::string& plain) {
  std::vector<Byte> out;
  for (unsigned char b : plain) {
    const Byte s = static_cast<Byte>(b + 0x3F);
    out.push_back(static_cast<Byte>((s << 4) | (s >> 4)));
  }
  return out;
}

}  // namespace

// Every byte but NUL goes to the file and back, in names and values alike.
TEST(ConfigFile, BytesOnDiskAndBack) {
  ScratchFile byList("list.ovc"), byTool("tool.ovc");
  std::string all;
  for (int b = 1; b < 256; ++b) all.push_back(static_cast<char>(b));
  CVarList written, read;
  written.Set("AppName", "Zendra");
  written.Set(("%" + all).c_str(), all.c_str());
  written.Set("Empty", "");
  ASSERT_EQ(Ok, written.WriteFile(byList.Path().c_str()));
  EXPECT_EQ(Scrambled(PlainFile("AppName\0Zendra\0%"s + all + '\0' + all +
                                "\0Empty\0\0"s)),
            ReadFileBytes(byList.Path()));
  ASSERT_EQ(Ok, read.ReadFile(byList.Path().c_str()));
  CMemStream again(smScramble | smChecksum);  // the file's mode
  ASSERT_EQ(Ok, read.WriteConfig(again));
  EXPECT_EQ(ReadFileBytes(byList.Path()), again.Data());
  std::string out, err;
  ASSERT_EQ(Ovc::ovcOk, Ovc::Run({"write", byTool.Path(), "AppName=Zendra",
                                  "%Mode=a=b", "Empty="},
                                 out, err));
  EXPECT_EQ(Scrambled(PlainFile("AppName\0Zendra\0%Mode\0a=b\0Empty\0\0"s)),
            ReadFileBytes(byTool.Path()));
}

TEST(ConfigFile, DamagedFilesAreBadData) {
  ScratchFile bad("bad.ovc");
  const std::string plain = PlainFile("AppName\0Zendra\0"s);
  std::string oneDigit = plain, header = plain;
  char& lastDigit = oneDigit[oneDigit.size() - 2];
  lastDigit = lastDigit == '9' ? '8' : lastDigit + 1;
  header[0] = 'o';
  const struct {
    std::string plain;  // empty: an empty file
    ConfigFileProblem problem;
    const char* what;
  } cases[] = {{oneDigit, cfpBadChecksum, "a digit of the sum"},
               {plain.substr(0, 45), cfpNoEndMarker, "cut after a record"},
               {plain.substr(0, 46), cfpBadChecksum, "cut before the sum"},
               {header, cfpBadHeader, "header"},
               {"", cfpEmpty, "empty"}};
  for (const auto& c : cases) {
    TestSupport::WriteFileBytes(bad.Path(), Scrambled(c.plain));
    CVarList read;
    ConfigFileProblem problem = cfpNone;
    EXPECT_EQ(E_BadData, read.ReadFile(bad.Path().c_str(), &problem));
    EXPECT_EQ(c.problem, problem) << c.what;
  }
}
