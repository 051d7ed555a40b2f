// The setup's pieces in process: its version resource, dialogs, strings and
// message-box flags, as built into this test program from Setup.rc.
#include <windows.h>

#include <string>
#include <vector>

#include "InstallLocation.h"
#include "Setup.h"
#include "SetupResource.h"
#include "TApplication.h"
#include "TVersion.h"
#include "TestSupport.h"
#include "Version.h"
#include "WindowDriver.h"
#include "ZNOfficeMacros.h"

using namespace TestSupport;

namespace {

std::string SetupExe() { return WindowsPath(ArgValue("setup-exe")); }

}  // namespace

TEST(SetupExe, VersionResourceCarriesTheProductVersion) {
  Tern::CStr product, file;
  ASSERT_TRUE(Tern::CVersion::GetVersionInfo(
      SetupExe().c_str(), Tern::CVersion::viProductVersion, product));
  ASSERT_TRUE(Tern::CVersion::GetVersionInfo(
      SetupExe().c_str(), Tern::CVersion::viFileVersion, file));
  EXPECT_STREQ(SETUP_PRODUCT_VERSION_TEXT, product.Chars());
  EXPECT_STREQ(SETUP_FILE_VERSION_TEXT, file.Chars());

  // The display text and the dotted text name the same version.
  Tern::CVersion fromProduct, fromFile;
  ASSERT_EQ(Tern::Ok, fromProduct.Parse(product.Chars()));
  ASSERT_EQ(Tern::Ok, fromFile.Parse(file.Chars()));
  EXPECT_FALSE(fromProduct.IsGreater(fromFile));
  EXPECT_FALSE(fromFile.IsGreater(fromProduct));
  EXPECT_STREQ(product.Chars(), fromFile.Text().Chars());
}

TEST(VersionInfo, OnlyTheUSEnglishBlockCounts) {
  const std::string german = WindowsPath(ArgValue("german-exe"));
  Tern::CStr text("untouched");
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      german.c_str(), Tern::CVersion::viFileVersion, text));
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      german.c_str(), Tern::CVersion::viProductVersion, text));
  EXPECT_FALSE(Tern::CVersion::GetVersionInfo(
      "C:\\no such file.exe", Tern::CVersion::viFileVersion, text));
  EXPECT_STREQ("untouched", text.Chars());
}

TEST(ExitCodes, NamesAsLogged) {
  const char* names[] = {
      "exitOk",           "exitFailure",      "exitBadCmdLine",  "exitInUse",
      "exitNoPermission", "exitNewerVersion", "exitBadIEVersion"};
  for (int code = 0; code <= 6; ++code)
    EXPECT_STREQ(names[code], Zendra::ExitCodeName(code));
  EXPECT_ASSERTION(Zendra::ExitCodeName(7), "unknown exit code");
  ReportingAssertions reporting;
  EXPECT_STREQ("(unknown)", Zendra::ExitCodeName(-1));
}

