#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Build a wheel of the package with the shared library inside. Only Python itself is needed, and `strip`, if it is there.

    build_wheel.py LIBRARY FOLDER [--platform TAG]

LIBRARY is libkoru.so.3 or koru.dll; TAG is as pip writes it (default: that of this machine, as linux_x86_64). The same
sources and library make the same bytes, whenever and wherever. Prints the name of the wheel. On Linux it runs where the
C and C++ libraries are no older than on the machine that built it.
"""
import argparse
import base64
import hashlib
import re
import shutil
import subprocess
import sysconfig
import tempfile
import zipfile
from pathlib import Path

HERE = Path(__file__).resolve().parent
METADATA = """Metadata-Version: 2.1
Name: koru
Version: {version}
Summary: Finite-domain constraint solver over 32-bit signed integers
License: MIT
Requires-Python: >=3.9
Description-Content-Type: text/markdown

{description}"""
WHEEL = """Wheel-Version: 1.0
Generator: koru
Root-Is-Purelib: false
Tag: py3-none-{platform}
"""


def stripped(library):
    """The library without what only a debugger reads."""
    content = library.read_bytes()
    if library.suffix == ".dll" or shutil.which("strip") is None:
        return content
    with tempfile.TemporaryDirectory() as scratch:
        copy = Path(scratch) / "library"
        copy.write_bytes(content)
        subprocess.run(["strip", "--strip-unneeded", str(copy)], check=True)
        return copy.read_bytes()


def project_version():
    return re.search(r"VERSION (\d+\.\d+\.\d+)", (HERE.parent / "CMakeLists.txt").read_text(encoding="utf-8")).group(1)


def contents(library, platform):
    """The files of the wheel by name, without the list of them."""
    version = project_version()
    files = {f"koru/{path.name}": path.read_bytes() for path in (HERE / "koru").iterdir() if path.is_file()}
    files["koru/koru.dll" if library.suffix == ".dll" else "koru/libkoru.so.3"] = stripped(library)
    page = (HERE.parent / "docs" / "python.md").read_text(encoding="utf-8")
    info = f"koru-{version}.dist-info/"
    files[info + "METADATA"] = METADATA.format(version=version, description=page).encode()
    files[info + "WHEEL"] = WHEEL.format(platform=platform).encode()
    files[info + "LICENSE"] = (HERE.parent / "LICENSE").read_bytes()
    return files, info + "RECORD", f"koru-{version}-py3-none-{platform}.whl"


def record_of(files, name):
    def digest(content):
        return base64.urlsafe_b64encode(hashlib.sha256(content).digest()).rstrip(b"=").decode()

    lines = [f"{path},sha256={digest(files[path])},{len(files[path])}" for path in sorted(files)]
    return "\n".join([*lines, f"{name},,", ""]).encode()


def build(library, folder, platform):
    files, record, name = contents(library, platform)
    files[record] = record_of(files, record)
    folder.mkdir(parents=True, exist_ok=True)
    with zipfile.ZipFile(folder / name, "w", zipfile.ZIP_DEFLATED) as wheel:
        for path in sorted(files, key=lambda p: (p.partition("/")[0] != "koru", p)):
            entry = zipfile.ZipInfo(path, (1980, 1, 1, 0, 0, 0))
            entry.compress_type = zipfile.ZIP_DEFLATED
            entry.create_system = 3
            entry.external_attr = 0o100644 << 16
            wheel.writestr(entry, files[path])
    return folder / name


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("library", type=Path)
    parser.add_argument("folder", type=Path)
    parser.add_argument("--platform", default=re.sub(r"[-.]", "_", sysconfig.get_platform()))
    arguments = parser.parse_args()
    print(build(arguments.library.resolve(), arguments.folder, arguments.platform))


if __name__ == "__main__":
    main()
