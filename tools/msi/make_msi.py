#!/usr/bin/env python3
"""Wraps a Zendra release folder into one Windows Installer package.

    make_msi.py SOURCE OUT.msi ACTION_DLL

The package copies the release, as shipped, into a folder of its own and runs
that copy's Setup.exe -s -i as a deferred custom action without
impersonation (ACTION_DLL's InstallZendra, which also runs for a repair);
its removal runs the installed Setup.exe -s -u (RemoveZendra). NOFONTS=1
and NOVERSIONCHECK=1 on the msiexec command line become Setup's -nofonts and
-noversioncheck. ProductVersion is Setup.exe's; the UpgradeCode never
changes and each version has a ProductCode of its own, so that a later
package upgrades an earlier one in place. Built with wixl; msibuild puts
the custom actions where wixl can't.
"""
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import uuid
from xml.sax.saxutils import escape, quoteattr

UPGRADE_CODE = "{7E3B1C52-4A0D-4C6E-9B1F-2D5A8E6C4F30}"
# Product codes are made from the version in this namespace: the same
# version always has the same code, a detection rule can rely on it.
PRODUCT_NAMESPACE = uuid.UUID("3F9A2B6C-8D41-4E57-A0C3-6B1D9E2F7A84")
RELEASE_FOLDER = "Zendra Release"  # below Program Files\Orvane
# Active Setup runs a command once for each user who signs in: the per-user
# part of the install, which an install as the system account can't do for
# them, the compatibility record of the product's control-panel applet.
ACTIVE_SETUP = ("Software\\Microsoft\\Active Setup\\Installed Components\\"
                "{5A1C7E30-2B94-4F6D-9E21-7C3B0D84A6F1}")
USER_PART = (
    'reg.exe add "HKCU\\Software\\Microsoft\\Windows NT\\CurrentVersion\\'
    'AppCompatFlags\\Compatibility Assistant\\Persisted" /v '
    '"[ProgramFilesFolder]Orvane\\Zendra\\ZendraPanel.cpl" /t REG_DWORD '
    '/d 16 /f')
NEWER_INSTALLED = (
    "A newer version of Zendra is already installed. If you really want to "
    "install this older version, you must first remove the installed version "
    "using Add/Remove Programs in the Control Panel.")


def refuse(reason):
    print(f"msi.sh: {reason}; no package written", file=sys.stderr)
    sys.exit(2)


def product_version(setup_exe):
    """The product version of the executable's version resource, found by the
    signature of its fixed part (VS_FIXEDFILEINFO)."""
    with open(setup_exe, "rb") as f:
        data = f.read()
    at = data.find(struct.pack("<I", 0xFEEF04BD))
    if at < 0 or at + 24 > len(data):
        return None
    ms, ls = struct.unpack_from("<II", data, at + 16)
    return f"{ms >> 16}.{ms & 0xFFFF}.{ls >> 16}.{ls & 0xFFFF}"


def check_release(source):
    """Setup.exe with a version resource and Zendra.ovc beside it: what
    makes a folder a release. The version, or a refusal naming what lacks."""
    if not os.path.isdir(source):
        refuse(f"'{source}' is not a folder")
    for name in ("Setup.exe", "Zendra.ovc"):
        if not os.path.isfile(os.path.join(source, name)):
            refuse(f"'{source}' is no Zendra release: {name} is missing")
    version = product_version(os.path.join(source, "Setup.exe"))
    if not version:
        refuse(f"'{source}' is no Zendra release: Setup.exe has no version "
               f"resource")
    return version


class Layout:
    """The release's folders and files as wixl's Directory, Component and
    File elements, with identifiers made from a running number."""

    def __init__(self, source, base):
        self.source = source
        self.base = base  # wixl takes only paths relative to where it runs
        self.components = []
        self.folders = 0
        self.setup_file = None

    def folder(self, path, depth=4):
        pad = " " * depth
        lines = []
        for name in sorted(os.listdir(path)):
            full = os.path.join(path, name)
            if os.path.isdir(full):
                self.folders += 1
                lines.append(f'{pad}<Directory Id="D{self.folders}" '
                             f'Name={quoteattr(name)}>')
                lines += self.folder(full, depth + 2)
                lines.append(f"{pad}</Directory>")
                continue
            component = f"C{len(self.components)}"
            file_id = f"F{len(self.components)}"
            if path == self.source and name == "Setup.exe":
                self.setup_file = file_id
            self.components.append(component)
            lines.append(
                f'{pad}<Component Id="{component}" Guid="*"><File Id="{file_id}" '
                f'Name={quoteattr(name)} '
                f'Source={quoteattr(os.path.relpath(full, self.base))} '
                f'KeyPath="yes"/></Component>')
        return lines


