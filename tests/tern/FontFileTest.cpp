// The TrueType facts reader: a well-formed file, and damaged files that must
// be reported as bad, never read past (this also runs under the sanitizers).
#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TFontFile.h"
#include "TStream.h"
#include "TestSupport.h"

using namespace Tern;
using Bytes = std::vector<Byte>;

namespace {

// Big-endian numbers of `size` bytes, appended or written over.
void Put(Bytes& out, std::initializer_list<unsigned long> values, int size) {
  for (unsigned long v : values)
    for (int i = size - 1; i >= 0; --i) out.push_back(Byte(v >> (8 * i)));
}
void Set(Bytes& out, std::size_t at, unsigned long v, int size) {
  for (int i = 0; i < size; ++i) out[at + i] = Byte(v >> (8 * (size - 1 - i)));
}

// Three tables: OS/2 at 60 (style bits at 62), head at 156 (revision at 4)
// and name at 210 (count at 2, text at 4, records of 12 bytes from 6).
Bytes GoodFont() {
  Bytes os2(96), head(54), name, text;
  Set(os2, 62, 0x21, 2);
  Set(head, 4, 0x00020003, 4);
  // Platform, encoding, language and name id: the family name (1) of
  // Macintosh Roman and of German and US English Windows, and a subfamily (2).
  const unsigned long ids[][4] = {
      {1, 0, 0, 1}, {3, 1, 0x407, 1}, {3, 1, 0x409, 2}, {3, 1, 0x409, 1}};
  const std::string texts[] = {"Mac Family", "German Family", "Bold Italic",
                               "Test Family"};
  Put(name, {0, 4, 6 + 12 * 4}, 2);
  for (int i = 0; i < 4; ++i) {
    const std::size_t start = text.size();
    for (char c : texts[i]) Put(text, {Byte(c)}, ids[i][0] == 3 ? 2 : 1);
    Put(name,
        {ids[i][0], ids[i][1], ids[i][2], ids[i][3], text.size() - start,
         start},
        2);
  }
  name.insert(name.end(), text.begin(), text.end());
  Bytes file;
  Put(file,
      {0x00010000, 3 << 16, 0,  // the directory: tag, sum, offset, length
       0x4F532F32, 0, 60, 96, 0x68656164, 0, 156, 54,  // "OS/2", "head"
       0x6E616D65, 0, 210, name.size()},
      4);  // "name"
  for (const Bytes* table : {&os2, &head, &name})
    file.insert(file.end(), table->begin(), table->end());
  return file;
}

CError Read(const Bytes& bytes, CFontFacts& facts) {
  CMemStream stream(bytes.data(), static_cast<Int>(bytes.size()));
  return ReadFontFacts(stream, facts);
}

}  // namespace

TEST(FontFile, ReadsNameVersionAndStyle) {
  TestSupport::ScratchFile file("good.ttf");
  TestSupport::WriteFileBytes(file.Path(), GoodFont());
  CFontFacts facts;
  ASSERT_EQ(Ok, ReadFontFacts(file.Path().c_str(), facts));
  // The Windows US English family name wins over other languages and the
  // Macintosh record; the subfamily (name 2) is not the family.
  EXPECT_STREQ("Test Family", facts.name.Chars());
  EXPECT_EQ(0x00020003u, facts.version);
  EXPECT_EQ(3, facts.style);  // italic (2) + bold (1)
  EXPECT_EQ(E_NotFound, ReadFontFacts("no such font.ttf", facts));
  // fsSelection bits of regular, bold and italic.
  const unsigned long styleBits[] = {0x40, 0x20, 0x01};
  for (Int style = 0; style < 3; ++style) {
    Bytes font = GoodFont();
    Set(font, 60 + 62, styleBits[style], 2);
    ASSERT_EQ(Ok, Read(font, facts));
    EXPECT_EQ(style, facts.style);
  }
}

TEST(FontFile, DamagedFilesAreBadFontFiles) {
  const Bytes good = GoodFont();
  std::vector<Bytes> damaged;
  for (std::size_t size = 0; size < good.size(); ++size)
    damaged.emplace_back(good.begin(), good.begin() + size);
  const struct {
    std::size_t at;
    unsigned long value;
    int size;
  } patches[] = {{4, 0xFFFF, 2},  // tables far beyond the file
                 {12, 0x78787878, 4},
                 {28, 0x78787878, 4},
                 {44, 0x78787878, 4},  // tags
                 {56, 0xFFFFFFFF, 4},  // name's length past the end
                 {24, 63, 4},
                 {40, 7, 4},        // OS/2 and head too short
                 {212, 0xFF04, 2},  // more name records than the table holds
                 {212, 0, 2},       // no family name
                 {214, 0x7FFF, 2},  // the names' text past the table
                 // Offsets past the end, one of them wrapping with the length.
                 {20, 0x7FFFFFF0, 4},
                 {36, 0xFFFFFFF0, 4},
                 {52, 0x1000, 4}};
  for (const auto& p : patches) {
    damaged.push_back(good);
    Set(damaged.back(), p.at, p.value, p.size);
  }
  for (std::size_t i = 0; i < damaged.size(); ++i) {
    CFontFacts facts;
    EXPECT_EQ(E_BadFontFile, Read(damaged[i], facts)) << "damaged file " << i;
  }
}
