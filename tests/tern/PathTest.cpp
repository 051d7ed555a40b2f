#include <set>
#include <string>

#include "TErrorHandler.h"
#include "TFileSystem.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

std::string Canonical(const char* os) { return CPath(os).Text().Chars(); }

std::string Volume(const char* part) {
  CStr volume("stale");
  Int n = CLocalFSPathDefinition::Instance().ParseVolume(part, volume);
  return n < 0 ? "-1" : std::string(volume.Chars()) + "|" + std::to_string(n);
}

std::string Component(const char* os, Int kind) {
  CStr text;
  CError err = CPath(os).GetComponentString(kind, text);
  return Failed(err) ? std::string("<") + ErrorName(err) + ">" : text.Chars();
}

// A file system that knows only a fixed set of existing names: enough for
// the portable algorithms that ask nothing but the item type.
class NameSetFileSystem : public CFileSystem {
 public:
  std::set<std::string> existing;
  int queries = 0;
  CError GetItemType(const CPath& path) override {
    ++queries;
    return existing.count(path.Text().Chars()) ? S_FSIsFile : E_NotFound;
  }
  CError MakeFullPath(const CPath&, CPath&) override { return Failure; }
  CError RemoveFile(const CPath&, bool) override { return Failure; }
  CError GetFileSize(const CPath&, UInt32&) override { return Failure; }
  CError GetAttribute(const CPath&, Int, bool&) override { return Failure; }
  CError SetAttribute(const CPath&, Int, bool) override { return Failure; }
  CError IsDirectoryEmpty(const CPath&, const char*) override {
    return Failure;
  }
  CError EnumerateDirectory(const CPath&, const char*, CVisitor&) override {
    return Failure;
  }
  CError MakeDirectory(const CPath&) override { return Failure; }
  CError RemoveEmptyDirectory(const CPath&) override { return Failure; }
  CError Rename(const CPath&, const CPath&) override { return Failure; }
  CError CopyOneFile(const CPath&, const CPath&, bool) override {
    return Failure;
  }
  CError MoveOneFile(const CPath&, const CPath&) override { return Failure; }
};

}  // namespace

TEST(Path, VolumeForms) {
  EXPECT_EQ("[C:]", Canonical("C:"));
  EXPECT_EQ("[C:\\]", Canonical("C:\\"));
  EXPECT_EQ("[C:\\]a\\b", Canonical("C:\\a/b"));
  EXPECT_EQ("[C:\\]Program Files\\Orvane\\Zendra",
            Canonical("C:\\Program Files\\Orvane\\Zendra\\"));
  EXPECT_EQ("[\\\\server\\share]dir\\file.txt",
            Canonical("\\\\server\\share\\dir\\file.txt"));
  EXPECT_EQ("[\\\\server\\share]dir", Canonical("//server/share/dir"));
  EXPECT_EQ("[\\]rooted\\x", Canonical("\\rooted\\x"));
  EXPECT_EQ("[]relative\\name", Canonical("relative\\name"));
  EXPECT_EQ("[]ab:c", Canonical("ab:c"));  // a colon not second: no volume
  EXPECT_EQ("[x:y]", Canonical("x:y"));    // a drive letter, drive-relative

  EXPECT_EQ("C:|2", Volume("C:"));
  EXPECT_EQ("C:\\|3", Volume("C:\\dir"));
  EXPECT_EQ("-1", Volume("ab:c"));
  EXPECT_EQ("x:y|3", Volume("x:y"));
  EXPECT_EQ("-1", Volume("\\\\server"));
  EXPECT_EQ("-1", Volume("\\\\server\\share"));
  EXPECT_EQ("\\\\server\\share|14", Volume("\\\\server\\share\\"));
  EXPECT_EQ("\\|1", Volume("\\a"));
  EXPECT_EQ("-1", Volume("a\\b"));
  CStr volume;
  EXPECT_ASSERTION(
      CLocalFSPathDefinition::Instance().ParseVolume("[x]", volume),
      "pathPart[0] != '['");

  EXPECT_TRUE(CPath("C:\\a").IsFullPath());
  EXPECT_FALSE(CPath("a").IsFullPath());
  EXPECT_STREQ("C:\\Program Files\\Orvane",
               CPath("C:/Program Files/Orvane").OSToPathString().Chars());
  EXPECT_STREQ("\\\\srv\\sh\\d",
               CPath("\\\\srv\\sh\\d").OSToPathString().Chars());
  EXPECT_STREQ("C:", CPath("C:").OSToPathString().Chars());
}

