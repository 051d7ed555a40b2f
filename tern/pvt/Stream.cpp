#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "TStr.h"
#include "TStream.h"

namespace Tern {

namespace {

Byte RotateLeft4(Byte b) { return static_cast<Byte>((b << 4) | (b >> 4)); }
Byte Scramble(Byte b) { return RotateLeft4(static_cast<Byte>(b + 0x3F)); }
Byte Unscramble(Byte s) { return static_cast<Byte>(RotateLeft4(s) - 0x3F); }

const char cFormatBufferAssertion[] =
    "Str::VFormat(buf,format,args) < "
    "((static_cast<Int>(sizeof(buf)/sizeof(buf[0]))) - 1)";
const char cWideFormatBufferAssertion[] =
    "WStr::VFormat(buf,format,args) < "
    "((static_cast<Int>(sizeof(buf)/sizeof(buf[0]))) - 1)";

}  // namespace

// ---- State ------------------------------------------------------------------

bool CStream::IsReadable() const {
  return (mMode & smWriteOnly) == 0 && mState != ssFailed;
}

bool CStream::IsWritable() const {
  return (mMode & smReadOnly) == 0 && mState != ssFailed;
}

void CStream::SetEOLType(Int eolType) {
  if (eolType < eolCRLF || eolType > eolLF) {
    TERN_FAIL("bad EOL type");
    return;
  }
  mEOLType = eolType;
}

void CStream::SetEncoding(Int encoding) {
  if (encoding < encSystem || encoding > encUTF32) {
    TERN_FAIL("bad encoding");
    return;
  }
  mEncoding = encoding;
}

UInt32 CStream::GetChecksum() const {
  TERN_ASSERT(IsChecksumming());
  SettleChecksum();
  return mChecksum;
}

void CStream::DecIndent() {
  TERN_ASSERT(mIndentLevel > 0);
  if (mIndentLevel > 0) --mIndentLevel;
}

void CStream::Opened(UInt32 mode) {
  mMode = mode;
  mState = ssOpen;
  mUnGetChar = -1;
  mLineCount = 0;
  mChecksum = 0;
  mPendingCRC.clear();
  mAtLineStart = true;
  mLastWasCR = false;
}

CError CStream::Fail(CError error) {
  mState = ssFailed;
  return error;
}

CError CStream::Close() {
  if (mState != ssOpen && mState != ssFailed) return Ok;
  CError flushed = mState == ssOpen ? DoFlush() : Ok;
  CError closed = DoClose();
  mState = ssClosed;
  return Failed(flushed) ? flushed : closed;
}

CError CStream::GetPos(Int&) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

CError CStream::SetPos(Int) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

CError CStream::GetLength(Int&) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

CError CStream::SetLength(Int) {
  TERN_FAIL("not implemented for this stream");
  return Failure;
}

// ---- Raw byte path: checksum and scrambling --------------------------------

void CStream::Checksum(Byte b) {
  if (!(mMode & smChecksum)) return;
  if (mMode & smCRC32)
    ChecksumBlock(&b, 1);
  else
    mChecksum += b;
}

void CStream::SettleChecksum() const {
  if (mPendingCRC.empty()) return;
  mChecksum = static_cast<UInt32>(crc32(mChecksum, mPendingCRC.data(),
                                        static_cast<uInt>(mPendingCRC.size())));
  mPendingCRC.clear();
}

void CStream::ChecksumBlock(const Byte* data, std::size_t size) {
  if (!(mMode & smChecksum) || size == 0) return;
  if (mMode & smCRC32) {
    const std::size_t cBatch = 4096;
    if (mPendingCRC.size() + size > cBatch) SettleChecksum();
    if (size >= cBatch) {
      mChecksum =
          static_cast<UInt32>(crc32(mChecksum, data, static_cast<uInt>(size)));
    } else {
      if (mPendingCRC.capacity() < cBatch) mPendingCRC.reserve(cBatch);
      mPendingCRC.insert(mPendingCRC.end(), data, data + size);
    }
  } else {
    UInt32 sum = mChecksum;
    for (std::size_t i = 0; i < size; ++i) sum += data[i];
    mChecksum = sum;
  }
}

CError CStream::RawWriteBlock(const Byte* data, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    CError err = RawWrite(data[i]);
    if (Failed(err)) return err;
  }
  return Ok;
}

