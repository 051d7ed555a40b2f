"""The install benchmark's other installers, and the check of an install.

  peers.py build SAMPLE OUT [nsis] [msi]
                              writes OUT/zendra.nsi and OUT/zendra.wxs for the
                              product folder SAMPLE and builds them into
                              OUT/ZendraNsis.exe and OUT/Zendra.msi (both
                              when neither is named)
  peers.py check KIND SAMPLE PREFIX [installed|removed]
                              checks, from Linux, the install that KIND
                              (setup, nsis, msi or copy) left in the Wine
                              PREFIX, or that its removal left nothing of
                              it; prints what is wrong, exits 1 if any

Both installers do what Setup.exe -s -i does with the product: the same
files into the same folders, the fonts into the system with their Fonts
values, the COM servers registered by their own DllRegisterServer, and the
same registry values. NSIS's uninstaller undoes what Setup's removal
undoes: the COM servers unregistered by their own DllUnregisterServer, the
product's registry values deleted, the install folder deleted; the fonts
stay.
"""
import datetime
import filecmp
import re
import subprocess
import sys
import uuid
from pathlib import Path, PureWindowsPath

from fontTools.ttLib import TTFont

INSTALL_DIR = r"C:\Program Files (x86)\Orvane\Zendra"
FONT_COPY_DIR = r"C:\Program Files (x86)\Orvane\Common\Fonts\TrueType"
CLSID = "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}"
COMPONENTS = {  # COM server -> its class
    "Zendra.dll": CLSID,
    "ZendraMimer.dll": "{5A1C7E36-2B94-4F6D-9E21-7C3B0D84A6F1}",
    "ZendraBHO.dll": "{C35712C8-F326-4410-9093-0B461B0A77A0}",
    "ZendraPanel.cpl": "{7D241A8E-2B24-4DEC-AE24-090769270D92}",
    "ZendraBraille.dll": "{5F496A42-193E-4734-8FCA-1030514B457B}",
}
FONTS_KEY = r"Software\Microsoft\Windows NT\CurrentVersion\Fonts"
UNINSTALL_KEY = "Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\" + CLSID


def product_version(sample):
    """Setup.exe's ProductVersion text, which its registry values carry."""
    data = (Path(sample) / "Setup.exe").read_bytes()
    at = data.index("ProductVersion\0".encode("utf-16-le")) + 30
    at += -at % 4  # the value starts on a 32-bit boundary
    return data[at:data.index(b"\0\0", at) + 1].decode("utf-16-le")


def registry_values(sample):
    """(view, key, name, value) of every HKLM value Setup.exe writes itself,
    the class registrations and fonts aside. view 32: the 32-bit programs'
    view; None: a key shared by both. A None name stands for an empty key;
    an int value for a DWORD. The install date is the day the installers
    were built: the same kind of value."""
    version = product_version(sample)
    major, minor = version.split(".")
    setup = INSTALL_DIR + r"\Setup.exe"
    uninstall = {
        "DisplayName": "Zendra", "DisplayIcon": setup,
        "UninstallString": setup + " -u", "Publisher": "Orvane, Inc.",
        "DisplayVersion": version, "VersionMajor": int(major),
        "VersionMinor": int(minor),
        "HelpLink": "http://www.orvane.com/support/",
        "HelpTelephone": "+1 555 0142",
        "URLInfoAbout": "http://www.orvane.com/",
        "URLUpdateInfo": "http://www.orvane.com/",
        "InstallDate": datetime.date.today().strftime("%Y%m%d"),
    }
    ie = "Software\\Microsoft\\Internet Explorer\\"
    settings = "Software\\Microsoft\\Windows\\CurrentVersion\\Internet Settings\\"
    values = [(32, UNINSTALL_KEY, n, v) for n, v in uninstall.items()]
    values += [
        (32, r"Software\Orvane\OVZN4", "RO_BUILD_NUMBER", "0"),
        (32, r"Software\Orvane\OVZN4", "RO_LicenseeAboutText1",
         "Zendra sample product"),
        (32, r"Software\Orvane\OVZN4", "RO_LicenseeAboutText2",
         "Made for testing Setup"),
        (32, r"Software\Orvane\OVZN4", "RO_VendorId", "ORV"),
        (32, ie + "Low Rights\\ElevationPolicy\\" + CLSID, "AppName",
         "VersionCheck.exe"),
        (32, ie + "Low Rights\\ElevationPolicy\\" + CLSID, "AppPath",
         INSTALL_DIR),
        (32, ie + "Low Rights\\ElevationPolicy\\" + CLSID, "Policy", 3),
        (32, ie + "XMLNamespace", "http://www.w3.org/1998/Math/MathML", CLSID),
        (32, "Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\PreApproved\\"
         + CLSID, None, None),
        (32, settings + "5.0\\User Agent\\Post Platform", "Zendra " + version,
         ""),
        (32, settings + "User Agent\\Post Platform", "Zendra " + version, ""),
        (32, settings + "Accepted Documents", None, None),
        (None, r"Software\Policies\Microsoft\Internet Explorer\Main"
         r"\EnterpriseMode", "Enable", ""),
    ]
    return values


