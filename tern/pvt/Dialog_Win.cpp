#include <windows.h>

#include <climits>

#include "TApplication.h"
#include "TError.h"

namespace Tern {

namespace {

UINT IconStyle(UInt32 purpose) {
  switch (purpose) {
    case mdInformation:
    case mdNote:
      return MB_ICONINFORMATION;
    case mdWarning:
      return MB_ICONEXCLAMATION;
    case mdError:
      return MB_ICONSTOP;
    case mdQuestion:
      return MB_ICONQUESTION;
    default:
      TERN_FAIL("bad purpose");
      return 0;
  }
}

// The buttons and, for more than one, which of them is the default.
UINT ButtonStyle(UInt32 buttons, UInt32 defaultButton) {
  UINT style = 0;
  bool goodDefault = true;
  switch (buttons) {
    case mdOK:
      return MB_OK;  // the default field is not looked at
    case mdOKCancel:
      style = MB_OKCANCEL;
      if (defaultButton == mdDefaultCancel)
        style |= MB_DEFBUTTON2;
      else
        goodDefault = defaultButton == mdDefaultOK;
      break;
    case mdYesNo:
      style = MB_YESNO;
      if (defaultButton == mdDefaultNo)
        style |= MB_DEFBUTTON2;
      else
        goodDefault = defaultButton == mdDefaultYes;
      break;
    case mdYesNoCancel:
      style = MB_YESNOCANCEL;
      if (defaultButton == mdDefaultNo)
        style |= MB_DEFBUTTON2;
      else if (defaultButton == mdDefaultCancel)
        style |= MB_DEFBUTTON3;
      else
        goodDefault = defaultButton == mdDefaultYes;
      break;
    default:
      TERN_FAIL("missing buttons specification");
      return MB_OK;
  }
  if (!goodDefault) TERN_FAIL("bad default button");
  return style;
}

// Opens the application's help at the context id. The setup has no help
// file, so nothing is opened; the id is still checked.
void __stdcall FrameworkHelp(void* helpInfo) {
  auto* info = static_cast<HELPINFO*>(helpInfo);
  if (info && info->dwContextId > static_cast<DWORD_PTR>(INT_MAX))
    TERN_FAIL("help context id out of range");
}

}  // namespace

UInt32 MessageBoxStyle(UInt32 flags, Int helpContextId) {
  UINT style =
      IconStyle(flags & 0xF) | ButtonStyle(flags & 0xF0, flags & 0xF00);
  if (flags & mdForeground) style |= MB_SETFOREGROUND;
  if (flags & mdTaskModal) style |= MB_TASKMODAL;
  if (helpContextId > 0) style |= MB_HELP;
  return style;
}

Int MessageAnswerFrom(Int platformAnswer) {
  switch (platformAnswer) {
    case IDOK:
      return maOK;
    case IDCANCEL:
      return maCancel;
    case IDYES:
      return maYes;
    case IDNO:
      return maNo;
    default:
      TERN_FAIL("bad value returned by MessageBoxIndirect");
      return maOK;
  }
}

Int MessageDialog(void* owner, const char* title, const char* text,
                  UInt32 flags, Int helpContextId, HelpCallback helpCallback) {
  TERN_ASSERT(title);
  TERN_ASSERT(text);
  if (!title || !text) return maOK;
  MSGBOXPARAMSA params = {};
  params.cbSize = sizeof params;
  params.hwndOwner = owner ? static_cast<HWND>(owner) : ::GetForegroundWindow();
  params.hInstance = ::GetModuleHandleA(nullptr);
  params.lpszText = text;
  params.lpszCaption = title;
  params.dwStyle = MessageBoxStyle(flags, helpContextId);
  params.dwContextHelpId = static_cast<DWORD_PTR>(helpContextId);
  params.dwLanguageId = LANG_USER_DEFAULT;
  if (helpCallback)
    params.lpfnMsgBoxCallback = reinterpret_cast<MSGBOXCALLBACK>(helpCallback);
  else if (!owner)
    params.lpfnMsgBoxCallback = reinterpret_cast<MSGBOXCALLBACK>(FrameworkHelp);
  return MessageAnswerFrom(::MessageBoxIndirectA(&params));
}

}  // namespace Tern