CError CStream::RawPeek(const Byte*& data, std::size_t& size, bool& eof) {
  TERN_FAIL("not implemented for this stream");
  data = nullptr;
  size = 0;
  eof = true;
  return Failure;
}

void CStream::RawSkip(std::size_t) {
  TERN_FAIL("not implemented for this stream");
}

// The same bytes, checksum and failure as WritePlainByte for each byte.
CError CStream::WritePlainBlock(const Byte* data, std::size_t size) {
  if (size == 0) return Ok;
  ChecksumBlock(data, size);
  if (!(mMode & smScramble)) {
    CError err = RawWriteBlock(data, size);
    return Failed(err) ? Fail(err) : Ok;
  }
  Byte scrambled[1024];
  while (size > 0) {
    const std::size_t n = size < sizeof scrambled ? size : sizeof scrambled;
    for (std::size_t i = 0; i < n; ++i) scrambled[i] = Scramble(data[i]);
    CError err = RawWriteBlock(scrambled, n);
    if (Failed(err)) return Fail(err);
    data += n;
    size -= n;
  }
  return Ok;
}

CError CStream::ReadPlainByte(Int& c, bool& eof) {
  Byte b = 0;
  CError err = RawRead(b, eof);
  if (Failed(err)) return Fail(err);
  if (eof) {
    c = -1;
    return Ok;
  }
  if (mMode & smScramble) b = Unscramble(b);
  Checksum(b);
  c = b;
  return Ok;
}

CError CStream::WritePlainByte(Byte b) {
  Checksum(b);
  if (mMode & smScramble) b = Scramble(b);
  CError err = RawWrite(b);
  return Failed(err) ? Fail(err) : Ok;
}

// ---- Reading ---------------------------------------------------------------

CError CStream::DecodeChar(Int& c, bool& eof) {
  Int b0 = 0, b1 = 0, b2 = 0;
  CError err = ReadPlainByte(b0, eof);
  if (Failed(err) || eof) return err;
  switch (mEncoding) {
    case encSystem: {
      char text[2] = {static_cast<char>(b0), 0};
      CWStr wide = Str::ToWide(text);
      c = wide.IsEmpty() ? b0 : wide[0];
      return Ok;
    }
    case encUTF8:
      if (b0 < 0x80) {
        c = b0;
      } else if ((b0 & 0xE0) == 0xC0) {
        err = ReadPlainByte(b1, eof);
        c = ((b0 & 0x1F) << 6) | (b1 & 0x3F);
      } else {  // continuation bytes are taken as they come
        err = ReadPlainByte(b1, eof);
        if (Succeeded(err) && !eof) err = ReadPlainByte(b2, eof);
        c = ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F);
      }
      return err;
    case encUTF16:
      err = ReadPlainByte(b1, eof);
      c = (mMode & smBigEndian) ? (b0 << 8) | b1 : (b1 << 8) | b0;
      return err;
    default:
      TERN_FAIL("unexpected encUTF32");
      return Fail(Failure);
  }
}

// Text mode turns CR LF, CR and LF into one LF; the read filter and the line
// count see the translated character.
CError CStream::TranslateRead(Int& c, bool& eof,
                              CError (CStream::*next)(Int&, bool&)) {
  for (;;) {
    CError err = (this->*next)(c, eof);
    if (Failed(err) || eof) return err;
    if (!(mMode & smText)) break;
    if (c == '\n' && mLastWasCR) {
      mLastWasCR = false;
      continue;
    }
    mLastWasCR = c == '\r';
    if (c == '\r') c = '\n';
    break;
  }
  if (mReadFilter && !mReadFilter->Filter(c)) return Fail(Failure);
  if (c == '\n' && (mMode & smCountLines)) ++mLineCount;
  return Ok;
}

