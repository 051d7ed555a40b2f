#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "Ovc.h"
#include "TStream.h"
#include "TVarList.h"
#include "TestSupport.h"

using namespace Tern;
using TestSupport::ReadFileBytes;
using TestSupport::ScratchFile;
using TestSupport::WriteFileBytes;
using Bytes = std::vector<Byte>;

namespace {

const std::string cHeader = "Orvane Configuration File 1.0";

// The file format's scrambling, written out here independently of the
// stream: add 0x3F, swap the nibbles.
Bytes Scrambled(const std::string& plain) {
  Bytes out;
  for (unsigned char b : plain) {
    Byte s = static_cast<Byte>(b + 0x3F);
    out.push_back(static_cast<Byte>((s << 4) | (s >> 4)));
  }
  return out;
}

std::string Unscrambled(const Bytes& stored) {
  std::string out;
  for (Byte s : stored) {
    Byte r = static_cast<Byte>((s << 4) | (s >> 4));
    out.push_back(static_cast<char>(static_cast<Byte>(r - 0x3F)));
  }
  return out;
}

unsigned long ByteSum(const std::string& text) {
  unsigned long sum = 0;
  for (unsigned char b : text) sum += b;
  return sum;
}

int RunOvc(const std::vector<std::string>& args, std::string* out = nullptr,
           std::string* err = nullptr) {
  std::string o, e;
  int status = Ovc::Run(args, o, e);
  if (out) *out = o;
  if (err) *err = e;
  return status;
}

std::string Str(const CStr& s) { return std::string(s.Chars(), s.Length()); }

}  // namespace

TEST(ConfigFile, EmptyListBytes) {
  ScratchFile f("empty.ovc");
  CVarList vars;
  ASSERT_EQ(Ok, vars.WriteFile(f.Path().c_str()));
  std::string plain =
      cHeader + '\0' + '\0' + std::to_string(ByteSum(cHeader)) + '\0';
  EXPECT_EQ(Scrambled(plain), ReadFileBytes(f.Path()));
  EXPECT_EQ(0xF3, ReadFileBytes(f.Path())[29]);  // the plain NUL, stored
}

TEST(ConfigFile, RecordsAndChecksumBytes) {
  ScratchFile f("records.ovc");
  CVarList vars;
  vars.Set("OVCMajVersion", "4");
  vars.Set("%Mode", "fast");
  vars.Set("Empty", "");
  ASSERT_EQ(Ok, vars.WriteFile(f.Path().c_str()));
  std::string body = cHeader + '\0' + "OVCMajVersion" + '\0' + "4" + '\0' +
                     "%Mode" + '\0' + "fast" + '\0' + "Empty" + '\0' + '\0' +
                     '\0';
  std::string plain = body + std::to_string(ByteSum(body)) + '\0';
  EXPECT_EQ(plain, Unscrambled(ReadFileBytes(f.Path())));
}

TEST(ConfigFile, RoundTripKeepsEverythingButNul) {
  ScratchFile f("bytes.ovc");
  std::string allBytes;
  for (int b = 1; b < 256; ++b) allBytes.push_back(static_cast<char>(b));
  CVarList written;
  written.Set("first", "1");
  written.Set(("n" + allBytes).c_str(), allBytes.c_str());
  written.Set("%locked", "<not a placeholder>\r\n");
  written.Set("last", "");
  ASSERT_EQ(Ok, written.WriteFile(f.Path().c_str()));

  CVarList read;
  ASSERT_EQ(Ok, read.ReadFile(f.Path().c_str()));
  const CVarList::CVar* a = written.First();
  const CVarList::CVar* b = read.First();
  for (; a && b; a = a->next, b = b->next) {
    EXPECT_EQ(Str(a->name), Str(b->name));
    EXPECT_EQ(Str(a->value), Str(b->value));
    EXPECT_EQ(a->readOnly, b->readOnly) << a->name.Chars();
  }
  EXPECT_EQ(nullptr, a);
  EXPECT_EQ(nullptr, b);
  EXPECT_EQ(4, read.Count());
}

