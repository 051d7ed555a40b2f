#include <cstdio>
#include <set>
#include <string>

#include "TErrorHandler.h"
#include "TFileSystem.h"
#include "TestSupport.h"

using namespace Tern;

TEST(Path, CanonicalAndSystemForms) {
  const struct {
    const char *os, *canonical, *system;
  } cases[] = {
      {"C:", "[C:]", "C:"},
      {"C:\\", "[C:\\]", "C:\\"},
      {"C:\\\\Program Files/Zendra\\", "[C:\\]Program Files\\Zendra",
       "C:\\Program Files\\Zendra"},
      {"//server/share/dir", "[\\\\server\\share]dir",
       "\\\\server\\share\\dir"},
      {"\\\\server\\share", "[]\\\\server\\share", "\\\\server\\share"},
      {"\\rooted\\x", "[\\]rooted\\x", "\\rooted\\x"},
      {"relative\\name", "[]relative\\name", "relative\\name"},
      {"ab:c", "[]ab:c", "ab:c"},  // a colon not second: no volume
      {"x:y", "[x:y]", "x:y"}};    // a drive letter, drive-relative
  for (const auto& c : cases) {
    CPath path(c.os);
    EXPECT_STREQ(c.canonical, path.Text().Chars()) << c.os;
    EXPECT_STREQ(c.system, path.OSToPathString().Chars()) << c.os;
  }
  EXPECT_TRUE(CPath("C:\\a").IsFullPath());
  EXPECT_FALSE(CPath("a").IsFullPath());
  CStr out("untouched");
  EXPECT_EQ(Failure, CPath().OSToPathString(out));
  EXPECT_STREQ("untouched", out.Chars());
}

namespace {
struct RecordingHandler : CIgnoreErrorHandler {
  std::string decided;
  Int Decide(CError, const char* text, Int answer) override {
    decided = text;
    return answer;
  }
};
}  // namespace

TEST(Path, AppendingComponentsAndPaths) {
  CPath p("C:\\");
  EXPECT_EQ(Ok, p.AppendComponent("Program Files"));
  EXPECT_EQ(Ok, p.Append(CPath("Zendra\\\\Fonts/TrueType")));
  EXPECT_STREQ("[C:\\]Program Files\\Zendra\\Fonts\\TrueType",
               p.Text().Chars());
  EXPECT_EQ(E_BadArgument, p.AppendComponent("a\\b"));
  EXPECT_ASSERTION(p.Append(CPath("D:\\x")), "pathStr.Length() < 2");
  EXPECT_ASSERTION(CPath().AppendComponent("x"), "IsValid()");
  EXPECT_EQ(Ok, p.SetFromComponents("C:\\", "Program Files/Orvane/Common"));
  EXPECT_STREQ("[C:\\]Program Files\\Orvane\\Common", p.Text().Chars());

  // A full path as a component is refused and reported.
  RecordingHandler handler;
  CErrorHandler::SetCurrent(&handler);
  EXPECT_EQ(E_BadArgument, p.AppendComponent("C:\\a"));
  CErrorHandler::SetCurrent(nullptr);
  EXPECT_EQ(
      "Attempt to add a component that is a full path.\ncomponent = 'C:\\a', "
      "pathStr = '[C:\\]Program Files\\Orvane\\Common'",
      handler.decided);
  EXPECT_STREQ("[C:\\]Program Files\\Orvane\\Common", p.Text().Chars());
}