CError CStream::ReadByte(Int& c, bool& eof) {
  c = -1;
  eof = false;
  if (!IsReadable()) {
    TERN_FAIL("IsReadable()");
    return Failure;
  }
  TERN_ASSERT(!IsUnicodeEncoding());
  if (mUnGetChar >= 0) {
    TERN_ASSERT(mUnGetChar <= 0xFF);
    c = mUnGetChar;
    mUnGetChar = -1;
    return Ok;
  }
  return TranslateRead(c, eof, &CStream::ReadPlainByte);
}

CError CStream::ReadChar(Int& c, bool& eof) {
  c = -1;
  eof = false;
  if (!IsReadable()) {
    TERN_FAIL("IsReadable()");
    return Failure;
  }
  if (mUnGetChar >= 0) {
    TERN_ASSERT(mUnGetChar <= 0xFFFF);
    c = mUnGetChar;
    mUnGetChar = -1;
    return Ok;
  }
  return TranslateRead(c, eof, &CStream::DecodeChar);
}

namespace {

template <typename StrT>
bool ReadUntilInto(CStream& stream, StrT& out, Int delim, Int maxLen,
                   Int* count, bool wide) {
  TERN_ASSERT(maxLen == -1 || maxLen > 0);
  Int n = 0;
  bool found = false;
  while (maxLen == -1 || n < maxLen) {
    Int c = -1;
    bool eof = false;
    CError err = wide ? stream.ReadChar(c, eof) : stream.ReadByte(c, eof);
    if (Failed(err) || eof) break;
    if (c == delim) {
      found = true;
      break;
    }
    out.Append(
        static_cast<typename std::remove_reference<decltype(out[0])>::type>(c));
    ++n;
  }
  if (count) *count = n;
  return found || (maxLen != -1 && n >= maxLen);
}

}  // namespace

bool CStream::CanReadInBulk() const {
  return CanPeek() && IsReadable() && !IsUnicodeEncoding() && mUnGetChar < 0 &&
         !mReadFilter && !(mMode & smText);
}

// What ReadByte would give byte by byte: the plain bytes are checksummed up to
// and including the delimiter, and LFs are counted, but a buffer at a time.
bool CStream::ReadBytesUntil(CStr& out, Int delim, Int maxLen, Int* count) {
  const bool searchable = delim >= 0 && delim <= 0xFF;
  Byte plain[4096];
  Int n = 0;
  bool found = false;
  while (!found && (maxLen == -1 || n < maxLen)) {
    const Byte* raw = nullptr;
    std::size_t size = 0;
    bool eof = false;
    CError err = RawPeek(raw, size, eof);
    if (Failed(err)) {
      Fail(err);
      break;
    }
    if (eof || size == 0) break;
    std::size_t take = size < sizeof plain ? size : sizeof plain;
    if (maxLen != -1 && take > static_cast<std::size_t>(maxLen - n))
      take = static_cast<std::size_t>(maxLen - n);
    const Byte* bytes = raw;
    std::size_t kept = take, used = take;
    if (mMode & smScramble) {
      // Unscrambled only as far as the delimiter.
      for (std::size_t i = 0; i < take; ++i) {
        plain[i] = Unscramble(raw[i]);
        if (searchable && plain[i] == delim) {
          kept = i;
          used = i + 1;
          found = true;
          break;
        }
      }
      bytes = plain;
    } else if (searchable) {
      if (const void* at = std::memchr(bytes, delim, take)) {
        kept = static_cast<std::size_t>(static_cast<const Byte*>(at) - bytes);
        used = kept + 1;
        found = true;
      }
    }
    ChecksumBlock(bytes, used);
    if (mMode & smCountLines)
      for (std::size_t i = 0; i < used; ++i)
        if (bytes[i] == '\n') ++mLineCount;
    out.Append(reinterpret_cast<const char*>(bytes), static_cast<Int>(kept));
    n += static_cast<Int>(kept);
    RawSkip(used);
  }
  if (count) *count = n;
  return found || (maxLen != -1 && n >= maxLen);
}

