#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# The tests of the Python package with Python 3.9, the oldest that it is for: that of Debian 11, unpacked into a folder and run
# with the C library of this system, which is newer. Nothing is installed. On Debian 12, with a network.
#
#   oldest.sh LIBRARY REFERENCE FOLDER      the shared library, the program of reference.c, and where Python goes
#
# environment: MIRROR (http://deb.debian.org/debian)
set -euo pipefail
library=$(realpath "$1")
reference=$(realpath "$2")
mkdir -p "$3"
folder=$(realpath "$3")
tests=$(cd "$(dirname "$0")" && pwd)
packages=(python3.9-minimal libpython3.9-minimal libpython3.9-stdlib libffi7 libssl1.1 python3-numpy libblas3 liblapack3
  libgfortran5)

rm -rf "${folder:?}"/*
mkdir -p "$folder"/{lists,cache,debs,root}
: >"$folder/status" # nothing is installed that would be preferred
echo "deb [signed-by=/usr/share/keyrings/debian-archive-keyring.gpg] ${MIRROR:-http://deb.debian.org/debian} bullseye main" \
  >"$folder/sources.list"
apt=(apt-get -o APT::Sandbox::User=root -o Dir::Etc::SourceList="$folder/sources.list" -o Dir::Etc::SourceParts=-
  -o Dir::State::Lists="$folder/lists" -o Dir::State::Status="$folder/status" -o Dir::Cache="$folder/cache")
"${apt[@]}" update
(cd "$folder/debs" && "${apt[@]}" download "${packages[@]}")
for package in "$folder"/debs/*.deb; do dpkg-deb -x "$package" "$folder/root"; done

libraries=$(dirname "$(find "$folder/root" -name 'libffi.so.7')")
python=(env LD_LIBRARY_PATH="$libraries:$libraries/blas:$libraries/lapack" PYTHONHOME="$folder/root/usr"
  "$folder/root/usr/bin/python3.9")
"${python[@]}" --version
"${python[@]}" -c 'import numpy'
PYTHONPATH=$tests/../../python KORU_LIBRARY=$library KORU_REFERENCE=$reference \
  "${python[@]}" -B -W error -m unittest discover -s "$tests"
