#include "TApplication.h"
#include "TError.h"
#include "TStr.h"

namespace Tern {

CExecModule* CExecModule::cInstance = nullptr;

CExecModule::CExecModule() {
  TERN_ASSERT(cInstance == 0);
  cInstance = this;
}

CExecModule::~CExecModule() {
  if (cInstance == this) cInstance = nullptr;
}

CApplication::CApplication(const char* name) : mName(name) {}

CApplication* CApplication::Current() {
  return dynamic_cast<CApplication*>(CExecModule::Instance());
}

namespace {

// The next token at or after `cursor`, which moves past it. False at the end.
bool NextToken(const char*& cursor, CStr& token) {
  while (*cursor && Str::IsSpace(*cursor)) ++cursor;
  if (!*cursor) return false;
  const char* start = cursor;
  if (*cursor == '"') {
    start = ++cursor;
    while (*cursor && *cursor != '"') ++cursor;
    token.Assign(start, static_cast<Int>(cursor - start));
    if (*cursor == '"') ++cursor;  // a missing closing quote takes the rest
  } else {
    while (*cursor && !Str::IsSpace(*cursor)) ++cursor;
    token.Assign(start, static_cast<Int>(cursor - start));
  }
  return true;
}

}  // namespace

void CApplication::SetCommandLine(const char* cmdLine) {
  TERN_ASSERT(cmdLine);
  mArgs.clear();
  mCommandLine = cmdLine ? cmdLine : "";
  const char* cursor = mCommandLine.Chars();
  CStr token;
  while (NextToken(cursor, token)) mArgs.push_back(token);
}

const CStr& CApplication::GetArg(Int index) const {
  static const CStr cNone;
  TERN_ASSERT(index < GetArgCount());
  if (index < 0 || index >= GetArgCount()) return cNone;
  return mArgs[index];
}

void CApplication::RemoveArg(Int index) {
  TERN_ASSERT(index < GetArgCount());
  if (index < 0 || index >= GetArgCount()) return;
  mArgs.erase(mArgs.begin() + index);
}

bool CApplication::HasOption(const char* option, Int index) {
  TERN_ASSERT(option);
  if (index < 0) TERN_FAIL("index>=0");
  if (!option || index < 0 || index >= GetArgCount()) return false;
  const CStr& arg = mArgs[index];
  if (arg.Length() < 1 || (arg[0] != '-' && arg[0] != '/')) return false;
  if (!Str::Equal(arg.Chars() + 1, option)) return false;
  RemoveArg(index);
  return true;
}

CStr CApplication::GetCommandLineFromArgs() const {
  CStr line;
  for (std::size_t i = 0; i < mArgs.size(); ++i) {
    if (i > 0) line.Append(' ');
    line.Append('"');
    line.Append(mArgs[i]);
    line.Append('"');
  }
  return line;
}

CStr CApplication::GetUsage() const {
  return CStr("(no usage information available)");
}

void CApplication::RunNormalPhase() { Run(); }

Int CApplication::Main(const char* cmdLine) {
  SetPhase(execInStartup);
  SetCommandLine(cmdLine ? cmdLine : "");
  if (InitInstance()) {
    SetPhase(execNormal);
    RunNormalPhase();
  }
  SetPhase(execShuttingDown);
  return GetExitCode();
}

}  // namespace Tern
