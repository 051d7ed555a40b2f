// Helpers shared by the test programs.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TError.h"

namespace TestSupport {

// Arguments given to the test program after GoogleTest took its own.
const std::vector<std::string>& Args();
// The value of "--name=value", or empty.
std::string ArgValue(const std::string& name);

// Switches assertions from throwing to the normal report for a scope.
class ReportingAssertions {
 public:
  ReportingAssertions() { Tern::SetAssertionsThrow(false); }
  ~ReportingAssertions() { Tern::SetAssertionsThrow(true); }
};

}  // namespace TestSupport

// Runs `statement` and expects it to raise the assertion with text `text`.
#define EXPECT_ASSERTION(statement, text)                              \
  do {                                                                 \
    std::string _caught;                                               \
    try {                                                              \
      statement;                                                       \
    } catch (const Tern::CAssertionFailure& _failure) {                \
      _caught = _failure.what();                                       \
    }                                                                  \
    EXPECT_EQ(std::string(text), _caught) << "statement: " #statement; \
  } while (0)
