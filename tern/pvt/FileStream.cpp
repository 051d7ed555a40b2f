#include "FileHandle.h"
#include "TStream.h"

namespace Tern {

namespace {
const std::size_t cBufferSize = 4096;
}

CFileStream::CFileStream() : mFile(new CFileHandle) {}

CFileStream::~CFileStream() { Close(); }

CError CFileStream::Open(const char* osPath, UInt32 mode) {
  if (!((GetState() == ssInit) || (GetState() == ssClosed))) {
    TERN_FAIL("(GetState() == ssInit) || (GetState() == ssClosed)");
    return E_AlreadyOpen;
  }
  const UInt32 disposition = mode & fsmDispositionMask;
  const bool readOnly = (mode & smReadOnly) != 0;
  switch (disposition) {
    case fsmOpenExisting:
    case fsmTruncateExisting:
      if (mode & fsmCreateFullPath) {
        TERN_FAIL("!(mode & fsmCreateFullPath)");
        return E_BadArgument;
      }
      break;
    case fsmCreateNew:
    case fsmCreateAlways:
      if (readOnly) {
        TERN_FAIL("! IsReadOnly()");
        return E_BadArgument;
      }
      break;
    case fsmOpenOrCreate:
      break;
    default:
      return E_BadArgument;
  }
  if (mode & fsmCreateFullPath) {
    CError made = CreateParentFolders(osPath);
    if (Failed(made) && made != E_AlreadyExists) return made;
  }
  CError err =
      mFile->Open(osPath, !(mode & smWriteOnly), !readOnly, disposition);
  if (Failed(err)) return err;
  mBuffer.clear();
  mBufferPos = 0;
  mWriting = false;
  Opened(mode);
  return Ok;
}

CError CFileStream::FlushWrites() {
  if (!mWriting || mBuffer.empty()) return Ok;
  CError err = mFile->Write(mBuffer.data(), mBuffer.size());
  mBuffer.clear();
  return err;
}

// Gives back what was read ahead, so the file position is the logical one.
void CFileStream::DropReadBuffer() {
  if (mWriting) return;
  std::size_t unread = mBuffer.size() - mBufferPos;
  if (unread > 0) {
    Int pos = 0;
    if (Succeeded(mFile->Tell(pos)))
      mFile->Seek(pos - static_cast<Int>(unread));
  }
  mBuffer.clear();
  mBufferPos = 0;
}

CError CFileStream::RawPeek(const Byte*& data, std::size_t& size, bool& eof) {
  data = nullptr;
  size = 0;
  eof = false;
  if (mWriting) {
    CError err = FlushWrites();
    if (Failed(err)) return err;
    mWriting = false;
  }
  if (mBufferPos >= mBuffer.size()) {
    mBuffer.resize(cBufferSize);
    std::size_t got = 0;
    CError err = mFile->Read(mBuffer.data(), mBuffer.size(), got);
    mBuffer.resize(got);
    mBufferPos = 0;
    if (Failed(err)) return err;
    if (got == 0) {
      eof = true;
      return Ok;
    }
  }
  data = mBuffer.data() + mBufferPos;
  size = mBuffer.size() - mBufferPos;
  return Ok;
}

void CFileStream::RawSkip(std::size_t count) { mBufferPos += count; }

CError CFileStream::RawRead(Byte& b, bool& eof) {
  const Byte* data = nullptr;
  std::size_t size = 0;
  CError err = RawPeek(data, size, eof);
  if (Failed(err) || eof) return err;
  b = *data;
  ++mBufferPos;
  return Ok;
}

CError CFileStream::RawWrite(Byte b) {
  if (!mWriting) {
    DropReadBuffer();
    mWriting = true;
  }
  mBuffer.push_back(b);
  return mBuffer.size() >= cBufferSize ? FlushWrites() : Ok;
}

CError CFileStream::RawWriteBlock(const Byte* data, std::size_t size) {
  if (!mWriting) {
    DropReadBuffer();
    mWriting = true;
  }
  while (size > 0) {
    const std::size_t room =
        mBuffer.size() < cBufferSize ? cBufferSize - mBuffer.size() : 0;
    const std::size_t n = size < room ? size : room;
    mBuffer.insert(mBuffer.end(), data, data + n);
    data += n;
    size -= n;
    if (mBuffer.size() >= cBufferSize) {
      CError err = FlushWrites();
      if (Failed(err)) return err;
    }
  }
  return Ok;
}

CError CFileStream::GetPos(Int& pos) {
  CError err = mFile->Tell(pos);
  if (Failed(err)) return err;
  if (mWriting)
    pos += static_cast<Int>(mBuffer.size());
  else
    pos -= static_cast<Int>(mBuffer.size() - mBufferPos);
  return Ok;
}

CError CFileStream::SetPos(Int pos) {
  CError err = FlushWrites();
  DropReadBuffer();
  mWriting = false;
  return Failed(err) ? err : mFile->Seek(pos);
}

CError CFileStream::GetLength(Int& length) {
  CError err = FlushWrites();
  return Failed(err) ? err : mFile->Size(length);
}

CError CFileStream::SetLength(Int length) {
  CError err = FlushWrites();
  DropReadBuffer();
  mWriting = false;
  return Failed(err) ? err : mFile->Resize(length);
}

CError CFileStream::DoFlush() { return FlushWrites(); }

CError CFileStream::DoClose() {
  CError err = FlushWrites();
  mFile->Close();
  mBuffer.clear();
  mBufferPos = 0;
  mWriting = false;
  return err;
}

}  // namespace Tern
