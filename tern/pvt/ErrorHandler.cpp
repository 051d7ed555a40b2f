#include "TErrorHandler.h"
#include "TVarList.h"

namespace Tern {

namespace {

CIgnoreErrorHandler gDefaultHandler;
CErrorHandler* gCurrentHandler = nullptr;

// Replaces every "<msg>" of `text` once, without looking into what it inserts.
void ReplaceMessageVariable(CStr& text, const char* message) {
  const char* placeholder = "<msg>";
  const Int messageLen = CStr(message).Length();
  for (Int pos = text.Find(placeholder); pos >= 0;
       pos = text.Find(placeholder, pos + messageLen)) {
    text.Remove(pos, 5);
    text.Insert(pos, message, messageLen);
  }
}

}  // namespace

CErrorHandler::~CErrorHandler() = default;

CErrorHandler& CErrorHandler::Current() {
  return gCurrentHandler ? *gCurrentHandler : gDefaultHandler;
}

void CErrorHandler::SetCurrent(CErrorHandler* handler) {
  gCurrentHandler = handler;
}

bool CErrorHandler::CheckOperation() const {
  if (mOperations.empty()) TERN_FAIL("IsValidIndex(i)");
  return !mOperations.empty();
}

bool CErrorHandler::CheckPrefix() const {
  if (mPrefixes.empty()) TERN_FAIL("IsValidIndex(i)");
  return !mPrefixes.empty();
}

bool CErrorHandler::Query() { return false; }

void CErrorHandler::PushOperation(const char* description, const char* file,
                                  Int line) {
  mOperations.push_back({CStr(description), CStr(file), true, 0, line});
}

void CErrorHandler::PushOperation(const CStr& description) {
  mOperations.push_back({description, CStr(), false, 0, 0});
}

void CErrorHandler::PopOperation() {
  if (CheckOperation()) mOperations.pop_back();
}

void CErrorHandler::CountError() {
  if (CheckOperation()) ++mOperations.back().errorCount;
}

Int CErrorHandler::OperationErrorCount() const {
  return CheckOperation() ? mOperations.back().errorCount : 0;
}

void CErrorHandler::PushPrefix(CError error) { PushPrefix(ErrorName(error)); }

void CErrorHandler::PushPrefix(const char* text) {
  mPrefixes.push_back({CStr(text), 0});
}

void CErrorHandler::PopPrefix() {
  if (CheckPrefix()) mPrefixes.pop_back();
}

void CErrorHandler::PopAllPrefixes() { mPrefixes.clear(); }

void CErrorHandler::GetPrefix(CStr& out) const {
  if (mPrefixes.empty())
    out.Clear();
  else
    out = mPrefixes.back().text;
}

Int CErrorHandler::PrefixCount() const {
  return CheckPrefix() ? mPrefixes.back().count : 0;
}

void CErrorHandler::Notify() {}

void CErrorHandler::CountPrefix() {
  if (CheckPrefix()) ++mPrefixes.back().count;
}

void CErrorHandler::Notify(Int) {}

const char* CErrorHandler::OperationFile() const {
  return CheckOperation() ? mOperations.back().sourceFile.Chars() : "";
}

Int CErrorHandler::OperationLine() const {
  return CheckOperation() ? mOperations.back().sourceLine : 0;
}

Int CErrorHandler::ReportMessage(const char* message, UInt32 flags, CStr& out) {
  if (!message) {
    TERN_FAIL("msg");
    message = "";
  }
  out.Clear();
  UInt32 wrapping = (flags >> 16) & 0xFF;
  if (wrapping >= 1 && wrapping <= 3) {
    LoadMessage(static_cast<Int>(wrapping) + 2, out);
    ReplaceMessageVariable(out, message);
  } else {
    out = message;
  }
  if (!mOperations.empty()) {
    CVarList position;
    position.Set("ErrFile", OperationFile());
    CStr line;
    line.Format("%d", static_cast<int>(OperationLine()));
    position.Set("ErrLine", line.Chars());
    position.Expand(out);
  }
  return CVarList::Global().Expand(out, "<>");
}

Int CErrorHandler::ReportAt(const char* message, const char* sourceFile,
                            Int sourceLine, CStr& out) {
  PushOperation(message, sourceFile, sourceLine);
  Int substitutions = ReportMessage(message, 0, out);
  Decide(Failure, out.Chars(), 0);
  PopOperation();
  return substitutions;
}

void CErrorHandler::LoadMessage(Int index, CStr& out) {
  const char* text = MessageText(index);
  if (!text) {
    TERN_FAIL("Invalid message index");
    out.Clear();
    return;
  }
  out = text;
}

CIgnoreErrorHandler::~CIgnoreErrorHandler() { PopAllPrefixes(); }

Int CIgnoreErrorHandler::Decide(CError, const char*, Int defaultAnswer) {
  return defaultAnswer;
}

}  // namespace Tern
