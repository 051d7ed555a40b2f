// Paths and the file-system abstraction.
//
// A CPath holds one canonical text, "[volume]component\component", and the
// path definition that gives its syntax. CFileSystem is the abstract file
// system; CLocalFileSystem (TLocalFileSystem.h) is its one concrete kind.
#pragma once

#include "TError.h"
#include "TString.h"
#include "TTypes.h"

namespace Tern {

class CFSPathDefinition;

class CPath {
 public:
  enum ComponentType : Int {
    ctVolume = 0,     // "[C:\]"
    ctDir = 1,        // the containing directory: the path less its last part
    ctFile = 2,       // the last part: file name with extension
    ctName = 3,       // the last part without its extension
    ctExtension = 4,  // the extension, without its delimiter
    ctDirName = 5,    // the name of the containing directory
    ctExtra = 6,      // everything after the volume, as a relative path
  };

  CPath() = default;
  // Sets the path from an operating-system string (see Set).
  explicit CPath(const char* pathStr);

  bool IsValid() const;
  bool IsFullPath() const;
  const CStr& Text() const { return mText; }
  const CFSPathDefinition* Definition() const { return mDef; }

  // From an operating-system string: "/" becomes the definition's delimiter
  // and the volume found by the definition stands between the brackets.
  CError Set(const char* pathStr);
  // From a volume text and components joined by "/".
  CError SetFromComponents(const char* volume, const char* components);

  // Appends a relative path, component by component.
  CError Append(const CPath& path);
  // Appends one component; never a sub-path nor a full path.
  CError AppendComponent(const char* component);

  CError GetComponent(Int kind, CPath& result) const;
  CError GetComponentString(Int kind, CStr& result) const;

  // Replaces or adds the extension of the last component (no delimiter).
  CError SetExtension(const char* extension);

  // The text after "]".
  CStr ExtraPart() const;
  CStr VolumePart() const;

  // For display: at most `maxLen` characters; leading components go first,
  // then the text is cut and " ..." appended. With a reference path in the
  // same directory only the name is shown.
  CStr DisplayText(Int maxLen, const CPath* reference = nullptr) const;

  // The volume followed by the extra part, as the platform wants it.
  CStr OSToPathString() const;
  CError OSToPathString(CStr& out) const;

  bool operator==(const CPath& other) const { return mText == other.mText; }
  bool operator!=(const CPath& other) const { return !(*this == other); }

 private:
  friend class CLocalFSPathDefinition;
  bool CheckValid() const;

  CStr mText;
  const CFSPathDefinition* mDef = nullptr;
};

// The syntax of a kind of path.
class CFSPathDefinition {
 public:
  virtual ~CFSPathDefinition() = default;
  // The volume of `pathPart` into `volume`; its length, or -1 for none.
  virtual Int ParseVolume(const char* pathPart, CStr& volume) const = 0;
  virtual CError MakeOSString(const CPath& path, CStr& out) const = 0;
  virtual CError SetFromOSString(CPath& path, const char* pathStr) const = 0;
  virtual char GetDirDelim() const = 0;
  virtual char GetExtDelim() const = 0;
  virtual Int MaxPathLength() const = 0;
  virtual Int MaxComponentLength() const = 0;
};

// Local paths: drive letters, UNC shares, rooted paths; backslash delimiter.
class CLocalFSPathDefinition : public CFSPathDefinition {
 public:
  static const CLocalFSPathDefinition& Instance();

