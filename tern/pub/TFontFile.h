// The facts the font installer needs from a TrueType file: the family name
// ("name" table), the font revision ("head") and the style ("OS/2"). Read
// with plain file reads: the table directory is scanned and each table found
// by its tag. Every offset and length is checked against the file, so a
// damaged file is reported, never read past.
#pragma once

#include "TError.h"
#include "TString.h"

namespace Tern {

class CStream;

struct CFontFacts {
  CStr name;           // the family name, in the system code page
  UInt32 version = 0;  // "head" fontRevision, 16.16 fixed point
  Int style = 0;       // 2 when italic, plus 1 when bold
};

// E_NotFound when the file can't be opened; E_BadFontFile when it is not a
// TrueType file, is cut short, or lacks one of the three tables.
CError ReadFontFacts(const char* osPath, CFontFacts& facts);
// The same from an open, positionable stream.
CError ReadFontFacts(CStream& file, CFontFacts& facts);

}  // namespace Tern
