// The few platform services behind the portable code of this folder. Each
// has one definition in a _Win file and one in its _Posix twin.
#pragma once

#include "TError.h"
#include "TString.h"
#include "TTypes.h"

namespace Tern {
namespace Platform {

void DebugOutput(const char* text);
bool IsDebuggerAttached();
// Breaks into the debugger; without one the process ends.
void HardBreak();
// True while a quit message waits in this thread's queue (the program ends).
bool IsQuitPending();

enum AssertAnswer { aaAbort, aaRetry, aaIgnore };
AssertAnswer AskAboutAssertion(const char* text, const char* caption);

// Hands the assertion to whatever outer handler the program installed.
void RaiseAssertionException();
void ExitProcess(Int code);

// Milliseconds since some fixed moment (system start on Windows).
unsigned long long TickCount();

// The system's own message text for an error number (may be empty).
CStr SystemErrorText(UInt32 number);

// A string value of the registry key `subKey` below the root named
// `rootKey`; false where there is no registry, key or value.
bool ReadRegistryString(const char* rootKey, const char* subKey,
                        const char* name, CStr& value);

#if !defined(_WIN32)
void SetAssertionHandler(AssertionHandler handler);
#endif

}  // namespace Platform
}  // namespace Tern
