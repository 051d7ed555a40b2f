#include <zlib.h>

#include <cstdio>
#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;
using Bytes = std::vector<Byte>;
using TestSupport::ReadFileBytes;
using TestSupport::ScratchFile;
using TestSupport::WriteFileBytes;

namespace {

Bytes B(std::initializer_list<int> values) {
  Bytes bytes;
  for (int v : values) bytes.push_back(static_cast<Byte>(v));
  return bytes;
}

Bytes B(const std::string& text) { return Bytes(text.begin(), text.end()); }

// Everything a stream reads, byte by byte or character by character.
std::string ReadAll(CStream& stream, bool wide = false) {
  std::string out;
  for (;;) {
    Int c = 0;
    bool eof = false;
    CError err = wide ? stream.ReadChar(c, eof) : stream.ReadByte(c, eof);
    if (Failed(err) || eof) break;
    out += static_cast<char>(c);
  }
  return out;
}

CError WriteToFile(const std::string& path, UInt32 mode, const char* text,
                   Int eol = eolCRLF, Int encoding = encSystem) {
  CFileStream file;
  CError err = file.Open(path.c_str(), mode);
  if (Failed(err)) return err;
  file.SetEOLType(eol);
  file.SetEncoding(encoding);
  if (encoding == encSystem)
    err = file.WriteString(text);
  else
    for (const char* p = text; *p && Succeeded(err); ++p)
      err = file.WriteChar(*p);
  CError closed = file.Close();
  return Failed(err) ? err : closed;
}

}  // namespace

TEST(Stream, TextModeEndOfLineBytesOnDisk) {
  ScratchFile f("eol.txt");
  const UInt32 mode = fsmCreateAlways | smText | smWriteOnly;
  ASSERT_EQ(Ok, WriteToFile(f.Path(), mode, "a\nb", eolCRLF));
  EXPECT_EQ(B({'a', '\r', '\n', 'b'}), ReadFileBytes(f.Path()));
  ASSERT_EQ(Ok, WriteToFile(f.Path(), mode, "a\nb\n", eolCR));
  EXPECT_EQ(B({'a', '\r', 'b', '\r'}), ReadFileBytes(f.Path()));
  ASSERT_EQ(Ok, WriteToFile(f.Path(), mode, "a\nb", eolLF));
  EXPECT_EQ(B({'a', '\n', 'b'}), ReadFileBytes(f.Path()));
  // Without text mode a LF is a LF whatever the type.
  ASSERT_EQ(Ok, WriteToFile(f.Path(), fsmCreateAlways, "a\nb", eolCRLF));
  EXPECT_EQ(B({'a', '\n', 'b'}), ReadFileBytes(f.Path()));
}

TEST(Stream, TextModeReadsEveryEndOfLineAsOneLF) {
  ScratchFile f("eolread.txt");
  WriteFileBytes(f.Path(), B("1\r\n2\r3\n4\r\r\n5\n\r"));
  CFileStream file;
  ASSERT_EQ(Ok, file.Open(f.Path().c_str(), fsmOpenExisting | smText |
                                                smReadOnly | smCountLines));
  EXPECT_EQ("1\n2\n3\n4\n\n5\n\n", ReadAll(file));
  EXPECT_EQ(7, file.GetLineCount());
  file.Close();

  ASSERT_EQ(Ok, file.Open(f.Path().c_str(), fsmOpenExisting | smReadOnly));
  EXPECT_EQ("1\r\n2\r3\n4\r\r\n5\n\r", ReadAll(file));  // binary: as stored
}

TEST(Stream, IndentationBytes) {
  CMemStream tabs(smText);
  tabs.SetEOLType(eolLF);
  tabs.IncIndent();
  tabs.IncIndent();
  tabs.WriteString("x\ny\n\n");
  EXPECT_EQ(B("\t\tx\n\t\ty\n\t\t\n"), tabs.Data());

  CMemStream spaces(smText);
  spaces.SetEOLType(eolCRLF);
  spaces.SetIndentWidth(3);
  spaces.WriteString("top\n");
  spaces.IncIndent();
  spaces.WriteString("in\n");
  spaces.DecIndent();
  spaces.WriteString("out");
  EXPECT_EQ(B("top\r\n   in\r\nout"), spaces.Data());
  EXPECT_ASSERTION(spaces.DecIndent(), "mIndentLevel > 0");
}

