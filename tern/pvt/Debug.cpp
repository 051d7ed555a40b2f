#include <cstdarg>
#include <cstdio>

#include "Platform.h"
#include "TApplication.h"
#include "TError.h"
#include "TStr.h"
#include "TString.h"

namespace Tern {

namespace {

const char* gSourceFile = "";
Int gSourceLine = 0;
bool gAssertionsThrow = false;
int gNestingCount = 0;
DebugOutputSink gDebugSink = nullptr;

// The last report; a static buffer, so that it survives a low-memory state.
char gReport[2048] = "(unknown assert)";

void DebugOutput(const char* text) {
  Platform::DebugOutput(text);
  if (gDebugSink) gDebugSink(text);
}

// Formats with the C library directly, not through CStr::Format: an
// assertion about formatting must not come back here.
void FormatMessage(CStr& out, const char* format, va_list args) {
  va_list measureArgs;
  va_copy(measureArgs, args);
  int needed = Str::VFormat(nullptr, 0, format, measureArgs);
  va_end(measureArgs);
  if (needed < 0) {
    out = format;
    return;
  }
  char* buf = out.Lock(needed);
  Str::VFormat(buf, static_cast<std::size_t>(needed) + 1, format, args);
  out.Unlock(needed);
}

void AssertionCaption(CStr& caption) {
  const CApplication* app = CApplication::Current();
  if (app && !app->GetName().IsEmpty())
    caption.Format("Assertion Failure in %s!", app->GetName().Chars());
  else
    caption = "Assertion Failure!";
}

void ReportAssertion(const char* message) {
  if (gNestingCount != 0) {
    DebugOutput("**** nested calls to AssertFailed ****\n");
    Platform::HardBreak();
    return;
  }
  gNestingCount = 1;
  std::snprintf(gReport, sizeof gReport, "File: %s, Line#: %d\nAssert( %s );\n",
                gSourceFile, static_cast<int>(gSourceLine), message);
  DebugOutput(gReport);

  if (Platform::IsQuitPending()) {
    DebugOutput("**** Assert during termination ****\n");
    Platform::HardBreak();
  }

  if (Platform::IsDebuggerAttached()) {
    CStr caption;
    AssertionCaption(caption);
    CStr text(gReport);
    text.Append(
        "\nClick Abort to terminate, Retry to break in the debugger, Ignore "
        "to continue.");
    switch (Platform::AskAboutAssertion(text.Chars(), caption.Chars())) {
      case Platform::aaAbort:
        Platform::ExitProcess(1);
        break;
      case Platform::aaRetry:
        Platform::HardBreak();
        break;
      case Platform::aaIgnore:
        break;
    }
  } else {
    // No one to ask: the program's outer handler decides.
    Platform::RaiseAssertionException();
  }
  --gNestingCount;
}

}  // namespace

void SetSourcePosition(const char* file, Int line) {
  gSourceFile = file ? file : "";
  gSourceLine = line;
}

const char* SourceFile() { return gSourceFile; }
Int SourceLine() { return gSourceLine; }

void SetAssertionsThrow(bool enabled) { gAssertionsThrow = enabled; }
bool AssertionsThrow() { return gAssertionsThrow; }

const char* LastAssertionReport() { return gReport; }

void SetDebugOutputSink(DebugOutputSink sink) { gDebugSink = sink; }

void Assert(const char* expression, const char* file, Int line) {
  SetSourcePosition(file, line);
  AssertFailed("%s", expression ? expression : "");
}

void AssertFailed(const char* format, ...) {
  CStr message;
  if (!format) {
    SetSourcePosition(__FILE__, __LINE__);
    AssertFailed("msg");
    return;
  }
  va_list args;
  va_start(args, format);
  FormatMessage(message, format, args);
  va_end(args);

  if (gAssertionsThrow) throw CAssertionFailure(message.Chars());
  ReportAssertion(message.Chars());
}

}  // namespace Tern
