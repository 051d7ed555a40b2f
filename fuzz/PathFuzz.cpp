// The path parser and the operations on what it made: a path set from any
// text is valid, and every operation on it keeps to its contract.
#include "FuzzSupport.h"
#include "TFileSystem.h"

using namespace Tern;

FUZZ_INITIALIZE

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  // Path text, a component, an extension, each after a NUL.
  const std::vector<std::string> pieces =
      FuzzSupport::Split(data, size, '\0', 3);
  const std::string& text = pieces[0];
  const char* component = pieces.size() > 1 ? pieces[1].c_str() : "";
  const char* extension = pieces.size() > 2 ? pieces[2].c_str() : "ext";

  CPath path;
  FUZZ_CHECK(Succeeded(path.Set(text.c_str())));
  FUZZ_CHECK(path.IsValid());
  CStr os;
  FUZZ_CHECK(Succeeded(path.OSToPathString(os)));
  // The canonical text never keeps a "/" nor an empty volume mark inside.
  FUZZ_CHECK(path.Text().Find('/') < 0);

  for (Int kind = CPath::ctVolume; kind <= CPath::ctExtra + 1; ++kind) {
    CPath part;
    if (Succeeded(path.GetComponent(kind, part))) FUZZ_CHECK(part.IsValid());
    CStr partText;
    path.GetComponentString(kind, partText);
  }
  path.DisplayText(static_cast<Int>(size % 40), &path);
  path.DisplayText(static_cast<Int>(size % 7));

  CPath appended = path;
  if (Succeeded(appended.AppendComponent(component)))
    FUZZ_CHECK(appended.IsValid());
  CPath other(component);
  CPath joined = path;
  joined.Append(other);
  FUZZ_CHECK(joined.IsValid());
  CPath renamed = path;
  renamed.SetExtension(extension);

  CPath built;
  if (Succeeded(built.SetFromComponents(text.c_str(), component)))
    FUZZ_CHECK(built.IsValid());
  return 0;
}
