# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# What the commands of ./dev are made of: output, steps with a log each, and the system's packages.

readonly LOGS=build/logs
detail=  # what a command wants to say in its verdict
closing= # what stands below the verdict of a command that has passed

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
  # Without these an interrupted command would be said to have passed.
  trap 'exit 130' INT
  trap 'exit 143' TERM
  "$@"
}

verdict() {
  local name=$1 status=$2 colour=$GREEN word=PASSED
  stop_watching
  if ((status != 0)); then colour=$RED word=FAILED closing=; fi
  printf '%s%s./dev %s: %s%s%s (%d s)\n' "$BOLD" "$colour" "$name" "$word" "$PLAIN" "${detail:+ - $detail}" "$SECONDS"
  if [[ -n $closing ]]; then printf '\n%s\n' "$closing"; fi
}

# --- Steps ----------------------------------------------------------------------------------------------------------

log_file() {
  mkdir -p "$LOGS"
  echo "$LOGS/$1.log"
}

# step TITLE LOG COMMAND...: run it with its output in a log, which is named and, when the command fails, shown.
step() {
  local title=$1 log start=$SECONDS status=0
  log=$(log_file "$2")
  shift 2
  say "$title  (log: $log)"
  watched "$log" "$@" || status=$?
  if ((status == 0)); then
    if ((SECONDS - start >= 5)); then echo "    done in $((SECONDS - start)) s"; fi
    return 0
  fi
  show_end "$log"
  complain "$title failed; the whole output is in $log"
  return 1
}

# The end of a log, without lines that only tell of progress.
show_end() {
  { grep -Ev '^(\[[0-9]+/[0-9]+\] |[0-9]+ warnings? generated\.|(dl|pm)status:)' "$1" || true; } | tail -n 80
}

# --- Progress -------------------------------------------------------------------------------------------------------

watcher= # the process that shows how far the command is that runs

# watched LOG COMMAND...: run it with its output in the log, and show how far it is: on a terminal in one line that is
# written again and again, elsewhere in a plain line now and then.
watched() {
  local log=$1 status=0
  shift
  : >"$log"
  if [[ -t 1 ]]; then show_bar "$log" & else show_lines "$log" & fi
  watcher=$!
  "$@" >"$log" 2>&1 </dev/null || status=$?
  stop_watching
  return "$status"
}

# Also called on leaving, when a command was interrupted.
stop_watching() {
  if [[ -z $watcher ]]; then return 0; fi
  { kill "$watcher" && wait "$watcher"; } 2>/dev/null || true
  watcher=
  if [[ -t 1 ]]; then printf '\r\e[K'; fi
}

show_bar() {
  local log=$1 start=$SECONDS width share text filled bar
  width=$(stty size <&1 2>/dev/null | cut -d ' ' -f 2)
  if ((${width:-0} < 20)); then width=80; fi
  while sleep 0.3; do
    bar='' share='' text=''
    read -r share text < <(progress_in "$log") || true
    if [[ -n $share ]]; then
      filled=$((share * 24 / 100))
      printf -v bar '[%-24s] %3d %%  ' "$(printf '%*s' "$filled" '' | tr ' ' '#')" "$share"
    fi
    text="    $bar$((SECONDS - start)) s  $text"
    printf '\r%s\e[K' "${text:0:width-1}"
  done
}

# The first line after five seconds, then one every ten, if there is something new to say.
show_lines() {
  local log=$1 start=$SECONDS share text last='' pause=5
  while sleep "$pause"; do
    pause=10 share='' text=''
    read -r share text < <(progress_in "$log") || true
    if [[ -z $share || $share$text == "$last" ]]; then continue; fi
    last=$share$text
    printf '    %3d %% after %d s: %s\n' "$share" "$((SECONDS - start))" "$text"
  done
}

# progress_in LOG: "SHARE TEXT", the percentage and what is being done, by the end of what ninja, ctest, or apt-get with a
# status of its own have written; nothing when it does not say.
progress_in() {
  tail -c 4000 "$1" | awk '
    function counted(fraction, what) {
      gsub(/[][]/, "", fraction); split(fraction, count, "/")
      if (count[2] > 0) { share = int(100 * count[1] / count[2]); text = count[1] " of " count[2] "  " what }
    }
    /^\[[0-9]+\/[0-9]+\] / { file = $NF; sub(/.*\//, "", file); sub(/\.o$/, "", file); counted($1, file) }
    /^ *[0-9]+\/[0-9]+ Test / { counted($1, "tests") }
    /^(dl|pm)status:/ { split($0, part, ":"); share = int(part[3]); text = (/^dl/ ? "download: " : "") part[4] }
    END { if (text != "") print share, text }'
}

# show COMMAND...: print the command line, then run it, by RUNNER if there is one, for the user to see.
show() {
  printf '\n%s$ %s%s\n' "$BOLD" "$*" "$PLAIN"
  ${RUNNER:-} "$@"
}

# unless_unchanged NAME COMMAND...: leave it out when it last succeeded on exactly these sources.
unless_unchanged() {
  local stamp=build/$1.stamp state
  state=$(find src include profile tree parallel minizinc .clang-tidy -type f -print0 | sort -z | xargs -0 sha256sum)
  shift
  if [[ -f $stamp && $(<"$stamp") == "$state" ]]; then
    echo "nothing has changed since this last passed"
    return 0
  fi
  "$@" && echo "$state" >"$stamp"
}

# Every C and C++ file of the project, each followed by a null character.
sources() {
  find include src profile tree parallel minizinc tests bench examples -type f \( -name '*.h' -o -name '*.hpp' -o -name '*.c' -o -name '*.cc' \) -print0 | sort -z
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
  local log
  log=$(log_file apt-install)
  say "install from Debian: $*  (log: $log)"
  set_root_prefix "$@" || return 1
  if compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null && watched "$log" apt_get_install "$@"; then return 0; fi
  step "fetch Debian's lists of packages" apt-update apt_get update || return 1
  step "install the packages" apt-install apt_get_install "$@"
}

apt_get_install() { apt_get install -y --no-install-recommends "$@"; }

# apt-get says how far it is in lines of its own among the rest of the output.
apt_get() { "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o APT::Status-Fd=1 "$@"; }

# as_root: what to put before a command that only root may run. Should sudo want a password, it asks here.
set_root_prefix() {
  as_root=()
  if ((EUID == 0)); then return 0; fi
  if command -v sudo >/dev/null; then
    as_root=(sudo)
    sudo -v
    return
  fi
  complain "installing packages takes root and there is no sudo; as root: apt-get install $*"
  return 1
}
