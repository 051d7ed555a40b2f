// The TrueType facts reader: a well-formed file, and damaged files that must
// be reported as bad, never read past (this test also runs under the
// sanitizers).
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TFontFile.h"
#include "TStream.h"

using namespace Tern;
using TestSupport::ScratchFile;
using TestSupport::WriteFileBytes;

namespace {

using Bytes = std::vector<Byte>;

void PutU16(Bytes& out, unsigned v) {
  out.push_back(static_cast<Byte>(v >> 8));
  out.push_back(static_cast<Byte>(v));
}
void PutU32(Bytes& out, unsigned long v) {
  PutU16(out, static_cast<unsigned>(v >> 16));
  PutU16(out, static_cast<unsigned>(v & 0xFFFF));
}
void SetU32(Bytes& out, std::size_t at, unsigned long v) {
  Bytes b;
  PutU32(b, v);
  for (int i = 0; i < 4; ++i) out[at + i] = b[i];
}

struct NameRecord {
  unsigned platform, encoding, language, nameId;
  std::string text;
};

Bytes NameTable(const std::vector<NameRecord>& records) {
  Bytes table, storage;
  PutU16(table, 0);
  PutU16(table, static_cast<unsigned>(records.size()));
  PutU16(table, static_cast<unsigned>(6 + 12 * records.size()));
  for (const auto& r : records) {
    Bytes text;
    for (char c : r.text) {
      if (r.platform == 3) text.push_back(0);
      text.push_back(static_cast<Byte>(c));
    }
    PutU16(table, r.platform);
    PutU16(table, r.encoding);
    PutU16(table, r.language);
    PutU16(table, r.nameId);
    PutU16(table, static_cast<unsigned>(text.size()));
    PutU16(table, static_cast<unsigned>(storage.size()));
    storage.insert(storage.end(), text.begin(), text.end());
  }
  table.insert(table.end(), storage.begin(), storage.end());
  return table;
}

Bytes HeadTable(unsigned long revision) {
  Bytes table;
  PutU32(table, 0x00010000);
  PutU32(table, revision);
  table.resize(54, 0);
  return table;
}

Bytes Os2Table(unsigned fsSelection) {
  Bytes table(62, 0);
  PutU16(table, fsSelection);
  table.resize(96, 0);
  return table;
}

struct Table {
  std::string tag;
  Bytes data;
};

// An sfnt file: the directory, then the tables in order, the last one
// ending exactly at the end of the file.
Bytes FontFile(const std::vector<Table>& tables) {
  Bytes file;
  PutU32(file, 0x00010000);
  PutU16(file, static_cast<unsigned>(tables.size()));
  PutU16(file, 0);
  PutU16(file, 0);
  PutU16(file, 0);
  std::size_t offset = 12 + 16 * tables.size();
  for (const auto& t : tables) {
    for (char c : t.tag) file.push_back(static_cast<Byte>(c));
    PutU32(file, 0);
    PutU32(file, static_cast<unsigned long>(offset));
    PutU32(file, static_cast<unsigned long>(t.data.size()));
    offset += t.data.size();
  }
  for (const auto& t : tables)
    file.insert(file.end(), t.data.begin(), t.data.end());
  return file;
}

std::vector<Table> GoodTables() {
  return {{"OS/2", Os2Table(0x21)},
          {"head", HeadTable(0x00020003)},
          {"name", NameTable({{1, 0, 0, 1, "Mac Family"},
                              {3, 1, 0x407, 1, "German Family"},
                              {3, 1, 0x409, 2, "Bold Italic"},
                              {3, 1, 0x409, 1, "Test Family"}})}};
}

CError ReadBytes(const Bytes& bytes, CFontFacts& facts) {
  CMemStream stream(bytes.data(), static_cast<Int>(bytes.size()));
  return ReadFontFacts(stream, facts);
}

}  // namespace

TEST(FontFile, ReadsNameVersionAndStyleFromAFile) {
  ScratchFile file("good.ttf");
  WriteFileBytes(file.Path(), FontFile(GoodTables()));
  CFontFacts facts;
  ASSERT_EQ(Ok, ReadFontFacts(file.Path().c_str(), facts));
  // The Windows US English family name wins over other languages and the
  // Macintosh record; the subfamily (name 2) is not the family.
  EXPECT_STREQ("Test Family", facts.name.Chars());
  EXPECT_EQ(0x00020003u, facts.version);
  EXPECT_EQ(3, facts.style);  // italic (2) + bold (1)
}

