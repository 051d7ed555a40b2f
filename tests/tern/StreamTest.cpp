#include <zlib.h>

#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;
using Bytes = std::vector<Byte>;
using TestSupport::ReadFileBytes;

namespace {

Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

// Everything a stream reads, byte by byte or character by character.
std::string ReadAll(CStream& stream, bool wide = false) {
  std::string out;
  Int c = 0;
  bool eof = false;
  while (Succeeded(wide ? stream.ReadChar(c, eof) : stream.ReadByte(c, eof)) &&
         !eof)
    out += static_cast<char>(c);
  return out;
}

// Sees every character, so that the stream takes them one by one instead of
// a buffer at a time.
struct PassThrough : CStreamFilter {
  bool Filter(Int&) override { return true; }
};

}  // namespace

TEST(FileStream, EndOfLineBytesOnDiskAndBack) {
  TestSupport::ScratchFile f("eol.txt");
  const struct {
    UInt32 mode;
    Int eol;
    const char* written;
  } cases[] = {{smText, eolCRLF, "a\r\nb"},
               {smText, eolCR, "a\rb"},
               {smText, eolLF, "a\nb"},
               {0, eolCRLF, "a\nb"}};  // without text mode a LF stays
  for (const auto& c : cases) {
    CFileStream file;
    ASSERT_EQ(Ok, file.Open(f.Path().c_str(), fsmCreateAlways | c.mode));
    file.SetEOLType(c.eol);
    file.WriteString("a\nb");
    EXPECT_EQ(Ok, file.Close());
    EXPECT_EQ(B(c.written), ReadFileBytes(f.Path())) << c.written;
  }
  TestSupport::WriteFileBytes(f.Path(), B("1\r\n2\r3\n4\r\r\n5\n\r"));
  CFileStream file;
  ASSERT_EQ(Ok, file.Open(f.Path().c_str(), smText | smCountLines));
  EXPECT_EQ("1\n2\n3\n4\n\n5\n\n", ReadAll(file));  // each as one LF
  EXPECT_EQ(7, file.GetLineCount());
  file.Close();
  ASSERT_EQ(Ok, file.Open(f.Path().c_str(), smReadOnly));
  EXPECT_EQ("1\r\n2\r3\n4\r\r\n5\n\r", ReadAll(file));
}

TEST(FileStream, DispositionsAndPositions) {
  TestSupport::ScratchFolder folder("disp");
  const std::string path = folder.Path() + "/a/b.bin";
  const struct {
    UInt32 mode;
    const char* text;
    CError result;
    const char* after;
  } steps[] = {{fsmCreateAlways, "x", E_NotFound, nullptr},  // no folder "a"
               {fsmTruncateExisting, "x", E_NotFound, nullptr},
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
    EXPECT_EQ(s.after ? B(s.after) : Bytes(), ReadFileBytes(path)) << s.text;
  }

  // Reads and writes through the buffer meet at the same positions.
  ASSERT_EQ(Ok, file.Open(path.c_str(), fsmCreateAlways));
  std::string big(10000, '.');
  big[5000] = '#';
  file.WriteString(big.c_str());
  Int pos = 0, c = 0;
  EXPECT_TRUE(Succeeded(file.GetLength(pos)) && pos == 10000);
  ASSERT_EQ(Ok, file.SetPos(5000));
  bool eof = false;
  file.ReadByte(c, eof);
  EXPECT_EQ('#', c);
  EXPECT_TRUE(Succeeded(file.GetPos(pos)) && pos == 5001);
  file.WriteByte('!');  // where the reading stopped
  ASSERT_EQ(Ok, file.SetLength(6000));
  file.Close();
  big.resize(6000);
  big[5001] = '!';
  EXPECT_EQ(B(big), ReadFileBytes(path));
}

