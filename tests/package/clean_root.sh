# SPDX-License-Identifier: MIT
# shellcheck shell=bash
# A Debian of its own for tests to do what they want in: sourced, with the variable `base`, a folder. Needs root, the
# package debootstrap and a network. MIRROR names another mirror than http://deb.debian.org/debian.
root=$base/root

# inside COMMAND...: run it there, with /proc and terminals, without which apt-get fails now and then, in an environment of its
# own.
inside() {
  # shellcheck disable=SC2016 # for the inner shell
  unshare --mount sh -c 'mount -t proc proc "$0/proc" && mount -t devpts devpts "$0/dev/pts" && exec chroot "$0" env -i HOME=/root DEBIAN_FRONTEND=noninteractive \
    PATH=/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"' "$root" "$@"
}

# clean_root: a Debian with nothing installed beyond the least; made once, then copied.
clean_root() {
  mkdir -p "$base"
  if [[ ! -e $base/minimal.tar ]]; then
    rm -rf "$root"
    debootstrap --variant=minbase bookworm "$root" "${MIRROR:-http://deb.debian.org/debian}"
    keep_root minimal
  fi
  copy_root minimal
}

# keep_root NAME, copy_root NAME: keep the system as it is under a name; begin with what was kept.
keep_root() {
  tar -C "$root" -cf "$base/$1.tar.part" .
  mv "$base/$1.tar.part" "$base/$1.tar"
}

copy_root() {
  rm -rf "$root"
  mkdir "$root"
  tar -C "$root" -xf "$base/$1.tar"
  cp /etc/resolv.conf "$root/etc/resolv.conf"
}
