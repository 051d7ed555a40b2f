#include <algorithm>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <utility>

#include "Platform.h"
#include "TError.h"
#include "TStr.h"
#include "TStream.h"
#include "TVarList.h"
#include "TightPlaceholders.h"

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
    text.Replace(pos, placeholder.Length(), value.Chars(), value.Length());
  }
}

// Expansion gives up after max(1000, the text's length) replacements, or once
// the text has grown past max(64K, 16 times its length): only a variable whose
// value holds its own placeholder, directly or through others, gets there.
const Int cMaxReplacements = 1000;
const Int cMaxExpandedLength = 1 << 16;
const Int cGrowthFactor = 16;

CExpansionBudget BudgetFor(Int textLength) {
  return {std::max(cMaxReplacements, textLength),
          std::max(cMaxExpandedLength, cGrowthFactor * textLength)};
}

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
  mIndex.clear();
  while (mHead) {
    CVar* next = mHead->next;
    delete mHead;
    mHead = next;
  }
  mTail = nullptr;
  mCount = 0;
  mNameBytes.reset();
  mLongestName = 0;
}

CVarList::CVar* CVarList::FindVar(std::string_view name) const {
  if (mIndex.empty()) return nullptr;
  const std::size_t hash = std::hash<std::string_view>()(name);
  const std::size_t mask = mIndex.size() - 1;
  for (std::size_t i = hash & mask; mIndex[i].var; i = (i + 1) & mask) {
    const CIndexSlot& slot = mIndex[i];
    if (slot.hash == hash && std::string_view(slot.var->name.Chars(),
                                              slot.var->name.Length()) == name)
      return slot.var;
  }
  return nullptr;
}

void CVarList::AddToIndex(CVar* var) {
  auto place = [this](const CIndexSlot& slot) {
    const std::size_t mask = mIndex.size() - 1;
    std::size_t i = slot.hash & mask;
    while (mIndex[i].var) i = (i + 1) & mask;
    mIndex[i] = slot;
  };
  if (static_cast<std::size_t>(mCount) * 2 > mIndex.size()) {
    std::vector<CIndexSlot> old(std::move(mIndex));
    mIndex.assign(old.empty() ? 16 : old.size() * 2, CIndexSlot{0, nullptr});
    for (const CIndexSlot& slot : old)
      if (slot.var) place(slot);
  }
  place(CIndexSlot{std::hash<std::string_view>()(
                       std::string_view(var->name.Chars(), var->name.Length())),
                   var});
}

const CVarList::CVar* CVarList::Find(const char* name) const {
  TERN_ASSERT(name);
  return name ? FindVar(std::string_view(name)) : nullptr;
}

