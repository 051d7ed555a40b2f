#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;
using namespace std::string_literals;
using Bytes = std::vector<Byte>;

namespace {

Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

// Sees every character, so that the stream takes them one by one instead of
// a buffer at a time.
struct PassThrough : CStreamFilter {
  bool Filter(Int&) override { return true; }
};

}  // namespace

TEST(Stream, TextModeEncodingsAndIndentationBytes) {
  const struct {
    UInt32 mode;
    Int eol, indentWidth, encoding;  // indentWidth -1: no indentation
    const char* text;
    std::string bytes;
  } cases[] = {
      {smText, eolCRLF, -1, encSystem, "a\nb", "a\r\nb"},
      {smText, eolCR, -1, encSystem, "a\nb\n", "a\rb\r"},
      {smText, eolLF, 0, encSystem, "x\n\ny", "\tx\n\t\n\ty"},  // TABs
      {0, eolCRLF, 3, encSystem, "a\nb", "   a\n   b"},  // binary: LF stays
      {smText | smBigEndian, eolCRLF, -1, encUTF16, "A\n", "\0A\0\r\0\n"s}};
  for (const auto& c : cases) {
    CMemStream out(c.mode);
    out.SetEOLType(c.eol);
    out.SetEncoding(c.encoding);
    out.SetIndentWidth(c.indentWidth);
    if (c.indentWidth >= 0) out.IncIndent();
    out.WriteString(c.text);
    EXPECT_EQ(B(c.bytes), out.Data()) << c.text;
  }
  CStringStream in("1\r\n2\r3\n4\r\r\n5\n\r", smText | smCountLines);
  CStr read;
  EXPECT_FALSE(in.ReadUntil(read, 0));
  EXPECT_STREQ("1\n2\n3\n4\n\n5\n\n", read.Chars());  // each end of line: LF
  EXPECT_EQ(7, in.GetLineCount());
}

// Formatted writes go through a buffer of 2000 characters: a longer text is
// an assertion, and then what fits is written.
TEST(Stream, FormattedWritesCutWhatDoesNotFit) {
  CMemStream fits, tooLong, cut;
  fits.Printf("%s=%d", std::string(1995, 'z').c_str(), 42);
  EXPECT_EQ(B(std::string(1995, 'z') + "=42"), fits.Data());
  EXPECT_ASSERTION(tooLong.Printf("%s", std::string(1999, 'z').c_str()),
                   "Str::VFormat(buf,format,args) < ((static_cast<Int>("
                   "sizeof(buf)/sizeof(buf[0]))) - 1)");
  TestSupport::ReportingAssertions reporting;
  cut.Printf("%s", std::string(2500, 'z').c_str());
  EXPECT_EQ(B(std::string(1999, 'z')), cut.Data());
}

// Without a filter, strings go through a buffer at a time; the bytes, lines
// and checksums must be those of one character at a time, both ways.
TEST(Stream, BufferedRunsMatchCharacterByCharacter) {
  const std::string text =
      "first\n\nsecond\tline\r\n" + std::string(5000, 'x') + "\nend\n";
  PassThrough filter;
  for (UInt32 extra :
       {0u, 0u | smText, smText | smCRC32 | smScramble, 0u | smScramble}) {
    const UInt32 mode = extra | smChecksum | smCountLines;
    for (Int eol : {eolCRLF, eolCR, eolLF}) {
      SCOPED_TRACE(std::to_string(mode) + " " + std::to_string(eol));
      CMemStream runs(mode), single(mode);
      single.SetWriteFilter(&filter);
      for (CMemStream* s : {&runs, &single}) {
        s->SetEOLType(eol);
        s->SetIndentWidth(eol == eolCR ? 3 : 0);
        s->IncIndent();
        s->WriteString(text.c_str(), static_cast<Int>(text.size()));
        s->Printf("\n%s\n\n", "printed");
      }
      ASSERT_EQ(single.Data(), runs.Data());
      EXPECT_EQ(single.GetLineCount(), runs.GetLineCount());
      EXPECT_EQ(single.GetChecksum(), runs.GetChecksum());
      for (Int maxLen : {-1, 7}) {
        const Int size = static_cast<Int>(runs.Data().size());
        CMemStream in(runs.Data().data(), size, mode),
            byOne(runs.Data().data(), size, mode);
        byOne.SetReadFilter(&filter);
        for (bool more = true; more;) {
          CStr a, b;
          Int countA = -1, countB = -1;
          more = in.ReadUntil(a, '\n', maxLen, &countA);
          ASSERT_EQ(byOne.ReadUntil(b, '\n', maxLen, &countB), more);
          ASSERT_TRUE(a == b && countA == countB) << a.Chars();
        }
        EXPECT_EQ(byOne.GetLineCount(), in.GetLineCount());
        EXPECT_EQ(byOne.GetChecksum(), in.GetChecksum());
      }
    }
  }
}

TEST(FileStream, DispositionsAndPositions) {
  TestSupport::ScratchFolder folder("disp");
  const std::string path = folder.Path() + "/a/b.bin";
  const struct {
    UInt32 mode;
    const char* text;
    CError result;
    const char* after;
  } steps[] = {{fsmCreateAlways, "x", E_NotFound, ""},  // no folder "a"
               {fsmCreateNew | fsmCreateFullPath, "first", Ok, "first"},
               {fsmCreateNew, "x", E_AlreadyExists, "first"},
               {fsmOpenOrCreate, "F", Ok, "First"},  // opened, not truncated
               {fsmTruncateExisting, "ab", Ok, "ab"},
               {0x5000000, "x", E_BadArgument, "ab"},
               {fsmCreateAlways | fsmCreateFullPath, "new", Ok, "new"}};
  CFileStream file;
  for (const auto& s : steps) {
    const CError opened = file.Open(path.c_str(), s.mode);
    EXPECT_EQ(s.result, opened) << s.text;
    if (Succeeded(opened)) {
      file.WriteString(s.text);
      EXPECT_EQ(Ok, file.Close());
    }
    EXPECT_EQ(B(s.after), TestSupport::ReadFileBytes(path)) << s.text;
  }

  // Reads and writes through the buffer meet at the same positions.
  ASSERT_EQ(Ok, file.Open(path.c_str(), fsmCreateAlways));
  std::string big(10000, '.');
  big[5000] = '#';
  file.WriteString(big.c_str());
  Int pos = 0, c = 0;
  bool eof = false;
  ASSERT_EQ(Ok, file.SetPos(5000));
  file.ReadByte(c, eof);
  EXPECT_TRUE(c == '#' && Succeeded(file.GetPos(pos)) && pos == 5001);
  file.WriteByte('!');  // where the reading stopped
  ASSERT_EQ(Ok, file.SetLength(6000));
  file.Close();
  big.resize(6000);
  big[5001] = '!';
  EXPECT_EQ(B(big), TestSupport::ReadFileBytes(path));
}
