// Without a registry there is nothing to find in one.
#include "Platform.h"

namespace Tern {
namespace Platform {

bool ReadRegistryString(const char*, const char*, const char*, CStr&) {
  return false;
}

}  // namespace Platform
}  // namespace Tern