def fonts(sample):
    """Font file name -> its Fonts value name: the full name, " (TrueType)"."""
    return {f.name: TTFont(f)["name"].getDebugName(4) + " (TrueType)"
            for f in sorted(Path(sample).glob("*.ttf"))}


def product_files(sample):
    """Every file but the fonts, as paths relative to SAMPLE."""
    return sorted(f.relative_to(sample) for f in Path(sample).rglob("*")
                  if f.is_file() and f.suffix != ".ttf")


def win(relative):
    return str(PureWindowsPath(relative))


# ---- NSIS


def nsis_script(sample):
    lines = ["Unicode true", "Name Zendra", "OutFile ZendraNsis.exe",
             'InstallDir "$PROGRAMFILES\\Orvane\\Zendra"',
             "RequestExecutionLevel admin", "SetCompress off", "Section"]
    folder = None
    for rel in product_files(sample):
        if rel.parent != folder:
            folder = rel.parent
            lines.append(f'  SetOutPath "$INSTDIR\\{win(folder)}"'
                         if str(folder) != "." else '  SetOutPath "$INSTDIR"')
        lines.append(f'  File "{Path(sample).resolve() / rel}"')
    names = fonts(sample)
    for target in ('"$PROGRAMFILES\\Orvane\\Common\\Fonts\\TrueType"',
                   "$FONTS"):
        lines.append(f"  SetOutPath {target}")
        lines += [f'  File "{Path(sample).resolve() / f}"' for f in names]
    for font, value in names.items():
        lines.append(f"  System::Call 'gdi32::AddFontResource(t \"$FONTS\\{font}\") i'")
        lines.append(f'  WriteRegStr HKLM "{FONTS_KEY}" "{value}" "{font}"')
    # HWND_BROADCAST, WM_FONTCHANGE, posted as Setup.exe does.
    lines.append("  System::Call 'user32::PostMessage(p 0xffff, i 0x1D, p 0, p 0)'")
    lines += [f'  RegDLL "$INSTDIR\\{dll}"' for dll in COMPONENTS]
    for _, key, name, value in registry_values(sample):
        if name is None:
            lines.append(f'  WriteRegStr HKLM "{key}" "" ""')
            lines.append(f'  DeleteRegValue HKLM "{key}" ""')
        elif isinstance(value, int):
            lines.append(f'  WriteRegDWORD HKLM "{key}" "{name}" {value}')
        else:
            lines.append(f'  WriteRegStr HKLM "{key}" "{name}" "{value}"')
    lines += ['  WriteUninstaller "$INSTDIR\\Uninstall.exe"', "SectionEnd",
              'Section "Uninstall"']
    lines += [f'  UnRegDLL "$INSTDIR\\{dll}"' for dll in COMPONENTS]
    for _, key, name, _ in registry_values(sample):
        lines.append(f'  DeleteRegKey HKLM "{key}"' if name is None else
                     f'  DeleteRegValue HKLM "{key}" "{name}"')
    lines += [f'  DeleteRegKey HKLM "{UNINSTALL_KEY}"',
              r'  DeleteRegKey HKLM "Software\Orvane\OVZN4"',
              '  RMDir /r "$INSTDIR"', "SectionEnd"]
    return "\n".join(lines) + "\n"


# ---- MSI: wixl writes the files and folders; the tables it does not
# write (Registry, Font, SelfReg) and their actions are added with msibuild.


def guid(text):
    return "{%s}" % str(uuid.uuid5(uuid.NAMESPACE_URL, text)).upper()


