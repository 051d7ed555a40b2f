// Product and file versions: major, minor, a revision letter and a
// prerelease number (0 release, 1-99 alpha N, 100 and up beta N-100).
#pragma once

#include "TError.h"
#include "TString.h"

namespace Tern {

class CVersion {
 public:
  enum FormatKind : Int { vfDisplay = 0, vfResource = 1, vfDotted = 2 };
  enum InfoKind { viFileVersion, viProductVersion };

  CVersion() = default;
  CVersion(Int major, Int minor, char revision = 0, Int prerelease = 0);
  CVersion(const CVersion& version);
  CVersion& operator=(const CVersion& version) = default;

  bool IsValid() const { return mValid; }
  Int Major() const { return mMajor; }
  Int Minor() const { return mMinor; }
  char Revision() const { return static_cast<char>(mRevision); }
  Int Prerelease() const { return mPrerelease; }

  // Reads "4.02", "4.02b", "4.02 beta 5", "4.02b alpha 3" and the dotted
  // "4.2.98.105" (also with commas); only the part before a ";" counts.
  CError Parse(const char* text);
  // Display "4.02b beta 5", resource "4,2,98,105" or dotted "4.2.98.105".
  void Format(CStr& out, Int form = vfDisplay) const;
  CStr Text(Int form = vfDisplay) const;
  // Major, minor and revision letter decide; when they are equal a release
  // beats any prerelease and a beta any alpha.
  bool IsGreater(const CVersion& other) const;

  // The "FileVersion" or "ProductVersion" text of a file's version resource
  // (US English, code page 1252 block only), without leading white space.
  static bool GetVersionInfo(const char* osPath, InfoKind which, CStr& out);

 private:
  bool mValid = false;
  Int mMajor = 0;
  Int mMinor = 0;
  Int mRevision = 0;
  Int mPrerelease = 0;
};

}  // namespace Tern
