// The local file system on the real disk of the Wine prefix.
#include <windows.h>

#include <set>
#include <string>

#include "FileTestSupport.h"
#include "TFileSystem.h"
#include "TestSupport.h"

using namespace Tern;
using TestSupport::ReadFileBytes;
using TestSupport::WriteFileBytes;

namespace {

CLocalFileSystem& LFS() { return CLocalFileSystem::Instance(); }

// A fresh folder in the system's temporary folder, removed afterwards.
class LocalFileSystemTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtTempDir, mRoot));
    ASSERT_EQ(Ok, mRoot.AppendComponent("ZendraLFSTest"));
    TestSupport::RemoveTree(mRoot.OSToPathString().Chars());
    ASSERT_EQ(Ok, LFS().MakeDirectory(mRoot));
  }
  void TearDown() override {
    TestSupport::RemoveTree(mRoot.OSToPathString().Chars());
  }

  CPath At(const char* relative) const {
    CPath path = mRoot;
    EXPECT_EQ(Ok, path.Append(CPath(relative)));
    return path;
  }
  std::string Os(const CPath& path) const {
    return path.OSToPathString().Chars();
  }
  void Write(const char* relative, const std::string& text) {
    WriteFileBytes(Os(At(relative)),
                   std::vector<Byte>(text.begin(), text.end()));
  }
  std::string Read(const char* relative) {
    auto bytes = ReadFileBytes(Os(At(relative)));
    return std::string(bytes.begin(), bytes.end());
  }

  CPath mRoot;
};

struct Collector : CFileSystem::CVisitor {
  std::set<std::string> names;
  int stopAfter = -1;
  CError Visit(CFileSystem&, const CPath& entry) override {
    CStr name;
    entry.GetComponentString(CPath::ctFile, name);
    names.insert(name.Chars());
    return static_cast<int>(names.size()) == stopAfter ? E_UserCancel : Ok;
  }
};

}  // namespace

TEST(SpecialDirectories, ResolveToExistingFolders) {
  for (const char* name :
       {"TempDir", "FontsDir", "AppDir", "AppPrivateDir", "ModuleDir",
        "UserAppDataDir", "UserDocDir", "LogDir", "WinOSDir",
        "WinProgramFilesDir", "WinCommonFilesDir"}) {
    CPath dir;
    ASSERT_EQ(Ok, LFS().GetDirectory(name, dir)) << name;
    EXPECT_TRUE(dir.IsFullPath()) << name;
    EXPECT_EQ(S_FSIsDirectory, LFS().GetItemType(dir))
        << name << " " << dir.Text().Chars();
  }
  CPath byType, byName;
  ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtFontsDir, byType));
  ASSERT_EQ(Ok, LFS().GetDirectory("FontsDir", byName));
  EXPECT_EQ(byType, byName);
  CStr last;
  byType.GetComponentString(CPath::ctFile, last);
  EXPECT_STREQ("Fonts", last.Chars());

  // A 32-bit program sees the 32-bit Program Files.
  CPath programFiles;
  ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtWinProgramFilesDir,
                                   programFiles));
  EXPECT_STREQ("C:\\Program Files (x86)",
               programFiles.OSToPathString().Chars());

  CPath app, module;
  ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtAppDir, app));
  ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtModuleDir, module));
  EXPECT_EQ(app, module);
}

TEST(SpecialDirectories, UnsupportedAndUnknown) {
  CPath dir;
  EXPECT_ASSERTION(LFS().GetDirectory("MachineAppDataDir", dir),
                   "bad dir type");
  EXPECT_ASSERTION(LFS().GetDirectory("tempdir", dir), "bad dir type");
  EXPECT_ASSERTION(LFS().GetDirectory(14, dir), "bad dir type");
  EXPECT_ASSERTION(LFS().GetDirectory(CLocalFileSystem::dtCurrentDir, dir),
                   "only command-line apps support current directory access");
  EXPECT_ASSERTION(LFS().GetCurrentDir(dir), "no current dir support");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(E_BadArgument, LFS().GetDirectory("MachineAppDataDir", dir));
  EXPECT_EQ(E_BadArgument,
            LFS().GetDirectory(CLocalFileSystem::dtMachineAppDataDir, dir));
}

TEST(SpecialDirectories, DebugLogDirIsAppDirNoticedOnce) {
  CPath app, debug;
  ASSERT_EQ(Ok, LFS().GetDirectory(CLocalFileSystem::dtAppDir, app));
  EXPECT_ASSERTION(LFS().GetDirectory("DebugLogDir", debug),
                   "Debug log directory being used.");
  ASSERT_EQ(Ok, LFS().GetDirectory("DebugLogDir", debug));  // no second notice
  EXPECT_EQ(app, debug);
}

