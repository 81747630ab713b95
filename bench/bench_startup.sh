#!/usr/bin/env bash
# Start-up benchmark: how long Vellumo takes to show N stored notes, and its peak memory, beside
# xpad (Debian's sticky-notes program) given the same N notes in its own format, in the same run,
# and beside a bare X11 client that only maps N plain windows: about what the X server and the
# window manager alone take.
#
#   bench/bench_startup.sh [BUILD_DIR]        (default: build)
#
# Environment: COUNTS (default "1 10 100 500"), RUNS per program and count (default 3; the
# median is reported). Every measurement gets fresh data and config folders, its own Xvfb with
# openbox and its own session bus. xpad is installed (apt-get, through sudo when not root) the
# first time this script runs, and only by this script: no test needs it.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd)
read -r -a counts <<<"${COUNTS:-1 10 100 500}"
runs=${RUNS:-3}
width=240
height=200
timeout=120

vellumo=$build/src/vellumo
seed=$build/bench/bench_startup_seed
watch=$build/bench/bench_startup_watch
bare=$build/bench/bench_startup_bare
for tool in "$vellumo" "$seed" "$watch" "$bare"; do
  [ -x "$tool" ] || { echo "bench_startup: $tool is missing; build with -DVELLUMO_BENCH=ON (./build.sh build)" >&2; exit 1; }
done
for tool in Xvfb openbox dbus-daemon; do
  command -v "$tool" >/dev/null || { echo "bench_startup: $tool is missing (./build.sh installs it)" >&2; exit 1; }
done
source "$here/bench/bench_session.sh"
ensure_xpad
xpad_version=$(xpad_version)

workspace=$(mktemp -d)
cleanup() { stop_session; rm -rf "$workspace"; }
trap cleanup EXIT

seed_bare() { :; }

measure() { # PROGRAM COUNT -> "milliseconds kilobytes"
  local home=$workspace/home result
  fresh_home "$home"
  "seed_$1" "$home" "$2"
  start_session
  local command=("$vellumo")
  [ "$1" = xpad ] && command=(xpad)
  [ "$1" = bare ] && command=("$bare" "$2" "$width" "$height")
  if ! result=$(in_home "$home" \
    "$watch" "$2" "$width" "$height" "$timeout" -- "${command[@]}" 2>"$workspace/errors"); then
    echo "bench_startup: $1 with $2 notes: $(grep bench_startup_watch "$workspace/errors" | tail -1)" >&2
    result="- -"
  fi
  stop_session
  echo "$result"
}

# The median of the runs that finished; "-" when none did.
median() { grep -v '^-$' | sort -n | awk '{ v[NR] = $1 } END { print NR == 0 ? "-" : v[int((NR + 1) / 2)] }'; }

printf 'Start-up until every note window is mapped (median of %d runs); peak resident memory.\n' "$runs"
printf 'Vellumo %s, xpad %s, 1280x800 Xvfb with openbox.\n\n' "$("$vellumo" --version | awk '{ print $2 }')" "$xpad_version"
printf '%6s  %12s  %12s  %8s  %12s  %12s  %12s  %8s\n' notes 'vellumo ms' 'xpad ms' 'ratio' 'bare X11 ms' 'vellumo MiB' 'xpad MiB' 'ratio'
for count in "${counts[@]}"; do
  vellumo_times=() xpad_times=() bare_times=() vellumo_memory=() xpad_memory=()
  for ((run = 0; run < runs; run++)); do
    read -r ms kb < <(measure vellumo "$count"); vellumo_times+=("$ms"); vellumo_memory+=("$kb")
    read -r ms kb < <(measure xpad "$count"); xpad_times+=("$ms"); xpad_memory+=("$kb")
    read -r ms kb < <(measure bare "$count"); bare_times+=("$ms")
  done
  vt=$(printf '%s\n' "${vellumo_times[@]}" | median)
  xt=$(printf '%s\n' "${xpad_times[@]}" | median)
  bt=$(printf '%s\n' "${bare_times[@]}" | median)
  vm=$(printf '%s\n' "${vellumo_memory[@]}" | median)
  xm=$(printf '%s\n' "${xpad_memory[@]}" | median)
  awk -v n="$count" -v vt="$vt" -v xt="$xt" -v bt="$bt" -v vm="$vm" -v xm="$xm" 'BEGIN {
    tr = (vt == "-" || xt == "-" || xt == 0) ? "-" : sprintf("%.2f", vt / xt)
    mr = (vm == "-" || xm == "-" || xm == 0) ? "-" : sprintf("%.2f", vm / xm)
    vmm = (vm == "-") ? "-" : sprintf("%.1f", vm / 1024)
    xmm = (xm == "-") ? "-" : sprintf("%.1f", xm / 1024)
    printf "%6d  %12s  %12s  %8s  %12s  %12s  %12s  %8s\n", n, vt, xt, tr, bt, vmm, xmm, mr }'
done
