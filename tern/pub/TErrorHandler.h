// The error handler collects the context in which errors occur (a stack of
// operations and a stack of message prefixes) and turns an error into a
// user-facing message.
#pragma once

#include <vector>

#include "TError.h"
#include "TString.h"

namespace Tern {

class CErrorHandler {
 public:
  virtual ~CErrorHandler() = 0;
  virtual bool Query();
  virtual void PushOperation(const char* description, const char* file,
                             Int line);
  virtual void PushOperation(const CStr& description);
  virtual void PopOperation();
  virtual void CountError();
  virtual void PushPrefix(CError error);
  virtual void PushPrefix(const char* text);
  virtual void PopPrefix();
  virtual void GetPrefix(CStr& out) const;
  virtual Int PrefixCount() const;
  virtual void Notify();
  virtual void CountPrefix();
  // Answers a question about an error; `defaultAnswer` is what a handler
  // that asks no one returns.
  virtual Int Decide(CError error, const char* message, Int defaultAnswer) = 0;
  virtual void Notify(Int value);
  virtual const char* OperationFile() const;
  virtual Int OperationLine() const;
  // Wraps `message` as bits 16-23 of `flags` select, fills the operation's
  // ErrFile/ErrLine and then the global variables into `out`. Returns the
  // number of substitutions of the last expansion.
  virtual Int ReportMessage(const char* message, UInt32 flags, CStr& out);
  // Message N of the program's message lists (0-799 main, 800-999 second).
  virtual void LoadMessage(Int index, CStr& out);

  // Reports `message` as the failure of one operation at the given source
  // position, asks the handler's decision, and gives back the text.
  Int ReportAt(const char* message, const char* sourceFile, Int sourceLine,
               CStr& out);

  Int OperationDepth() const { return static_cast<Int>(mOperations.size()); }
  Int OperationErrorCount() const;

  // The handler that library code reports through; by default one that
  // answers every question with its default.
  static CErrorHandler& Current();
  static void SetCurrent(CErrorHandler* handler);

 protected:
  void PopAllPrefixes();

 private:
  struct COperation {
    CStr description;
    CStr sourceFile;
    bool flag;
    Int errorCount;
    Int sourceLine;
  };
  struct CPrefix {
    CStr text;
    Int count;
  };
  bool CheckOperation() const;
  bool CheckPrefix() const;

  std::vector<COperation> mOperations;
  std::vector<CPrefix> mPrefixes;
};

class CIgnoreErrorHandler : public CErrorHandler {
 public:
  ~CIgnoreErrorHandler() override;
  Int Decide(CError error, const char* message, Int defaultAnswer) override;
};

// The program's message lists (the wrappings 3 to 5 of ReportMessage among
// them). Yields null for an index outside both lists.
const char* MessageText(Int index);

}  // namespace Tern