def wxs(source, version, action_dll, base):
    layout = Layout(source, base)
    tree = "\n".join(layout.folder(source, 10))
    layout.components.append("UserPart")
    refs = "\n".join(f'      <ComponentRef Id="{c}"/>' for c in layout.components)
    active_setup = f"""            <Component Id="UserPart" Guid="*">
              <RegistryKey Root="HKLM" Key="{ACTIVE_SETUP}">
                <RegistryValue Type="string" Value="Zendra" KeyPath="yes"/>
                <RegistryValue Name="Version" Type="string"
                               Value="{version.replace('.', ',')}"/>
                <RegistryValue Name="StubPath" Type="string"
                               Value={quoteattr(USER_PART)}/>
              </RegistryKey>
            </Component>"""
    code = "{%s}" % str(uuid.uuid5(PRODUCT_NAMESPACE, version)).upper()
    data = f"[#{layout.setup_file}]|[ZENDRA_NOFONTS][ZENDRA_NOVC]|[ProductCode]"
    return f"""<?xml version="1.0" encoding="utf-8"?>
<Wix xmlns="http://schemas.microsoft.com/wix/2006/wi">
  <Product Id="{code}" Name="Zendra" Manufacturer="Orvane"
           Version="{version}" Language="1033" UpgradeCode="{UPGRADE_CODE}">
    <Package InstallerVersion="200" Compressed="yes" InstallScope="perMachine"
             Description="Zendra {version}"/>
    <Media Id="1" Cabinet="release.cab" EmbedCab="yes"/>
    <MajorUpgrade DowngradeErrorMessage={quoteattr(NEWER_INSTALLED)}/>
    <Property Id="ARPNOMODIFY" Value="1"/>
    <Binary Id="ZendraActions" SourceFile={quoteattr(action_dll)}/>
    <CustomAction Id="SetNoFonts" Property="ZENDRA_NOFONTS" Value=" -nofonts"/>
    <CustomAction Id="SetNoVersionCheck" Property="ZENDRA_NOVC"
                  Value=" -noversioncheck"/>
    <CustomAction Id="SetInstallData" Property="InstallZendra"
                  Value={quoteattr(data)}/>
    <CustomAction Id="InstallZendra" BinaryKey="ZendraActions"
                  DllEntry="InstallZendra" Execute="deferred" Impersonate="no"
                  Return="check"/>
    <CustomAction Id="RemoveZendra" BinaryKey="ZendraActions"
                  DllEntry="RemoveZendra" Execute="deferred" Impersonate="no"
                  Return="check"/>
    <Directory Id="TARGETDIR" Name="SourceDir">
      <Directory Id="ProgramFilesFolder">
        <Directory Id="OrvaneFolder" Name="Orvane">
          <Directory Id="ReleaseFolder" Name="{escape(RELEASE_FOLDER)}">
{active_setup}
{tree}
          </Directory>
        </Directory>
      </Directory>
    </Directory>
    <Feature Id="Zendra" Level="1">
{refs}
    </Feature>
  </Product>
</Wix>
"""


# Where each custom action runs: wixl can't place them, so msibuild does.
# The removal runs before the package's own files go; the install once they
# are all in place; an upgrade's removal of the earlier package does not
# remove the product the later one just installed.
SEQUENCE = [
    ("RemoveZendra", 'REMOVE="ALL" AND NOT UPGRADINGPRODUCTCODE', 3400),
    ("SetNoFonts", "NOFONTS", 6570),
    ("SetNoVersionCheck", "NOVERSIONCHECK", 6575),
    ("SetInstallData", 'NOT REMOVE="ALL"', 6580),
    ("InstallZendra", 'NOT REMOVE="ALL"', 6590),
]


def build(source, out, action_dll):
    version = check_release(source)
    with tempfile.TemporaryDirectory() as work:
        package = os.path.join(work, "Zendra.msi")
        shutil.copy(action_dll, os.path.join(work, "ZendraMsiAction.dll"))
        with open(os.path.join(work, "Zendra.wxs"), "w", encoding="utf-8") as f:
            f.write(wxs(os.path.abspath(source), version, "ZendraMsiAction.dll",
                        work))
        subprocess.run(["wixl", "-a", "x86", "-o", package, "Zendra.wxs"],
                       check=True, cwd=work)
        queries = [
            "INSERT INTO InstallExecuteSequence (Action, Condition, Sequence) "
            f"VALUES ('{action}', '{condition}', {number})"
            for action, condition, number in SEQUENCE]
        for query in queries:
            subprocess.run(["msibuild", package, "-q", query], check=True)
        os.replace(package, out)
    print(f"msi.sh: {out}: Zendra {version}, ProductCode "
          f"{{{str(uuid.uuid5(PRODUCT_NAMESPACE, version)).upper()}}}")


if __name__ == "__main__":
    if len(sys.argv) == 3 and sys.argv[1] == "--check":
        check_release(sys.argv[2])
    elif len(sys.argv) == 4:
        build(*sys.argv[1:])
    else:
        refuse("usage: make_msi.py [--check] SOURCE [OUT.msi ACTION_DLL]")