bool CStream::ReadUntil(CStr& out, Int delim, Int maxLen, Int* count) {
  TERN_ASSERT(delim <= 0xFF);
  if (CanReadInBulk() && (maxLen == -1 || maxLen > 0))
    return ReadBytesUntil(out, delim, maxLen, count);
  return ReadUntilInto(*this, out, delim, maxLen, count, false);
}

bool CStream::ReadUntil(CWStr& out, Int delim, Int maxLen, Int* count) {
  return ReadUntilInto(*this, out, delim, maxLen, count, true);
}

// ---- Writing ---------------------------------------------------------------

CError CStream::EncodeChar(Int c) {
  CError err = Ok;
  switch (mEncoding) {
    case encSystem: {
      char16_t wide[2] = {static_cast<char16_t>(c), 0};
      CStr narrow = WStr::ToNarrow(wide);
      return WritePlainByte(
          static_cast<Byte>(narrow.IsEmpty() ? c : narrow[0]));
    }
    case encUTF8:
      if (c <= 0x7F) return WritePlainByte(static_cast<Byte>(c));
      if (c <= 0x7FF) {
        err = WritePlainByte(static_cast<Byte>(0xC0 | (c >> 6)));
        return Failed(err)
                   ? err
                   : WritePlainByte(static_cast<Byte>(0x80 | (c & 0x3F)));
      }
      err = WritePlainByte(static_cast<Byte>(0xE0 | ((c >> 12) & 0x0F)));
      if (Succeeded(err))
        err = WritePlainByte(static_cast<Byte>(0x80 | ((c >> 6) & 0x3F)));
      if (Succeeded(err))
        err = WritePlainByte(static_cast<Byte>(0x80 | (c & 0x3F)));
      return err;
    case encUTF16: {
      Byte hi = static_cast<Byte>((c >> 8) & 0xFF),
           lo = static_cast<Byte>(c & 0xFF);
      bool big = (mMode & smBigEndian) != 0;
      err = WritePlainByte(big ? hi : lo);
      return Failed(err) ? err : WritePlainByte(big ? lo : hi);
    }
    default:
      TERN_FAIL("unexpected encUTF32");
      return Fail(Failure);
  }
}

CError CStream::PutEncoded(Int c, bool unicode) {
  return unicode ? EncodeChar(c) : WritePlainByte(static_cast<Byte>(c));
}

CError CStream::PutCharacter(Int c, bool unicode) {
  if (mWriteFilter && !mWriteFilter->Filter(c)) return Fail(Failure);
  CError err = Ok;
  if (mAtLineStart && mIndentLevel >= 1) {
    for (Int level = 0; level < mIndentLevel && Succeeded(err); ++level) {
      if (mIndentWidth <= 0)
        err = PutEncoded('\t', unicode);
      else
        for (Int i = 0; i < mIndentWidth && Succeeded(err); ++i)
          err = PutEncoded(' ', unicode);
    }
    if (Failed(err)) return err;
  }
  if (c != '\n') {
    mAtLineStart = false;
    return PutEncoded(c, unicode);
  }
  mAtLineStart = true;
  if (mMode & smCountLines) ++mLineCount;
  if (!(mMode & smText)) return PutEncoded('\n', unicode);
  if (mEOLType != eolLF) err = PutEncoded('\r', unicode);
  if (Succeeded(err) && mEOLType != eolCR) err = PutEncoded('\n', unicode);
  return err;
}

CError CStream::WriteByte(Int c) {
  if (!IsWritable()) {
    TERN_FAIL("IsWritable()");
    return Failure;
  }
  TERN_ASSERT(!IsUnicodeEncoding());
  return PutCharacter(c & 0xFF, false);
}

CError CStream::WriteChar(Int c) {
  if (!IsWritable()) {
    TERN_FAIL("IsWritable()");
    return Failure;
  }
  return PutCharacter(c, true);
}