namespace {

// One control of a dialog template as the resource holds it.
struct TemplateControl {
  int id;
  short x, y, cx, cy;
  std::string className;  // "Button", "Static", ...
  std::string text;
  DWORD style;
};

struct DialogTemplate {
  short cx, cy;
  std::string caption, fontName;
  int pointSize = 0;
  std::vector<TemplateControl> controls;
};

// Reads a sz_Or_Ord field: a UTF-16 string, or 0xFFFF and an ordinal.
std::string ReadSzOrOrd(const WORD*& p) {
  if (*p == 0xFFFF) {
    WORD ordinal = p[1];
    p += 2;
    switch (ordinal) {
      case 0x80:
        return "Button";
      case 0x81:
        return "Edit";
      case 0x82:
        return "Static";
      default:
        return "#" + std::to_string(ordinal);
    }
  }
  std::string text;
  while (*p) text += static_cast<char>(*p++);
  ++p;
  return text;
}

DialogTemplate LoadDialogTemplate(int id) {
  HRSRC found = ::FindResourceA(nullptr, MAKEINTRESOURCEA(id), RT_DIALOG);
  const auto* dlg = static_cast<const DLGTEMPLATE*>(
      ::LockResource(::LoadResource(nullptr, found)));
  DialogTemplate result;
  if (!dlg) return result;
  result.cx = dlg->cx;
  result.cy = dlg->cy;
  const WORD* p = reinterpret_cast<const WORD*>(dlg + 1);
  ReadSzOrOrd(p);  // menu
  ReadSzOrOrd(p);  // window class
  result.caption = ReadSzOrOrd(p);
  if (dlg->style & DS_SETFONT) {
    result.pointSize = *p++;
    result.fontName = ReadSzOrOrd(p);
  }
  for (int i = 0; i < dlg->cdit; ++i) {
    p = reinterpret_cast<const WORD*>((reinterpret_cast<UINT_PTR>(p) + 3) &
                                      ~UINT_PTR(3));
    const auto* item = reinterpret_cast<const DLGITEMTEMPLATE*>(p);
    TemplateControl control;
    control.id = static_cast<short>(item->id);
    control.x = item->x;
    control.y = item->y;
    control.cx = item->cx;
    control.cy = item->cy;
    control.style = item->style;
    p = reinterpret_cast<const WORD*>(item + 1);
    control.className = ReadSzOrOrd(p);
    // A class named in the template may be stored in capitals.
    if (lstrcmpiA(control.className.c_str(), "Button") == 0)
      control.className = "Button";
    control.text = ReadSzOrOrd(p);
    WORD extra = *p++;
    p = reinterpret_cast<const WORD*>(reinterpret_cast<const BYTE*>(p) + extra);
    result.controls.push_back(control);
  }
  return result;
}

std::string Describe(const TemplateControl& c) {
  return std::to_string(c.id) + " " + c.className + " " + std::to_string(c.x) +
         "," + std::to_string(c.y) + " " + std::to_string(c.cx) + "x" +
         std::to_string(c.cy) + " \"" + c.text + "\"";
}

}  // namespace

TEST(Dialogs, NotificationTemplate) {
  DialogTemplate dialog = LoadDialogTemplate(IDD_NOTIFY);
  EXPECT_EQ(186, dialog.cx);
  EXPECT_EQ(135, dialog.cy);
  EXPECT_EQ("Zendra Setup", dialog.caption);
  EXPECT_EQ("MS Sans Serif", dialog.fontName);
  EXPECT_EQ(8, dialog.pointSize);
  ASSERT_EQ(5u, dialog.controls.size());
  const char* expected[] = {
      "2001 Static 7,9 172x45 \"(filled in at run-time)\"",
      "-1 Static 7,56 172x34 \"Would you like to be notified occasionally "
      "about "
      "developments in MathML and other math-on-the-web technologies, and "
      "about "
      "other Orvane products?\"",
      "2002 Button 49,89 28x10 \"Yes\"",
      "2003 Button 99,89 25x10 \"No\"",
      "1 Button 60,114 50x14 \"OK\"",
  };
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(expected[i], Describe(dialog.controls[i]));
  EXPECT_EQ(static_cast<DWORD>(BS_AUTORADIOBUTTON),
            dialog.controls[2].style & 0xF);
  EXPECT_EQ(static_cast<DWORD>(BS_DEFPUSHBUTTON),
            dialog.controls[4].style & 0xF);
}

