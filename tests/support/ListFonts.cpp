// Lists the font families GDI knows whose names begin with the text given on
// the command line (all of them without one), one per line: what a program
// on the machine sees after fonts were installed or removed.
#include <windows.h>

#include <cstdio>
#include <set>
#include <string>

namespace {

int CALLBACK Collect(const LOGFONTA* font, const TEXTMETRICA*, DWORD,
                     LPARAM names) {
  reinterpret_cast<std::set<std::string>*>(names)->insert(font->lfFaceName);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string prefix = argc > 1 ? argv[1] : "";
  LOGFONTA all = {};
  all.lfCharSet = DEFAULT_CHARSET;
  std::set<std::string> names;
  HDC dc = ::GetDC(nullptr);
  ::EnumFontFamiliesExA(dc, &all, Collect, reinterpret_cast<LPARAM>(&names), 0);
  ::ReleaseDC(nullptr, dc);
  for (const std::string& name : names)
    if (name.compare(0, prefix.size(), prefix) == 0)
      std::printf("%s\n", name.c_str());
  return 0;
}
