#include <cstdlib>

#include "Platform.h"
#include "TError.h"
#include "TStr.h"
#include "TStream.h"
#include "TVarList.h"

namespace Tern {

const char cConfigFileHeader[] = "Orvane Configuration File 1.0";

namespace {

const UInt32 cConfigFileMode = smScramble | smChecksum;

// Replaces each "<name>" of `text` once, leaving the inserted text alone.
void FillOnce(CStr& text, const char* name, const CStr& value) {
  CStr placeholder("<");
  placeholder += name;
  placeholder += '>';
  for (Int pos = text.Find(placeholder.Chars()); pos >= 0;
       pos = text.Find(placeholder.Chars(), pos + value.Length())) {
    text.Remove(pos, placeholder.Length());
    text.Insert(pos, value.Chars(), value.Length());
  }
}

// Expansion gives up after this many replacements, or once the text has
// grown past this length: only a variable whose value holds its own
// placeholder, directly or through others, gets there.
const Int cMaxReplacements = 1000;
const Int cMaxExpandedLength = 1 << 16;

UInt32 ParseUnsigned(const CStr& text) {
  UInt32 value = 0;
  for (Int i = 0; i < text.Length() && text[i] >= '0' && text[i] <= '9'; ++i)
    value = value * 10 + static_cast<UInt32>(text[i] - '0');
  return value;
}

}  // namespace

CVarList::~CVarList() { Clear(); }

CVarList& CVarList::Global() {
  static CVarList global;
  return global;
}

void CVarList::Clear() {
  while (mHead) {
    CVar* next = mHead->next;
    delete mHead;
    mHead = next;
  }
  mTail = nullptr;
}

CVarList::CVar* CVarList::FindVar(const char* name) const {
  for (CVar* v = mHead; v; v = v->next)
    if (v->name == name) return v;
  return nullptr;
}

const CVarList::CVar* CVarList::Find(const char* name) const {
  TERN_ASSERT(name);
  return name ? FindVar(name) : nullptr;
}

Int CVarList::Count() const {
  Int n = 0;
  for (const CVar* v = mHead; v; v = v->next) ++n;
  return n;
}

void CVarList::Set(const char* name, const char* value, bool readOnly) {
  TERN_ASSERT(name);
  TERN_ASSERT(value);
  if (!name || !value) return;
  if (name[0] == '%') {
    ++name;
    readOnly = true;
  }
  CVar* var = FindVar(name);
  if (!var) {
    var = new CVar{false, CStr(name), CStr(value), nullptr};
    if (mTail)
      mTail->next = var;
    else
      mHead = var;
    mTail = var;
  } else if (!var->readOnly) {
    var->value = value;
  } else {
    TERN_FAIL("attempt to modify a read-only variable");
  }
  if (readOnly) var->readOnly = true;
}

void CVarList::Merge(const CVarList& other) {
  for (const CVar* v = other.mHead; v; v = v->next)
    Set(v->name.Chars(), v->value.Chars(), v->readOnly);
}

bool CVarList::Lookup(const char* name, CStr& value, bool* readOnly) const {
  if (const CVar* var = Find(name)) {
    value = var->value;
    if (readOnly) *readOnly = var->readOnly;
    return true;
  }
  if (!name) return false;
  for (const CSearchLocation& location : mSearchLocations) {
    if (Platform::ReadRegistryString(location.rootKey.Chars(),
                                     location.subKey.Chars(), name, value)) {
      if (readOnly) *readOnly = false;
      return true;
    }
  }
  return false;
}

bool CVarList::Get(const char* name, CStr& value, bool* readOnly) const {
  if (Lookup(name, value, readOnly)) return true;
  value.Clear();
  return false;
}

bool CVarList::GetBool(const char* name, bool& value, bool* readOnly) const {
  CStr text;
  if (!Lookup(name, text, readOnly)) return false;
  if (text == "True" || text == "Yes" || text == "1")
    value = true;
  else if (text == "False" || text == "No" || text == "0")
    value = false;
  else
    TERN_FAIL("bad Bool value");
  return true;
}

bool CVarList::GetFlag(const char* name) const {
  CStr value;
  if (!Lookup(name, value, nullptr)) return false;
  TERN_ASSERT(value == "0" || value == "1");
  return value == "1";
}

void CVarList::AddSearchLocation(const char* rootKey, const char* subKey) {
  mSearchLocations.push_back({CStr(rootKey), CStr(subKey)});
}

namespace {

const CStr& TextOf(const CStr& text, CStr&) { return text; }
const CWStr& TextOf(const CStr& text, CWStr& wide) {
  wide = Str::ToWide(text.Chars());
  return wide;
}

}  // namespace

template <typename StrT>
Int CVarList::ExpandPass(StrT& text, typename StrT::CharType open,
                         typename StrT::CharType close, Int& budget) const {
  Int count = 0;
  StrT nameBuf, valueBuf;
  for (const CVarList* list = this; list; list = list->mNext) {
    for (const CVar* v = list->mHead; v; v = v->next) {
      const StrT& name = TextOf(v->name, nameBuf);
      const Int nameLen = name.Length();
      if (nameLen == 0) continue;
      const StrT& value = TextOf(v->value, valueBuf);
      Int pos = text.Find(name.Chars(), 0);
      while (pos >= 0) {
        bool opened = pos > 0 && text[pos - 1] == open;
        bool closed =
            pos + nameLen < text.Length() && text[pos + nameLen] == close;
        if (opened && closed) {
          if (budget <= 0 || text.Length() > cMaxExpandedLength) {
            budget = -1;  // one more was due: the expansion would not end
            return count;
          }
          --budget;
          Int start = pos - 1;
          text.Remove(start, nameLen + 2);
          text.Insert(start, value.Chars(), value.Length());
          ++count;
          pos = text.Find(name.Chars(), start + 1);
        } else {
          pos = text.Find(name.Chars(), pos + 1);
        }
      }
    }
  }
  return count;
}

template <typename StrT>
Int CVarList::ExpandText(StrT& text, const char* delims) const {
  TERN_ASSERT((delims == 0) || (Str::Length(delims) == 2));
  using Ch = typename StrT::CharType;
  Ch open = '<', close = '>';
  if (delims && Str::Length(delims) == 2) {
    open = static_cast<unsigned char>(delims[0]);
    close = static_cast<unsigned char>(delims[1]);
  }
  Int total = 0;
  Int budget = cMaxReplacements;
  while (text.Find(open) >= 0 && text.Find(close) >= 0) {
    Int replaced = ExpandPass(text, open, close, budget);
    total += replaced;
    if (budget < 0) {
      // A value that holds its own placeholder, directly or through others,
      // would be expanded for ever.
      TERN_FAIL("variable expansion does not end");
      break;
    }
    if (replaced == 0) break;
  }
  return total;
}

Int CVarList::Expand(CStr& text, const char* delims) const {
  return ExpandText(text, delims);
}

Int CVarList::Expand(CWStr& text, const char* delims) const {
  return ExpandText(text, delims);
}

// ---- Dump and configuration file --------------------------------------------

void CVarList::Dump(CStream& out) const {
  for (const CVar* v = mHead; v; v = v->next) {
    CStr line("<name><modify>\t=\t\"<value>\"\n");
    FillOnce(line, "modify", CStr(v->readOnly ? " (READ-ONLY)" : ""));
    FillOnce(line, "name", v->name);
    FillOnce(line, "value", v->value);
    out.WriteString(line.Chars(), line.Length());
  }
}

void CVarList::Write(CStream& out) const {
  TERN_ASSERT(out.IsWritable());
  for (const CVar* v = mHead; v; v = v->next) {
    if (v->readOnly) out.WriteByte('%');
    out.WriteString(v->name.Chars(), v->name.Length());
    out.WriteByte(0);
    out.WriteString(v->value.Chars(), v->value.Length());
    out.WriteByte(0);
  }
}

bool CVarList::Read(CStream& in) {
  TERN_ASSERT(in.IsReadable());
  for (;;) {
    CStr name, value;
    if (!in.ReadUntil(name, 0)) return false;  // the stream ended
    if (name.IsEmpty()) return true;           // the end marker
    in.ReadUntil(value, 0);
    Set(name.Chars(), value.Chars(), false);
  }
}

CError CVarList::WriteFile(const char* osPath) const {
  CFileStream file;
  CError err =
      file.Open(osPath, fsmCreateAlways | smWriteOnly | cConfigFileMode);
  if (Failed(err)) return err;
  err = WriteConfig(file);
  CError closed = file.Close();
  return Failed(err) ? err : closed;
}

CError CVarList::WriteConfig(CStream& out) const {
  out.WriteString(cConfigFileHeader);
  out.WriteByte(0);
  Write(out);
  out.WriteByte(0);
  out.Printf("%lu", static_cast<unsigned long>(out.GetChecksum()));
  out.WriteByte(0);
  return out.GetState() == ssFailed ? E_Write : Ok;
}

CError CVarList::ReadFile(const char* osPath, ConfigFileProblem* problem) {
  if (problem) *problem = cfpNone;
  CFileStream file;
  CError err =
      file.Open(osPath, fsmOpenExisting | smReadOnly | cConfigFileMode);
  return Failed(err) ? err : ReadConfig(file, problem);
}

CError CVarList::ReadConfig(CStream& in, ConfigFileProblem* problem) {
  ConfigFileProblem found = cfpNone;
  CStr header;
  bool headerEnded = in.ReadUntil(header, 0);
  if (!headerEnded && header.IsEmpty()) {
    found = cfpEmpty;
  } else if (header != cConfigFileHeader) {
    found = cfpBadHeader;
  } else {
    // Without its end marker the file has no checksum text, which reads as 0
    // and fails the comparison.
    bool ended = Read(in);
    UInt32 sum = in.GetChecksum();
    CStr checksumText;
    in.ReadUntil(checksumText, 0);
    if (ParseUnsigned(checksumText) != sum)
      found = ended ? cfpBadChecksum : cfpNoEndMarker;
  }
  if (problem) *problem = found;
  return found == cfpNone ? Ok : E_BadData;
}

}  // namespace Tern