TEST(Stream, UnicodeEncodingsBytes) {
  CMemStream utf8;
  utf8.SetEncoding(encUTF8);
  utf8.WriteChar('A');
  utf8.WriteChar(0xE9);
  utf8.WriteChar(0x20AC);
  EXPECT_EQ(B({0x41, 0xC3, 0xA9, 0xE2, 0x82, 0xAC}), utf8.Data());

  CMemStream utf8In(utf8.Data().data(), static_cast<Int>(utf8.Data().size()));
  utf8In.SetEncoding(encUTF8);
  Int c = 0;
  bool eof = false;
  std::vector<Int> chars;
  while (Succeeded(utf8In.ReadChar(c, eof)) && !eof) chars.push_back(c);
  EXPECT_EQ(std::vector<Int>({0x41, 0xE9, 0x20AC}), chars);

  CMemStream little(smText);
  little.SetEncoding(encUTF16);
  little.SetEOLType(eolCRLF);
  little.WriteString(u"A\n");
  EXPECT_EQ(B({0x41, 0, 0x0D, 0, 0x0A, 0}), little.Data());

  CMemStream big(smBigEndian);
  big.SetEncoding(encUTF16);
  big.WriteChar(0x0041);
  big.WriteChar(0x20AC);
  EXPECT_EQ(B({0, 0x41, 0x20, 0xAC}), big.Data());
  CMemStream bigIn(big.Data().data(), 4, smBigEndian);
  bigIn.SetEncoding(encUTF16);
  CWStr wide;
  EXPECT_FALSE(bigIn.ReadUntil(wide, 0));
  EXPECT_TRUE(wide == u"A\u20AC");

  CMemStream utf32;
  utf32.SetEncoding(encUTF32);
  EXPECT_ASSERTION(utf32.WriteChar('x'), "unexpected encUTF32");
  EXPECT_ASSERTION(utf32.SetEncoding(7), "bad encoding");
  EXPECT_ASSERTION(utf32.SetEOLType(3), "bad EOL type");
  CMemStream wideStream;
  wideStream.SetEncoding(encUTF8);
  EXPECT_ASSERTION(wideStream.ReadByte(c, eof), "!IsUnicodeEncoding()");
}

TEST(Stream, ScrambledBytes) {
  CMemStream out(smScramble);
  out.WriteString(std::string("\0A\xC1\xFF", 4).c_str(), 4);
  // s = rotate-left((b + 0x3F) mod 256, 4)
  EXPECT_EQ(B({0xF3, 0x08, 0x00, 0xE3}), out.Data());
  CMemStream in(out.Data().data(), 4, smScramble);
  EXPECT_EQ(std::string("\0A\xC1\xFF", 4), ReadAll(in));
}

TEST(Stream, Checksums) {
  const char text[] = "The quick brown fox jumps over the lazy dog";
  CMemStream additive(smChecksum);
  additive.WriteString("abc");
  EXPECT_EQ(97u + 98u + 99u, additive.GetChecksum());

  CMemStream crc(smChecksum | smCRC32);
  crc.WriteString(text);
  EXPECT_EQ(0x414FA339u, crc.GetChecksum());
  EXPECT_EQ(static_cast<UInt32>(crc32(0, reinterpret_cast<const Bytef*>(text),
                                      sizeof text - 1)),
            crc.GetChecksum());

  // The checksum covers plain bytes, also when they are stored scrambled, and
  // the bytes the stream adds itself (end of line, indentation).
  CMemStream scrambled(smChecksum | smScramble | smText);
  scrambled.IncIndent();
  scrambled.WriteString("a\n");
  EXPECT_EQ(9u + 97u + 13u + 10u, scrambled.GetChecksum());
  CMemStream back(scrambled.Data().data(), 4, smChecksum | smScramble);
  ReadAll(back);
  EXPECT_EQ(9u + 97u + 13u + 10u, back.GetChecksum());

  CMemStream plain;
  EXPECT_ASSERTION(plain.GetChecksum(), "IsChecksumming()");
}

