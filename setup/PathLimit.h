// Windows' path limit, the longest of the paths an install reads and
// writes, and the first file of the source that is missing: a repair finds
// a path that doesn't fit, or a file it can't copy, before it changes
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
  // The same for a file the install copies: it must be there.
  void NoteSource(const Tern::CPath& dir, const char* name);
  // Every entry of the folder tree `src`, which must be there, and of its
  // copy under `dest`.
  void NoteTree(const Tern::CStr& src, const Tern::CStr& dest);

  bool Fits() const { return mLongest.Length() <= cLimit; }
  const Tern::CStr& Longest() const { return mLongest; }
  // The first source noted that is not there; empty when all are.
  const Tern::CStr& FirstMissing() const { return mFirstMissing; }

 private:
  void NoteIfMissing(const Tern::CStr& path);

  Tern::CStr mLongest;
  Tern::CStr mFirstMissing;
};

}  // namespace Zendra
