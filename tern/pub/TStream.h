// Byte and character streams with the text services their users rely on:
// end-of-line translation, encodings, one character of push-back, line
// counting, indentation, a running checksum, byte scrambling, filters and
// formatted writes. Concrete streams put a file or memory underneath.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <memory>
#include <vector>

#include "TError.h"
#include "TString.h"

namespace Tern {

enum StreamMode : UInt32 {
  smText = 0x4,         // end-of-line translation on read and write
  smChecksum = 0x8,     // keep a running checksum of the plain bytes
  smCRC32 = 0x10,       // the checksum is CRC-32; clear: additive byte sum
  smScramble = 0x20,    // bytes are stored scrambled
  smCountLines = 0x40,  // count the LFs read and written
  smBigEndian = 0x80,   // UTF-16 byte order; clear: little-endian
  smWriteOnly = 0x400,  // not readable
  smReadOnly = 0x800,   // not writable
  fsmCreateFullPath = 0x40000,  // file streams: create missing parent folders
  fsmOpenExisting = 0x0000000,
  fsmCreateNew = 0x1000000,
  fsmCreateAlways = 0x2000000,
  fsmOpenOrCreate = 0x3000000,
  fsmTruncateExisting = 0x4000000,
  fsmDispositionMask = 0x7000000,
};

enum StreamState : Int { ssInit = 0, ssOpen = 1, ssClosed = 2, ssFailed = 3 };
enum EOLType : Int { eolCRLF = 0, eolCR = 1, eolLF = 2 };
enum Encoding : Int { encSystem = 0, encUTF8 = 1, encUTF16 = 2, encUTF32 = 3 };

// Sees every character read or written; may change it, or refuse it by
// returning false (the stream then fails).
class CStreamFilter {
 public:
  virtual ~CStreamFilter() = default;
  virtual bool Filter(Int& c) = 0;
};

class CStream {
 public:
  CStream() = default;
  virtual ~CStream() = default;
  CStream(const CStream&) = delete;
  CStream& operator=(const CStream&) = delete;

  // ---- State and settings ----
  UInt32 GetMode() const { return mMode; }
  StreamState GetState() const { return mState; }
  bool IsReadable() const;
  bool IsWritable() const;
  bool IsReadOnly() const { return (mMode & smReadOnly) != 0; }
  bool IsUnicodeEncoding() const { return mEncoding != encSystem; }
  bool IsChecksumming() const { return (mMode & smChecksum) != 0; }

  Int GetEOLType() const { return mEOLType; }
  void SetEOLType(Int eolType);
  Int GetEncoding() const { return mEncoding; }
  void SetEncoding(Int encoding);

  Int GetLineCount() const { return mLineCount; }
  UInt32 GetChecksum() const;

  Int GetIndentLevel() const { return mIndentLevel; }
  void IncIndent() { ++mIndentLevel; }
  void DecIndent();
  // Width of one indentation unit in spaces; 0 or less indents with TABs.
  void SetIndentWidth(Int width) { mIndentWidth = width; }

  void SetReadFilter(CStreamFilter* filter) { mReadFilter = filter; }
  void SetWriteFilter(CStreamFilter* filter) { mWriteFilter = filter; }

  // ---- Position and length (not every stream has them) ----
  virtual bool CanGetPos() const { return false; }
  virtual bool CanSetPos() const { return false; }
  virtual bool CanGetLength() const { return false; }
  virtual bool CanSetLength() const { return false; }
  virtual CError GetPos(Int& pos);
  virtual CError SetPos(Int pos);
  virtual CError GetLength(Int& length);
  virtual CError SetLength(Int length);

  // ---- Reading ----
  // One byte of an 8-bit stream; `eof` tells the end (c is then -1).
  CError ReadByte(Int& c, bool& eof);
  // One character of a Unicode stream.
  CError ReadChar(Int& c, bool& eof);
  void UnGetChar(Int c) { mUnGetChar = c; }
  // Appends up to the delimiter (not stored) or `maxLen` characters (-1: no
  // limit). False when the stream ended before the delimiter.
  bool ReadUntil(CStr& out, Int delim, Int maxLen = -1, Int* count = nullptr);
  bool ReadUntil(CWStr& out, Int delim, Int maxLen = -1, Int* count = nullptr);

  // ---- Writing ----
  CError WriteByte(Int c);
  CError WriteChar(Int c);
  CError WriteString(const char* text, Int len = -1);
  CError WriteString(const char16_t* text, Int len = -1);
  CError Printf(const char* format, ...)
#if defined(__GNUC__)
      __attribute__((format(printf, 2, 3)))
#endif
      ;
  CError VPrintf(const char* format, va_list args);
  CError WPrintf(const char16_t* format, ...);

  CError Flush() { return DoFlush(); }
  CError Close();

 protected:
  // Resets the text state for a freshly opened stream.
  void Opened(UInt32 mode);
  // Puts the stream in the failed state and gives the error back.
  CError Fail(CError error);

