// Variable lists: ordered name/value texts with read-only flags. One global
// list holds the program's settings and fills every "<Name>" placeholder.
#pragma once

#include <bitset>
#include <cstddef>
#include <string_view>
#include <vector>

#include "TError.h"
#include "TString.h"
#include "TTypes.h"

namespace Tern {

class CStream;

// What ReadFile found wrong with a configuration file, for messages that
// tell the cases apart (ReadFile's status is E_BadData for all of them).
enum ConfigFileProblem : Int {
  cfpNone = 0,
  cfpEmpty,        // not a byte in the file
  cfpBadHeader,    // does not begin with the header text
  cfpNoEndMarker,  // the records end without the end-of-list marker
  cfpBadChecksum,  // the checksum text differs from the sum of the bytes
};

// "Orvane Configuration File 1.0"
extern const char cConfigFileHeader[];

// What one expansion may still do before it counts as endless.
struct CExpansionBudget {
  Int replacements;
  Int maxLength;
};

class CVarList {
 public:
  struct CVar {
    bool readOnly;
    CStr name;
    CStr value;
    CVar* next;
  };

  // A registry key where the product keeps settings: a root key name such as
  // "HKEY_LOCAL_MACHINE" and a subkey below it.
  struct CSearchLocation {
    CStr rootKey;
    CStr subKey;
  };

  CVarList() = default;
  ~CVarList();
  CVarList(const CVarList&) = delete;
  CVarList& operator=(const CVarList&) = delete;

  static CVarList& Global();

  // A name beginning with "%" defines a read-only variable (stored without
  // the "%"). Setting a read-only variable is an assertion and changes nothing.
  void Set(const char* name, const char* value, bool readOnly = false);
  void Merge(const CVarList& other);
  bool Get(const char* name, CStr& value, bool* readOnly = nullptr) const;
  // "True"/"Yes"/"1" and "False"/"No"/"0"; false when the variable is absent.
  bool GetBool(const char* name, bool& value, bool* readOnly = nullptr) const;
  // On/off settings: exactly "0" or "1"; a missing variable reads as off.
  bool GetFlag(const char* name) const;
  const CVar* Find(const char* name) const;
  const CVar* First() const { return mHead; }
  Int Count() const { return mCount; }
  void Clear();

  // Lists chained after this one take part in the expansion.
  void SetNext(const CVarList* next) { mNext = next; }
  const CVarList* Next() const { return mNext; }

  // Get, GetBool and GetFlag look for a variable that the list lacks in these
  // registry keys, in the order they were added: the first key holding a
  // string value of that name gives it (read-only is false then). Nothing
  // read there is copied into the list, and Find and Expand see only the list.
  void AddSearchLocation(const char* rootKey, const char* subKey);
  const std::vector<CSearchLocation>& SearchLocations() const {
    return mSearchLocations;
  }

  // Replaces every plain "<name>" placeholder by its value, with this list
  // and those chained after it, pass after pass until a pass changes nothing.
  // `delims` holds the open and close characters ("<>" when null). Returns
  // the number of replacements. The cost grows with the length of the text
  // and the number of placeholders, not with the number of variables. A
  // variable whose value holds its own placeholder would make that endless:
  // after max(1000, the text's length) replacements, or once the text is
  // longer than max(64K, 16 times its length), expansion stops with an
  // internal error.
  Int Expand(CStr& text, const char* delims = nullptr) const;
  // The same over UTF-16 text; names and values are taken through the
  // system code page.
  Int Expand(CWStr& text, const char* delims = nullptr) const;

  // One line per variable: name, " (READ-ONLY)" if so, TAB "=" TAB, and the
  // value in double quotes.
  void Dump(CStream& out) const;
  // The records of the configuration file: for each variable its name (with
  // "%" when read-only) and its value, each ending with a NUL.
  void Write(CStream& out) const;
  // Reads records until the stream ends or an empty name; "%" names become
  // read-only. True when the empty name (the end marker) was read.
  bool Read(CStream& in);

  // The configuration file: header, records, end marker and checksum, every
  // byte scrambled. ReadFile leaves what it read in the list also when it
  // fails, so callers discard the list then.
  CError WriteFile(const char* osPath) const;
  CError ReadFile(const char* osPath, ConfigFileProblem* problem = nullptr);
  // WriteFile's writing, into a stream opened with scrambling and the
  // additive checksum (smScramble | smChecksum).
  CError WriteConfig(CStream& out) const;
  // ReadFile's reading, from a stream opened with scrambling and the additive
  // checksum (smScramble | smChecksum), positioned at the file's start.
  CError ReadConfig(CStream& in, ConfigFileProblem* problem = nullptr);

 private:
  CVar* FindVar(std::string_view name) const;
  // The list's value, else the first registry search location's.
  bool Lookup(const char* name, CStr& value, bool* readOnly) const;
  template <typename StrT>
  Int ExpandText(StrT& text, typename StrT::CharType open,
                 typename StrT::CharType close) const;
  template <typename StrT>
  Int ExpandPass(StrT& text, typename StrT::CharType open,
                 typename StrT::CharType close, CExpansionBudget& budget) const;
  // Whether the placeholders of the chain can be filled by looking each one
  // up by name (see VarList.cpp).
  bool CanExpandByLookup(char open, char close) const;
  const CVar* FindInChain(std::string_view name) const;

  CVar* mHead = nullptr;
  CVar* mTail = nullptr;
  Int mCount = 0;
  // Every variable by name: an open-addressed table, a power of two in size
  // and at most half full, of each name's hash and its variable.
  struct CIndexSlot {
    std::size_t hash;
    CVar* var;
  };
  void AddToIndex(CVar* var);
  std::vector<CIndexSlot> mIndex;
  // The bytes that occur in any name of the list.
  std::bitset<256> mNameBytes;
  // The length of the longest name the list has held since it was cleared.
  Int mLongestName = 0;
  const CVarList* mNext = nullptr;
  std::vector<CSearchLocation> mSearchLocations;
};

}  // namespace Tern