TEST_F(LocalFileSystemTest, ItemTypes) {
  Write("file.txt", "x");
  EXPECT_EQ(S_FSIsFile, LFS().GetItemType(At("file.txt")));
  EXPECT_EQ(S_FSIsDirectory, LFS().GetItemType(mRoot));
  EXPECT_EQ(E_NotFound, LFS().GetItemType(At("missing")));  // never S_FSIsFile
  EXPECT_EQ(E_NotFound, LFS().GetItemType(At("no\\such\\path")));
  EXPECT_EQ(Ok, LFS().RequireFile(At("file.txt")));
  EXPECT_EQ(E_FSNotFile, LFS().RequireFile(mRoot));
  EXPECT_EQ(E_FSNotDirectory, LFS().RequireDirectory(At("file.txt")));
  EXPECT_EQ(E_NotFound, LFS().RequireDirectory(At("missing")));
  EXPECT_EQ(E_BadArgument, LFS().GetItemType(CPath()));
  EXPECT_EQ(S_FSIsFile, LFS().QueryFile(Os(At("file.txt")).c_str()));
}

TEST_F(LocalFileSystemTest, CopyRespectsOverwriteAndKeepsNamesInFolders) {
  Write("a.txt", "first");
  Write("b.txt", "second");
  EXPECT_EQ(E_AlreadyExists, LFS().Copy(At("a.txt"), At("b.txt"), false));
  EXPECT_EQ("second", Read("b.txt"));
  EXPECT_EQ(Ok, LFS().Copy(At("a.txt"), At("b.txt"), true));
  EXPECT_EQ("first", Read("b.txt"));

  ASSERT_EQ(Ok, LFS().MakeDirectory(At("into")));
  EXPECT_EQ(Ok, LFS().Copy(At("a.txt"), At("into"), false));
  EXPECT_EQ("first", Read("into\\a.txt"));
  EXPECT_EQ(Ok, LFS().Copy(At("a.txt"), At("into\\renamed.txt"), false));
  EXPECT_EQ("first", Read("into\\renamed.txt"));

  EXPECT_EQ(Ok, LFS().Move(At("b.txt"), At("into")));
  EXPECT_EQ(E_NotFound, LFS().GetItemType(At("b.txt")));
  EXPECT_EQ("first", Read("into\\b.txt"));
  EXPECT_EQ(Ok, LFS().Rename(At("into\\b.txt"), "c.txt"));
  EXPECT_EQ("first", Read("into\\c.txt"));
  EXPECT_EQ(E_NotFound, LFS().Copy(At("missing"), At("x"), true));
}