  // The concrete stream's raw bytes.
  virtual CError RawRead(Byte& b, bool& eof) = 0;
  virtual CError RawWrite(Byte b) = 0;
  // Many raw bytes at once; by default one by one through RawWrite.
  virtual CError RawWriteBlock(const Byte* data, std::size_t size);
  // Reading in bulk, for streams that hold their bytes in a buffer: RawPeek
  // gives the raw bytes that can be had now (filling the buffer first when
  // it is empty; none and `eof` at the end), RawSkip consumes some of them.
  virtual bool CanPeek() const { return false; }
  virtual CError RawPeek(const Byte*& data, std::size_t& size, bool& eof);
  virtual void RawSkip(std::size_t count);
  virtual CError DoFlush() { return Ok; }
  virtual CError DoClose() { return Ok; }

 private:
  CError ReadPlainByte(Int& b, bool& eof);
  CError WritePlainByte(Byte b);
  // Checksums, scrambles and writes a run of plain bytes.
  CError WritePlainBlock(const Byte* data, std::size_t size);
  // 8-bit text without a write filter, a line at a time.
  CError WriteTextBlock(const Byte* text, std::size_t size);
  // ReadUntil of an 8-bit stream without text-mode translation, filter or
  // pushed-back character, over the buffered bytes.
  bool CanReadInBulk() const;
  bool ReadBytesUntil(CStr& out, Int delim, Int maxLen, Int* count);
  CError DecodeChar(Int& c, bool& eof);
  CError EncodeChar(Int c);
  CError TranslateRead(Int& c, bool& eof, CError (CStream::*next)(Int&, bool&));
  CError PutCharacter(Int c, bool unicode);
  CError PutEncoded(Int c, bool unicode);
  void Checksum(Byte b);
  void ChecksumBlock(const Byte* data, std::size_t size);

  UInt32 mMode = 0;
  StreamState mState = ssInit;
  Int mEOLType = eolCRLF;
  Int mEncoding = encSystem;
  Int mUnGetChar = -1;
  Int mLineCount = 0;
  // CRC-32 costs a call per piece: small pieces wait here, in order, and
  // are taken into mChecksum a few thousand bytes at a time, or when the
  // checksum is read.
  void SettleChecksum() const;
  mutable UInt32 mChecksum = 0;
  mutable std::vector<Byte> mPendingCRC;
  Int mIndentLevel = 0;
  Int mIndentWidth = 0;
  bool mAtLineStart = true;
  bool mLastWasCR = false;
  CStreamFilter* mReadFilter = nullptr;
  CStreamFilter* mWriteFilter = nullptr;
};

// A stream over a growable byte buffer in memory.
class CMemStream : public CStream {
 public:
  // Opens an empty buffer with the given mode bits (disposition ignored).
  explicit CMemStream(UInt32 mode = 0);
  CMemStream(const Byte* data, Int size, UInt32 mode = 0);

  const std::vector<Byte>& Data() const { return mData; }

  bool CanGetPos() const override { return true; }
  bool CanSetPos() const override { return true; }
  bool CanGetLength() const override { return true; }
  bool CanSetLength() const override { return true; }
  CError GetPos(Int& pos) override;
  CError SetPos(Int pos) override;
  CError GetLength(Int& length) override;
  CError SetLength(Int length) override;

 protected:
  CError RawRead(Byte& b, bool& eof) override;
  CError RawWrite(Byte b) override;
  CError RawWriteBlock(const Byte* data, std::size_t size) override;
  bool CanPeek() const override { return true; }
  CError RawPeek(const Byte*& data, std::size_t& size, bool& eof) override;
  void RawSkip(std::size_t count) override;

 private:
  std::vector<Byte> mData;
  std::size_t mPos = 0;
};

// A memory stream whose bytes are 8-bit text.
class CStringStream : public CMemStream {
 public:
  explicit CStringStream(UInt32 mode = 0) : CMemStream(mode) {}
  explicit CStringStream(const char* text, UInt32 mode = 0);
  CStr GetText() const;
};

class CFileHandle;

// A stream over a file. The disposition bits of the mode choose how the file
// is opened; fsmCreateFullPath creates missing parent folders first.
class CFileStream : public CStream {
 public:
  CFileStream();
  ~CFileStream() override;

  CError Open(const char* osPath, UInt32 mode);

  bool CanGetPos() const override { return true; }
  bool CanSetPos() const override { return true; }
  bool CanGetLength() const override { return true; }
  bool CanSetLength() const override { return true; }
  CError GetPos(Int& pos) override;
  CError SetPos(Int pos) override;
  CError GetLength(Int& length) override;
  CError SetLength(Int length) override;

 protected:
  CError RawRead(Byte& b, bool& eof) override;
  CError RawWrite(Byte b) override;
  CError RawWriteBlock(const Byte* data, std::size_t size) override;
  bool CanPeek() const override { return true; }
  CError RawPeek(const Byte*& data, std::size_t& size, bool& eof) override;
  void RawSkip(std::size_t count) override;
  CError DoFlush() override;
  CError DoClose() override;

 private:
  CError FlushWrites();
  void DropReadBuffer();

  std::unique_ptr<CFileHandle> mFile;
  std::vector<Byte> mBuffer;  // read-ahead or pending writes, never both
  std::size_t mBufferPos = 0;
  bool mWriting = false;
};

}  // namespace Tern