TEST(Path, ValidityAndInvalidPaths) {
  CPath empty;
  EXPECT_FALSE(empty.IsValid());
  CStr out("untouched");
  EXPECT_EQ(Failure, empty.OSToPathString(out));
  EXPECT_STREQ("untouched", out.Chars());
  EXPECT_ASSERTION(empty.AppendComponent("x"), "IsValid()");
  TestSupport::ReportingAssertions reporting;
  EXPECT_EQ(E_BadArgument, empty.AppendComponent("x"));
  CPath dir;
  EXPECT_EQ(E_BadArgument, empty.GetComponent(CPath::ctDir, dir));
}

TEST(Path, AppendingComponentsAndPaths) {
  CPath p("C:\\");
  EXPECT_EQ(Ok, p.AppendComponent("Program Files"));
  EXPECT_EQ(Ok, p.AppendComponent("Orvane"));
  EXPECT_STREQ("[C:\\]Program Files\\Orvane", p.Text().Chars());

  EXPECT_EQ(E_BadArgument, p.AppendComponent("a\\b"));
  EXPECT_EQ(E_BadArgument, p.AppendComponent("\\a"));  // silently: no message
  EXPECT_STREQ("[C:\\]Program Files\\Orvane", p.Text().Chars());

  EXPECT_ASSERTION(p.AppendComponent(nullptr), "component");

  CPath relative("Zendra\\\\Fonts/TrueType");
  EXPECT_EQ(Ok, p.Append(relative));
  EXPECT_STREQ("[C:\\]Program Files\\Orvane\\Zendra\\Fonts\\TrueType",
               p.Text().Chars());
  EXPECT_ASSERTION(p.Append(CPath("D:\\x")), "pathStr.Length() < 2");

  CPath built;
  EXPECT_EQ(Ok, built.SetFromComponents("C:\\", "Program Files/Orvane/Common"));
  EXPECT_STREQ("[C:\\]Program Files\\Orvane\\Common", built.Text().Chars());
  EXPECT_ASSERTION(built.SetFromComponents("C:\\", "a\\b"),
                   "(mDef->GetDirDelim() == '/') || "
                   "(Str::Find(components,mDef->GetDirDelim()) == 0)");
}

namespace {
std::string gReported;
struct RecordingHandler : CIgnoreErrorHandler {
  Int ReportMessage(const char* message, UInt32 flags, CStr& out) override {
    Int n = CErrorHandler::ReportMessage(message, flags, out);
    gReported = out.Chars();
    return n;
  }
};
}  // namespace

TEST(Path, AppendingAFullPathIsReported) {
  RecordingHandler handler;
  CErrorHandler::SetCurrent(&handler);
  gReported.clear();
  CPath p("C:\\base");
  EXPECT_EQ(E_BadArgument, p.AppendComponent("C:\\a"));
  CErrorHandler::SetCurrent(nullptr);
  EXPECT_EQ(
      "Attempt to add a component that is a full path.\ncomponent = 'C:\\a', "
      "pathStr = '[C:\\]base'",
      gReported);
  EXPECT_STREQ("[C:\\]base", p.Text().Chars());
}

