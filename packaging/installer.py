"""Makes the MSI from the folders of the install components. Equal input gives equal bytes.

Windows Installer identifies components by GUIDs. Those of files depend only on the file's path, so that an upgrade
finds the same components. Those of product and package depend on version and content.
"""
import hashlib
import os
import pathlib
import re
import subprocess
import uuid
from xml.sax.saxutils import quoteattr

import compound_file

# Both must never change: the family of all versions, and the base of the components' identifiers.
UPGRADE_CODE = "{7D3B3E53-5B0C-4E25-9C0C-6B6E8D8C5A41}"
PARTS = uuid.UUID("5f4f1f0e-93a1-4c58-8d2b-0a3f0a7d6b9e")
TEMPLATE = pathlib.Path(__file__).with_name("installer.wxs.in")
README = pathlib.PurePosixPath("README.txt")
SITE = pathlib.PurePosixPath("share/doc/borvanusb/html")
CAMERA = pathlib.PurePosixPath("bin/virtual-camera.exe")
FEATURES = {"TOOL": ("common", "runtime", "tools"), "DEVELOPMENT": ("development", "bindings"),
            "VIRTUAL_CAMERA": ("virtual-camera",)}


def identifier(*words):
    """The identifier of a component. The same words always give the same one."""
    return "{" + str(uuid.uuid5(PARTS, "/".join(words))).upper() + "}"


def symbol(prefix, path):
    """A valid name for the MSI's tables: at most 72 characters, without invalid ones."""
    return f"{prefix}_{hashlib.sha256(path.as_posix().encode()).hexdigest()[:24]}"


def menu_entries():
    """The Start menu entries, and the registry value that stores the folder for later versions."""
    console = quoteattr(f'/k "[{symbol("d", CAMERA.parent)}]borvanusb.exe" --help')
    return [
        '<Shortcut Id="ConsoleEntry" Directory="MenuFolder" Name="BorvanUSB console" '
        f'Target="[System64Folder]cmd.exe" Arguments={console} Description="The commands of borvanusb"/>',
        '<Shortcut Id="ReadmeEntry" Directory="MenuFolder" Name="BorvanUSB first steps" '
        'Target="[INSTALLDIR]README.txt" Description="What is installed, and how to start"/>',
        '<Shortcut Id="DocumentsEntry" Directory="MenuFolder" Name="BorvanUSB documentation" '
        f'Target="[{symbol("d", SITE)}]index.html" Description="Guide, reference and search"/>',
        '<RegistryValue Root="HKLM" Key="Software\\BorvanUSB" Name="InstallFolder" Type="string" '
        'Value="[INSTALLDIR]"/>',
    ]


def directories(files, parent=pathlib.PurePosixPath("."), depth=5):
    """The XML of a folder's content. `files` is {place: source file}."""
    blank = "  " * depth
    lines = []
    for place in sorted(place for place in files if place.parent == parent):
        source = quoteattr(str(files[place]))
        guid = identifier("file", str(place))
        name = quoteattr(place.name)
        lines += [f'{blank}<Component Id="{symbol("c", place)}" Guid="{guid}" Win64="yes">',
                  f'{blank}  <File Id="{symbol("f", place)}" Name={name} Source={source} KeyPath="yes"/>']
        # A component whose key path is not a file would count as one that runs from the medium.
        lines += [f"{blank}  {line}" for line in (menu_entries() if place == README else [])]
        lines.append(f"{blank}</Component>")
    folders = {place.parents[len(place.parents) - 2 - len(parent.parts)] for place in files
               if parent in place.parents and place.parent != parent}
    for folder in sorted(folders):
        lines.append(f'{blank}<Directory Id="{symbol("d", folder)}" Name={quoteattr(folder.name)}>')
        lines += directories(files, folder, depth + 1)
        lines.append(f"{blank}</Directory>")
    return lines


