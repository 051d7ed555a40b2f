#include "InstallFolders.h"

#include <cctype>
#include <cstring>

#include "FilesInUse.h"
#include "InstallLog.h"
#include "Product.h"

namespace Zendra {

using Tern::CError;
using Tern::CLocalFileSystem;
using Tern::CPath;
using Tern::CStr;

namespace {

// A folder of that name is the product's only when it holds a file that
// only an install puts there.
bool HoldsTheProduct(const CPath& dir) {
  CPath marker = dir;
  return Tern::Succeeded(marker.AppendComponent(cComponents[0].file)) &&
         CLocalFileSystem::Instance().GetItemType(marker) == Tern::S_FSIsFile;
}

class COtherInstallFolders : public Tern::CFileSystem::CVisitor {
 public:
  explicit COtherInstallFolders(const CPath& current) : mCurrent(current) {}

  CError Visit(Tern::CFileSystem& fs, const CPath& entry,
               CError type) override {
    CStr name;
    // The current folder may be named by its short form (a removal started
    // through it): it is told apart by what it is, not how it is spelled.
    if (type != Tern::S_FSIsDirectory ||
        Tern::Failed(entry.GetComponentString(CPath::ctFile, name)) ||
        !IsInstallFolderName(name) ||
        CLocalFileSystem::Instance().IsSameItem(entry, mCurrent) ||
        !HoldsTheProduct(entry))
      return Tern::Ok;
    const CStr path = entry.OSToPathString();
    CPath held;
    if (FindFileInUse(entry, held)) {
      LogText("Keeping the earlier install folder '%s': '%s' is in use.\n",
              path.Chars(), held.OSToPathString().Chars());
      return Tern::Ok;
    }
    LogText("Deleting the earlier install folder '%s'.\n", path.Chars());
    LogStatus(fs.DeleteDirectory(entry, true), "Delete earlier install folder",
              true);
    return Tern::Ok;
  }

 private:
  CPath mCurrent;
};

}  // namespace

bool IsInstallFolderName(const CStr& name) {
  const size_t length = sizeof cInstallFolder - 1;
  if (::_strnicmp(name.Chars(), cInstallFolder, length) != 0) return false;
  const char* number = name.Chars() + length;
  auto digit = [](char c) {
    return std::isdigit(static_cast<unsigned char>(c));
  };
  return *number == '\0' || (std::strlen(number) == 3 && digit(number[0]) &&
                             digit(number[1]) && digit(number[2]));
}

bool DeleteOtherInstallFolders(CInstallContext& context) {
  CPath makerDir;
  if (Tern::Failed(context.installDir.GetComponent(CPath::ctDir, makerDir)))
    return false;
  COtherInstallFolders others(context.installDir);
  CLocalFileSystem::Instance().EnumerateDirectory(makerDir, "*", others);
  return true;
}

}  // namespace Zendra
