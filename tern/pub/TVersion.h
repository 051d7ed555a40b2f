// Product and file versions.
#pragma once

#include "TString.h"

namespace Tern {

class CVersion {
 public:
  enum InfoKind { viFileVersion, viProductVersion };

  // The "FileVersion" or "ProductVersion" text of a file's version resource
  // (US English, code page 1252 block only), without leading white space.
  static bool GetVersionInfo(const char* osPath, InfoKind which, CStr& out);
};

}  // namespace Tern
