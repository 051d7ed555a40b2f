// Scratch files and folders for tests, in the test's working directory, and
// raw access to their bytes independent of the library under test.
#pragma once

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "TTypes.h"

namespace TestSupport {

std::vector<Tern::Byte> ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path,
                    const std::vector<Tern::Byte>& bytes);
// Removes a folder and everything in it (test clean-up only).
void RemoveTree(const std::string& path);
// A folder path, unique for this process and name.
std::string UniqueName(const std::string& name);

// A file name removed before and after the test.
class ScratchFile {
 public:
  explicit ScratchFile(const std::string& name) : mPath(UniqueName(name)) {
    std::remove(mPath.c_str());
  }
  ~ScratchFile() { std::remove(mPath.c_str()); }
  const std::string& Path() const { return mPath; }

 private:
  std::string mPath;
};

// A folder made for the test and removed with all it holds afterwards.
class ScratchFolder {
 public:
  explicit ScratchFolder(const std::string& name);
  ~ScratchFolder() { RemoveTree(mPath); }
  const std::string& Path() const { return mPath; }

 private:
  std::string mPath;
};

}  // namespace TestSupport