TEST(ConfigFile, OvcWriteIsByteIdenticalToWriteFile) {
  ScratchFile byTool("tool.ovc"), byList("list.ovc");
  ASSERT_EQ(Ovc::ovcOk, RunOvc({"write", byTool.Path(), "OVCMajVersion=4",
                                "%Mode=a=b", "Empty=", "Text=x y\tz"}));
  CVarList vars;
  vars.Set("OVCMajVersion", "4");
  vars.Set("%Mode", "a=b");
  vars.Set("Empty", "");
  vars.Set("Text", "x y\tz");
  ASSERT_EQ(Ok, vars.WriteFile(byList.Path().c_str()));
  EXPECT_EQ(ReadFileBytes(byList.Path()), ReadFileBytes(byTool.Path()));

  std::string out;
  EXPECT_EQ(Ovc::ovcOk, RunOvc({"dump", byTool.Path()}, &out));
  EXPECT_EQ(
      "OVCMajVersion\t=\t\"4\"\nMode (READ-ONLY)\t=\t\"a=b\"\nEmpty\t=\t\"\"\n"
      "Text\t=\t\"x y\tz\"\n",
      out);
  EXPECT_EQ(Ovc::ovcOk, RunOvc({"check", byTool.Path()}, &out));
  EXPECT_EQ(byTool.Path() + ": OK, 4 variables\n", out);
}

TEST(ConfigFile, DamagedFilesGiveTheirStatusAndWords) {
  ScratchFile good("good.ovc"), bad("bad.ovc");
  CVarList vars;
  vars.Set("OVCMajVersion", "4");
  vars.Set("Name", "Zendra");
  ASSERT_EQ(Ok, vars.WriteFile(good.Path().c_str()));
  const std::string plain = Unscrambled(ReadFileBytes(good.Path()));

  struct Case {
    const char* what;
    std::string plain;  // empty: an empty file
    ConfigFileProblem problem;
    const char* words;
  };
  std::string oneDigit = plain;
  std::size_t lastDigit = oneDigit.size() - 2;
  oneDigit[lastDigit] =
      oneDigit[lastDigit] == '9' ? '8' : oneDigit[lastDigit] + 1;
  std::string header = plain;
  header[0] = 'o';
  const Case cases[] = {
      {"checksum digit", oneDigit, cfpBadChecksum, "checksum mismatch"},
      {"truncated", plain.substr(0, cHeader.size() + 1 + 16), cfpNoEndMarker,
       "truncated"},
      {"header", header, cfpBadHeader, "wrong header"},
      {"empty", "", cfpEmpty, "the file is empty"},
  };
  for (const Case& c : cases) {
    WriteFileBytes(bad.Path(), Scrambled(c.plain));
    CVarList read;
    ConfigFileProblem problem = cfpNone;
    EXPECT_EQ(E_BadData, read.ReadFile(bad.Path().c_str(), &problem)) << c.what;
    EXPECT_EQ(c.problem, problem) << c.what;
    std::string err;
    EXPECT_EQ(Ovc::ovcBadFile, RunOvc({"check", bad.Path()}, nullptr, &err));
    EXPECT_NE(std::string::npos, err.find(c.words)) << c.what << ": " << err;
  }

  // A bad checksum still leaves what was read in the list.
  WriteFileBytes(bad.Path(), Scrambled(oneDigit));
  CVarList partial;
  EXPECT_EQ(E_BadData, partial.ReadFile(bad.Path().c_str()));
  EXPECT_EQ(2, partial.Count());

  ScratchFile missing("missing.ovc");
  CVarList none;
  EXPECT_EQ(E_NotFound, none.ReadFile(missing.Path().c_str()));
  std::string err;
  EXPECT_EQ(Ovc::ovcBadFile, RunOvc({"dump", missing.Path()}, nullptr, &err));
  EXPECT_NE(std::string::npos, err.find("no such file")) << err;
}

