// Template expansion, text and items: a template with any placeholders,
// format specs and delimiters, filled from a variable list and from items of
// every kind, in 8-bit and in UTF-16 text. Expansion always ends.
#include <cstring>

#include "FuzzSupport.h"
#include "TFileSystem.h"
#include "TFormat.h"
#include "TStr.h"
#include "TVarList.h"

using namespace Tern;

FUZZ_INITIALIZE

namespace {

// Binds `name` as an item of the kind `kind` made from `value`.
template <typename Format, typename Ch>
void BindItem(Format& format, const Ch* name, const std::string& value,
              std::size_t kind) {
  const long number = std::strtol(value.c_str(), nullptr, 0);
  switch (kind % 6) {
    case 0: {
      const auto text = Str::ToWide(value.c_str());
      if constexpr (sizeof(Ch) == 1)
        format.Item(name, value.c_str());
      else
        format.Item(name, text.Chars());
      break;
    }
    case 1:
      format.Item(name, static_cast<Int32>(number));
      break;
    case 2:
      format.Item(name, static_cast<UInt32>(number));
      break;
    case 3:
      format.Item(name, std::strtod(value.c_str(), nullptr));
      break;
    case 4:
      format.Item(name, number != 0);
      break;
    default:
      format.Item(name, CPath(value.c_str()));
      break;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data,
                                      std::size_t size) {
  // Lines: the template, the delimiters (two characters, or the default),
  // then "name=value" for each of up to ten variables, each also bound as an
  // item. Ten make chains and cycles enough; more only slow the search down.
  const std::vector<std::string> lines =
      FuzzSupport::Split(data, size, '\n', 12);
  const std::string& templ = lines[0];
  const char* delims =
      lines.size() > 1 && lines[1].size() == 2 ? lines[1].c_str() : nullptr;

  CVarList& global = CVarList::Global();
  global.Clear();
  std::vector<std::pair<std::string, std::string>> vars;
  for (std::size_t i = 2; i < lines.size(); ++i) {
    const std::size_t equals = lines[i].find('=');
    std::string name = lines[i].substr(0, equals);
    std::string value =
        equals == std::string::npos ? "" : lines[i].substr(equals + 1);
    global.Set(name.c_str(), value.c_str());
    vars.emplace_back(std::move(name), std::move(value));
  }

  // The constructors expand the template against the global list first.
  // Each input takes one of the two kinds of text, odd sizes the UTF-16 one:
  // both for every input would halve the executions for little more coverage.
  CFormat plain(templ.c_str(), delims, CFormat::fmtNoGlobalExpansion);
  for (std::size_t i = 0; i < vars.size(); ++i)
    BindItem(plain, vars[i].first.c_str(), vars[i].second, i + 1);
  if (size % 2 == 0) {
    CFormat format(templ.c_str(), delims);
    for (std::size_t i = 0; i < vars.size(); ++i)
      BindItem(format, vars[i].first.c_str(), vars[i].second, i);
  } else {
    const CWStr wideTempl = Str::ToWide(templ.c_str());
    CWFormat wide(wideTempl.Chars(), delims);
    for (std::size_t i = 0; i < vars.size(); ++i) {
      const CWStr wideName = Str::ToWide(vars[i].first.c_str());
      BindItem(wide, wideName.Chars(), vars[i].second, i);
    }
  }
  global.Clear();
  return 0;
}
