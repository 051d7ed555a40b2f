// The version parser in all its forms: any text either parses or is refused,
// and a parsed version reads back from its dotted and resource forms, and
// from its display form when that has no character other than a letter.
#include <cctype>

#include "FuzzSupport.h"
#include "TVersion.h"

using namespace Tern;

FUZZ_INITIALIZE

namespace {

bool Same(const CVersion& a, const CVersion& b) {
  return a.Major() == b.Major() && a.Minor() == b.Minor() &&
         a.Revision() == b.Revision() && a.Prerelease() == b.Prerelease();
}

void ExpectReadsBack(const CVersion& version, Int form) {
  CVersion again;
  FUZZ_CHECK(Succeeded(again.Parse(version.Text(form).Chars())));
  FUZZ_CHECK(Same(version, again));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  CVersion version;
  const CError err = version.Parse(text.c_str());
  FUZZ_CHECK(Succeeded(err) == version.IsValid());
  if (Failed(err)) return 0;

  FUZZ_CHECK(version.Major() >= 0 && version.Major() <= 255);
  FUZZ_CHECK(version.Minor() >= 0 && version.Minor() <= 255);
  FUZZ_CHECK(version.Prerelease() >= 0 && version.Prerelease() <= 255);
  ExpectReadsBack(version, CVersion::vfDotted);
  ExpectReadsBack(version, CVersion::vfResource);
  const unsigned char revision = static_cast<unsigned char>(version.Revision());
  if (revision == 0 || std::isalpha(revision))
    ExpectReadsBack(version, CVersion::vfDisplay);

  CVersion other(4, 2, 'b', 105);
  const bool greater = version.IsGreater(other);
  FUZZ_CHECK(!(greater && other.IsGreater(version)));
  FUZZ_CHECK(!version.IsGreater(version));
  return 0;
}