TEST(Dialogs, CloseWordTemplate) {
  DialogTemplate dialog = LoadDialogTemplate(IDD_CLOSE_WORD);
  EXPECT_EQ(263, dialog.cx);
  EXPECT_EQ(65, dialog.cy);
  EXPECT_EQ("<SetupName>", dialog.caption);
  EXPECT_EQ("Helv", dialog.fontName);
  ASSERT_EQ(3u, dialog.controls.size());
  EXPECT_EQ(
      "-1 Static 7,7 249x26 \"Because <SetupName> installs (or removes) "
      "software into Microsoft Word, please close Word and click Try Again. "
      "You might need to close Outlook also because it runs Word to display "
      "some content.\"",
      Describe(dialog.controls[0]));
  EXPECT_EQ("1 Button 74,44 50x14 \"&Try Again\"",
            Describe(dialog.controls[1]));
  EXPECT_EQ("2 Button 138,44 50x14 \"E&xit Setup\"",
            Describe(dialog.controls[2]));
  EXPECT_EQ(static_cast<DWORD>(BS_DEFPUSHBUTTON),
            dialog.controls[1].style & 0xF);
}

TEST(Strings, ProductNames) {
  const char* word[] = {"2007", "2010", "2013", "2016", "2019"};
  for (int i = 0; i < 5; ++i) {
    EXPECT_STREQ((std::string("Microsoft Word ") + word[i]).c_str(),
                 Zendra::GetResStr(273 + i).Chars());
    EXPECT_STREQ((std::string("Microsoft PowerPoint ") + word[i]).c_str(),
                 Zendra::GetResStr(517 + i).Chars());
  }
  EXPECT_ASSERTION(
      Zendra::GetResStr(9999),
      "Bad param to GetResStr: no string for strID = 0x<StrID,x>.");
  ReportingAssertions reporting;
  EXPECT_TRUE(Zendra::GetResStr(9999).IsEmpty());
}

TEST(Strings, WordMessageBlocksPerRow) {
  EXPECT_STREQ(
      "<SetupName> could not install <AppName>'s Commands for Microsoft Word "
      "2007 "
      "because <Reason>.\n\nYou can ignore this message if you have removed "
      "Word "
      "2007 or are not interested in using it with <AppName>.\n\nTo correct "
      "this "
      "problem:\n- Click OK to continue\n- When <SetupName> has finished, "
      "<Action> "
      "(you may have to contact your Network Administrator to do this)\n- "
      "Finally, "
      "run <SetupName> again",
      Zendra::GetResBlock(IDS_WORD_MESSAGE_BASE).Chars());
  const char* years[] = {"2007", "2010", "2013", "2016", "2016"};
  const char* offices[] = {"Office12", "Office14", "Office14", "Office14",
                           "Office14"};
  const char* reasons[] = {"Word's Startup folder can't be written to",
                           "Word's Startup folder does not exist",
                           "Word's Startup folder is read-only",
                           "the target file is read-only"};
  for (int row = 0; row < 5; ++row) {
    const std::string year = years[row];
    std::string message =
        Zendra::GetResBlock(IDS_WORD_MESSAGE_BASE + 8 * row).Chars();
    EXPECT_EQ(0u,
              message.find("<SetupName> could not install <AppName>'s Commands "
                           "for Microsoft Word " +
                           year + " because"))
        << row;
    EXPECT_EQ(std::string::npos, message.find("!END!"));
    for (int i = 0; i < 4; ++i)
      EXPECT_STREQ(
          reasons[i],
          Zendra::GetResStr(IDS_WORD_REASON_BASE + 8 * row + i).Chars());
    EXPECT_EQ(
        "make sure Word " + year +
            "'s Startup folder exists and is not read-only",
        std::string(Zendra::GetResStr(IDS_WORD_ACTION_BASE + 8 * row).Chars()));
    EXPECT_EQ(
        "create Word " + year +
            "'s Startup folder, typically at C:\\Program Files\\Microsoft "
            "Office\\" +
            offices[row] + "\\Startup",
        std::string(
            Zendra::GetResStr(IDS_WORD_ACTION_BASE + 8 * row + 1).Chars()));
    EXPECT_EQ(
        "make sure the file \"<MacroFile>\" in Word " + year +
            "'s Startup folder is not read-only",
        std::string(
            Zendra::GetResStr(IDS_WORD_ACTION_BASE + 8 * row + 3).Chars()));
  }
}

