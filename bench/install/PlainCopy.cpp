// The yardstick of the install benchmark: copies a folder with everything in
// it into another, creating the folders on the way, and does nothing else.
//   PlainCopy.exe [-gdi] SOURCE DEST
// With -gdi it then does the least that any installer of fonts does beyond
// the copy: it loads the graphics libraries, makes a memory device context
// (a font family check needs one) and posts WM_FONTCHANGE to every top-level
// window. That loads the display driver, which, like the libraries, a plain
// copy never needs; the figure is the floor for an installer of fonts.
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

template <class Function>
Function Find(HMODULE library, const char* name) {
  return reinterpret_cast<Function>(
      reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

// Loaded by name, so that the plain copy itself stays a program of kernel32
// alone.
bool TouchDisplay() {
  HMODULE gdi = ::LoadLibraryA("gdi32.dll");
  HMODULE user = ::LoadLibraryA("user32.dll");
  if (!gdi || !user) return false;
  auto createDC = Find<HDC(WINAPI*)(HDC)>(gdi, "CreateCompatibleDC");
  auto deleteDC = Find<BOOL(WINAPI*)(HDC)>(gdi, "DeleteDC");
  auto post =
      Find<BOOL(WINAPI*)(HWND, UINT, WPARAM, LPARAM)>(user, "PostMessageA");
  if (!createDC || !deleteDC || !post) return false;
  HDC dc = createDC(nullptr);
  if (!dc) return false;
  deleteDC(dc);
  return post(HWND_BROADCAST, WM_FONTCHANGE, 0, 0) != FALSE;
}

}  // namespace

int main(int argc, char** argv) {
  const bool gdi = argc == 4 && std::string(argv[1]) == "-gdi";
  if (argc != 3 && !gdi) {
    std::fprintf(stderr, "usage: PlainCopy [-gdi] SOURCE DEST\n");
    return 2;
  }
  if (!CopyTree(argv[argc - 2], argv[argc - 1])) return 1;
  return !gdi || TouchDisplay() ? 0 : 1;
}
