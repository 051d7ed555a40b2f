// Variable lists: ordered name/value texts with read-only flags. One global
// list holds the program's settings and fills every "<Name>" placeholder.
#pragma once

#include <vector>

#include "TString.h"
#include "TTypes.h"

namespace Tern {

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
  Int Count() const;
  void Clear();

  // Lists chained after this one take part in the expansion.
  void SetNext(const CVarList* next) { mNext = next; }
  const CVarList* Next() const { return mNext; }

  void AddSearchLocation(const char* rootKey, const char* subKey);
  const std::vector<CSearchLocation>& SearchLocations() const {
    return mSearchLocations;
  }

  // Replaces every plain "<name>" placeholder by its value, with this list
  // and those chained after it, pass after pass until a pass changes nothing.
  // `delims` holds the open and close characters ("<>" when null). Returns
  // the number of replacements.
  Int Expand(CStr& text, const char* delims = nullptr) const;

 private:
  CVar* FindVar(const char* name) const;
  Int ExpandPass(CStr& text, char open, char close) const;

  CVar* mHead = nullptr;
  CVar* mTail = nullptr;
  const CVarList* mNext = nullptr;
  std::vector<CSearchLocation> mSearchLocations;
};

}  // namespace Tern