TEST(FontFile, StyleComesFromTheSelectionBits) {
  const unsigned selections[] = {0x40, 0x20, 0x01, 0x21};
  const Int styles[] = {0, 1, 2, 3};
  for (int i = 0; i < 4; ++i) {
    auto tables = GoodTables();
    tables[0].data = Os2Table(selections[i]);
    CFontFacts facts;
    ASSERT_EQ(Ok, ReadBytes(FontFile(tables), facts));
    EXPECT_EQ(styles[i], facts.style) << "fsSelection " << selections[i];
  }
}

TEST(FontFile, FallsBackToTheMacintoshName) {
  auto tables = GoodTables();
  tables[2].data = NameTable({{1, 0, 0, 1, "Mac Family"}});
  CFontFacts facts;
  ASSERT_EQ(Ok, ReadBytes(FontFile(tables), facts));
  EXPECT_STREQ("Mac Family", facts.name.Chars());
}

TEST(FontFile, MissingFileIsNotFound) {
  CFontFacts facts;
  EXPECT_EQ(E_NotFound, ReadFontFacts("no such font.ttf", facts));
}

TEST(FontFile, EveryTruncationIsABadFontFile) {
  const Bytes good = FontFile(GoodTables());
  for (std::size_t size = 0; size < good.size(); ++size) {
    CFontFacts facts;
    Bytes cut(good.begin(), good.begin() + size);
    EXPECT_EQ(E_BadFontFile, ReadBytes(cut, facts)) << "size " << size;
  }
}

TEST(FontFile, DamagedDirectoriesAreBadFontFiles) {
  CFontFacts facts;
  // A table count far beyond the file.
  Bytes absurd = FontFile(GoodTables());
  absurd[4] = absurd[5] = 0xFF;
  EXPECT_EQ(E_BadFontFile, ReadBytes(absurd, facts));
  // Offsets past the end, including one whose sum with the length wraps.
  for (unsigned long offset : {0x7FFFFFF0ul, 0xFFFFFFF0ul, 0x00001000ul}) {
    for (int table = 0; table < 3; ++table) {
      Bytes past = FontFile(GoodTables());
      SetU32(past, 12 + 16 * table + 8, offset);
      EXPECT_EQ(E_BadFontFile, ReadBytes(past, facts))
          << "table " << table << " offset " << offset;
    }
  }
  // A length past the end.
  Bytes longTable = FontFile(GoodTables());
  SetU32(longTable, 12 + 16 * 2 + 12, 0xFFFFFFFF);
  EXPECT_EQ(E_BadFontFile, ReadBytes(longTable, facts));
}

TEST(FontFile, EachOfTheThreeTablesIsRequired) {
  for (int missing = 0; missing < 3; ++missing) {
    auto tables = GoodTables();
    tables[missing].tag = "xxxx";
    CFontFacts facts;
    EXPECT_EQ(E_BadFontFile, ReadBytes(FontFile(tables), facts))
        << "without table " << missing;
  }
}

TEST(FontFile, ShortTablesAndBrokenNamesAreBadFontFiles) {
  CFontFacts facts;
  auto shortHead = GoodTables();
  shortHead[1].data.resize(7);
  EXPECT_EQ(E_BadFontFile, ReadBytes(FontFile(shortHead), facts));
  auto shortOs2 = GoodTables();
  shortOs2[0].data.resize(63);
  EXPECT_EQ(E_BadFontFile, ReadBytes(FontFile(shortOs2), facts));
  // Name records that point past their table, and a name table that claims
  // more records than it holds.
  auto badName = GoodTables();
  Bytes& name = badName[2].data;
  for (std::size_t rec = 0; rec < 4; ++rec) {
    name[6 + rec * 12 + 10] = 0x7F;  // string offset high byte
  }
  EXPECT_EQ(E_BadFontFile, ReadBytes(FontFile(badName), facts));
  auto manyRecords = GoodTables();
  manyRecords[2].data[2] = 0xFF;
  EXPECT_EQ(E_BadFontFile, ReadBytes(FontFile(manyRecords), facts));
  auto noFamily = GoodTables();
  noFamily[2].data = NameTable({{3, 1, 0x409, 2, "Regular"}});
  EXPECT_EQ(E_BadFontFile, ReadBytes(FontFile(noFamily), facts));
}