def wxs(sample):
    """The .wxs, its sources relative to SAMPLE (wixl takes no absolute
    ones), and {file name: File key} of the fonts and COM servers."""
    tree = {}  # folder (relative) -> its files
    for rel in product_files(sample):
        tree.setdefault(rel.parent, []).append(rel)
    ids, refs = {}, []

    def component(folder_id, files):
        cid = f"c{len(refs)}"
        refs.append(cid)
        out = [f'<Component Id="{cid}" Guid="{guid(cid + folder_id)}">']
        for n, (source, name) in enumerate(files):
            fid = f"f{len(ids)}"
            ids[(folder_id, name)] = fid
            keypath = ' KeyPath="yes"' if n == 0 else ""
            out.append(f'<File Id="{fid}" Name="{name}" Source="{source}"{keypath}/>')
        return out + ["</Component>"]

    def folder_xml(rel, did):
        files = [(f, f.name) for f in tree.get(rel, [])]
        out = component(did, files) if files else []
        subs = sorted({p.relative_to(rel).parts[0] for p in tree
                       if rel in p.parents})
        for n, sub in enumerate(subs):
            child = f"{did}_{n}"
            out += [f'<Directory Id="{child}" Name="{sub}">',
                    *folder_xml(rel / sub, child), "</Directory>"]
        return out

    font_files = [(f, f) for f in fonts(sample)]
    body = ['<Directory Id="TARGETDIR" Name="SourceDir">',
            '<Directory Id="ProgramFilesFolder">',
            '<Directory Id="dOrvane" Name="Orvane">',
            '<Directory Id="INSTALLDIR" Name="Zendra">',
            *folder_xml(Path("."), "INSTALLDIR"), "</Directory>",
            '<Directory Id="dCommon" Name="Common">',
            '<Directory Id="dFonts" Name="Fonts">',
            '<Directory Id="dTrueType" Name="TrueType">',
            *component("dTrueType", font_files),
            "</Directory></Directory></Directory></Directory></Directory>",
            '<Directory Id="FontsFolder">', *component("FontsFolder", font_files),
            "</Directory></Directory>"]
    keys = {name: fid for (folder, name), fid in ids.items()
            if folder in ("FontsFolder", "INSTALLDIR")}
    text = f"""<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
<Product Id="*" Name="Zendra" Language="1033" Version="{product_version(sample)}"
 Manufacturer="Orvane, Inc." UpgradeCode="{guid('zendra-upgrade')}">
<Package InstallerVersion="200" Compressed="yes" InstallScope="perMachine"/>
<Media Id="1" Cabinet="zendra.cab" EmbedCab="yes"/>
{chr(10).join(body)}
<Feature Id="Complete" Level="1">
{chr(10).join(f'<ComponentRef Id="{r}"/>' for r in refs)}
</Feature>
</Product>
</Wix>
"""
    return text, keys


def idt(columns, types, table_keys, rows):
    lines = ["\t".join(columns), "\t".join(types), table_keys]
    lines += ["\t".join("" if c is None else str(c) for c in row) for row in rows]
    return "\r\n".join(lines) + "\r\n"


def msi_tables(sample, keys):
    """The added tables, as .idt text by table name."""
    regs = []
    for n, (_, key, name, value) in enumerate(registry_values(sample)):
        if name is None:
            name = "+"  # the key alone
        elif isinstance(value, int):
            value = f"#{value}"
        regs.append((f"r{n}", 2, key, name, value, "c0"))
    return {
        "Registry": idt(["Registry", "Root", "Key", "Name", "Value", "Component_"],
                        ["s72", "i2", "l255", "L255", "L0", "s72"],
                        "Registry\tRegistry", regs),
        "Font": idt(["File_", "FontTitle"], ["s72", "S128"], "Font\tFile_",
                    [(keys[f], v) for f, v in fonts(sample).items()]),
        "SelfReg": idt(["File_", "Cost"], ["s72", "I2"], "SelfReg\tFile_",
                       [(keys[dll], None) for dll in COMPONENTS]),
    }


def add_actions(msi, out):
    """Puts the actions of the added tables into the install sequence, at
    their standard places."""
    wanted = {"WriteRegistryValues": 5000, "RegisterFonts": 5300,
              "SelfRegModules": 6500}
    text = subprocess.run(["msiinfo", "export", msi, "InstallExecuteSequence"],
                          check=True, capture_output=True, text=True).stdout
    have = {line.split("\t")[0] for line in text.splitlines()}
    text = text.rstrip("\r\n") + "\r\n" + "".join(
        f"{a}\t\t{s}\r\n" for a, s in wanted.items() if a not in have)
    (out / "InstallExecuteSequence.idt").write_text(text)
    return out / "InstallExecuteSequence.idt"


def build(sample, out, kinds=("nsis", "msi")):
    out = Path(out).resolve()
    out.mkdir(parents=True, exist_ok=True)
    if "nsis" in kinds:
        (out / "zendra.nsi").write_text(nsis_script(sample))
        subprocess.run(["makensis", "-V2", "zendra.nsi"], cwd=out, check=True)
    if "msi" not in kinds:
        return
    text, keys = wxs(sample)
    (out / "zendra.wxs").write_text(text)
    msi = str(out / "Zendra.msi")
    subprocess.run(["wixl", "-a", "x86", "-o", msi, str(out / "zendra.wxs")],
                   cwd=sample, check=True)
    tables = []
    for name, table in msi_tables(sample, keys).items():
        (out / f"{name}.idt").write_text(table)
        tables += ["-i", str(out / f"{name}.idt")]
    subprocess.run(["msibuild", msi, *tables], check=True)
    subprocess.run(["msibuild", msi, "-i", str(add_actions(msi, out))],
                   check=True)


