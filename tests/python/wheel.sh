#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Build a wheel, twice, and compare; install it in an empty virtual environment and run the tests there: by unittest with
# nothing else, then by pytest with the system's packages (numpy among them) behind the wheel's.
#
#   wheel.sh LIBRARY REFERENCE FOLDER      the shared library, the program of reference.c, and where the wheel goes
#
# environment: PYTHON (python3)
set -euo pipefail
library=$(realpath "$1")
reference=$(realpath "$2")
mkdir -p "$3"
folder=$(realpath "$3")
tests=$(cd "$(dirname "$0")" && pwd)
python=${PYTHON:-python3}
unset PYTHONPATH KORU_LIBRARY

fail() {
  echo "wheel: $*" >&2
  exit 1
}

rm -rf "${folder:?}"/*
wheel=$("$python" -B "$tests/../../python/build_wheel.py" "$library" "$folder")
again=$(cd / && "$python" -B "$tests/../../python/build_wheel.py" "$library" "$folder/again")
cmp "$wheel" "$again" || fail "two builds differ"

"$python" -m venv "$folder/venv"
"$folder/venv/bin/pip" --disable-pip-version-check install --quiet --no-index "$wheel"
inside=$(cd / && "$folder/venv/bin/python" -c 'import koru; print(koru._library._candidates()[0])')
[[ $inside == "$folder"/venv/* ]] || fail "the library that is loaded is not the wheel's but $inside"

export KORU_REFERENCE=$reference
cd "$folder"
"$folder/venv/bin/python" -B -W error -m unittest discover -s "$tests"

"$python" -c 'import numpy, pytest' || fail "numpy and pytest are needed (python3-numpy, python3-pytest)"
site=$("$folder/venv/bin/python" -c 'import sysconfig; print(sysconfig.get_path("purelib"))')
"$python" -c 'import pytest, pathlib; print(pathlib.Path(pytest.__file__).parents[1])' >"$site/system.pth"
"$folder/venv/bin/python" -B -m pytest -q -p no:cacheprovider "$tests"
"$folder/venv/bin/python" -B -m pytest -q -p no:cacheprovider --doctest-modules --pyargs koru
echo "wheel: $wheel"
