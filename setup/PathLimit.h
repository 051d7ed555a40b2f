// Windows' path limit, and the longest of the paths an install reads and
// writes: a repair finds a path that doesn't fit before it changes
// anything, not halfway through.
#pragma once

#include "TFileSystem.h"
#include "TString.h"

namespace Zendra {

class CLongestPath {
 public:
  // Characters in a full path, without the terminating null.
  static constexpr Tern::Int cLimit = 259;

  void Note(const Tern::CStr& path);
  // `dir` and `name` joined.
  void Note(const Tern::CPath& dir, const char* name);
  // Every entry of the folder tree `src` and of its copy under `dest`.
  void NoteTree(const Tern::CStr& src, const Tern::CStr& dest);

  bool Fits() const { return mLongest.Length() <= cLimit; }
  const Tern::CStr& Longest() const { return mLongest; }

 private:
  Tern::CStr mLongest;
};

}  // namespace Zendra
