#include <string>

#include "TErrorHandler.h"
#include "TFileSystem.h"
#include "TestSupport.h"

using namespace Tern;

namespace {

std::string Component(const char* path, Int kind) {
  CStr text;
  const CError err = CPath(path).GetComponentString(kind, text);
  return Failed(err) ? ErrorName(err) : text.Chars();
}

struct RecordingHandler : CIgnoreErrorHandler {
  std::string decided;
  Int Decide(CError, const char* text, Int answer) override {
    decided = text;
    return answer;
  }
};

}  // namespace

TEST(Path, CanonicalAndSystemForms) {
  const struct {
    const char *os, *canonical, *system;
  } cases[] = {
      {"C:", "[C:]", "C:"},
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
}

TEST(Path, AppendingComponentsAndPaths) {
  CPath p("C:\\");
  EXPECT_EQ(Ok, p.AppendComponent("Program Files"));
  EXPECT_EQ(Ok, p.Append(CPath("Zendra\\\\Fonts/TrueType")));
  EXPECT_STREQ("[C:\\]Program Files\\Zendra\\Fonts\\TrueType",
               p.Text().Chars());
  EXPECT_EQ(E_BadArgument, p.AppendComponent("a\\b"));
  EXPECT_ASSERTION(p.Append(CPath("D:\\x")), "pathStr.Length() < 2");
  EXPECT_ASSERTION(CPath().AppendComponent("x"), "IsValid()");
  p = CPath("C:\\Program Files\\Orvane");
  // A full path as a component is refused and reported.
  RecordingHandler handler;
  CErrorHandler::SetCurrent(&handler);
  EXPECT_EQ(E_BadArgument, p.AppendComponent("C:\\a"));
  CErrorHandler::SetCurrent(nullptr);
  EXPECT_EQ(
      "Attempt to add a component that is a full path.\ncomponent = 'C:\\a', "
      "pathStr = '[C:\\]Program Files\\Orvane'",
      handler.decided);
  EXPECT_STREQ("[C:\\]Program Files\\Orvane", p.Text().Chars());
}

TEST(Path, Components) {
  std::string parts;
  for (Int kind : {CPath::ctVolume, CPath::ctDir, CPath::ctFile, CPath::ctName,
                   CPath::ctExtension, CPath::ctDirName})
    parts += Component("C:\\Program Files\\Orvane\\Zendra.dll", kind) + "|";
  EXPECT_EQ("C:\\|Program Files\\Orvane|Zendra.dll|Zendra|dll|Orvane|", parts);
  EXPECT_EQ("", Component("C:\\top", CPath::ctDir));
  EXPECT_EQ("", Component("C:\\README", CPath::ctExtension));
  EXPECT_EQ("archive.tar", Component("C:\\archive.tar.gz", CPath::ctName));
  EXPECT_EQ("E_BadArgument", Component("C:\\", CPath::ctFile));
  EXPECT_EQ("E_BadArgument", Component("C:\\", CPath::ctDir));
  EXPECT_EQ("E_BadArgument", Component("C:\\a", 7));
}
