#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# Two nodes of one process each: network namespaces with names of their own, joined by a cable, under one mpirun. The output
# is that of the searches of koru.h; so it is when the cable is cut on the way. Skipped, with status 77 and a reason, where
# such namespaces cannot be made.
#
#   two_nodes.sh PROGRAM MPIRUN
set -euo pipefail
readonly program=$1 mpirun=$2 a=koru-a-$$ b=koru-b-$$ network=10.211.55
folder=$(mktemp -d)
readonly folder

skip() {
  echo "skipped: $1"
  exit 77
}

# Whatever still runs in the namespaces ends with them.
clean_up() {
  for node in "$a" "$b"; do
    for pid in $(ip netns pids "$node" 2>/dev/null); do kill -9 "$pid" 2>/dev/null || true; done
    ip netns delete "$node" 2>/dev/null || true
  done
  rm -rf "$folder"
}

command -v ip >/dev/null || skip "there is no ip (Debian package iproute2)"
command -v unshare >/dev/null || skip "there is no unshare"
ip netns add "$a" 2>/dev/null || skip "no network namespace can be made"
trap clean_up EXIT
ip netns add "$b"
ip link add ka-$$ netns "$a" type veth peer name kb-$$ netns "$b" 2>/dev/null || skip "no pair of interfaces can be made"
unshare --uts true 2>/dev/null || skip "no namespace of names can be made"
ip -n "$a" address add $network.1/24 dev ka-$$
ip -n "$b" address add $network.2/24 dev kb-$$
for node in "$a" "$b"; do ip -n "$node" link set lo up; done
ip -n "$a" link set ka-$$ up
ip -n "$b" link set kb-$$ up

# What mpirun starts a process on another node with.
cat >"$folder/agent" <<END
#!/bin/sh
shift
exec ip netns exec $b unshare --uts sh -c 'hostname node-b; exec sh -c "\$0"' "\$*"
END
chmod +x "$folder/agent"

# launch NAME=VALUE... -- WORD...: two processes, the first of them here.
launch() {
  local environment=()
  while [[ $1 != -- ]]; do
    environment+=(-x "$1")
    shift
  done
  shift
  ip netns exec "$a" unshare --uts sh -c 'hostname node-a; exec "$@"' sh \
    "$mpirun" --allow-run-as-root --enable-recovery --host $network.1:1,$network.2:1 -n 2 "${environment[@]}" \
    --mca plm_rsh_agent "$folder/agent" --mca btl tcp,self --mca btl_tcp_if_include $network.0/24 \
    --mca oob_tcp_if_include $network.0/24 "$program" mpi "$@"
}

fail() {
  echo "$1"
  head -c 2000 "$folder/errors" || true
  exit 1
}

same() {
  cmp "$folder/expected" "$folder/shown" || fail "$1: the output differs"
}

"$program" plain golomb 8 >"$folder/expected"
launch KORU_TEST_MARK="$folder/mark" -- golomb 8 >"$folder/shown" 2>"$folder/errors" || fail "two nodes: status $?"
[[ -e $folder/mark.1 ]] || fail "two nodes: there was no second process"
same "two nodes"
echo "two nodes: the same output"

# The first process loses patience and goes on alone; how mpirun then ends is its own affair.
rm "$folder"/mark.*
"$program" plain golomb 10 >"$folder/expected"
launch KORU_TEST_MARK="$folder/mark" KORU_MPI_PATIENCE=2 -- golomb 10 >"$folder/shown" 2>"$folder/errors" &
for _ in $(seq 600); do [[ -e $folder/mark.1 ]] && break || sleep 0.1; done
[[ -e $folder/mark.1 ]] || fail "cut: there was no second process"
sleep 1
[[ $(ip netns pids "$b" | wc -l) -ge 2 ]] || fail "cut: the second process is not on the second node"
ip -n "$b" link set kb-$$ down
cut=$(date +%s)
cmp -s "$folder/expected" "$folder/shown" && fail "cut: it was over before"
for _ in $(seq 1800); do cmp -s "$folder/expected" "$folder/shown" && break || sleep 0.1; done
same "cut"
echo "cut: the same output, $(($(date +%s) - cut)) s after the cut"
