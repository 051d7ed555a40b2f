// Loading the test libraries built beside this program and calling their
// registration entry points.
#include <windows.h>

#include <string>

#include "TApplication.h"
#include "TImportLibrary_Win.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace Tern;

namespace {

CPath Library(const char* option) {
  return CPath(TestSupport::WindowsPath(TestSupport::ArgValue(option)).c_str());
}

bool Registered() {
  HKEY key = nullptr;
  if (::RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\ZendraTests\\ImportLibrary",
                      0, KEY_READ, &key) != ERROR_SUCCESS)
    return false;
  ::RegCloseKey(key);
  return true;
}

bool ModuleLoaded(const char* fileName) {
  return ::GetModuleHandleA(fileName) != nullptr;
}

class PhaseApp : public CApplication {
 public:
  PhaseApp() : CApplication("Import test") {}

 protected:
  void Run() override {}
};

}  // namespace

TEST(ImportLibrary, RegistrationEntriesAreCalled) {
  CError status = Failure;
  CImportLibrary lib(Library("registering-dll"), &status);
  ASSERT_EQ(Ok, status);
  EXPECT_TRUE(lib.IsLoaded());
  EXPECT_NE(nullptr, lib.Lookup("DllRegisterServer"));
  EXPECT_EQ(nullptr, lib.Lookup("NoSuchFunction"));
  EXPECT_EQ(Ok, lib.Register());
  EXPECT_TRUE(Registered());
  EXPECT_EQ(Ok, lib.Unregister());
  EXPECT_FALSE(Registered());
  EXPECT_ASSERTION(lib.Load(Library("registering-dll")), "mLib == 0");
}

TEST(ImportLibrary, LibraryWithoutEntries) {
  CImportLibrary lib(Library("plain-dll"));
  ASSERT_TRUE(lib.IsLoaded());
  EXPECT_EQ(E_NotFound, lib.Register());
  EXPECT_EQ(E_NotFound, lib.Unregister());
  using Answer = int(__stdcall*)();
  auto answer = reinterpret_cast<Answer>(lib.Lookup("Answer"));
  ASSERT_NE(nullptr, answer);
  EXPECT_EQ(42, answer());
}

TEST(ImportLibrary, NegativeResultIsFailurePositiveIsSuccess) {
  CImportLibrary lib(Library("failing-dll"));
  ASSERT_TRUE(lib.IsLoaded());
  EXPECT_EQ(Failure, lib.Register());
  EXPECT_EQ(Ok, lib.Unregister());  // S_FALSE is still a success
}

TEST(ImportLibrary, MissingLibraryAndNotLoaded) {
  CImportLibrary lib;
  EXPECT_EQ(E_NotFound, lib.Load(CPath("C:\\no such library.dll")));
  EXPECT_FALSE(lib.IsLoaded());
  EXPECT_ASSERTION(lib.Lookup("DllRegisterServer"), "IsLoaded()");
}

TEST(ImportLibrary, UnloadingFollowsTheApplicationPhase) {
  {
    CImportLibrary lib(Library("plain-dll"));
    EXPECT_TRUE(ModuleLoaded("PlainDll.dll"));
  }
  EXPECT_FALSE(ModuleLoaded("PlainDll.dll"));  // no application: freed

  PhaseApp app;
  EXPECT_ASSERTION(CImportLibrary startup(Library("plain-dll")),
                   "lib->GetPhase() == execNormal");

  app.SetPhase(execNormal);
  {
    CImportLibrary lib(Library("plain-dll"));
    EXPECT_TRUE(ModuleLoaded("PlainDll.dll"));
  }
  EXPECT_FALSE(ModuleLoaded("PlainDll.dll"));

  {
    CImportLibrary lib(Library("plain-dll"));
    app.SetPhase(execShuttingDown);
  }
  EXPECT_TRUE(ModuleLoaded("PlainDll.dll"));  // left loaded on purpose
}

TEST(ImportLibrary, AFailedFreeIsReportedWithItsCondition) {
  CImportLibrary lib(Library("plain-dll"));
  // Freed behind the object's back: its own free then fails.
  for (int n = 0; n < 10 && ModuleLoaded("PlainDll.dll"); ++n)
    ::FreeLibrary(::GetModuleHandleA("PlainDll.dll"));
  ASSERT_FALSE(ModuleLoaded("PlainDll.dll"));
  EXPECT_ASSERTION(lib.Unload(), "::FreeLibrary(mLib)");
  EXPECT_FALSE(lib.IsLoaded());
}