TEST(Path, ComponentsExtensionsAndDisplayText) {
  const char* file = "C:\\Program Files\\Orvane\\Zendra.dll";
  const struct {
    const char* path;
    Int kind;
    const char* text;
  } cases[] = {{file, CPath::ctVolume, "C:\\"},
               {file, CPath::ctDir, "Program Files\\Orvane"},
               {file, CPath::ctName, "Zendra"},
               {file, CPath::ctExtension, "dll"},
               {file, CPath::ctDirName, "Orvane"},
               {"C:\\top", CPath::ctDir, ""},
               {"C:\\README", CPath::ctExtension, ""},
               {"C:\\archive.tar.gz", CPath::ctName, "archive.tar"},
               {"C:\\", CPath::ctFile, nullptr},
               {"C:\\", CPath::ctDir, nullptr},
               {"C:\\a", 7, nullptr}};
  for (const auto& c : cases) {
    CStr text("untouched");
    const CError err = CPath(c.path).GetComponentString(c.kind, text);
    EXPECT_EQ(c.text ? Ok : E_BadArgument, err) << c.path << " " << c.kind;
    EXPECT_STREQ(c.text ? c.text : "untouched", text.Chars());
  }
  CPath p("C:\\fonts\\qxextra.ttf"), bare("C:\\README");
  EXPECT_EQ(Ok, p.SetExtension("bak"));
  EXPECT_EQ(Ok, bare.SetExtension("txt"));
  EXPECT_STREQ("[C:\\]fonts\\qxextra.bak", p.Text().Chars());
  EXPECT_STREQ("[C:\\]README.txt", bare.Text().Chars());

  // Display text loses leading folders, then the end of the name; beside a
  // path of the same folder it is the file name alone.
  CPath dll("C:\\Program Files\\Zendra\\Zendra.dll");
  const CPath sibling("C:\\Program Files\\Zendra\\ZendraBHO.dll");
  const CPath elsewhere("C:\\Other\\x.dll");
  EXPECT_STREQ("Program Files\\Zendra\\Zendra.dll",
               dll.DisplayText(100, &elsewhere).Chars());
  EXPECT_STREQ("Zendra\\Zendra.dll", dll.DisplayText(20).Chars());
  EXPECT_STREQ("Zend ...", dll.DisplayText(8).Chars());
  EXPECT_STREQ(" ...", dll.DisplayText(3).Chars());
  EXPECT_STREQ("Zendra.dll", dll.DisplayText(100, &sibling).Chars());
}

namespace {
// Knows only a set of existing names: enough for the temporary names.
class NameSetFileSystem : public CFileSystem {
 public:
  std::set<std::string> existing;
  CError GetItemType(const CPath& path) override {
    return existing.count(path.Text().Chars()) ? S_FSIsFile : E_NotFound;
  }
  CError MakeFullPath(const CPath&, CPath&) override { return Failure; }
  CError RemoveFile(const CPath&, bool) override { return Failure; }
  CError GetFileSize(const CPath&, UInt32&) override { return Failure; }
  CError GetAttribute(const CPath&, Int, bool&) override { return Failure; }
  CError SetAttribute(const CPath&, Int, bool) override { return Failure; }
  CError IsDirectoryEmpty(const CPath&, const char*) override { return Ok; }
  CError EnumerateDirectory(const CPath&, const char*, CVisitor&) override {
    return Failure;
  }
  CError MakeDirectory(const CPath&) override { return Failure; }
  CError RemoveEmptyDirectory(const CPath&) override { return Failure; }
  CError Rename(const CPath&, const CPath&) override { return Failure; }
  CError CopyOneFile(const CPath&, const CPath&, bool) override { return Ok; }
  CError MoveOneFile(const CPath&, const CPath&) override { return Failure; }
};
}  // namespace

// Names of 20 hexadecimal digits from a counter; a taken name is passed over.
TEST(Path, TemporaryNamesDifferAndAvoidExistingOnes) {
  NameSetFileSystem fs;
  CPath first, second;
  ASSERT_EQ(Ok, fs.GetTempName(CPath("C:\\Temp"), "OV", first));
  const unsigned long long counter =
      std::stoull(std::string(first.Text().Chars()).substr(12), nullptr, 16);
  char name[64];
  std::snprintf(name, sizeof name, "[C:\\]Temp\\OV%020llX", counter + 1);
  fs.existing.insert(name);
  ASSERT_EQ(Ok, fs.GetTempName(CPath("C:\\Temp"), "OV", second));
  std::snprintf(name, sizeof name, "[C:\\]Temp\\OV%020llX", counter + 2);
  EXPECT_STREQ(name, second.Text().Chars());
}