TEST(Path, Components) {
  const char* file = "C:\\Program Files\\Orvane\\Zendra.dll";
  EXPECT_EQ("C:\\", Component(file, CPath::ctVolume));
  EXPECT_EQ("Program Files\\Orvane", Component(file, CPath::ctDir));
  EXPECT_EQ("Zendra.dll", Component(file, CPath::ctFile));
  EXPECT_EQ("Zendra", Component(file, CPath::ctName));
  EXPECT_EQ("dll", Component(file, CPath::ctExtension));
  EXPECT_EQ("Orvane", Component(file, CPath::ctDirName));
  EXPECT_EQ("Program Files\\Orvane\\Zendra.dll",
            Component(file, CPath::ctExtra));
  EXPECT_EQ("", Component("C:\\README", CPath::ctExtension));
  EXPECT_EQ("archive.tar", Component("C:\\archive.tar.gz", CPath::ctName));
  EXPECT_EQ("<E_BadArgument>", Component("C:\\", CPath::ctFile));
  EXPECT_EQ("<E_BadArgument>", Component("C:\\", CPath::ctDir));
  EXPECT_EQ("<E_BadArgument>", Component("C:\\a", 7));

  CPath dir;
  ASSERT_EQ(Ok, CPath(file).GetComponent(CPath::ctDir, dir));
  EXPECT_STREQ("[C:\\]Program Files\\Orvane", dir.Text().Chars());
  EXPECT_TRUE(dir.IsValid());
  ASSERT_EQ(Ok, CPath("C:\\top").GetComponent(CPath::ctDir, dir));
  EXPECT_STREQ("[C:\\]", dir.Text().Chars());
}

TEST(Path, Extensions) {
  CPath p("C:\\fonts\\qxextra.ttf");
  EXPECT_EQ(Ok, p.SetExtension("bak"));
  EXPECT_STREQ("[C:\\]fonts\\qxextra.bak", p.Text().Chars());
  CPath bare("C:\\README");
  EXPECT_EQ(Ok, bare.SetExtension("txt"));
  EXPECT_STREQ("[C:\\]README.txt", bare.Text().Chars());
  const char* text =
      "(Str::Length(extension) > 0) && (extension[0] != extDelim)";
  EXPECT_ASSERTION(p.SetExtension(""), text);
  EXPECT_ASSERTION(p.SetExtension(".txt"), text);
}

TEST(Path, DisplayText) {
  CPath p("C:\\Program Files\\Orvane\\Zendra\\Zendra.dll");
  EXPECT_STREQ("Program Files\\Orvane\\Zendra\\Zendra.dll",
               p.DisplayText(100).Chars());
  EXPECT_STREQ("Zendra\\Zendra.dll", p.DisplayText(20).Chars());
  EXPECT_STREQ("Zendra.dll", p.DisplayText(10).Chars());
  EXPECT_STREQ("Zend ...", p.DisplayText(8).Chars());
  EXPECT_STREQ(" ...", p.DisplayText(3).Chars());
  CPath sibling("C:\\Program Files\\Orvane\\Zendra\\ZendraBHO.dll");
  EXPECT_STREQ("Zendra.dll", p.DisplayText(100, &sibling).Chars());
  CPath elsewhere("C:\\Other\\x.dll");
  EXPECT_STREQ("Program Files\\Orvane\\Zendra\\Zendra.dll",
               p.DisplayText(100, &elsewhere).Chars());
}

TEST(Path, TemporaryNamesDifferAndAvoidExistingOnes) {
  NameSetFileSystem fs;
  CPath dir("C:\\Temp");
  CPath first, second;
  ASSERT_EQ(Ok, fs.GetTempName(dir, "OV", first));
  ASSERT_EQ(Ok, fs.GetTempName(dir, "OV", second));
  EXPECT_NE(first, second);
  std::string name = first.Text().Chars();
  ASSERT_EQ(std::string("[C:\\]Temp\\OV").size() + 20, name.size()) << name;
  EXPECT_EQ(0u, name.find("[C:\\]Temp\\OV"));

  // The next name is taken: the one after it comes back.
  unsigned long long counter =
      std::stoull(std::string(second.Text().Chars()).substr(12), nullptr, 16);
  char taken[64];
  std::snprintf(taken, sizeof taken, "[C:\\]Temp\\OV%020llX", counter + 1);
  fs.existing.insert(taken);
  fs.queries = 0;
  CPath third;
  ASSERT_EQ(Ok, fs.GetTempName(dir, "OV", third));
  EXPECT_EQ(2, fs.queries);
  std::snprintf(taken, sizeof taken, "[C:\\]Temp\\OV%020llX", counter + 2);
  EXPECT_STREQ(taken, third.Text().Chars());
}
