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

std::string Dumped(const CVarList& vars) {
  CStringStream text;
  vars.Dump(text);
  return text.GetText().Chars();
}

}  // namespace

TEST(ConfigFile, BytesFromTheListAndFromOvc) {
  ScratchFile byList("list.ovc"), byTool("tool.ovc");
  CVarList vars;
  vars.Set("OVCMajVersion", "4");
  vars.Set("%Mode", "a=b");
  vars.Set("Empty", "");
  ASSERT_EQ(Ok, vars.WriteFile(byList.Path().c_str()));
  EXPECT_EQ(Scrambled(PlainFile("OVCMajVersion\0"
                                "4\0%Mode\0a=b\0Empty\0\0"s)),
            ReadFileBytes(byList.Path()));
  std::string out, err;
  ASSERT_EQ(Ovc::ovcOk, Ovc::Run({"write", byTool.Path(), "OVCMajVersion=4",
                                  "%Mode=a=b", "Empty="},
                                 out, err));
  EXPECT_EQ(ReadFileBytes(byList.Path()), ReadFileBytes(byTool.Path()));
}

TEST(ConfigFile, RoundTripKeepsEverythingButNul) {
  ScratchFile f("roundtrip.ovc");
  std::string allBytes;
  for (int b = 1; b < 256; ++b) allBytes.push_back(static_cast<char>(b));
  CVarList written, read;
  written.Set(("n" + allBytes).c_str(), allBytes.c_str());
  written.Set("%locked", "<not a placeholder>\r\n");
  written.Set("last", "");
  ASSERT_EQ(Ok, written.WriteFile(f.Path().c_str()));
  ASSERT_EQ(Ok, read.ReadFile(f.Path().c_str()));
  EXPECT_EQ(Dumped(written), Dumped(read));
}

TEST(ConfigFile, DamagedFilesGiveTheirStatusAndWords) {
  ScratchFile bad("bad.ovc");
  const std::string plain = PlainFile(
      "OVCMajVersion\0"
      "4\0"s);
  std::string oneDigit = plain, header = plain;
  char& lastDigit = oneDigit[oneDigit.size() - 2];
  lastDigit = lastDigit == '9' ? '8' : lastDigit + 1;
  header[0] = 'o';
  const struct {
    std::string plain;  // empty: an empty file
    ConfigFileProblem problem;
    const char* words;
  } cases[] = {
      {oneDigit, cfpBadChecksum, "checksum mismatch"},
      {plain.substr(0, 46), cfpNoEndMarker, "truncated"},  // after a record
      {plain.substr(0, 47), cfpBadChecksum, "checksum mismatch"},  // no sum
      {header, cfpBadHeader, "wrong header"},
      {"", cfpEmpty, "the file is empty"}};
  for (const auto& c : cases) {
    TestSupport::WriteFileBytes(bad.Path(), Scrambled(c.plain));
    CVarList read;
    ConfigFileProblem problem = cfpNone;
    EXPECT_EQ(E_BadData, read.ReadFile(bad.Path().c_str(), &problem));
    EXPECT_EQ(c.problem, problem) << c.words;
    std::string out, err;
    EXPECT_EQ(Ovc::ovcBadFile, Ovc::Run({"check", bad.Path()}, out, err));
    EXPECT_NE(std::string::npos, err.find(c.words)) << err;
  }
}

TEST(Ovc, UsageErrorsWriteNothing) {
  ScratchFile f("usage.ovc");
  const struct {
    std::vector<std::string> args;
    const char* words;
  } cases[] = {{{"check"}, "usage: ovc dump FILE"},
               {{"write", f.Path(), "NoEquals"}, "'NoEquals' is not NAME="},
               {{"write", f.Path(), "%=value"}, "'%=value' is not NAME="},
               {{"write", f.Path(), "%Mode=1", "Mode=2"}, "Mode is read-only"}};
  for (const auto& c : cases) {
    std::string out, err;
    EXPECT_EQ(Ovc::ovcUsage, Ovc::Run(c.args, out, err)) << c.words;
    EXPECT_NE(std::string::npos, err.find(c.words)) << err;
  }
  EXPECT_FALSE(TestSupport::PathExists(f.Path()));
}