void CVarList::Set(const char* name, const char* value, bool readOnly) {
  TERN_ASSERT(name);
  TERN_ASSERT(value);
  if (!name || !value) return;
  if (name[0] == '%') {
    ++name;
    readOnly = true;
  }
  CVar* var = FindVar(std::string_view(name));
  if (!var) {
    var = new CVar{false, CStr(name), CStr(value), nullptr};
    if (mTail)
      mTail->next = var;
    else
      mHead = var;
    mTail = var;
    ++mCount;
    AddToIndex(var);
    const CStr& stored = var->name;
    mLongestName = std::max(mLongestName, stored.Length());
    for (Int i = 0; i < stored.Length(); ++i)
      mNameBytes.set(static_cast<unsigned char>(stored.Chars()[i]));
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
                         typename StrT::CharType close,
                         CExpansionBudget& budget) const {
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
          if (budget.replacements <= 0 || text.Length() > budget.maxLength) {
            budget.replacements = -1;  // one more was due: it would not end
            return count;
          }
          --budget.replacements;
          Int start = pos - 1;
          text.Replace(start, nameLen + 2, value.Chars(), value.Length());
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

// Filling placeholders by looking their names up gives the same text and the
// same count as the variable-by-variable passes of ExpandPass when
//  - no name contains a delimiter and the two delimiters differ: then the
//    only text a variable's pass can replace is a "tight" placeholder, an
//    open delimiter, a name and the close delimiter with no delimiter between;
//  - no name is defined in two lists of the chain: then every tight
//    placeholder has at most one variable that fills it.
// Tight placeholders never overlap, and filling one leaves every other in
// place (it may only make new ones, from a value or from the text around
// it). So every order of filling them reaches the same text after the same
// number of replacements, and a pass that fills all the placeholders present
// at its start, left to right in one sweep, is as good as any.
bool CVarList::CanExpandByLookup(char open, char close) const {
  if (open == close) return false;
  const unsigned char o = static_cast<unsigned char>(open);
  const unsigned char c = static_cast<unsigned char>(close);
  for (const CVarList* list = this; list; list = list->mNext)
    if (list->mNameBytes[o] || list->mNameBytes[c]) return false;
  for (const CVarList* later = mNext; later; later = later->mNext)
    for (const CVar* v = later->mHead; v; v = v->next)
      for (const CVarList* list = this; list != later; list = list->mNext)
        if (list->FindVar(std::string_view(v->name.Chars(), v->name.Length())))
          return false;
  return true;
}

const CVarList::CVar* CVarList::FindInChain(std::string_view name) const {
  for (const CVarList* list = this; list; list = list->mNext)
    if (CVar* var = list->FindVar(name)) return var;
  return nullptr;
}

namespace {

// Runs `pass` until it replaces nothing (not at all when the text lacks a
// delimiter); a pass that used up the budget ends the expansion as endless.
template <typename StrT, typename Pass>
Int RepeatPasses(StrT& text, typename StrT::CharType open,
                 typename StrT::CharType close, Pass pass) {
  if (text.Find(open) < 0 || text.Find(close) < 0) return 0;
  Int total = 0;
  CExpansionBudget budget = BudgetFor(text.Length());
  for (;;) {
    Int replaced = pass(text, budget);
    total += replaced;
    if (budget.replacements < 0) {
      // A value that holds its own placeholder, directly or through others,
      // would be expanded for ever.
      TERN_FAIL("variable expansion does not end");
      break;
    }
    if (replaced == 0) break;
  }
  return total;
}

// `longestName` is at least the length of every name `valueOf` knows.
template <typename StrT, typename ValueOf>
Int FillByLookup(StrT& text, typename StrT::CharType open,
                 typename StrT::CharType close, Int longestName,
                 ValueOf valueOf) {
  std::vector<CTextStretch> look{{0, text.Length()}};
  StrT spare;
  return RepeatPasses(
      text, open, close, [&](StrT& t, CExpansionBudget& budget) {
        return FillTightPlaceholders(t, open, close, longestName, valueOf, look,
                                     budget, spare);
      });
}

void Delimiters(const char* delims, char& open, char& close) {
  TERN_ASSERT((delims == 0) || (Str::Length(delims) == 2));
  open = '<';
  close = '>';
  if (delims && Str::Length(delims) == 2) {
    open = delims[0];
    close = delims[1];
  }
}

}  // namespace

template <typename StrT>
Int CVarList::ExpandText(StrT& text, typename StrT::CharType open,
                         typename StrT::CharType close) const {
  return RepeatPasses(text, open, close,
                      [&](StrT& t, CExpansionBudget& budget) {
                        return ExpandPass(t, open, close, budget);
                      });
}

Int CVarList::Expand(CStr& text, const char* delims) const {
  char open, close;
  Delimiters(delims, open, close);
  if (!CanExpandByLookup(open, close)) return ExpandText(text, open, close);
  Int longestName = 0;
  for (const CVarList* list = this; list; list = list->mNext)
    longestName = std::max(longestName, list->mLongestName);
  return FillByLookup(text, open, close, longestName,
                      [this](const char* name, Int len) -> const CStr* {
                        const CVar* var =
                            FindInChain(std::string_view(name, len));
                        return var ? &var->value : nullptr;
                      });
}

// UTF-16 text meets the names through the code page, so the names are
// converted once for the call and checked as converted.
Int CVarList::Expand(CWStr& text, const char* delims) const {
  char o, c;
  Delimiters(delims, o, c);
  const char16_t open = static_cast<unsigned char>(o);
  const char16_t close = static_cast<unsigned char>(c);
  bool byLookup = open != close;
  Int count = 0;
  for (const CVarList* list = this; list && byLookup; list = list->mNext)
    count += list->mCount;
  std::vector<std::pair<CWStr, CWStr>> converted;
  std::unordered_map<std::u16string_view, const CWStr*> index;
  Int longestName = 0;
  if (byLookup) {
    converted.reserve(static_cast<std::size_t>(count));
    index.reserve(static_cast<std::size_t>(count));
  }
  for (const CVarList* list = this; list && byLookup; list = list->mNext) {
    for (const CVar* v = list->mHead; v && byLookup; v = v->next) {
      CWStr name = Str::ToWide(v->name.Chars());
      if (name.Find(open) >= 0 || name.Find(close) >= 0) byLookup = false;
      if (name.IsEmpty()) continue;
      longestName = std::max(longestName, name.Length());
      converted.emplace_back(std::move(name), Str::ToWide(v->value.Chars()));
      const auto& entry = converted.back();
      std::u16string_view key(entry.first.Chars(), entry.first.Length());
      if (!index.emplace(key, &entry.second).second) byLookup = false;
    }
  }
  if (!byLookup) return ExpandText(text, open, close);
  return FillByLookup(text, open, close, longestName,
                      [&index](const char16_t* name, Int len) -> const CWStr* {
                        auto found = index.find(std::u16string_view(name, len));
                        return found == index.end() ? nullptr : found->second;
                      });
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
  CStr name, value;
  for (;;) {
    name.Clear();
    value.Clear();
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
