// Real handles the library owns: kernel handles (a named mutex exists while
// a handle to it is open, which shows when one closes) and loaded libraries.
#include <windows.h>

#include <utility>

#include "TApplication.h"
#include "TImportLibrary_Win.h"
#include "TScopedResource_Win.h"
#include "TestSupport.h"
#include "WindowDriver.h"

using namespace Tern;

namespace {

const char cMutex[] = "ZendraTests.ScopedMutex";

HANDLE NewMutex() { return ::CreateMutexA(nullptr, FALSE, cMutex); }

bool MutexExists() {
  return CScopedKernelHandle(::OpenMutexA(SYNCHRONIZE, FALSE, cMutex))
      .IsValid();
}

CPath Library(const char* option) {
  return CPath(TestSupport::WindowsPath(TestSupport::ArgValue(option)).c_str());
}

}  // namespace

TEST(ScopedResource, OwnershipMovesAndTheLastOwnerCloses) {
  CScopedKernelHandle first(NewMutex());
  ASSERT_TRUE(first.IsValid());
  const HANDLE raw = first.Get();
  CScopedKernelHandle second(std::move(first)), third;
  third = std::move(second);
  EXPECT_FALSE(first.IsValid() || second.IsValid());
  EXPECT_EQ(raw, third.Get());
  first.Reset();  // moved from: nothing left to close
  EXPECT_TRUE(MutexExists());
  third = CScopedKernelHandle();  // what was held is closed
  EXPECT_FALSE(MutexExists());

  const HANDLE released = CScopedKernelHandle(NewMutex()).Release();
  EXPECT_TRUE(MutexExists());
  ::CloseHandle(released);
  third.Reset(NewMutex());
  ::CloseHandle(third.Get());  // behind the owner's back
  EXPECT_FALSE(third.Close());
  EXPECT_FALSE(third.IsValid() || MutexExists());
}

// Loading, and libraries without entries, are Setup's own tests' part.
TEST(ImportLibrary, EntryResultsBecomeStatuses) {
  CImportLibrary lib(Library("registering-dll"));
  EXPECT_EQ(Ok, lib.Register());
  EXPECT_EQ(Failure, lib.Register());  // a negative result
  EXPECT_EQ(Ok, lib.Unregister());     // S_FALSE
  EXPECT_ASSERTION(lib.Load(Library("registering-dll")), "mLib == 0");
}

// The hidden window is made on the first request, of the application's own
// class, and kept for later ones.
TEST(GUIApplication, MakesItsHiddenWindowWhenFirstAskedFor) {
  struct CWindowApp : CGUIApplication {
    CWindowApp() : CGUIApplication("Window Test") {}
    void Run() override {
      first = static_cast<HWND>(AppWindow());
      second = static_cast<HWND>(AppWindow());
    }
    HWND first = nullptr, second = nullptr;
  } app;
  app.Main("");
  ASSERT_TRUE(::IsWindow(app.first));
  EXPECT_EQ(app.first, app.second);
  EXPECT_FALSE(::IsWindowVisible(app.first));
  char name[32] = "";
  ::GetClassNameA(app.first, name, sizeof name);
  EXPECT_STREQ("OVAppWindow", name);
}
