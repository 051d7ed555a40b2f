#include <atomic>

#include "Platform.h"
#include "TErrorHandler.h"
#include "TFileSystem.h"
#include "TStr.h"
#include "TStream.h"

namespace Tern {

namespace {

// The position of the "]" that ends the volume, or -1.
Int VolumeEnd(const CStr& text) { return text.Find(']'); }

// Reports through the error handler with this file as the source, as the
// library's path code does for a component that is a full path.
void ReportFullPathComponent(const char* component, const CStr& pathText) {
  CStr message;
  message.Format(
      "Attempt to add a component that is a full path.\ncomponent = '%s', "
      "pathStr = '%s'",
      component, pathText.Chars());
  CStr out;
  CErrorHandler::Current().ReportAt(message.Chars(), "pvt\\FileSystem",
                                    __LINE__, out);
}

}  // namespace

// ---- CPath -----------------------------------------------------------------

CPath::CPath(const char* pathStr) { Set(pathStr); }

bool CPath::IsValid() const {
  return !mText.IsEmpty() && mText[0] == '[' && mDef != nullptr;
}

bool CPath::CheckValid() const {
  TERN_ASSERT(IsValid());
  return IsValid();
}

bool CPath::IsFullPath() const { return IsValid() && VolumeEnd(mText) > 1; }

CStr CPath::ExtraPart() const {
  Int end = VolumeEnd(mText);
  if (end < 0) {
    TERN_FAIL("missing extra part");
    return mText;
  }
  return mText.Mid(end + 1);
}

CStr CPath::VolumePart() const {
  Int end = VolumeEnd(mText);
  return end < 0 ? CStr() : mText.Mid(1, end - 1);
}

CError CPath::Set(const char* pathStr) {
  TERN_ASSERT(pathStr);
  if (!pathStr) return E_BadArgument;
  const CFSPathDefinition* def =
      mDef ? mDef : &CLocalFSPathDefinition::Instance();
  return def->SetFromOSString(*this, pathStr);
}

CError CPath::SetFromComponents(const char* volume, const char* components) {
  TERN_ASSERT(components);
  if (!components) return E_BadArgument;
  if (!mDef) mDef = &CLocalFSPathDefinition::Instance();
  const char delim = mDef->GetDirDelim();
  if (!((mDef->GetDirDelim() == '/') || (Str::Find(components, delim) == 0))) {
    TERN_FAIL(
        "(mDef->GetDirDelim() == '/') || "
        "(Str::Find(components,mDef->GetDirDelim()) == 0)");
    return E_BadArgument;
  }
  mText = "[";
  mText += volume ? volume : "";
  mText += ']';
  CStr all(components);
  Int start = 0;
  while (start <= all.Length()) {
    Int slash = all.Find('/', start);
    if (slash < 0) slash = all.Length();
    if (slash > start) {
      CError err = AppendComponent(all.Mid(start, slash - start).Chars());
      if (Failed(err)) return err;
    }
    start = slash + 1;
  }
  return Ok;
}

CError CPath::Append(const CPath& path) {
  if (!CheckValid() || !path.CheckValid()) return E_BadArgument;
  CStr pathStr = path.VolumePart();
  if (!(pathStr.Length() < 2)) {
    TERN_FAIL("pathStr.Length() < 2");
    return E_BadArgument;
  }
  const char delim = mDef->GetDirDelim();
  CStr extra = path.ExtraPart();
  Int start = 0;
  while (start <= extra.Length()) {
    Int end = extra.Find(delim, start);
    if (end < 0) end = extra.Length();
    if (end > start) {  // doubled delimiters leave empty pieces: skipped
      CError err = AppendComponent(extra.Mid(start, end - start).Chars());
      if (Failed(err)) return err;
    }
    start = end + 1;
  }
  return Ok;
}

CError CPath::AppendComponent(const char* component) {
  TERN_ASSERT(component);
  if (!component || !CheckValid()) return E_BadArgument;
  CStr volume;
  if (Str::Length(component) > 0 && mDef->ParseVolume(component, volume) > 1) {
    ReportFullPathComponent(component, mText);
    return E_BadArgument;
  }
  const char delim = mDef->GetDirDelim();
  if (Str::Find(component, delim)) return E_BadArgument;
  if (mText[mText.Length() - 1] != delim && mText[mText.Length() - 1] != ']')
    mText += delim;
  mText += component;
  return Ok;
}

CError CPath::GetComponent(Int kind, CPath& result) const {
  if (!CheckValid()) return E_BadArgument;
  const char delim = mDef->GetDirDelim();
  const Int volumeEnd = VolumeEnd(mText);
  const CStr extra = ExtraPart();
  const Int lastDelim = [&] {
    for (Int i = extra.Length() - 1; i >= 0; --i)
      if (extra[i] == delim) return i;
    return Int(-1);
  }();
  const CStr file = extra.Mid(lastDelim + 1);
  const Int dot = [&] {
    for (Int i = file.Length() - 1; i >= 0; --i)
      if (file[i] == mDef->GetExtDelim()) return i;
    return Int(-1);
  }();

  CPath out;
  out.mDef = mDef;
  switch (kind) {
    case ctVolume:
      out.mText = mText.Mid(0, volumeEnd + 1);
      break;
    case ctDir:
      if (extra.IsEmpty()) return E_BadArgument;
      out.mText = mText.Mid(0, volumeEnd + 1);
      out.mText += extra.Mid(0, lastDelim < 0 ? 0 : lastDelim);
      break;
    case ctFile:
    case ctName:
    case ctExtension:
      if (file.IsEmpty()) return E_BadArgument;
      out.mText = "[]";
      if (kind == ctFile) out.mText += file;
      if (kind == ctName) out.mText += dot < 0 ? file : CStr(file.Mid(0, dot));
      if (kind == ctExtension)
        out.mText += dot < 0 ? CStr() : file.Mid(dot + 1);
      break;
    case ctDirName: {
      CPath dir;
      CError err = GetComponent(ctDir, dir);
      if (Failed(err)) return err;
      return dir.GetComponent(ctFile, result);
    }
    case ctExtra:
      out.mText = "[]";
      out.mText += extra;
      break;
    default:
      return E_BadArgument;
  }
  result = out;
  return Ok;
}

CError CPath::GetComponentString(Int kind, CStr& result) const {
  CPath part;
  CError err = GetComponent(kind, part);
  if (Failed(err)) return err;
  if (kind == ctVolume) {
    result = part.VolumePart();
    return Ok;
  }
  if (VolumeEnd(part.mText) < 0) {
    TERN_FAIL("can't get component as a string");
    return Failure;
  }
  result = part.ExtraPart();
  return Ok;
}

CError CPath::SetExtension(const char* extension) {
  if (!CheckValid()) return E_BadArgument;
  const char extDelim = mDef->GetExtDelim();
  if (!((Str::Length(extension) > 0) && (extension[0] != extDelim))) {
    TERN_FAIL("(Str::Length(extension) > 0) && (extension[0] != extDelim)");
    return E_BadArgument;
  }
  CPath stem, dir;
  CError err = GetComponent(ctName, stem);
  if (Failed(err)) return err;
  CStr name = stem.ExtraPart();
  name += extDelim;
  name += extension;
  if (Failed(GetComponent(ctDir, dir))) return E_BadArgument;
  *this = dir;
  return AppendComponent(name.Chars());
}

CStr CPath::DisplayText(Int maxLen, const CPath* reference) const {
  if (!CheckValid()) return CStr();
  CStr text = ExtraPart();
  CPath ownDir, referenceDir;
  if (reference && Succeeded(GetComponent(ctDir, ownDir)) &&
      Succeeded(reference->GetComponent(ctDir, referenceDir)) &&
      ownDir == referenceDir)
    GetComponentString(ctFile, text);
  const char delim = mDef->GetDirDelim();
  while (text.Length() > maxLen) {
    Int cut = text.Find(delim);
    if (cut < 0) break;
    text.Remove(0, cut + 1);
  }
  if (text.Length() > maxLen) {
    text.Truncate(maxLen - 4 > 0 ? maxLen - 4 : 0);
    text += " ...";
  }
  return text;
}

CError CPath::OSToPathString(CStr& out) const {
  if (!IsValid()) return Failure;
  return mDef->MakeOSString(*this, out);
}

CStr CPath::OSToPathString() const {
  CStr out;
  OSToPathString(out);
  return out;
}

// ---- The local path definition --------------------------------------------

const CLocalFSPathDefinition& CLocalFSPathDefinition::Instance() {
  static const CLocalFSPathDefinition instance;
  return instance;
}

Int CLocalFSPathDefinition::ParseVolume(const char* pathPart,
                                        CStr& volume) const {
  TERN_ASSERT(Str::Length(pathPart) > 0);
  if (Str::Length(pathPart) == 0) return -1;
  TERN_ASSERT(pathPart[0] != '[');
  const CStr text(pathPart);
  volume.Clear();
  if (const Int colon = text.Find(':'); colon >= 0) {
    if (colon != 1) return -1;  // only a drive letter stands before it
    Int slash = text.Find('\\', colon);
    volume = slash < 0 ? text : CStr(text.Mid(0, slash + 1));
  } else if (const Int unc = text.Find("\\\\"); unc >= 0) {
    Int serverEnd = text.Find('\\', unc + 2);
    if (serverEnd < 0) return -1;
    Int shareEnd = text.Find('\\', serverEnd + 1);
    if (shareEnd < 0) return -1;
    volume = text.Mid(0, shareEnd);
  } else if (text[0] == '\\') {
    volume = "\\";
  }
  return volume.IsEmpty() ? -1 : volume.Length();
}

CError CLocalFSPathDefinition::MakeOSString(const CPath& path,
                                            CStr& out) const {
  if (!path.IsValid()) return Failure;
  out = path.VolumePart();
  CStr extra = path.ExtraPart();
  // A share ("\\server\share") ends without the delimiter a drive has.
  if (Str::StartsWith(out.Chars(), "\\\\") && !extra.IsEmpty()) out += '\\';
  out += extra;
  return Ok;
}

CError CLocalFSPathDefinition::SetFromOSString(CPath& path,
                                               const char* pathStr) const {
  path.mDef = this;
  path.mText = "[]";
  const Int length = Str::Length(pathStr);
  CStr text;
  char* chars = text.Lock(length);
  for (Int i = 0; i < length; ++i)
    chars[i] = pathStr[i] == '/' ? '\\' : pathStr[i];
  text.Unlock(length);
  CStr volume;
  Int volumeLen = text.IsEmpty() ? -1 : ParseVolume(text.Chars(), volume);
  // The canonical form has no delimiter right after the volume nor at the end.
  Int start = volumeLen > 0 ? volumeLen : 0;
  if (volumeLen > 0)
    while (start < length && chars[start] == '\\') ++start;
  Int end = length;
  while (end - start > 1 && chars[end - 1] == '\\') --end;
  path.mText.Reserve(volume.Length() + 2 + (end - start));
  path.mText = "[";
  path.mText += volume;
  path.mText += ']';
  path.mText.Append(text.Chars() + start, end - start);
  return Ok;
}

// ---- CFileSystem's own algorithms ------------------------------------------

CError CFileSystem::GetTempName(const CPath& dir, const char* prefix,
                                CPath& result) {
  TERN_ASSERT(prefix);
  if (!prefix) return E_BadArgument;
  if (!dir.IsValid()) {
    TERN_FAIL("dir.IsValid()");
    return E_BadArgument;
  }
  for (;;) {
    CPath candidate;
    CError err = NextTempName(dir, prefix, candidate);
    if (Failed(err)) return err;
    if (Failed(GetItemType(candidate))) {  // nothing there: take it
      result = candidate;
      return Ok;
    }
  }
}

CError CFileSystem::NextTempName(const CPath& dir, const char* prefix,
                                 CPath& result) {
  static std::atomic<unsigned long long> counter{Platform::TickCount()};
  CStr name;
  name.Format("%s%020llX", prefix, counter++);
  result = dir;
  return result.AppendComponent(name.Chars());
}

CError CFileSystem::GetTempNameBeside(const CPath& path, const char* prefix,
                                      CPath& result) {
  CPath dir;
  CError err = path.GetComponent(CPath::ctDir, dir);
  return Failed(err) ? err : GetTempName(dir, prefix, result);
}

CError CFileSystem::RequireFile(const CPath& path) {
  CError type = GetItemType(path);
  if (type == S_FSIsFile) return Ok;
  if (type == S_FSIsDirectory) return E_FSNotFile;
  return type;
}

CError CFileSystem::RequireDirectory(const CPath& path) {
  CError type = GetItemType(path);
  if (type == S_FSIsDirectory) return Ok;
  if (type == S_FSIsFile) return E_FSNotDirectory;
  return type;
}

namespace {

// Into an existing directory, the source keeps its name.
CError Destination(CFileSystem& fs, const CPath& src, const CPath& dest,
                   CPath& target) {
  target = dest;
  if (Failed(fs.RequireDirectory(dest))) return Ok;
  CStr name;
  CError err = src.GetComponentString(CPath::ctFile, name);
  return Failed(err) ? err : target.AppendComponent(name.Chars());
}

}  // namespace

CError CFileSystem::Copy(const CPath& src, const CPath& dest, bool overwrite) {
  CPath target;
  CError err = Destination(*this, src, dest, target);
  return Failed(err) ? err : CopyOneFile(src, target, overwrite);
}

CError CFileSystem::Move(const CPath& src, const CPath& dest) {
  CPath target;
  CError err = Destination(*this, src, dest, target);
  return Failed(err) ? err : MoveOneFile(src, target);
}

CError CFileSystem::DeleteDirectoryContents(const CPath& dir, bool force) {
  CError err = RequireDirectory(dir);
  if (Failed(err)) return err;
  CDeleteDirectoryVisitor visitor(force);
  err = EnumerateDirectory(dir, "*", visitor);
  return Failed(visitor.Result()) ? visitor.Result() : err;
}

CError CFileSystem::DeleteDirectory(const CPath& dir, bool force) {
  CError err = DeleteDirectoryContents(dir, force);
  return Failed(err) ? err : RemoveEmptyDirectory(dir);
}

// The folder is made first and asked about only when that fails: the
// folders an install makes are mostly new, and asking about a missing one
// costs as much as making it.
CError CFileSystem::CreateDirectoryPath(const CPath& dir) {
  if (!dir.IsValid()) return E_BadArgument;
  CError made = MakeDirectory(dir);
  CPath parent;
  if (made == E_NotFound && Succeeded(dir.GetComponent(CPath::ctDir, parent)) &&
      !parent.ExtraPart().IsEmpty()) {  // a folder above is missing too
    const CError above = CreateDirectoryPath(parent);
    if (Failed(above)) return above;
    made = MakeDirectory(dir);
  }
  if (Succeeded(made)) return Ok;
  // Something is there already (a folder is fine, a file is not), or the
  // system won't make a folder that exists, such as a drive's root.
  const CError there = RequireDirectory(dir);
  if (Succeeded(there)) return S_FSIsDirectory;
  return made == E_AlreadyExists ? there : made;
}

CError CFileSystem::QueryFile(const char* filename) {
  CPath ignored;
  return QueryFile(filename, ignored);
}

CError CFileSystem::QueryFile(const char* filename, CPath& queryResult) {
  if (filename == 0) {
    TERN_FAIL("filename != 0");
    return E_BadArgument;
  }
  CPath path(filename);
  CError type = GetItemType(path);
  if (Succeeded(type)) queryResult = path;
  return type;
}

CError CFileSystem::MakeTempFile(const CPath& dir, CPath& result) {
  CError err = GetTempName(dir, "tmp", result);
  if (Failed(err)) return err;
  CFileStream file;
  err = file.Open(result.OSToPathString().Chars(), fsmCreateNew | smWriteOnly);
  file.Close();
  return err;
}

CError CFileSystem::Rename(const CPath& from, const char* newName) {
  CPath to;
  CError err = from.GetComponent(CPath::ctDir, to);
  if (Succeeded(err)) err = to.AppendComponent(newName);
  return Failed(err) ? err : Rename(from, to);
}

CError CDeleteDirectoryVisitor::Visit(CFileSystem& fs, const CPath& entry,
                                      CError type) {
  mResult = type == S_FSIsDirectory ? fs.DeleteDirectory(entry, mForce)
                                    : fs.RemoveFile(entry, mForce);
  return mResult;
}

}  // namespace Tern
