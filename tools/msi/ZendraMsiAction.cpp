// The Windows Installer package's custom actions. The package holds the
// release and runs its own Setup.exe, so there is one installer logic; these
// actions start Setup, wait for it, and tell the package's log how it ended
// and where its own log is. A Setup exit code other than 0 fails the package,
// which then rolls back what it did itself.
#include <windows.h>
// After windows.h, which they need.
#include <msi.h>
#include <msiquery.h>

#include <string>

#include "ExitCode.h"

namespace {

const char cUninstallKey[] =
    "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\"
    "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}";
const char cSettingsKey[] = "SOFTWARE\\Orvane\\OVZN4";
// Names the package that installed the product: the installed Setup.exe
// then leaves its removal to the package.
const char cPackageValue[] = "MsiProductCode";
const REGSAM cView = KEY_WOW64_32KEY;  // where the 32-bit Setup writes

std::string Property(MSIHANDLE install, const char* name) {
  char value[1024] = "";
  DWORD size = sizeof value;
  ::MsiGetPropertyA(install, name, value, &size);
  return value;
}

// One line in the package's log (msiexec /l*v).
void Log(MSIHANDLE install, const std::string& text) {
  PMSIHANDLE record = ::MsiCreateRecord(0);
  ::MsiRecordSetStringA(record, 0, text.c_str());
  ::MsiProcessMessage(install, INSTALLMESSAGE_INFO, record);
}

// The newest "Zendra *.log" in the temporary folder Setup shares with this
// action: the one the run just wrote.
std::string NewestSetupLog() {
  char temp[MAX_PATH] = "";
  ::GetTempPathA(MAX_PATH, temp);
  WIN32_FIND_DATAA entry;
  HANDLE find =
      ::FindFirstFileA((std::string(temp) + "Zendra *.log").c_str(), &entry);
  std::string newest = "(none written)";
  FILETIME newestTime = {};
  for (BOOL more = find != INVALID_HANDLE_VALUE; more;
       more = ::FindNextFileA(find, &entry)) {
    if (::CompareFileTime(&entry.ftLastWriteTime, &newestTime) > 0) {
      newestTime = entry.ftLastWriteTime;
      newest = std::string(temp) + entry.cFileName;
    }
  }
  if (find != INVALID_HANDLE_VALUE) ::FindClose(find);
  return newest;
}

// Runs Setup.exe with `options`, waits for it and logs how it ended; the
// package's result.
UINT RunSetup(MSIHANDLE install, const std::string& setup,
              const std::string& options) {
  std::string commandLine = "\"" + setup + "\" " + options;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  if (!::CreateProcessA(setup.c_str(), &commandLine[0], nullptr, nullptr, FALSE,
                        0, nullptr, nullptr, &startup, &process)) {
    Log(install, "Zendra: could not start " + commandLine + " (error " +
                     std::to_string(::GetLastError()) + ").");
    return ERROR_INSTALL_FAILURE;
  }
  ::WaitForSingleObject(process.hProcess, INFINITE);
  DWORD exitCode = Zendra::exitFailure;
  ::GetExitCodeProcess(process.hProcess, &exitCode);
  ::CloseHandle(process.hThread);
  ::CloseHandle(process.hProcess);
  const int code = static_cast<int>(exitCode);
  Log(install, "Zendra: " + commandLine + " ended with exit code " +
                   std::to_string(code) + " (" + Zendra::ExitCodeName(code) +
                   ": " + Zendra::ExitCodeMeaning(code) +
                   "); Setup's log: " + NewestSetupLog());
  return code == Zendra::exitOk ? ERROR_SUCCESS : ERROR_INSTALL_FAILURE;
}

// The package is the product's one entry in Add/Remove Programs: Setup's
// own entry is hidden, and the product's settings name the package.
void RecordPackage(MSIHANDLE install, const std::string& productCode) {
  HKEY key = nullptr;
  const DWORD hidden = 1;
  if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, cUninstallKey, 0,
                      KEY_SET_VALUE | cView, &key) == ERROR_SUCCESS) {
    ::RegSetValueExA(key, "SystemComponent", 0, REG_DWORD,
                     reinterpret_cast<const BYTE*>(&hidden), sizeof hidden);
    ::RegCloseKey(key);
  }
  if (::RegCreateKeyExA(HKEY_LOCAL_MACHINE, cSettingsKey, 0, nullptr, 0,
                        KEY_SET_VALUE | cView, nullptr, &key,
                        nullptr) != ERROR_SUCCESS) {
    Log(install, "Zendra: could not record the package in HKLM\\" +
                     std::string(cSettingsKey) + ".");
    return;
  }
  ::RegSetValueExA(key, cPackageValue, 0, REG_SZ,
                   reinterpret_cast<const BYTE*>(productCode.c_str()),
                   static_cast<DWORD>(productCode.size() + 1));
  ::RegCloseKey(key);
}

// The installed Setup.exe, from the product's uninstall entry; empty when
// the product is not installed.
std::string InstalledSetup() {
  HKEY key = nullptr;
  char path[MAX_PATH] = "";
  DWORD size = sizeof path - 1, type = 0;
  if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, cUninstallKey, 0,
                      KEY_QUERY_VALUE | cView, &key) != ERROR_SUCCESS)
    return "";
  const LONG read = ::RegQueryValueExA(key, "DisplayIcon", nullptr, &type,
                                       reinterpret_cast<BYTE*>(path), &size);
  ::RegCloseKey(key);
  if (read != ERROR_SUCCESS || type != REG_SZ) return "";
  return ::GetFileAttributesA(path) == INVALID_FILE_ATTRIBUTES ? "" : path;
}

void ForgetPackage() {
  HKEY key = nullptr;
  if (::RegOpenKeyExA(HKEY_LOCAL_MACHINE, cSettingsKey, 0,
                      KEY_SET_VALUE | cView, &key) != ERROR_SUCCESS)
    return;
  ::RegDeleteValueA(key, cPackageValue);
  ::RegCloseKey(key);
}

// "<Setup.exe>|<options>|<ProductCode>", as the immediate action that
// schedules the deferred one wrote it.
std::string Field(const std::string& data, int index) {
  std::string::size_type start = 0;
  for (int i = 0; i < index && start != std::string::npos; ++i) {
    start = data.find('|', start);
    if (start != std::string::npos) ++start;
  }
  if (start == std::string::npos) return "";
  return data.substr(start, data.find('|', start) - start);
}

}  // namespace

// Installs, or repairs, from the package's copy of the release.
extern "C" __declspec(dllexport) UINT
    __stdcall InstallZendra(MSIHANDLE install) {
  const std::string data = Property(install, "CustomActionData");
  const UINT result =
      RunSetup(install, Field(data, 0), "-s -i" + Field(data, 1));
  if (result == ERROR_SUCCESS) RecordPackage(install, Field(data, 2));
  return result;
}

// Removes the product through its installed Setup.exe; nothing to do when
// it is gone already.
extern "C" __declspec(dllexport) UINT
    __stdcall RemoveZendra(MSIHANDLE install) {
  const std::string setup = InstalledSetup();
  if (setup.empty()) {
    Log(install, "Zendra: not installed, nothing for Setup.exe to remove.");
    ForgetPackage();
    return ERROR_SUCCESS;
  }
  ForgetPackage();
  return RunSetup(install, setup, "-s -u");
}