TEST(Stream, PushBackAndReadUntil) {
  const char data[] = "key\0value\0rest";
  CMemStream in(reinterpret_cast<const Byte*>(data), sizeof data - 1);
  CStr word;
  Int count = 0;
  EXPECT_TRUE(in.ReadUntil(word, 'y', -1, &count));
  EXPECT_STREQ("ke", word.Chars());
  EXPECT_EQ(2, count);
  Int c = 0;
  bool eof = false;
  in.UnGetChar('Y');
  in.ReadByte(c, eof);
  EXPECT_EQ('Y', c);

  word.Clear();
  EXPECT_TRUE(in.ReadUntil(word, 'z', 3, &count));  // stops at the maximum
  EXPECT_EQ(3, count);
  EXPECT_TRUE(word == CStr("\0va", 3));
  word.Clear();
  EXPECT_TRUE(in.ReadUntil(word, 0));  // a NUL delimiter, as the config file
  EXPECT_STREQ("lue", word.Chars());
  word.Clear();
  EXPECT_FALSE(in.ReadUntil(word, 'z'));  // ends before the delimiter
  EXPECT_STREQ("rest", word.Chars());

  EXPECT_ASSERTION(in.ReadUntil(word, 0x100), "delim <= 0xFF");
  EXPECT_ASSERTION(in.ReadUntil(word, 'x', 0), "maxLen == -1 || maxLen > 0");
  in.UnGetChar(0x100);
  EXPECT_ASSERTION(in.ReadByte(c, eof), "mUnGetChar <= 0xFF");
}

TEST(Stream, FormattedWriteBuffer) {
  CMemStream out;
  out.Printf("%s=%d;", "n", 42);
  EXPECT_EQ(B("n=42;"), out.Data());

  CMemStream fits;
  fits.Printf("%s", std::string(1998, 'x').c_str());
  EXPECT_EQ(1998u, fits.Data().size());

  CMemStream tooLong;
  EXPECT_ASSERTION(tooLong.Printf("%s", std::string(1999, 'y').c_str()),
                   "Str::VFormat(buf,format,args) < "
                   "((static_cast<Int>(sizeof(buf)/sizeof(buf[0]))) - 1)");
  TestSupport::ReportingAssertions reporting;
  CMemStream cut;
  cut.Printf("%s", std::string(2500, 'z').c_str());
  EXPECT_EQ(1999u, cut.Data().size());  // what fits is written
}

TEST(Stream, WideFormattedWriteBuffer) {
  CMemStream out;
  out.SetEncoding(encUTF16);
  out.WPrintf(u"%s=%d;", "n", 42);
  EXPECT_EQ(B(std::string("n\0=\0004\0002\0;\0", 10)), out.Data());

  CMemStream fits;
  fits.SetEncoding(encUTF16);
  fits.WPrintf(u"%s", std::string(1998, 'x').c_str());
  EXPECT_EQ(2 * 1998u, fits.Data().size());

  CMemStream tooLong;
  tooLong.SetEncoding(encUTF16);
  EXPECT_ASSERTION(tooLong.WPrintf(u"%s", std::string(1999, 'y').c_str()),
                   "WStr::VFormat(buf,format,args) < "
                   "((static_cast<Int>(sizeof(buf)/sizeof(buf[0]))) - 1)");
  TestSupport::ReportingAssertions reporting;
  CMemStream cut;
  cut.SetEncoding(encUTF16);
  cut.WPrintf(u"%s", std::string(2500, 'z').c_str());
  ASSERT_EQ(2 * 1999u, cut.Data().size());  // what fits is written
  EXPECT_EQ('z', cut.Data()[0]);
  EXPECT_EQ('z', cut.Data()[2 * 1998]);
}

namespace {
struct Upper : CStreamFilter {
  bool Filter(Int& c) override {
    if (c >= 'a' && c <= 'z') c -= 32;
    return c != '!';
  }
};
}  // namespace

TEST(Stream, FiltersChangeOrRefuse) {
  Upper upper;
  CMemStream out;
  out.SetWriteFilter(&upper);
  EXPECT_EQ(Ok, out.WriteString("abc"));
  EXPECT_EQ(B("ABC"), out.Data());
  EXPECT_EQ(Failure, out.WriteString("x!y"));
  EXPECT_EQ(ssFailed, out.GetState());
  EXPECT_EQ(B("ABCX"), out.Data());
  EXPECT_ASSERTION(out.WriteByte('z'), "IsWritable()");

  CStringStream in("ok!");
  in.SetReadFilter(&upper);
  EXPECT_EQ("OK", ReadAll(in));
  EXPECT_FALSE(in.IsReadable());
  Int c = 0;
  bool eof = false;
  EXPECT_ASSERTION(in.ReadByte(c, eof), "IsReadable()");
}

