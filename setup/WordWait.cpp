#include "WordWait.h"

#include <windows.h>

#include "InstallLog.h"
#include "OfficeRegistry.h"
#include "SetupResource.h"
#include "TFormat.h"
#include "WordMacros.h"

namespace Zendra {

namespace {

const DWORD cLookAgainAfterMs = 200;

// Fills the "<SetupName>" placeholders of a window's text from the global
// variables.
void ExpandWindowText(HWND window) {
  char text[512] = "";
  ::GetWindowTextA(window, text, sizeof text);
  Tern::CFormat expanded(text);
  ::SetWindowTextA(window, expanded.Result().Chars());
}

BOOL CALLBACK ExpandChildText(HWND child, LPARAM) {
  ExpandWindowText(child);
  return TRUE;
}

INT_PTR CALLBACK CloseWordDialogProc(HWND dialog, UINT message, WPARAM wParam,
                                     LPARAM) {
  switch (message) {
    case WM_INITDIALOG:
      ExpandWindowText(dialog);
      ::EnumChildWindows(dialog, ExpandChildText, 0);
      ::SetForegroundWindow(dialog);
      return TRUE;
    case WM_COMMAND:
      if (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL) {
        ::EndDialog(dialog, LOWORD(wParam));
        return TRUE;
      }
      return FALSE;
    default:
      return FALSE;
  }
}

}  // namespace

bool AskToCloseWord() {
  const INT_PTR answer = ::DialogBoxParamA(::GetModuleHandleA(nullptr),
                                           MAKEINTRESOURCEA(IDD_CLOSE_WORD),
                                           nullptr, CloseWordDialogProc, 0);
  LogText("Close Word dialog: %s.\n",
          answer == IDOK ? "Try Again" : "Exit Setup");
  return answer == IDOK;
}

bool WaitUntilWordIsClosed(CInstallContext& context) {
  LogOSBitness();
  while (IsWordRunning()) {
    if (context.silent || !AskToCloseWord()) {
      LogText(
          "Microsoft Word is running and this is either a silent install or "
          "user quit install.\n");
      return false;
    }
    ::Sleep(cLookAgainAfterMs);
  }
  return true;
}

}  // namespace Zendra
