# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# What the commands of ./dev are made of: output, steps with a log each, and the system's packages.

readonly LOGS=build/logs
detail= # what a command wants to say in its verdict

# --- Output ---------------------------------------------------------------------------------------------------------

if [[ -t 1 && -z ${NO_COLOR:-} ]]; then
  readonly BOLD=$'\e[1m' GREEN=$'\e[32m' RED=$'\e[31m' BLUE=$'\e[34m' PLAIN=$'\e[0m'
else
  readonly BOLD='' GREEN='' RED='' BLUE='' PLAIN=''
fi

say() { printf '%s==>%s %s\n' "$BLUE" "$PLAIN" "$*"; }
complain() { printf '%s==> %s%s\n' "$RED" "$*" "$PLAIN" >&2; }

misuse() {
  complain "$* (see ./dev help)"
  trap - EXIT
  exit 2
}

join() {
  local separator=$1 text=$2
  shift 2
  printf '%s' "$text" "${@/#/$separator}"
}

# with_verdict NAME FUNCTION ARGUMENT...: run a command in a shell of its own and close with one line saying how it went.
# The verdict is printed on leaving the shell, so that a failure anywhere in the command stops it ("set -e" holds).
with_verdict() {
  local name=$1
  shift
  SECONDS=0
  trap 'verdict '"$name"' $?' EXIT
  "$@"
}

verdict() {
  local name=$1 status=$2 colour=$GREEN word=PASSED
  if ((status != 0)); then colour=$RED word=FAILED; fi
  printf '%s%s./dev %s: %s%s%s (%d s)\n' "$BOLD" "$colour" "$name" "$word" "$PLAIN" "${detail:+ - $detail}" "$SECONDS"
}

# --- Steps ----------------------------------------------------------------------------------------------------------

log_file() {
  mkdir -p "$LOGS"
  echo "$LOGS/$1.log"
}

# step TITLE LOG COMMAND...: run it with its output in a log, which is named and, when the command fails, shown.
step() {
  local title=$1 log start=$SECONDS
  log=$(log_file "$2")
  shift 2
  say "$title  (log: $log)"
  if "$@" >"$log" 2>&1 </dev/null; then
    if ((SECONDS - start >= 5)); then echo "    done in $((SECONDS - start)) s"; fi
    return 0
  fi
  show_end "$log"
  complain "$title failed; the whole output is in $log"
  return 1
}

# The end of a log, without lines that only tell of progress.
show_end() { { grep -Ev '^(\[[0-9]+/[0-9]+\] |[0-9]+ warnings? generated\.)' "$1" || true; } | tail -n 80; }

# show COMMAND...: print the command line, then run it, by RUNNER if there is one, for the user to see.
show() {
  printf '\n%s$ %s%s\n' "$BOLD" "$*" "$PLAIN"
  ${RUNNER:-} "$@"
}

# unless_unchanged NAME COMMAND...: leave it out when it last succeeded on exactly these sources.
unless_unchanged() {
  local stamp=build/$1.stamp state
  state=$(find src include .clang-tidy -type f -print0 | sort -z | xargs -0 sha256sum)
  shift
  if [[ -f $stamp && $(<"$stamp") == "$state" ]]; then
    echo "nothing has changed since this last passed"
    return 0
  fi
  "$@" && echo "$state" >"$stamp"
}

# Every C and C++ file of the project, each followed by a null character.
sources() {
  find include src tests bench examples -type f \( -name '*.h' -o -name '*.c' -o -name '*.cc' \) -print0 | sort -z
}

# --- Packages -------------------------------------------------------------------------------------------------------

is_installed() { [[ $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }

# need PACKAGE...: install those that are missing.
need() {
  local package missing=()
  if ! command -v apt-get >/dev/null; then
    say "no apt-get here: make sure that you have what these Debian packages contain: $*"
    return 0
  fi
  for package in "$@"; do is_installed "$package" || missing+=("$package"); done
  if ((${#missing[@]} > 0)); then install_packages "${missing[@]}"; fi
}

# The package lists are fetched only when there are none or they have become too old to install from.
install_packages() {
  say "install missing packages: $*"
  set_root_prefix "$@" || return 1
  if compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null && apt_get_install "$@"; then return 0; fi
  step "fetch the package lists" apt-update "${as_root[@]}" apt-get update || return 1
  apt_get_install "$@" || {
    tail -n 30 "$(log_file apt-install)"
    complain "cannot install: $*"
    return 1
  }
}

apt_get_install() {
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "$@" \
    >"$(log_file apt-install)" 2>&1 </dev/null
}

# as_root: what to put before a command that only root may run.
set_root_prefix() {
  as_root=()
  if ((EUID == 0)); then return 0; fi
  if command -v sudo >/dev/null; then
    as_root=(sudo)
    return 0
  fi
  complain "installing packages takes root and there is no sudo; as root: apt-get install $*"
  return 1
}