  Int ParseVolume(const char* pathPart, CStr& volume) const override;
  CError MakeOSString(const CPath& path, CStr& out) const override;
  CError SetFromOSString(CPath& path, const char* pathStr) const override;
  char GetDirDelim() const override { return '\\'; }
  char GetExtDelim() const override { return '.'; }
  Int MaxPathLength() const override { return 259; }
  Int MaxComponentLength() const override { return 255; }
};

// The abstract file system. Operations return a status; the item-type query
// answers S_FSIsDirectory or S_FSIsFile, and an error for a missing item.
// (Names avoid the platform's macros: DeleteFile, CreateDirectory, ...)
class CFileSystem {
 public:
  // Called for every entry of a directory walk, with the entry's type as
  // the walk found it (S_FSIsDirectory or S_FSIsFile); a failure stops the
  // walk.
  class CVisitor {
   public:
    virtual ~CVisitor() = default;
    virtual CError Visit(CFileSystem& fs, const CPath& entry, CError type) = 0;
  };

  virtual ~CFileSystem() = default;

  // A name "<prefix><20 hex digits>" in `dir` under which nothing exists yet.
  // Nothing is created.
  virtual CError GetTempName(const CPath& dir, const char* prefix,
                             CPath& result);
  // The next name "<prefix><20 hex digits>" in `dir`, a new one each call;
  // whether something has that name is not asked.
  static CError NextTempName(const CPath& dir, const char* prefix,
                             CPath& result);
  virtual CError MakeFullPath(const CPath& path, CPath& full) = 0;
  // The directory and everything in it; with `force` read-only files too.
  virtual CError DeleteDirectory(const CPath& dir, bool force = false);
  // Everything in the directory, which stays; `force` as above.
  virtual CError DeleteDirectoryContents(const CPath& dir, bool force = false);
  virtual CError GetTempNameBeside(const CPath& path, const char* prefix,
                                   CPath& result);
  // With `force` a read-only file is deleted too.
  virtual CError RemoveFile(const CPath& file, bool force = false) = 0;
  // Into a directory (keeping the name) or onto a name.
  virtual CError Copy(const CPath& src, const CPath& dest, bool overwrite);
  virtual CError Move(const CPath& src, const CPath& dest);
  virtual CError GetFileSize(const CPath& file, UInt32& size) = 0;
  virtual CError GetAttribute(const CPath& path, Int kind, bool& set) = 0;
  virtual CError SetAttribute(const CPath& path, Int kind, bool set) = 0;
  virtual CError GetItemType(const CPath& path) = 0;
  virtual CError RequireFile(const CPath& path);
  virtual CError RequireDirectory(const CPath& path);
  virtual CError IsDirectoryEmpty(const CPath& dir,
                                  const char* patternStr = "*") = 0;
  virtual CError EnumerateDirectory(const CPath& dir, const char* patternStr,
                                    CVisitor& visitor) = 0;
  virtual CError MakeDirectory(const CPath& dir) = 0;
  virtual CError RemoveEmptyDirectory(const CPath& dir) = 0;
  virtual CError Rename(const CPath& from, const CPath& to) = 0;
  virtual CError CopyOneFile(const CPath& src, const CPath& destPath,
                             bool overwrite) = 0;
  virtual CError MoveOneFile(const CPath& src, const CPath& dest) = 0;

  // Queries by file name (operating-system text): the item type, and with a
  // result path also that path.
  virtual CError QueryFile(const char* filename);
  virtual CError QueryFile(const char* filename, CPath& queryResult);
  // Creates an empty file named "tmp..." in `dir`.
  virtual CError MakeTempFile(const CPath& dir, CPath& result);
  // Renames within the same directory.
  virtual CError Rename(const CPath& from, const char* newName);

  // Creates `dir` and any missing folders above it: Ok when it was made,
  // S_FSIsDirectory (a success) when it was there already.
  CError CreateDirectoryPath(const CPath& dir);
};

// The local file system, and the special directories of the platform.
class CLocalFileSystem : public CFileSystem {
 public:
  enum DirType : Int {
    dtTempDir = 0,
    dtDebugLogDir,
    dtFontsDir,
    dtAppDir,
    dtAppPrivateDir,
    dtModuleDir,
    dtUserAppDataDir,
    dtMachineAppDataDir,
    dtUserDocDir,
    dtCurrentDir,
    dtLogDir,
    dtWinOSDir,
    dtWinProgramFilesDir,
    dtWinCommonFilesDir,
  };
  enum VolumeType : Int {
    vtUnknown = 0,
    vtFixed,
    vtRemovable,
    vtCDROM,
    vtRAMDisk,
    vtNetwork,
  };
  enum AttributeKind : Int { akReadOnly = 1, akHidden = 2, akSystem = 3 };
  enum TimeKind : Int { tkCreation = 0, tkLastWrite = 1 };