TEST(Stream, BaseHasNoPositions) {
  struct Bare : CStream {
    CError RawRead(Byte&, bool& eof) override {
      eof = true;
      return Ok;
    }
    CError RawWrite(Byte) override { return Ok; }
  } bare;
  Int pos = 0;
  EXPECT_FALSE(bare.CanGetPos());
  EXPECT_ASSERTION(bare.GetPos(pos), "not implemented for this stream");
  EXPECT_ASSERTION(bare.SetLength(3), "not implemented for this stream");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(Failure, bare.SetPos(0));
}

TEST(FileStream, Dispositions) {
  ScratchFile f("disp.bin");
  CFileStream file;
  EXPECT_EQ(E_NotFound, file.Open(f.Path().c_str(), fsmOpenExisting));
  EXPECT_EQ(E_NotFound, file.Open(f.Path().c_str(), fsmTruncateExisting));

  ASSERT_EQ(Ok, WriteToFile(f.Path(), fsmCreateNew, "first"));
  EXPECT_EQ(E_AlreadyExists, file.Open(f.Path().c_str(), fsmCreateNew));

  ASSERT_EQ(Ok, WriteToFile(f.Path(), fsmOpenOrCreate, "F"));
  EXPECT_EQ(B("First"), ReadFileBytes(f.Path()));  // opened, not truncated
  ASSERT_EQ(Ok, WriteToFile(f.Path(), fsmTruncateExisting, "ab"));
  EXPECT_EQ(B("ab"), ReadFileBytes(f.Path()));
  ASSERT_EQ(Ok, WriteToFile(f.Path(), fsmCreateAlways, "new"));
  EXPECT_EQ(B("new"), ReadFileBytes(f.Path()));

  EXPECT_EQ(E_BadArgument, file.Open(f.Path().c_str(), 0x5000000));
  EXPECT_ASSERTION(file.Open(f.Path().c_str(), fsmCreateAlways | smReadOnly),
                   "! IsReadOnly()");
  EXPECT_ASSERTION(
      file.Open(f.Path().c_str(), fsmOpenExisting | fsmCreateFullPath),
      "!(mode & fsmCreateFullPath)");

  ASSERT_EQ(Ok, file.Open(f.Path().c_str(), fsmOpenExisting | smReadOnly));
  EXPECT_ASSERTION(file.Open(f.Path().c_str(), fsmOpenExisting),
                   "(GetState() == ssInit) || (GetState() == ssClosed)");
  EXPECT_ASSERTION(file.WriteByte('x'), "IsWritable()");
  file.Close();
}

TEST(FileStream, CreateFullPathMakesTheFolders) {
  TestSupport::ScratchFolder folder("deep");
  std::string path = folder.Path() + "/a/b/c.txt";
  ASSERT_EQ(Ok, WriteToFile(path, fsmCreateAlways | fsmCreateFullPath, "deep"));
  EXPECT_EQ(B("deep"), ReadFileBytes(path));
  // The folders now exist: a second time is no error.
  ASSERT_EQ(Ok, WriteToFile(path, fsmOpenOrCreate | fsmCreateFullPath, "D"));
  EXPECT_EQ(B("Deep"), ReadFileBytes(path));
}

TEST(FileStream, PositionsAcrossBufferedReadsAndWrites) {
  ScratchFile f("pos.bin");
  CFileStream file;
  ASSERT_EQ(Ok, file.Open(f.Path().c_str(), fsmCreateAlways));
  std::string big(10000, '.');
  big[5000] = '#';
  file.WriteString(big.c_str());
  Int pos = 0, length = 0;
  EXPECT_EQ(Ok, file.GetPos(pos));
  EXPECT_EQ(10000, pos);
  EXPECT_EQ(Ok, file.GetLength(length));
  EXPECT_EQ(10000, length);

  ASSERT_EQ(Ok, file.SetPos(5000));
  Int c = 0;
  bool eof = false;
  file.ReadByte(c, eof);
  EXPECT_EQ('#', c);
  file.GetPos(pos);
  EXPECT_EQ(5001, pos);
  file.WriteByte('!');  // written where the reading stopped
  ASSERT_EQ(Ok, file.SetLength(6000));
  file.Close();

  Bytes bytes = ReadFileBytes(f.Path());
  ASSERT_EQ(6000u, bytes.size());
  EXPECT_EQ('#', bytes[5000]);
  EXPECT_EQ('!', bytes[5001]);
  EXPECT_EQ('.', bytes[5002]);
}

