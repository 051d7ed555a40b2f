// The TrueType facts reader: a well-formed file, and damaged files that must
// be reported as bad, never read past (this also runs under the sanitizers).
#include <initializer_list>
#include <string>
#include <utility>
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

struct Name {
  unsigned long platform, language, id;
  std::string text;
};

// A name table; Windows names (platform 3) in UTF-16BE.
Bytes NameTable(const std::vector<Name>& names) {
  Bytes table, storage;
  Put(table, {0, names.size(), 6 + 12 * names.size()}, 2);
  for (const Name& n : names) {
    const std::size_t start = storage.size();
    for (char c : n.text) Put(storage, {Byte(c)}, n.platform == 3 ? 2 : 1);
    Put(table,
        {n.platform, n.platform == 3 ? 1ul : 0ul, n.language, n.id,
         storage.size() - start, start},
        2);
  }
  table.insert(table.end(), storage.begin(), storage.end());
  return table;
}

// The tables OS/2 (style bits at 62), head (revision at 4) and name.
struct Table {
  std::string tag;
  Bytes data;
};
using Tables = std::vector<Table>;

Tables GoodTables(unsigned long fsSelection = 0x21) {
  Tables tables = {{"OS/2", Bytes(96)}, {"head", Bytes(54)}};
  Set(tables[0].data, 62, fsSelection, 2);
  Set(tables[1].data, 4, 0x00020003, 4);
  tables.push_back({"name", NameTable({{1, 0, 1, "Mac Family"},
                                       {3, 0x407, 1, "German Family"},
                                       {3, 0x409, 2, "Bold Italic"},
                                       {3, 0x409, 1, "Test Family"}})});
  return tables;
}

// The directory, then the tables in order, the last ending the file.
Bytes FontFile(const Tables& tables) {
  Bytes file, data;
  Put(file, {0x00010000, tables.size() << 16, 0}, 4);
  for (const Table& t : tables) {
    for (char c : t.tag) file.push_back(Byte(c));
    Put(file, {0, 12 + 16 * tables.size() + data.size(), t.data.size()}, 4);
    data.insert(data.end(), t.data.begin(), t.data.end());
  }
  file.insert(file.end(), data.begin(), data.end());
  return file;
}

CError Read(const Bytes& bytes, CFontFacts& facts) {
  CMemStream stream(bytes.data(), static_cast<Int>(bytes.size()));
  return ReadFontFacts(stream, facts);
}

}  // namespace

TEST(FontFile, ReadsNameVersionAndStyle) {
  TestSupport::ScratchFile file("good.ttf");
  TestSupport::WriteFileBytes(file.Path(), FontFile(GoodTables()));
  CFontFacts facts;
  ASSERT_EQ(Ok, ReadFontFacts(file.Path().c_str(), facts));
  // The Windows US English family name wins over other languages and the
  // Macintosh record; the subfamily (name 2) is not the family.
  EXPECT_STREQ("Test Family", facts.name.Chars());
  EXPECT_EQ(0x00020003u, facts.version);
  EXPECT_EQ(3, facts.style);  // italic (2) + bold (1)
  EXPECT_EQ(E_NotFound, ReadFontFacts("no such font.ttf", facts));
  const std::pair<unsigned long, Int> styles[] = {{0x40, 0}, {0x20, 1}, {1, 2}};
  for (const auto& [selection, style] : styles) {
    ASSERT_EQ(Ok, Read(FontFile(GoodTables(selection)), facts));
    EXPECT_EQ(style, facts.style) << "fsSelection " << selection;
  }
  Tables macOnly = GoodTables();
  macOnly[2].data = NameTable({{1, 0, 1, "Mac Family"}});
  ASSERT_EQ(Ok, Read(FontFile(macOnly), facts));
  EXPECT_STREQ("Mac Family", facts.name.Chars());
}

TEST(FontFile, DamagedFilesAreBadFontFiles) {
  const Bytes good = FontFile(GoodTables());
  std::vector<Bytes> damaged;
  for (std::size_t size = 0; size < good.size(); ++size)
    damaged.emplace_back(good.begin(), good.begin() + size);
  // A table count far beyond the file, a length past its end, and offsets
  // past its end, one of them wrapping with the length.
  for (std::size_t at : {4, 12 + 16 * 2 + 12}) {
    damaged.push_back(good);
    Set(damaged.back(), at, 0xFFFF, 2);
  }
  for (unsigned long offset : {0x7FFFFFF0ul, 0xFFFFFFF0ul, 0x1000ul}) {
    for (std::size_t table = 0; table < 3; ++table) {
      damaged.push_back(good);
      Set(damaged.back(), 12 + 16 * table + 8, offset, 4);
    }
  }
  const std::vector<void (*)(Tables&)> changes = {
      [](Tables& t) { t[0].tag = "xxxx"; },  // each table is required
      [](Tables& t) { t[1].tag = "xxxx"; },
      [](Tables& t) { t[2].tag = "xxxx"; },
      [](Tables& t) { t[1].data.resize(7); },  // too short
      [](Tables& t) { t[0].data.resize(63); },
      [](Tables& t) { t[2].data[2] = 0xFF; },  // more names than it holds
      [](Tables& t) {                          // names past the table
        for (std::size_t name = 0; name < 4; ++name)
          t[2].data[6 + name * 12 + 10] = 0x7F;
      },
      [](Tables& t) {
        t[2].data = NameTable({{3, 0x409, 2, "Regular"}});
      }};
  for (auto change : changes) {
    Tables tables = GoodTables();
    change(tables);
    damaged.push_back(FontFile(tables));
  }
  for (std::size_t i = 0; i < damaged.size(); ++i) {
    CFontFacts facts;
    EXPECT_EQ(E_BadFontFile, Read(damaged[i], facts)) << "damaged file " << i;
  }
}
