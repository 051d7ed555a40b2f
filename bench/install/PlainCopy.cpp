// The yardstick of the install benchmark: copies a folder with everything in
// it into another, creating the folders on the way, and does nothing else.
//   PlainCopy.exe [-gdi|-fonts] SOURCE DEST
// With -gdi it then loads the graphics libraries, makes a memory device
// context (a font family check needs one) and posts WM_FONTCHANGE to every
// top-level window. That loads the display driver, which, like the
// libraries, a plain copy never needs. With -fonts it does instead what any
// installer of the fonts at the top of SOURCE must do beyond the copy: each
// font copied into the system's Fonts folder, its Fonts value written and
// AddFontResourceA called, then one WM_FONTCHANGE broadcast: the font floor.
// Exit code 0 when every file was copied and every step done.
#include <windows.h>

#include <cstdio>
#include <cstring>
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

// Each *.ttf at the top of `from` into the system's Fonts folder, with its
// Fonts value (named after the file: the value's length is what costs) and
// AddFontResourceA; then one broadcast.
bool InstallFonts(const std::string& from) {
  HMODULE gdi = ::LoadLibraryA("gdi32.dll");
  HMODULE user = ::LoadLibraryA("user32.dll");
  HMODULE advapi = ::LoadLibraryA("advapi32.dll");
  if (!gdi || !user || !advapi) return false;
  auto addFont = Find<int(WINAPI*)(LPCSTR)>(gdi, "AddFontResourceA");
  auto post =
      Find<BOOL(WINAPI*)(HWND, UINT, WPARAM, LPARAM)>(user, "PostMessageA");
  auto openKey = Find<LONG(WINAPI*)(HKEY, LPCSTR, DWORD, REGSAM, PHKEY)>(
      advapi, "RegOpenKeyExA");
  auto setValue =
      Find<LONG(WINAPI*)(HKEY, LPCSTR, DWORD, DWORD, const BYTE*, DWORD)>(
          advapi, "RegSetValueExA");
  auto closeKey = Find<LONG(WINAPI*)(HKEY)>(advapi, "RegCloseKey");
  if (!addFont || !post || !openKey || !setValue || !closeKey) return false;
  char windows[MAX_PATH] = "";
  if (!::GetWindowsDirectoryA(windows, MAX_PATH)) return false;
  const std::string fonts = std::string(windows) + "\\Fonts\\";
  HKEY key = nullptr;
  if (openKey(HKEY_LOCAL_MACHINE,
              "Software\\Microsoft\\Windows NT\\CurrentVersion\\Fonts", 0,
              KEY_SET_VALUE, &key) != ERROR_SUCCESS)
    return false;
  WIN32_FIND_DATAA found;
  HANDLE search = ::FindFirstFileA((from + "\\*.ttf").c_str(), &found);
  bool ok = search != INVALID_HANDLE_VALUE;
  while (ok) {
    const std::string name = found.cFileName, target = fonts + name;
    const std::string value = name + " (TrueType)";
    ok = ::CopyFileA((from + "\\" + name).c_str(), target.c_str(), FALSE) &&
         setValue(key, value.c_str(), 0, REG_SZ,
                  reinterpret_cast<const BYTE*>(name.c_str()),
                  static_cast<DWORD>(name.size() + 1)) == ERROR_SUCCESS &&
         addFont(target.c_str()) > 0;
    if (!::FindNextFileA(search, &found)) break;
  }
  if (search != INVALID_HANDLE_VALUE) ::FindClose(search);
  closeKey(key);
  return ok && post(HWND_BROADCAST, WM_FONTCHANGE, 0, 0) != FALSE;
}

}  // namespace

int main(int argc, char** argv) {
  const char* option = argc == 4 ? argv[1] : "";
  const bool gdi = std::strcmp(option, "-gdi") == 0;
  const bool fonts = std::strcmp(option, "-fonts") == 0;
  if (argc != 3 && !gdi && !fonts) {
    std::fprintf(stderr, "usage: PlainCopy [-gdi|-fonts] SOURCE DEST\n");
    return 2;
  }
  if (!CopyTree(argv[argc - 2], argv[argc - 1])) return 1;
  if (fonts) return InstallFonts(argv[argc - 2]) ? 0 : 1;
  return !gdi || TouchDisplay() ? 0 : 1;
}
