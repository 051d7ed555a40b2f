// One in-process COM server of the sample product. Each component is this
// source built with its own class ID and name (COMPONENT_CLSID,
// COMPONENT_NAME); the product class also records the installed version, the
// MIME filter claims the browser's XML and XHTML types, and the
// control-panel component is an applet too.
//
// The class's one object answers IUnknown and IPersist; IPersist::GetClassID
// tells a caller which class it got.
#include <windows.h>
// After windows.h, which they need.
#include <cpl.h>
#include <olectl.h>

#include <string>

namespace {

HINSTANCE gModule = nullptr;
LONG gObjects = 0;
LONG gLocks = 0;

const char cClassKey[] = "CLSID\\" COMPONENT_CLSID;

CLSID ComponentClassId() {
  CLSID id = {};
  wchar_t text[64] = L"";
  ::MultiByteToWideChar(CP_ACP, 0, COMPONENT_CLSID, -1, text, 64);
  ::CLSIDFromString(text, &id);
  return id;
}

class CComponentObject : public IPersist {
 public:
  CComponentObject() { ::InterlockedIncrement(&gObjects); }
  virtual ~CComponentObject() { ::InterlockedDecrement(&gObjects); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IPersist)) {
      *out = static_cast<IPersist*>(this);
      AddRef();
      return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return ::InterlockedIncrement(&mRefs);
  }
  ULONG STDMETHODCALLTYPE Release() override {
    ULONG left = ::InterlockedDecrement(&mRefs);
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetClassID(CLSID* id) override {
    if (!id) return E_POINTER;
    *id = ComponentClassId();
    return S_OK;
  }

 private:
  LONG mRefs = 1;
};

class CComponentFactory : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory)) {
      *out = static_cast<IClassFactory*>(this);
      return S_OK;
    }
    *out = nullptr;
    return E_NOINTERFACE;
  }
  // The factory is a static object: reference counts mean nothing to it.
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid,
                                           void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    CComponentObject* object = new CComponentObject;
    HRESULT result = object->QueryInterface(iid, out);
    object->Release();
    return result;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock)
      ::InterlockedIncrement(&gLocks);
    else
      ::InterlockedDecrement(&gLocks);
    return S_OK;
  }
};

CComponentFactory gFactory;

bool SetDefault(HKEY parent, const char* subKey, const std::string& value,
                const char* name = nullptr) {
  HKEY key = nullptr;
  if (::RegCreateKeyExA(parent, subKey, 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                        nullptr) != ERROR_SUCCESS)
    return false;
  LONG result = ::RegSetValueExA(key, name, 0, REG_SZ,
                                 reinterpret_cast<const BYTE*>(value.c_str()),
                                 static_cast<DWORD>(value.size() + 1));
  ::RegCloseKey(key);
  return result == ERROR_SUCCESS;
}

std::string ModulePath() {
  char path[MAX_PATH] = "";
  ::GetModuleFileNameA(gModule, path, MAX_PATH);
  return path;
}

#ifdef COMPONENT_MIME_FILTER
// The content types the MIME filter takes over in the browser.
const char* const cFilteredTypes[] = {
    "text/xml",
    "text/xml; charset=utf-8",
    "text/xml; charset=iso-8859-1",
    "application/xhtml+xml",
    "application/xhtml+xml; charset=utf-8",
    "application/xhtml+xml; charset=iso-8859-1"};

std::string FilterKey(const char* type) {
  return std::string("PROTOCOLS\\Filter\\") + type;
}

std::string FilterOwner(const char* type) {
  char data[64] = "";
  DWORD size = sizeof data;
  if (::RegGetValueA(HKEY_CLASSES_ROOT, FilterKey(type).c_str(), "CLSID",
                     RRF_RT_REG_SZ, nullptr, data, &size) != ERROR_SUCCESS)
    return std::string();
  return data;
}
#endif

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) {
    gModule = module;
    ::DisableThreadLibraryCalls(module);
  }
  return TRUE;
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllRegisterServer() {
  const std::string classKey = cClassKey;
  bool ok =
      SetDefault(HKEY_CLASSES_ROOT, cClassKey, "Zendra " COMPONENT_NAME) &&
      SetDefault(HKEY_CLASSES_ROOT, (classKey + "\\InprocServer32").c_str(),
                 ModulePath()) &&
      SetDefault(HKEY_CLASSES_ROOT, (classKey + "\\InprocServer32").c_str(),
                 "Apartment", "ThreadingModel");
#ifdef COMPONENT_INSTALLED_VERSION
  ok = ok &&
       SetDefault(HKEY_CLASSES_ROOT, (classKey + "\\InstalledVersion").c_str(),
                  COMPONENT_INSTALLED_VERSION);
#endif
#ifdef COMPONENT_MIME_FILTER
  for (const char* type : cFilteredTypes)
    ok = ok && SetDefault(HKEY_CLASSES_ROOT, FilterKey(type).c_str(),
                          COMPONENT_CLSID, "CLSID");
#endif
  return ok ? S_OK : SELFREG_E_CLASS;
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllUnregisterServer() {
  const std::string classKey = cClassKey;
#ifdef COMPONENT_MIME_FILTER
  // Only the types this filter still owns.
  for (const char* type : cFilteredTypes)
    if (FilterOwner(type) == COMPONENT_CLSID)
      ::RegDeleteKeyA(HKEY_CLASSES_ROOT, FilterKey(type).c_str());
#endif
  ::RegDeleteKeyA(HKEY_CLASSES_ROOT, (classKey + "\\InprocServer32").c_str());
#ifdef COMPONENT_INSTALLED_VERSION
  ::RegDeleteKeyA(HKEY_CLASSES_ROOT, (classKey + "\\InstalledVersion").c_str());
#endif
  LONG result = ::RegDeleteKeyA(HKEY_CLASSES_ROOT, cClassKey);
  return result == ERROR_SUCCESS || result == ERROR_FILE_NOT_FOUND
             ? S_OK
             : SELFREG_E_CLASS;
}

extern "C" __declspec(dllexport) HRESULT
    __stdcall DllGetClassObject(REFCLSID id, REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (!IsEqualCLSID(id, ComponentClassId())) return CLASS_E_CLASSNOTAVAILABLE;
  return gFactory.QueryInterface(iid, out);
}

extern "C" __declspec(dllexport) HRESULT __stdcall DllCanUnloadNow() {
  return gObjects == 0 && gLocks == 0 ? S_OK : S_FALSE;
}

#ifdef COMPONENT_CONTROL_PANEL
// The control-panel applet: one entry that names the product.
extern "C" __declspec(dllexport) LONG APIENTRY
    CPlApplet(HWND owner, UINT msg, LPARAM, LPARAM info) {
  switch (msg) {
    case CPL_INIT:
      return 1;
    case CPL_GETCOUNT:
      return 1;
    case CPL_NEWINQUIRE: {
      NEWCPLINFOA* entry = reinterpret_cast<NEWCPLINFOA*>(info);
      ZeroMemory(entry, sizeof *entry);
      entry->dwSize = sizeof *entry;
      lstrcpynA(entry->szName, "Zendra", sizeof entry->szName);
      lstrcpynA(entry->szInfo, "Settings of the Zendra math renderer",
                sizeof entry->szInfo);
      return 0;
    }
    case CPL_DBLCLK:
      ::MessageBoxA(owner, "Zendra settings", "Zendra", MB_OK);
      return 0;
    default:
      return 0;
  }
}
#endif
