#include <cctype>
#include <cstring>

#include "TStr.h"
#include "TVersion.h"

namespace Tern {

namespace {

// Reads one number; each component must lie in 0..255.
bool ReadComponent(const char*& p, Int& value) {
  if (!std::isdigit(static_cast<unsigned char>(*p))) return false;
  long tmp = 0;
  while (std::isdigit(static_cast<unsigned char>(*p)) && tmp <= 0xFFFF)
    tmp = tmp * 10 + (*p++ - '0');
  if (!((tmp >= 0) && (tmp <= 0xFF))) {
    TERN_FAIL("(tmp>=0) && (tmp<= 0xFF)");
    return false;
  }
  value = static_cast<Int>(tmp);
  return true;
}

void SkipSpaces(const char*& p) {
  while (*p == ' ' || *p == '\t') ++p;
}

bool ReadWord(const char*& p, const char* word) {
  std::size_t n = std::strlen(word);
  if (std::strncmp(p, word, n) != 0) return false;
  p += n;
  return true;
}

}  // namespace

CVersion::CVersion(Int major, Int minor, char revision, Int prerelease)
    : mValid(true),
      mMajor(major),
      mMinor(minor),
      mRevision(static_cast<unsigned char>(revision)),
      mPrerelease(prerelease) {}

CVersion::CVersion(const CVersion& version) {
  TERN_ASSERT(version.IsValid());
  *this = version;
}

CError CVersion::Parse(const char* text) {
  *this = CVersion();
  if (!text) return E_BadArgument;
  CStr part(text);
  Int semicolon = part.Find(';');
  if (semicolon >= 0) part.Truncate(semicolon);
  if (part.Length() >= 100) return E_BadSyntax;

  CVersion parsed(0, 0);
  const char* p = part.Chars();
  SkipSpaces(p);
  if (!ReadComponent(p, parsed.mMajor)) return E_BadSyntax;
  const char separator = *p;
  if (separator != '.' && separator != ',') return E_BadSyntax;
  ++p;
  if (!ReadComponent(p, parsed.mMinor)) return E_BadSyntax;

  if (*p == separator) {  // dotted or resource form: four numbers
    ++p;
    if (!ReadComponent(p, parsed.mRevision) || *p++ != separator ||
        !ReadComponent(p, parsed.mPrerelease))
      return E_BadSyntax;
  } else {  // display form
    if (std::isalpha(static_cast<unsigned char>(*p))) {
      const char* word = p;
      if (!ReadWord(word, "alpha") && !ReadWord(word, "beta"))
        parsed.mRevision = static_cast<unsigned char>(*p++);
    }
    SkipSpaces(p);
    Int number = 0;
    if (ReadWord(p, "alpha")) {
      SkipSpaces(p);
      if (!ReadComponent(p, number) || number < 1 || number > 99)
        return E_BadSyntax;
      parsed.mPrerelease = number;
    } else if (ReadWord(p, "beta")) {
      SkipSpaces(p);
      if (!ReadComponent(p, number) || number > 155) return E_BadSyntax;
      parsed.mPrerelease = 100 + number;
    }
  }
  SkipSpaces(p);
  if (*p != 0) return E_BadSyntax;
  *this = parsed;
  return Ok;
}

void CVersion::Format(CStr& out, Int form) const {
  TERN_ASSERT(IsValid());
  switch (form) {
    case vfResource:
      out.Format("%d,%d,%d,%d", mMajor, mMinor, mRevision, mPrerelease);
      return;
    case vfDotted:
      out.Format("%d.%d.%d.%d", mMajor, mMinor, mRevision, mPrerelease);
      return;
    default:
      out.Format("%d.%02d", mMajor, mMinor);
      if (mRevision != 0) out.Append(static_cast<char>(mRevision));
      if (mPrerelease >= 1 && mPrerelease <= 99)
        out.AppendFormat(" alpha %d", mPrerelease);
      else if (mPrerelease >= 100)
        out.AppendFormat(" beta %d", mPrerelease - 100);
      return;
  }
}

CStr CVersion::Text(Int form) const {
  CStr text;
  Format(text, form);
  return text;
}

bool CVersion::IsGreater(const CVersion& other) const {
  TERN_ASSERT(IsValid());
  if (mMajor != other.mMajor) return mMajor > other.mMajor;
  if (mMinor != other.mMinor) return mMinor > other.mMinor;
  if (mRevision != other.mRevision)
    return static_cast<unsigned char>(mRevision) >
           static_cast<unsigned char>(other.mRevision);
  if (other.mPrerelease == 0) return false;
  if (mPrerelease == 0) return true;
  return mPrerelease > other.mPrerelease;
}

}  // namespace Tern
