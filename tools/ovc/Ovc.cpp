#include "Ovc.h"

#include "TStream.h"
#include "TVarList.h"

namespace Ovc {

using Tern::CError;
using Tern::CVarList;

namespace {

const char cUsage[] =
    "usage: ovc dump FILE\n"
    "       ovc check FILE\n"
    "       ovc write FILE NAME=VALUE...   (a leading % makes NAME "
    "read-only)\n";

// Reads the file and says in words what is wrong with it, if anything.
bool ReadChecked(const std::string& path, CVarList& vars, std::string& err) {
  Tern::ConfigFileProblem problem = Tern::cfpNone;
  CError status = vars.ReadFile(path.c_str(), &problem);
  if (Tern::Succeeded(status)) return true;
  err += "ovc: " + path + ": ";
  switch (problem) {
    case Tern::cfpEmpty:
      err += "the file is empty\n";
      break;
    case Tern::cfpBadHeader:
      err += "wrong header: not an Orvane configuration file\n";
      break;
    case Tern::cfpNoEndMarker:
      err += "truncated: the variable list has no end marker\n";
      break;
    case Tern::cfpBadChecksum:
      err += "checksum mismatch: the file was changed or is damaged\n";
      break;
    case Tern::cfpNone:
      err +=
          status == Tern::E_NotFound
              ? std::string("no such file\n")
              : "cannot open (" + std::string(Tern::ErrorName(status)) + ")\n";
      break;
  }
  return false;
}

int Dump(const std::string& path, std::string& out, std::string& err) {
  CVarList vars;
  if (!ReadChecked(path, vars, err)) return ovcBadFile;
  Tern::CStringStream text;
  vars.Dump(text);
  out += text.GetText().Chars();
  return ovcOk;
}

int Check(const std::string& path, std::string& out, std::string& err) {
  CVarList vars;
  if (!ReadChecked(path, vars, err)) return ovcBadFile;
  out += path + ": OK, " + std::to_string(vars.Count()) + " variables\n";
  return ovcOk;
}

int Write(const std::vector<std::string>& args, std::string& err) {
  const std::string& path = args[1];
  CVarList vars;
  for (std::size_t i = 2; i < args.size(); ++i) {
    const std::string& pair = args[i];
    std::size_t equals = pair.find('=');
    std::string name = pair.substr(0, equals);
    std::string bare = !name.empty() && name[0] == '%' ? name.substr(1) : name;
    if (equals == std::string::npos || bare.empty()) {
      err += "ovc: '" + pair + "' is not NAME=VALUE\n";
      return ovcUsage;
    }
    const CVarList::CVar* existing = vars.Find(bare.c_str());
    if (existing && existing->readOnly) {
      err += "ovc: " + bare + " is read-only and cannot be set again\n";
      return ovcUsage;
    }
    vars.Set(name.c_str(), pair.c_str() + equals + 1);
  }
  CError status = vars.WriteFile(path.c_str());
  if (Tern::Failed(status)) {
    err +=
        "ovc: " + path + ": cannot write (" + Tern::ErrorName(status) + ")\n";
    return ovcBadFile;
  }
  return ovcOk;
}

}  // namespace

int Run(const std::vector<std::string>& args, std::string& out,
        std::string& err) {
  const std::string command = args.empty() ? "" : args[0];
  if (command == "dump" && args.size() == 2) return Dump(args[1], out, err);
  if (command == "check" && args.size() == 2) return Check(args[1], out, err);
  if (command == "write" && args.size() >= 2) return Write(args, err);
  err += cUsage;
  return ovcUsage;
}

}  // namespace Ovc
