// Helpers of the install-action tests: the sample product's files, the
// system's fonts as GDI and the registry see them, and text searches.
#pragma once

#include <windows.h>

#include <string>

namespace ActionTests {

// A file of the built sample product, as a Windows path.
std::string SampleFile(const std::string& name);
// A file of the test fonts made with another revision (--fonts-DIR=...).
std::string TestFontFile(const char* set, const std::string& name);

// C:\windows\Fonts\<name>.
std::string SystemFontFile(const std::string& name);
// The data of a value of the system's fonts key, or "<none>".
std::string FontsKeyValue(const std::string& valueName);
// Whether GDI enumerates a family of that face name in this process.
bool GdiHasFamily(const std::string& face);

bool Contains(const std::string& text, const std::string& part);
int CountOf(const std::string& text, const std::string& part);
// The whole file, or empty.
std::string ReadText(const std::string& path);
bool CopyInto(const std::string& from, const std::string& to);

}  // namespace ActionTests