namespace {

// Bytes gathered for the raw byte path, handed on a buffer at a time.
class CStage {
 public:
  explicit CStage(CStream& stream,
                  CError (CStream::*write)(const Byte*, std::size_t))
      : mStream(stream), mWrite(write) {}

  CError Add(const Byte* data, std::size_t size) {
    while (size > 0) {
      if (mUsed == sizeof mBytes) {
        CError err = Flush();
        if (Failed(err)) return err;
      }
      std::size_t n = sizeof mBytes - mUsed;
      if (n > size) n = size;
      std::memcpy(mBytes + mUsed, data, n);
      mUsed += n;
      data += n;
      size -= n;
    }
    return Ok;
  }

  CError AddRepeated(Byte b, std::size_t count) {
    while (count > 0) {
      if (mUsed == sizeof mBytes) {
        CError err = Flush();
        if (Failed(err)) return err;
      }
      std::size_t n = sizeof mBytes - mUsed;
      if (n > count) n = count;
      std::memset(mBytes + mUsed, b, n);
      mUsed += n;
      count -= n;
    }
    return Ok;
  }

  CError Flush() {
    const std::size_t used = mUsed;
    mUsed = 0;
    return used > 0 ? (mStream.*mWrite)(mBytes, used) : Ok;
  }

 private:
  CStream& mStream;
  CError (CStream::*mWrite)(const Byte*, std::size_t);
  Byte mBytes[4096];
  std::size_t mUsed = 0;
};

}  // namespace

// PutCharacter's rules for each byte, applied to the runs between LFs; the
// bytes are gathered and go through the checksum, the scrambling and the
// concrete stream a few thousand at a time.
CError CStream::WriteTextBlock(const Byte* text, std::size_t size) {
  static const Byte cEOL[] = {'\r', '\n'};
  CStage stage(*this, &CStream::WritePlainBlock);
  const Byte* p = text;
  const Byte* const end = text + size;
  CError err = Ok;
  while (p < end && Succeeded(err)) {
    if (mAtLineStart && mIndentLevel >= 1) {
      for (Int level = 0; level < mIndentLevel && Succeeded(err); ++level)
        err = mIndentWidth <= 0
                  ? stage.AddRepeated('\t', 1)
                  : stage.AddRepeated(' ',
                                      static_cast<std::size_t>(mIndentWidth));
      if (Failed(err)) break;
    }
    const void* lf = std::memchr(p, '\n', static_cast<std::size_t>(end - p));
    const Byte* runEnd = lf ? static_cast<const Byte*>(lf) : end;
    if (runEnd > p) {
      mAtLineStart = false;
      err = stage.Add(p, static_cast<std::size_t>(runEnd - p));
      p = runEnd;
      continue;
    }
    mAtLineStart = true;
    if (mMode & smCountLines) ++mLineCount;
    if (!(mMode & smText))
      err = stage.Add(cEOL + 1, 1);
    else if (mEOLType == eolCRLF)
      err = stage.Add(cEOL, 2);
    else
      err = stage.Add(mEOLType == eolCR ? cEOL : cEOL + 1, 1);
    ++p;
  }
  return Failed(err) ? err : stage.Flush();
}

CError CStream::WriteString(const char* text, Int len) {
  if (len < 0) len = Str::Length(text);
  if (IsUnicodeEncoding()) {
    CWStr wide = Str::ToWide(CStr(text, len).Chars());
    return WriteString(wide.Chars(), wide.Length());
  }
  if (!mWriteFilter && IsWritable() && len > 0)
    return WriteTextBlock(reinterpret_cast<const Byte*>(text),
                          static_cast<std::size_t>(len));
  CError err = Ok;
  for (Int i = 0; i < len && Succeeded(err); ++i)
    err = WriteByte(static_cast<unsigned char>(text[i]));
  return err;
}

CError CStream::WriteString(const char16_t* text, Int len) {
  if (len < 0) len = WStr::Length(text);
  if (!IsUnicodeEncoding()) {
    CStr narrow = WStr::ToNarrow(CWStr(text, len).Chars());
    return WriteString(narrow.Chars(), narrow.Length());
  }
  CError err = Ok;
  for (Int i = 0; i < len && Succeeded(err); ++i) err = WriteChar(text[i]);
  return err;
}