namespace {

// A write or read filter that changes nothing sends every character through
// the stream one by one; without a filter, strings go through in runs.
struct PassThrough : CStreamFilter {
  bool Filter(Int&) override { return true; }
};

}  // namespace

TEST(Stream, StringWritesInRunsMatchCharacterWrites) {
  const std::string text =
      "first line\n\nsecond\tline\r\n" + std::string(5000, 'x') + "\nend";
  for (UInt32 mode :
       {0u, smText | smChecksum | smCountLines,
        smText | smChecksum | smCRC32 | smScramble, smScramble | smChecksum}) {
    for (Int eol : {eolCRLF, eolCR, eolLF}) {
      for (Int width : {0, 3, 100}) {
        PassThrough filter;
        CMemStream runs(mode), single(mode);
        single.SetWriteFilter(&filter);
        for (CMemStream* s : {&runs, &single}) {
          s->SetEOLType(eol);
          s->SetIndentWidth(width);
          s->WriteString("top\n");
          s->IncIndent();
          s->IncIndent();
          s->WriteString(text.c_str(), static_cast<Int>(text.size()));
          s->DecIndent();
          s->Printf("\n%s\n\n", "printed");
        }
        EXPECT_EQ(single.Data(), runs.Data()) << mode << " " << eol;
        EXPECT_EQ(single.GetLineCount(), runs.GetLineCount());
        if (mode & smChecksum) {
          EXPECT_EQ(single.GetChecksum(), runs.GetChecksum());
        }
      }
    }
  }
}

TEST(Stream, FileWritesInRunsMatchCharacterWrites) {
  ScratchFile runsFile("runs.txt"), singleFile("single.txt");
  const UInt32 mode =
      fsmCreateAlways | smWriteOnly | smText | smChecksum | smCRC32;
  std::string line = "a line of the log with some words in it\n";
  PassThrough filter;
  CFileStream runs, single;
  ASSERT_EQ(Ok, runs.Open(runsFile.Path().c_str(), mode));
  ASSERT_EQ(Ok, single.Open(singleFile.Path().c_str(), mode));
  single.SetWriteFilter(&filter);
  for (CFileStream* s : {&runs, &single}) {
    s->SetIndentWidth(4);
    s->IncIndent();
    for (int i = 0; i < 500; ++i) s->WriteString(line.c_str());
  }
  EXPECT_EQ(single.GetChecksum(), runs.GetChecksum());
  EXPECT_EQ(Ok, runs.Close());
  EXPECT_EQ(Ok, single.Close());
  Bytes written = ReadFileBytes(runsFile.Path());
  EXPECT_EQ(500u * (line.size() + 5), written.size());
  EXPECT_EQ(ReadFileBytes(singleFile.Path()), written);
}

TEST(Stream, ReadUntilInRunsMatchesByteReads) {
  std::string data;
  for (int i = 0; i < 3000; ++i)
    data += "name" + std::to_string(i) + '\0' + "line\nvalue" + '\0';
  CMemStream source(smScramble | smChecksum);
  source.WriteString(data.c_str(), static_cast<Int>(data.size()));
  const Bytes stored = source.Data();
  for (Int maxLen : {-1, 3, 7, 5000}) {
    PassThrough filter;
    CMemStream runs(stored.data(), static_cast<Int>(stored.size()),
                    smScramble | smChecksum | smCountLines);
    CMemStream single(stored.data(), static_cast<Int>(stored.size()),
                      smScramble | smChecksum | smCountLines);
    single.SetReadFilter(&filter);
    for (;;) {
      CStr a, b;
      Int countA = -1, countB = -1;
      bool endedA = runs.ReadUntil(a, 0, maxLen, &countA);
      bool endedB = single.ReadUntil(b, 0, maxLen, &countB);
      ASSERT_EQ(endedB, endedA);
      ASSERT_EQ(countB, countA);
      ASSERT_TRUE(a == b);
      ASSERT_EQ(single.GetChecksum(), runs.GetChecksum());
      if (!endedA && a.IsEmpty()) break;
    }
    EXPECT_EQ(3000, runs.GetLineCount());
    EXPECT_EQ(single.GetLineCount(), runs.GetLineCount());
  }
}
