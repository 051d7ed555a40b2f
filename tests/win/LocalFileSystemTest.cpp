// The local file system on the real disk of the Wine prefix, where Setup's
// own tests (which install into the special folders, copy, walk and remove
// for real) do not already reach it.
#include <windows.h>

#include <string>
#include <vector>

#include "FileTestSupport.h"
#include "TFileSystem.h"
#include "TScopedResource_Win.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

CLocalFileSystem& LFS() { return CLocalFileSystem::Instance(); }

}  // namespace

TEST(LocalFileSystem, FilesAndFoldersThroughTheirHandles) {
  CPath root;
  ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtTempDir, root));
  ASSERT_EQ(Ok, root.AppendComponent("ZendraLFSTest"));
  const std::string os = root.OSToPathString().Chars();
  TestSupport::RemoveTree(os);
  auto at = [&root](const char* relative) {
    CPath path = root;
    EXPECT_EQ(Ok, path.Append(CPath(relative)));
    return path;
  };
  ASSERT_EQ(Ok, LFS().CreateDirectoryPath(at("one\\two")));
  // Emptiness is a walk that stops at the first entry the pattern lets by.
  EXPECT_EQ(Ok, LFS().IsDirectoryEmpty(at("one\\two"), "*"));
  TestSupport::WriteFileBytes(os + "\\one\\f.txt", std::vector<Byte>(5, 'f'));
  TestSupport::WriteFileBytes(os + "\\one\\two\\g.dll",
                              std::vector<Byte>(4, 'g'));
  // A copy that may not replace leaves the other file as it was.
  EXPECT_EQ(E_AlreadyExists,
            LFS().Copy(at("one\\f.txt"), at("one\\two\\g.dll"), false));
  UInt32 size = 0;
  EXPECT_EQ(Ok, LFS().GetFileSize(at("one\\two\\g.dll"), size));
  EXPECT_EQ(4u, size);
  // One that may replace does, though it tries a free name first.
  EXPECT_EQ(Ok,
            LFS().CopyOneFile(at("one\\f.txt"), at("one\\two\\g.dll"), true));
  EXPECT_EQ(Ok, LFS().GetFileSize(at("one\\two\\g.dll"), size));
  EXPECT_EQ(5u, size);
  // Folders are made before they are asked about: one that is there is
  // fine, and said to be there; a file in the way is not.
  EXPECT_EQ(S_FSIsDirectory, LFS().CreateDirectoryPath(at("one\\two")));
  EXPECT_EQ(E_FSNotDirectory, LFS().CreateDirectoryPath(at("one\\f.txt")));
  EXPECT_NE(Ok, LFS().CreateDirectoryPath(at("one\\f.txt\\three")));
  unsigned long long made = 0, written = 0;
  EXPECT_EQ(Ok, LFS().GetFileTime(at("one\\f.txt"), LFS().tkCreation, made));
  EXPECT_EQ(Ok,
            LFS().GetFileTime(at("one\\f.txt"), LFS().tkLastWrite, written));
  EXPECT_TRUE(made > 116444736000000000ull && written >= made);  // after 1970
  EXPECT_EQ(E_NotFound, LFS().GetFileTime(at("no"), LFS().tkCreation, made));
  EXPECT_EQ(E_DirNotEmpty, LFS().IsDirectoryEmpty(at("one\\two"), "*"));
  EXPECT_EQ(E_NotFound, LFS().IsDirectoryEmpty(at("one"), "*.dll"));
  EXPECT_EQ(E_NotFound, LFS().IsDirectoryEmpty(at("no"), "*"));
  {
    CScopedFileHandle held(::CreateFileA((os + "\\one\\two\\g.dll").c_str(),
                                         GENERIC_READ, 0, nullptr,
                                         OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(held.IsValid());
    EXPECT_EQ(E_NoAccess, LFS().DeleteDirectory(at("one")));
    EXPECT_EQ(S_FSIsFile, LFS().GetItemType(at("one\\two\\g.dll")));
  }
  EXPECT_EQ(Ok, LFS().DeleteDirectory(at("one")));
  EXPECT_EQ(E_NotFound, LFS().GetItemType(at("one")));
  TestSupport::RemoveTree(os);
}
