#include "PathLimit.h"

#include <windows.h>

#include "TScopedResource_Win.h"
#include "TStr.h"

namespace Zendra {

using Tern::CStr;

namespace {

CStr Joined(const CStr& dir, const char* name) {
  CStr path = dir;
  if (path.IsEmpty() || path.Chars()[path.Length() - 1] != '\\') path += "\\";
  path += name;
  return path;
}

}  // namespace

void CLongestPath::Note(const CStr& path) {
  if (path.Length() > mLongest.Length()) mLongest = path;
}

void CLongestPath::Note(const Tern::CPath& dir, const char* name) {
  Note(Joined(dir.OSToPathString(), name));
}

void CLongestPath::NoteSource(const Tern::CPath& dir, const char* name) {
  const CStr path = Joined(dir.OSToPathString(), name);
  Note(path);
  NoteIfMissing(path);
}

void CLongestPath::NoteIfMissing(const CStr& path) {
  if (!mFirstMissing.IsEmpty()) return;
  const DWORD attributes = ::GetFileAttributesA(path.Chars());
  if (attributes == INVALID_FILE_ATTRIBUTES ||
      (attributes & FILE_ATTRIBUTE_DIRECTORY))
    mFirstMissing = path;
}

// Paths are joined as text: a CPath refuses to grow past the limit, and
// this is where the ones that would are found.
void CLongestPath::NoteTree(const CStr& src, const CStr& dest) {
  Note(src);
  Note(dest);
  const CStr pattern = Joined(src, "*");
  if (pattern.Length() > cLimit) return;  // too long already to list
  WIN32_FIND_DATAA entry;
  Tern::CScopedFindHandle find(::FindFirstFileA(pattern.Chars(), &entry));
  if (!find.IsValid()) {  // even an empty folder lists "." and ".."
    if (mFirstMissing.IsEmpty()) mFirstMissing = src;
    return;
  }
  do {
    const char* name = entry.cFileName;
    if (Tern::Str::Equal(name, ".") || Tern::Str::Equal(name, "..")) continue;
    if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
      NoteTree(Joined(src, name), Joined(dest, name));
    } else {
      Note(Joined(src, name));
      Note(Joined(dest, name));
    }
  } while (::FindNextFileA(find.Get(), &entry));
}

}  // namespace Zendra
