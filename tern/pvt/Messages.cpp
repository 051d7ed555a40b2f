#include "TErrorHandler.h"

namespace Tern {

namespace {

// The main list (indices 0-799). Entries 3 to 5 wrap an error message for
// the error handler's report; "<msg>" stands for the message itself.
const char* const cMainMessages[] = {
    "<msg>",
    "<ProductName>: <msg>",
    "<msg>\n\nPlease see the log file for details.",
    "Error: <msg>",
    "Warning: <msg>",
    "Internal error in <ErrFile> at line <ErrLine>:\n<msg>",
};

// The second list (indices 800-999).
const char* const cSecondMessages[] = {
    "(no message)",
};

template <typename T, std::size_t N>
constexpr Int Count(T (&)[N]) {
  return static_cast<Int>(N);
}

}  // namespace

const char* MessageText(Int index) {
  if (index >= 0 && index < 800)
    return index < Count(cMainMessages) ? cMainMessages[index] : "";
  if (index >= 800 && index < 1000)
    return index - 800 < Count(cSecondMessages) ? cSecondMessages[index - 800]
                                                : "";
  return nullptr;
}

}  // namespace Tern
