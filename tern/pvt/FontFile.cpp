#include <vector>

#include "TFontFile.h"
#include "TStream.h"

namespace Tern {

namespace {

const Int cTableDirectoryOffset = 12;
const Int cTableRecordSize = 16;
const UInt16 cFamilyNameId = 1;
const UInt16 cEnglishUS = 0x409;

UInt16 GetU16(const std::vector<Byte>& data, std::size_t at) {
  return static_cast<UInt16>((data[at] << 8) | data[at + 1]);
}

UInt32 GetU32(const std::vector<Byte>& data, std::size_t at) {
  return (static_cast<UInt32>(GetU16(data, at)) << 16) | GetU16(data, at + 2);
}

// Reads `length` bytes from `offset`; false when the file ends first.
bool ReadBlock(CStream& file, UInt32 offset, UInt32 length,
               std::vector<Byte>& out) {
  out.clear();
  if (Failed(file.SetPos(static_cast<Int>(offset)))) return false;
  out.reserve(length);
  for (UInt32 i = 0; i < length; ++i) {
    Int c = 0;
    bool eof = false;
    if (Failed(file.ReadByte(c, eof)) || eof) return false;
    out.push_back(static_cast<Byte>(c));
  }
  return true;
}

struct CTableSpan {
  UInt32 offset = 0;
  UInt32 length = 0;
  bool found = false;
};

// Finds the "name", "head" and "OS/2" records of the table directory.
bool ScanDirectory(CStream& file, Int fileLength, CTableSpan& name,
                   CTableSpan& head, CTableSpan& os2) {
  std::vector<Byte> header;
  if (!ReadBlock(file, 0, cTableDirectoryOffset, header)) return false;
  const Int tableCount = GetU16(header, 4);
  if (cTableDirectoryOffset + tableCount * cTableRecordSize > fileLength)
    return false;
  std::vector<Byte> records;
  if (!ReadBlock(file, cTableDirectoryOffset, tableCount * cTableRecordSize,
                 records))
    return false;
  for (Int i = 0; i < tableCount; ++i) {
    const std::size_t at = static_cast<std::size_t>(i) * cTableRecordSize;
    const UInt32 tag = GetU32(records, at);
    CTableSpan span{GetU32(records, at + 8), GetU32(records, at + 12), true};
    if (static_cast<unsigned long long>(span.offset) + span.length >
        static_cast<unsigned long long>(fileLength))
      continue;  // a table past the end of the file counts as missing
    if (tag == 0x6E616D65u)
      name = span;  // "name"
    else if (tag == 0x68656164u)
      head = span;  // "head"
    else if (tag == 0x4F532F32u)
      os2 = span;  // "OS/2"
  }
  return name.found && head.found && os2.found;
}

// A UTF-16BE or single-byte name record as 8-bit text; characters outside
// Latin-1 become "?".
CStr DecodeName(const std::vector<Byte>& data, std::size_t at,
                std::size_t length, bool wide) {
  CStr text;
  if (wide) {
    for (std::size_t i = 0; i + 1 < length; i += 2) {
      const UInt16 c = GetU16(data, at + i);
      text += static_cast<char>(c < 0x100 ? c : '?');
    }
  } else {
    for (std::size_t i = 0; i < length; ++i)
      text += static_cast<char>(data[at + i]);
  }
  return text;
}

// How much a name record is preferred: Windows Unicode in US English first,
// then any Windows Unicode, then Macintosh Roman; 0 for other records.
Int NameRank(UInt16 platform, UInt16 encoding, UInt16 language) {
  if (platform == 3 && (encoding == 1 || encoding == 0))
    return language == cEnglishUS ? 3 : 2;
  if (platform == 1 && encoding == 0) return 1;
  return 0;
}

bool ReadFamilyName(const std::vector<Byte>& table, CStr& name) {
  if (table.size() < 6) return false;
  const std::size_t count = GetU16(table, 2);
  const std::size_t storage = GetU16(table, 4);
  if (6 + count * 12 > table.size()) return false;
  Int bestRank = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = 6 + i * 12;
    const UInt16 platform = GetU16(table, at);
    const Int rank =
        NameRank(platform, GetU16(table, at + 2), GetU16(table, at + 4));
    if (GetU16(table, at + 6) != cFamilyNameId || rank <= bestRank) continue;
    const std::size_t length = GetU16(table, at + 8);
    const std::size_t start = storage + GetU16(table, at + 10);
    if (start + length > table.size()) continue;
    CStr text = DecodeName(table, start, length, platform == 3);
    if (text.IsEmpty()) continue;
    name = text;
    bestRank = rank;
  }
  return bestRank > 0;
}

Int StyleFromSelection(UInt16 fsSelection) {
  return ((fsSelection & 0x01) ? 2 : 0) + ((fsSelection & 0x20) ? 1 : 0);
}

}  // namespace

CError ReadFontFacts(CStream& file, CFontFacts& facts) {
  Int fileLength = 0;
  if (Failed(file.GetLength(fileLength))) return E_BadFontFile;
  CTableSpan name, head, os2;
  if (!ScanDirectory(file, fileLength, name, head, os2)) return E_BadFontFile;
  std::vector<Byte> table;
  CFontFacts read;
  if (head.length < 8 || !ReadBlock(file, head.offset, 8, table))
    return E_BadFontFile;
  read.version = GetU32(table, 4);
  if (os2.length < 64 || !ReadBlock(file, os2.offset, 64, table))
    return E_BadFontFile;
  read.style = StyleFromSelection(GetU16(table, 62));
  if (!ReadBlock(file, name.offset, name.length, table) ||
      !ReadFamilyName(table, read.name))
    return E_BadFontFile;
  facts = read;
  return Ok;
}

CError ReadFontFacts(const char* osPath, CFontFacts& facts) {
  TERN_ASSERT(osPath);
  if (!osPath) return E_BadArgument;
  CFileStream file;
  if (Failed(file.Open(osPath, fsmOpenExisting | smReadOnly)))
    return E_NotFound;
  return ReadFontFacts(file, facts);
}

}  // namespace Tern
