// The yardstick of the install benchmark: copies a folder with everything in
// it into another, creating the folders on the way, and does nothing else.
//   PlainCopy.exe SOURCE DEST
// Exit code 0 when every file was copied.
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

bool MakeFolders(const std::string& path) {
  for (std::size_t i = 3; i <= path.size(); ++i) {
    if (i < path.size() && path[i] != '\\') continue;
    std::string part = path.substr(0, i);
    if (!::CreateDirectoryA(part.c_str(), nullptr) &&
        ::GetLastError() != ERROR_ALREADY_EXISTS)
      return false;
  }
  return true;
}

bool CopyTree(const std::string& from, const std::string& to) {
  if (!MakeFolders(to)) return false;
  WIN32_FIND_DATAA found;
  HANDLE search = ::FindFirstFileA((from + "\\*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  bool ok = true;
  do {
    const std::string name = found.cFileName;
    if (name == "." || name == "..") continue;
    const std::string src = from + "\\" + name, dest = to + "\\" + name;
    if (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
      ok = CopyTree(src, dest) && ok;
    else
      ok = ::CopyFileA(src.c_str(), dest.c_str(), FALSE) && ok;
  } while (::FindNextFileA(search, &found));
  ::FindClose(search);
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: PlainCopy SOURCE DEST\n");
    return 2;
  }
  return CopyTree(argv[1], argv[2]) ? 0 : 1;
}