def source_of(parts, version):
    """The text of the WXS file. `parts` is {component: {place: source file}}."""
    every = {place: file for files in parts.values() for place, file in files.items()}
    values = {
        "VERSION": version, "UPGRADE_CODE": UPGRADE_CODE,
        "PRODUCT_CODE": identifier("product", version),
        "VIRTUAL_CAMERA_FILE": symbol("f", CAMERA),
        "DIRECTORIES": "\n".join(directories(every)),
    }
    claimed = set()
    for feature, components in FEATURES.items():
        places = sorted({place for component in components for place in parts[component]} - claimed)
        claimed |= set(places)
        values[feature + "_COMPONENTS"] = "\n".join(f'      <ComponentRef Id="{symbol("c", place)}"/>'
                                                    for place in places)
    text = TEMPLATE.read_text(encoding="utf-8")
    return re.sub("@([A-Z_]+)@", lambda match: values[match[1]], text)


def statements(parts, version):
    """SQL for what wixl can't write: the PATH entry, and the versions of programs and DLLs."""
    tool = symbol("c", pathlib.PurePosixPath("bin/borvanusb.exe"))
    folder = symbol("d", pathlib.PurePosixPath("bin"))
    yield ("CREATE TABLE `Environment` (`Environment` CHAR(72) NOT NULL, `Name` CHAR(255) NOT NULL LOCALIZABLE, "
           "`Value` CHAR(255) LOCALIZABLE, `Component_` CHAR(72) NOT NULL PRIMARY KEY `Environment`)")
    # For all users. Appended at installation, and removed with the product.
    yield ("INSERT INTO `Environment` (`Environment`, `Name`, `Value`, `Component_`) "
           f"VALUES ('Path', '=-*PATH', '[~];[{folder}]', '{tool}')")
    yield ("INSERT INTO `RemoveFile` (`FileKey`, `Component_`, `FileName`, `DirProperty`, `InstallMode`) "
           f"VALUES ('RemoveMenuFolder', '{symbol('c', README)}', '', 'MenuFolder', 2)")
    # Cameras are unregistered before the program that can do this is removed.
    camera_goes = f'?{symbol("c", CAMERA)}=3 AND (REMOVE="ALL" OR REMOVE><"VirtualCamera")'
    for sequence, action, condition in ((60, "KeepFolder", "PREVIOUSDIR AND NOT INSTALLDIR"),
                                        (3300, "RemoveEnvironmentStrings", ""),
                                        (3490, "UnregisterCameras", camera_goes),
                                        (5200, "WriteEnvironmentStrings", "")):
        yield ("INSERT INTO `InstallExecuteSequence` (`Action`, `Condition`, `Sequence`) "
               f"VALUES ('{action}', '{condition}', {sequence})")
    # The old version is removed before the new one is installed, in one transaction.
    yield "UPDATE `InstallExecuteSequence` SET `Sequence` = 1510 WHERE `Action` = 'RemoveExistingProducts'"
    for files in parts.values():
        for place in files:
            if place.suffix in (".exe", ".dll"):
                # A file without a version never replaces one with a version.
                name = symbol("f", place)
                yield f"UPDATE `File` SET `Version` = '{version}.0', `Language` = '1033' WHERE `File` = '{name}'"
                yield f"DELETE FROM `MsiFileHash` WHERE `File_` = '{name}'"


def make(parts, version, target, scratch, epoch):
    """Writes the MSI `target`."""
    # wixl only accepts file names in its current folder.
    text = source_of({component: {place: file.relative_to(scratch) for place, file in files.items()}
                      for component, files in parts.items()}, version)
    source = scratch / "installer.wxs"
    source.write_text(text, encoding="utf-8")
    target.unlink(missing_ok=True)
    environment = {**os.environ, "TZ": "UTC", "LC_ALL": "C.UTF-8"}
    subprocess.run(["wixl", "-a", "x64", "-o", target.resolve(), source], check=True, cwd=scratch, env=environment)
    queries = [word for statement in statements(parts, version) for word in ("-q", statement)]
    subprocess.run(["msibuild", target, *queries], check=True, env=environment)
    # Other content needs another package code: Windows Installer treats files with the same code as equal.
    content = hashlib.sha256()
    for files in parts.values():
        for place, file in sorted(files.items()):
            content.update(place.as_posix().encode() + b"\0" + file.read_bytes())
    package = identifier("package", version, content.hexdigest())
    compound_file.settle(target, package, epoch)