TEST(MessageDialog, FlagsMapToThePlatformStyle) {
  using namespace Tern;
  EXPECT_EQ(static_cast<UInt32>(MB_OK | MB_ICONINFORMATION),
            MessageBoxStyle(mdOK, 0));
  EXPECT_EQ(static_cast<UInt32>(MB_OK | MB_ICONSTOP),
            MessageBoxStyle(mdError | mdOK, 0));
  EXPECT_EQ(
      static_cast<UInt32>(MB_OKCANCEL | MB_ICONEXCLAMATION | MB_DEFBUTTON2),
      MessageBoxStyle(mdWarning | mdOKCancel | mdDefaultCancel, 0));
  EXPECT_EQ(static_cast<UInt32>(MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2),
            MessageBoxStyle(mdQuestion | mdYesNo | mdDefaultNo, 0));
  EXPECT_EQ(
      static_cast<UInt32>(MB_YESNOCANCEL | MB_ICONINFORMATION | MB_DEFBUTTON3),
      MessageBoxStyle(mdNote | mdYesNoCancel | mdDefaultCancel, 0));
  EXPECT_EQ(
      static_cast<UInt32>(MB_OK | MB_ICONINFORMATION | MB_SETFOREGROUND |
                          MB_TASKMODAL | MB_HELP),
      MessageBoxStyle(mdOK | mdForeground | mdTaskModal | mdDefaultNo, 5));

  EXPECT_ASSERTION(MessageBoxStyle(mdYesNo | mdDefaultCancel, 0),
                   "bad default button");
  EXPECT_ASSERTION(MessageBoxStyle(5 | mdOK, 0), "bad purpose");
  EXPECT_ASSERTION(MessageBoxStyle(80, 0), "missing buttons specification");
  {
    ReportingAssertions reporting;
    // The bad default is reported and Yes stays the default.
    EXPECT_EQ(static_cast<UInt32>(MB_YESNO | MB_ICONINFORMATION),
              MessageBoxStyle(mdYesNo | mdDefaultCancel, 0));
  }
  EXPECT_EQ(maOK, MessageAnswerFrom(IDOK));
  EXPECT_EQ(maCancel, MessageAnswerFrom(IDCANCEL));
  EXPECT_EQ(maYes, MessageAnswerFrom(IDYES));
  EXPECT_EQ(maNo, MessageAnswerFrom(IDNO));
  EXPECT_ASSERTION(MessageAnswerFrom(IDABORT),
                   "bad value returned by MessageBoxIndirect");
  EXPECT_ASSERTION(MessageDialog(nullptr, nullptr, "text", mdOK), "title");
  EXPECT_ASSERTION(MessageDialog(nullptr, "title", nullptr, mdOK), "text");
}

TEST(MessageDialog, SetupMessageRequiresTheMessage) {
  Zendra::CZendraSetupApp app(0);
  EXPECT_ASSERTION(app.MessageDialog(nullptr, Zendra::mkPlain), "message");
}

TEST(InstallLocation, TheInstallFolderMustBeValid) {
  Zendra::CZendraSetupApp app(0);
  EXPECT_ASSERTION(app.SetInstallDir(Tern::CPath()), "mInstallDir.IsValid()");
}

TEST(InstallLocation, ConfigurationBesideTheProgramAndTheProductClass) {
  EXPECT_STREQ("zendra.ovc", Zendra::cConfigFileName);
  EXPECT_STREQ(
      "HKEY_CLASSES_ROOT\\CLSID\\{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}",
      Zendra::cProductClassKey);
  Zendra::CZendraSetupApp app(0);
  Tern::CPath config;
  ASSERT_TRUE(app.GetConfigPath(config));
  char module[MAX_PATH] = "";
  ::GetModuleFileNameA(nullptr, module, sizeof module);
  std::string expected(module);
  expected = expected.substr(0, expected.rfind('\\') + 1) + "zendra.ovc";
  EXPECT_STREQ(expected.c_str(), config.OSToPathString().Chars());
}