# ---- The check


def read_reg(path):
    """Wine's .reg text: {lower-case key: {lower-case name: value}}, a value
    being a str, an int (dword) or the raw text of any other kind."""
    keys, current = {}, None

    def unescape(text):
        return re.sub(r"\\(.)", r"\1", text)

    for line in Path(path).read_text(errors="replace").splitlines():
        head = re.match(r"^\[(.*)\] \d+", line)
        if head:
            current = keys.setdefault(unescape(head.group(1)).lower(), {})
            continue
        value = re.match(r'^(@|"((?:[^"\\]|\\.)*)")=(.*)$', line)
        if value and current is not None:
            name = "" if value.group(1) == "@" else unescape(value.group(2))
            data = value.group(3)
            if data.startswith('"') and data.endswith('"'):
                data = unescape(data[1:-1])
            elif data.startswith("dword:"):
                data = int(data[6:], 16)
            current[name.lower()] = data
    return keys


def stored_key(view, key):
    return key.replace("Software\\", "Software\\Wow6432Node\\", 1) \
        if view == 32 else key


def check_removed(prefix):
    """What a removal left of the install: the folder, the uninstall entry,
    the COM servers' registrations."""
    faults = []
    folder = Path(prefix) / "drive_c/Program Files (x86)/Orvane/Zendra"
    if folder.exists():
        faults.append(f"{folder} is still there")
    reg = read_reg(Path(prefix) / "system.reg")
    keys = [stored_key(32, UNINSTALL_KEY)] + [
        f"Software\\Classes\\Wow6432Node\\CLSID\\{c}\\InprocServer32"
        for c in COMPONENTS.values()]
    faults += [f"HKLM\\{k} is still there" for k in keys if k.lower() in reg]
    return faults


def check(kind, sample, prefix, state="installed"):
    if state == "removed":
        return check_removed(prefix)
    sample, drive = Path(sample), Path(prefix) / "drive_c"
    faults = []

    def same_file(source, target):
        if not target.is_file() or not filecmp.cmp(source, target, False):
            faults.append(f"{target.relative_to(drive)}: missing or different")

    def where(windows_path):
        return drive / PureWindowsPath(windows_path).relative_to("C:\\").as_posix()

    install = where(INSTALL_DIR)
    if kind == "copy":
        for f in sample.rglob("*"):
            if f.is_file():
                same_file(f, install / f.relative_to(sample))
        return faults
    for rel in product_files(sample):
        same_file(sample / rel, install / rel)
    for font in fonts(sample):
        same_file(sample / font, where(FONT_COPY_DIR) / font)
        same_file(sample / font, drive / "windows" / "Fonts" / font)
    reg = read_reg(Path(prefix) / "system.reg")

    def expect(key, name, value, ok=None):
        found = reg.get(key.lower(), {}).get(name.lower()) if name is not None \
            else ({} if key.lower() in reg else None)
        if not (ok(found) if ok else found == value):
            faults.append(f"HKLM\\{key} [{name}] = {found!r}, not {value!r}")

    for font, name in fonts(sample).items():
        in_fonts = r"C:\windows\Fonts" + "\\" + font
        expect(FONTS_KEY, name, font, lambda v, f=font, p=in_fonts:
               isinstance(v, str) and v.lower() in (f.lower(), p.lower()))
    for dll, clsid in COMPONENTS.items():
        path = INSTALL_DIR + "\\" + dll
        expect(f"Software\\Classes\\Wow6432Node\\CLSID\\{clsid}\\InprocServer32",
               "", path, lambda v, p=path: isinstance(v, str) and
               v.lower() == p.lower())
    for view, key, name, value in registry_values(sample):
        expect(stored_key(view, key), name, value,
               (lambda v: v is not None) if name is None else None)
    return faults


if __name__ == "__main__":
    if sys.argv[1] == "build":
        build(sys.argv[2], sys.argv[3], sys.argv[4:] or ("nsis", "msi"))
    else:
        problems = check(*sys.argv[2:6])
        for p in problems[:10]:
            print(f"check {sys.argv[2]}: {p}", file=sys.stderr)
        if len(problems) > 10:
            print(f"check {sys.argv[2]}: ... {len(problems)} faults in all",
                  file=sys.stderr)
        sys.exit(1 if problems else 0)
