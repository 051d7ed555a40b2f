// Who the product is to Windows: its names, folders, registry keys and class
// IDs, and its COM components. Every other file takes them from here.
#pragma once

namespace Zendra {

#define ZENDRA_PRODUCT_CLSID "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}"

inline constexpr char cSetupCaption[] = "Zendra Setup";
inline constexpr char cMutexName[] = "ORV:ZendraSetup";

// Folders below Program Files: Orvane\Zendra (or Zendra001, ... when the
// installed components are in use) and Orvane\Common\Fonts\TrueType.
inline constexpr char cMakerFolder[] = "Orvane";
inline constexpr char cInstallFolder[] = "Zendra";
inline constexpr char cCommonFolder[] = "Common";
// The configuration file, beside the running program.
inline constexpr char cConfigFileName[] = "zendra.ovc";

// The product's class, whose key tells an installed copy.
inline constexpr char cProductClassId[] = ZENDRA_PRODUCT_CLSID;
inline constexpr char cProductClassKey[] =
    "HKEY_CLASSES_ROOT\\CLSID\\" ZENDRA_PRODUCT_CLSID;

inline constexpr char cMakerKey[] = "HKEY_LOCAL_MACHINE\\SOFTWARE\\Orvane";
// The product's settings; its "RO_" values are the OEM branding.
inline constexpr char cProductKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Orvane\\OVZN4";
inline constexpr char cUserSettingsKey[] =
    "HKEY_CURRENT_USER\\SOFTWARE\\Orvane\\OVZN4";
// Windows' list of installed programs, and the product's entry in it.
#define ZENDRA_UNINSTALL_LIST                                          \
  "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\" \
  "Uninstall\\"
inline constexpr char cUninstallListKey[] = ZENDRA_UNINSTALL_LIST;
inline constexpr char cUninstallKey[] =
    ZENDRA_UNINSTALL_LIST ZENDRA_PRODUCT_CLSID;
inline constexpr char cBrowserKey[] =
    "HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Internet Explorer";

// A COM component of the product and what the log says of it.
struct CComponent {
  const char* file;
  const char* classId;
  const char* registerFailure;
  const char* unregisterStep;
};

// In the order they are registered; the first is the product itself.
inline constexpr CComponent cComponents[] = {
    {"Zendra.dll", ZENDRA_PRODUCT_CLSID, "Unable to register Zendra",
     "Unregister Zendra.dll"},
    {"ZendraMimer.dll", "{5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1}",
     "Unable to register ZendraMimer", "Unregister ZendraMimer.dll"},
    {"ZendraBHO.dll", "{C35712C8-F326-4410-9093-0B461B0A77A0}",
     "Unable to register ZendraBHO", "Unregister ZendraBHO.dll"},
    {"ZendraPanel.cpl", "{7D241A8E-2B24-4DEC-AE24-090769270D92}",
     "Unable to register ZendraPanel", "Unregister ZendraPanel.cpl"},
    {"ZendraBraille.dll", "{5F496A42-193E-4734-8FCA-1030514B457B}",
     "Unable to register Braille Library", "Unregister Braille Library"},
};
inline constexpr int cComponentCount = 5;
// The MIME filter's class, which may clash with another filter's.
inline constexpr const char* cMimeFilterClassId = cComponents[1].classId;

}  // namespace Zendra