  static CLocalFileSystem& Instance();

  // By type, or by its name ("TempDir", "FontsDir", ...; case-sensitive).
  // The temporary folder, like the program's and module's folders, is given
  // in its short form when the ANSI code page can't write it.
  CError GetDirectory(Int dirType, CPath& dir);
  CError GetDirectory(const char* dirName, CPath& dir);
  CError GetVolumeFreeSpace(const CPath& path, unsigned long long& bytes);
  CError GetVolumeType(const CPath& path, Int& type);
  // The running program's file. Like the program's and module's folders, a
  // path the ANSI code page can't write is given in its short form.
  CError GetProgramFile(CPath& file);
  // Whether two paths name the same file or folder, however they are
  // spelled: short (8.3) or long names, upper or lower case.
  bool IsSameItem(const CPath& a, const CPath& b);
  // The path with its short (8.3) names in their long form, where the ANSI
  // code page can write that; otherwise the path as given.
  CError GetLongForm(const CPath& path, CPath& longPath);
  // Only command-line programs have a current directory to use.
  CError GetCurrentDir(CPath& dir);
  // 100-nanosecond intervals since 1601 (the platform's file time).
  CError GetFileTime(const CPath& file, Int kind, unsigned long long& time);

  CError MakeFullPath(const CPath& path, CPath& full) override;
  CError RemoveFile(const CPath& file, bool force = false) override;
  // Copies `src` onto the name `dest`, which must be free, so that the
  // name never holds a half-written file, even when the run is killed.
  CError CopyIntoPlace(const CPath& src, const CPath& dest);
  // Has the system delete a file, or an empty folder, when it next
  // restarts: for what can't go now because a program holds it.
  CError RemoveAtRestart(const CPath& path);
  CError GetFileSize(const CPath& file, UInt32& size) override;
  CError GetAttribute(const CPath& path, Int kind, bool& set) override;
  CError SetAttribute(const CPath& path, Int kind, bool set) override;
  CError GetItemType(const CPath& path) override;
  CError IsDirectoryEmpty(const CPath& dir,
                          const char* patternStr = "*") override;
  CError EnumerateDirectory(const CPath& dir, const char* patternStr,
                            CVisitor& visitor) override;
  CError MakeDirectory(const CPath& dir) override;
  CError RemoveEmptyDirectory(const CPath& dir) override;
  CError Rename(const CPath& from, const CPath& to) override;
  using CFileSystem::Rename;
  // The copy is always writable: a read-only source (a CD, a share) does
  // not pass its read-only attribute on.
  CError CopyOneFile(const CPath& src, const CPath& destPath,
                     bool overwrite) override;
  CError MoveOneFile(const CPath& src, const CPath& dest) override;

  // The directory type of a name; -1 for an unknown name.
  static Int DirTypeFromName(const char* dirName);

 private:
  CError ResolveDirectory(Int dirType, CPath& dir);
  CError ShellFolderOrBelowWindows(int csidl, const char* name, CPath& dir);
};

// Empties a directory depth first: subdirectories with everything in them,
// files as met. The first failure stops the walk and is kept.
class CDeleteDirectoryVisitor : public CFileSystem::CVisitor {
 public:
  explicit CDeleteDirectoryVisitor(bool force) : mForce(force) {}
  CError Visit(CFileSystem& fs, const CPath& entry, CError type) override;
  CError Result() const { return mResult; }

 private:
  bool mForce;
  CError mResult = Ok;
};

}  // namespace Tern