CError CStream::VPrintf(const char* format, va_list args) {
  char buf[2000];
  Int n = Str::VFormat(buf, format, args);
  if (n < 0) return Failure;
  if (n >= static_cast<Int>(sizeof(buf) / sizeof(buf[0])) - 1) {
    TERN_FAIL(cFormatBufferAssertion);
    n = static_cast<Int>(sizeof(buf)) - 1;
  }
  return WriteString(buf, n);
}

CError CStream::Printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  CError err = VPrintf(format, args);
  va_end(args);
  return err;
}

CError CStream::WPrintf(const char16_t* format, ...) {
  char16_t buf[2000];
  va_list args, retryArgs;
  va_start(args, format);
  va_copy(retryArgs, args);
  Int n = WStr::VFormat(buf, format, args);
  va_end(args);
  // Wide formatting leaves nothing in a buffer that is too small, so the
  // whole text is formatted apart and what fits the buffer is written.
  CWStr whole;
  if (n < 0) whole.VFormat(format, retryArgs);
  va_end(retryArgs);
  if (n >= 0) return WriteString(buf, n);
  TERN_FAIL(cWideFormatBufferAssertion);
  const Int fits = CountOf(buf) - 1;
  return WriteString(whole.Chars(),
                     whole.Length() < fits ? whole.Length() : fits);
}

// ---- Memory streams --------------------------------------------------------

CMemStream::CMemStream(UInt32 mode) { Opened(mode & ~fsmDispositionMask); }

CMemStream::CMemStream(const Byte* data, Int size, UInt32 mode)
    : mData(data, data + size) {
  Opened(mode & ~fsmDispositionMask);
}

CError CMemStream::RawRead(Byte& b, bool& eof) {
  eof = mPos >= mData.size();
  if (!eof) b = mData[mPos++];
  return Ok;
}

CError CMemStream::RawWrite(Byte b) {
  if (mPos < mData.size())
    mData[mPos] = b;
  else
    mData.push_back(b);
  ++mPos;
  return Ok;
}

CError CMemStream::RawWriteBlock(const Byte* data, std::size_t size) {
  const std::size_t overwrite =
      mPos < mData.size() ? std::min(size, mData.size() - mPos) : 0;
  if (overwrite > 0) std::memcpy(mData.data() + mPos, data, overwrite);
  mData.insert(mData.end(), data + overwrite, data + size);
  mPos += size;
  return Ok;
}

CError CMemStream::RawPeek(const Byte*& data, std::size_t& size, bool& eof) {
  size = mPos < mData.size() ? mData.size() - mPos : 0;
  data = size > 0 ? mData.data() + mPos : nullptr;
  eof = size == 0;
  return Ok;
}

void CMemStream::RawSkip(std::size_t count) { mPos += count; }

CError CMemStream::GetPos(Int& pos) {
  pos = static_cast<Int>(mPos);
  return Ok;
}

CError CMemStream::SetPos(Int pos) {
  if (pos < 0 || static_cast<std::size_t>(pos) > mData.size())
    return E_BadArgument;
  mPos = static_cast<std::size_t>(pos);
  return Ok;
}

CError CMemStream::GetLength(Int& length) {
  length = static_cast<Int>(mData.size());
  return Ok;
}

CError CMemStream::SetLength(Int length) {
  if (length < 0) return E_BadArgument;
  mData.resize(static_cast<std::size_t>(length));
  if (mPos > mData.size()) mPos = mData.size();
  return Ok;
}

CStringStream::CStringStream(const char* text, UInt32 mode)
    : CMemStream(reinterpret_cast<const Byte*>(text ? text : ""),
                 Str::Length(text), mode) {}

CStr CStringStream::GetText() const {
  return CStr(reinterpret_cast<const char*>(Data().data()),
              static_cast<Int>(Data().size()));
}

}  // namespace Tern
