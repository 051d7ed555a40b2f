#include "FileTestSupport.h"

#include <filesystem>
#include <system_error>

namespace TestSupport {

namespace fs = std::filesystem;

std::vector<Tern::Byte> ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::vector<Tern::Byte>(std::istreambuf_iterator<char>(in),
                                 std::istreambuf_iterator<char>());
}

void WriteFileBytes(const std::string& path,
                    const std::vector<Tern::Byte>& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

void RemoveTree(const std::string& path) {
  std::error_code ec;
  fs::remove_all(path, ec);
}

std::string UniqueName(const std::string& name) { return "scratch_" + name; }

ScratchFolder::ScratchFolder(const std::string& name)
    : mPath(UniqueName(name)) {
  RemoveTree(mPath);
  std::error_code ec;
  fs::create_directories(mPath, ec);
}

}  // namespace TestSupport