TEST_F(LocalFileSystemTest, AttributesSizesAndTimes) {
  Write("f.txt", "12345");
  bool set = true;
  EXPECT_EQ(Ok,
            LFS().GetAttribute(At("f.txt"), CLocalFileSystem::akReadOnly, set));
  EXPECT_FALSE(set);
  EXPECT_EQ(
      Ok, LFS().SetAttribute(At("f.txt"), CLocalFileSystem::akReadOnly, true));
  EXPECT_EQ(Ok,
            LFS().SetAttribute(At("f.txt"), CLocalFileSystem::akHidden, true));
  DWORD platform = ::GetFileAttributesA(Os(At("f.txt")).c_str());
  EXPECT_TRUE(platform & FILE_ATTRIBUTE_READONLY);
  EXPECT_TRUE(platform & FILE_ATTRIBUTE_HIDDEN);
  EXPECT_EQ(Ok,
            LFS().GetAttribute(At("f.txt"), CLocalFileSystem::akHidden, set));
  EXPECT_TRUE(set);
  EXPECT_EQ(E_NoAccess, LFS().RemoveFile(At("f.txt")));  // read-only
  EXPECT_EQ(Ok,
            LFS().SetAttribute(At("f.txt"), CLocalFileSystem::akHidden, false));
  EXPECT_FALSE(::GetFileAttributesA(Os(At("f.txt")).c_str()) &
               FILE_ATTRIBUTE_HIDDEN);
  EXPECT_ASSERTION(LFS().GetAttribute(At("f.txt"), 4, set), "bad attribute");
  EXPECT_ASSERTION(LFS().SetAttribute(At("f.txt"), 0, true), "bad attribute");

  UInt32 size = 0;
  EXPECT_EQ(Ok, LFS().GetFileSize(At("f.txt"), size));
  EXPECT_EQ(5u, size);
  unsigned long long created = 0, written = 0;
  EXPECT_EQ(Ok, LFS().GetFileTime(At("f.txt"), CLocalFileSystem::tkCreation,
                                  created));
  EXPECT_EQ(Ok, LFS().GetFileTime(At("f.txt"), CLocalFileSystem::tkLastWrite,
                                  written));
  EXPECT_GT(created, 116444736000000000ull);  // after 1970
  EXPECT_GE(written, created);
  EXPECT_ASSERTION(LFS().GetFileTime(At("f.txt"), 2, written), "bad time type");

  // A copy of the read-only file is writable.
  EXPECT_EQ(Ok, LFS().Copy(At("f.txt"), At("copy.txt"), false));
  EXPECT_FALSE(::GetFileAttributesA(Os(At("copy.txt")).c_str()) &
               FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(Ok, LFS().RemoveFile(At("copy.txt"), true));
  EXPECT_EQ(Ok, LFS().RemoveFile(At("f.txt"), true));  // forced: read-only too
  EXPECT_EQ(E_NotFound, LFS().GetItemType(At("f.txt")));
}

TEST_F(LocalFileSystemTest, WalkAndRecursiveDelete) {
  ASSERT_EQ(Ok, LFS().CreateDirectoryPath(At("one\\two\\three")));
  Write("top.txt", "t");
  Write("one\\a.txt", "a");
  Write("one\\two\\b.txt", "b");
  Write("one\\two\\three\\c.txt", "c");
  EXPECT_EQ(Ok, LFS().CreateDirectoryPath(At("one\\two")));  // exists: fine

  Collector all;
  EXPECT_EQ(Ok, LFS().EnumerateDirectory(mRoot, "*", all));
  EXPECT_EQ(std::set<std::string>({"one", "top.txt"}), all.names);
  Collector stopping;
  stopping.stopAfter = 1;
  EXPECT_EQ(E_UserCancel, LFS().EnumerateDirectory(mRoot, "*", stopping));
  EXPECT_EQ(1u, stopping.names.size());
  Collector texts;
  EXPECT_EQ(Ok, LFS().EnumerateDirectory(At("one"), "*.txt", texts));
  EXPECT_EQ(std::set<std::string>({"a.txt"}), texts.names);

  EXPECT_EQ(E_DirNotEmpty, LFS().IsDirectoryEmpty(At("one")));
  EXPECT_EQ(E_DirNotEmpty, LFS().RemoveEmptyDirectory(At("one")));
  EXPECT_EQ(Ok, LFS().DeleteDirectoryContents(At("one")));
  EXPECT_EQ(Ok, LFS().IsDirectoryEmpty(At("one")));
  EXPECT_EQ(S_FSIsDirectory, LFS().GetItemType(At("one")));

  ASSERT_EQ(Ok, LFS().CreateDirectoryPath(At("one\\two\\three")));
  Write("one\\two\\three\\c.txt", "c");
  EXPECT_EQ(Ok, LFS().DeleteDirectory(At("one")));
  EXPECT_EQ(E_NotFound, LFS().GetItemType(At("one")));
  EXPECT_EQ(E_FSNotDirectory, LFS().DeleteDirectory(At("top.txt")));
}

TEST_F(LocalFileSystemTest, AFileHeldOpenCannotBeDeleted) {
  ASSERT_EQ(Ok, LFS().CreateDirectoryPath(At("tree\\sub")));
  Write("tree\\sub\\locked.dll", "in use");
  HANDLE held =
      ::CreateFileA(Os(At("tree\\sub\\locked.dll")).c_str(), GENERIC_READ, 0,
                    nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  EXPECT_EQ(E_NoAccess, LFS().RemoveFile(At("tree\\sub\\locked.dll")));
  EXPECT_EQ(E_NoAccess, LFS().DeleteDirectory(At("tree")));
  EXPECT_EQ(S_FSIsFile, LFS().GetItemType(At("tree\\sub\\locked.dll")));
  ::CloseHandle(held);
  EXPECT_EQ(Ok, LFS().DeleteDirectory(At("tree")));
}

TEST_F(LocalFileSystemTest, TemporaryNamesVolumesAndSpace) {
  CPath first, second;
  ASSERT_EQ(Ok, LFS().GetTempName(mRoot, "OV", first));
  ASSERT_EQ(Ok, LFS().GetTempName(mRoot, "OV", second));
  EXPECT_NE(first, second);
  EXPECT_EQ(E_NotFound, LFS().GetItemType(first));  // nothing created

  CPath made;
  ASSERT_EQ(Ok, LFS().MakeTempFile(mRoot, made));
  EXPECT_EQ(S_FSIsFile, LFS().GetItemType(made));
  CStr name;
  made.GetComponentString(CPath::ctFile, name);
  EXPECT_EQ(0, name.Find("tmp"));
  CPath beside;
  ASSERT_EQ(Ok, LFS().GetTempNameBeside(made, "x", beside));
  CPath besideDir;
  beside.GetComponent(CPath::ctDir, besideDir);
  EXPECT_EQ(mRoot, besideDir);

  Int type = -1;
  EXPECT_EQ(Ok, LFS().GetVolumeType(CPath("C:\\"), type));
  EXPECT_EQ(CLocalFileSystem::vtFixed, type);
  unsigned long long bytes = 0;
  EXPECT_EQ(Ok, LFS().GetVolumeFreeSpace(mRoot, bytes));
  EXPECT_GT(bytes, 0u);
}