TEST(Stream, EncodingsIndentationScramblingAndChecksums) {
  CMemStream utf8, little(smText), big(smBigEndian), spaces(smText);
  utf8.SetEncoding(encUTF8);
  for (Int c : {0x41, 0xE9, 0x20AC}) utf8.WriteChar(c);
  EXPECT_EQ(B("A\xC3\xA9\xE2\x82\xAC"), utf8.Data());
  CMemStream utf8In(utf8.Data().data(), 6);
  utf8In.SetEncoding(encUTF8);
  Int c = 0;
  bool eof = false;
  for (Int expected : {0x41, 0xE9, 0x20AC})
    EXPECT_TRUE(Succeeded(utf8In.ReadChar(c, eof)) && c == expected);
  little.SetEncoding(encUTF16);
  little.WriteString(u"A\n");
  EXPECT_EQ(B(std::string("A\0\r\0\n\0", 6)), little.Data());
  big.SetEncoding(encUTF16);
  big.WriteString(u"A\u20AC");
  EXPECT_EQ(B(std::string("\0A\x20\xAC", 4)), big.Data());
  spaces.SetIndentWidth(3);
  spaces.IncIndent();
  spaces.WriteString("in\n\nx");
  EXPECT_EQ(B("   in\r\n   \r\n   x"), spaces.Data());

  // s = rotate-left((b + 0x3F) mod 256, 4). The checksum covers the plain
  // bytes, also those the stream adds itself (end of line, indentation).
  CMemStream scrambled(smChecksum | smScramble | smText);
  scrambled.IncIndent();
  scrambled.WriteString(std::string("\0A\n\xC1\xFF", 5).c_str(), 5);
  EXPECT_EQ(B(std::string("\x84\xF3\x08\xC4\x94\x84\0\xE3", 8)),
            scrambled.Data());
  CMemStream back(scrambled.Data().data(), 8, smChecksum | smScramble);
  EXPECT_EQ(std::string("\t\0A\r\n\t\xC1\xFF", 8), ReadAll(back));
  EXPECT_EQ(9u + 65 + 13 + 10 + 9 + 0xC1 + 0xFF, back.GetChecksum());
  EXPECT_EQ(back.GetChecksum(), scrambled.GetChecksum());
  const char text[] = "The quick brown fox jumps over the lazy dog";
  CMemStream crc(smChecksum | smCRC32);
  crc.WriteString(text);
  EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(text), sizeof text - 1),
            crc.GetChecksum());
}

TEST(Stream, PushBackReadUntilAndFilters) {
  const char data[] = "key\0value\0rest";
  CMemStream in(reinterpret_cast<const Byte*>(data), sizeof data - 1);
  CStr word;
  Int count = 0, c = 0;
  bool eof = false;
  EXPECT_TRUE(in.ReadUntil(word, 'y', -1, &count));
  EXPECT_TRUE(word == "ke" && count == 2);
  in.UnGetChar('Y');
  EXPECT_TRUE(Succeeded(in.ReadByte(c, eof)) && c == 'Y');
  EXPECT_TRUE(in.ReadUntil(word, 'z', 3, &count));  // stops at the maximum
  EXPECT_TRUE(word == CStr("ke\0va", 5) && count == 3);
  EXPECT_TRUE(in.ReadUntil(word, 0));     // appends up to the NUL
  EXPECT_FALSE(in.ReadUntil(word, 'z'));  // ends before the delimiter
  EXPECT_TRUE(word == CStr("ke\0valuerest", 12));
  EXPECT_ASSERTION(in.ReadUntil(word, 'x', 0), "maxLen == -1 || maxLen > 0");

  struct Upper : CStreamFilter {
    bool Filter(Int& c) override {
      if (c >= 'a' && c <= 'z') c -= 32;
      return c != '!';
    }
  } upper;
  CMemStream out;
  out.SetWriteFilter(&upper);
  EXPECT_EQ(Failure, out.WriteString("ab!c"));  // a refusal fails the stream
  EXPECT_EQ(B("AB"), out.Data());
  EXPECT_ASSERTION(out.WriteByte('z'), "IsWritable()");
  CStringStream filtered("ok!");
  filtered.SetReadFilter(&upper);
  EXPECT_EQ("OK", ReadAll(filtered));
  EXPECT_FALSE(filtered.IsReadable());
}

// Formatted writes go through a buffer of 2000 characters: what does not fit
// is an assertion, and then what fits is written.
TEST(Stream, FormattedWritesCutWhatDoesNotFit) {
  for (const bool wide : {false, true}) {
    const auto print = [wide](CMemStream& s, std::size_t length) {
      const std::string text(length, 'z');
      s.SetEncoding(wide ? encUTF16 : encSystem);
      wide ? s.WPrintf(u"%s", text.c_str()) : s.Printf("%s", text.c_str());
    };
    const std::size_t unit = wide ? 2 : 1;
    CMemStream fits, tooLong, cut;
    print(fits, 1998);
    EXPECT_EQ(unit * 1998, fits.Data().size());
    EXPECT_ASSERTION(print(tooLong, 1999),
                     std::string(wide ? "W" : "") +
                         "Str::VFormat(buf,format,args) < ((static_cast<Int>("
                         "sizeof(buf)/sizeof(buf[0]))) - 1)");
    TestSupport::ReportingAssertions reporting;
    print(cut, 2500);
    ASSERT_EQ(unit * 1999, cut.Data().size());
    EXPECT_EQ('z', cut.Data()[0]);
  }
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