TEST(ConfigFile, ReadOnlyRecordsStayReadOnly) {
  CMemStream records;
  records.WriteString("%Mode");
  records.WriteByte(0);
  records.WriteString("fast");
  records.WriteByte(0);
  records.WriteByte(0);
  records.WriteString("after the end");
  CMemStream in(records.Data().data(), static_cast<Int>(records.Data().size()));
  CVarList vars;
  EXPECT_TRUE(vars.Read(in));
  EXPECT_EQ(1, vars.Count());
  EXPECT_TRUE(vars.Find("Mode")->readOnly);
  EXPECT_ASSERTION(vars.Set("Mode", "slow"),
                   "attempt to modify a read-only variable");
  EXPECT_STREQ("fast", vars.Find("Mode")->value.Chars());
}

TEST(Ovc, UsageErrors) {
  std::string err;
  EXPECT_EQ(Ovc::ovcUsage, RunOvc({}, nullptr, &err));
  EXPECT_NE(std::string::npos, err.find("usage: ovc dump FILE"));
  EXPECT_EQ(Ovc::ovcUsage, RunOvc({"frobnicate", "x"}));
  EXPECT_EQ(Ovc::ovcUsage, RunOvc({"check"}));
  ScratchFile f("usage.ovc");
  EXPECT_EQ(Ovc::ovcUsage,
            RunOvc({"write", f.Path(), "NoEquals"}, nullptr, &err));
  EXPECT_NE(std::string::npos, err.find("'NoEquals' is not NAME=VALUE"));
  EXPECT_EQ(Ovc::ovcUsage, RunOvc({"write", f.Path(), "=value"}));
  EXPECT_EQ(Ovc::ovcUsage,
            RunOvc({"write", f.Path(), "%Mode=1", "Mode=2"}, nullptr, &err));
  EXPECT_NE(std::string::npos, err.find("Mode is read-only"));
  EXPECT_FALSE(TestSupport::PathExists(f.Path()));  // nothing written
}

// The file's reading and writing on any stream: the same bytes as the file,
// and the same verdicts, so the reader can be tried on bytes in memory.
TEST(ConfigFile, StreamsCarryTheSameBytesAsFiles) {
  ScratchFile f("stream.ovc");
  CVarList vars;
  vars.Set("OVCMajVersion", "4");
  vars.Set("%Mode", "fast");
  ASSERT_EQ(Ok, vars.WriteFile(f.Path().c_str()));
  CMemStream out(smWriteOnly | smScramble | smChecksum);
  ASSERT_EQ(Ok, vars.WriteConfig(out));
  const Bytes bytes = ReadFileBytes(f.Path());
  EXPECT_EQ(bytes, out.Data());

  const UInt32 mode = smReadOnly | smScramble | smChecksum;
  CMemStream good(bytes.data(), static_cast<Int>(bytes.size()), mode);
  CVarList read;
  ConfigFileProblem problem = cfpBadHeader;
  EXPECT_EQ(Ok, read.ReadConfig(good, &problem));
  EXPECT_EQ(cfpNone, problem);
  EXPECT_EQ(2, read.Count());

  Bytes changed = bytes;
  changed[changed.size() - 2] ^= 0x10;  // a digit of the checksum
  CMemStream bad(changed.data(), static_cast<Int>(changed.size()), mode);
  CVarList badList;
  EXPECT_EQ(E_BadData, badList.ReadConfig(bad, &problem));
  EXPECT_EQ(cfpBadChecksum, problem);
  CMemStream none(nullptr, 0, mode);
  EXPECT_EQ(E_BadData, badList.ReadConfig(none, &problem));
  EXPECT_EQ(cfpEmpty, problem);
}
