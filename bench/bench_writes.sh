#!/usr/bin/env bash
# Writes benchmark: the bytes Vellumo writes to the disk while one note is typed into, with N
# notes stored, beside xpad (Debian's sticky-notes program) given the same N notes, in the same
# run. Each program gets five bursts of typing 1.2 s apart into one of its notes; then it quits.
#
#   bench/bench_writes.sh [BUILD_DIR]        (default: build)
#
# Environment: COUNTS (default "10 100 1000 10000"). The bytes are the process's write_bytes of
# /proc/PID/io: what it sent towards the disk (counted in 4 KiB pages as they are dirtied), not
# what it passed to write(); the bytes that the quit wrote are read from wait4()'s rusage once
# the program has ended. Every measurement gets fresh folders, its own Xvfb with openbox and
# its own session bus.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$(cd "${1:-$here/build}" && pwd)
read -r -a counts <<<"${COUNTS:-10 100 1000 10000}"
width=240
height=200
bursts=5
burst_text='Call Anna at six. '

vellumo=$build/src/vellumo
seed=$build/bench/bench_startup_seed
for tool in "$vellumo" "$seed"; do
  [ -x "$tool" ] || { echo "bench_writes: $tool is missing; build with -DVELLUMO_BENCH=ON (./build.sh build)" >&2; exit 1; }
done
for tool in Xvfb openbox dbus-daemon xdotool /usr/bin/python3; do
  command -v "$tool" >/dev/null || { echo "bench_writes: $tool is missing (./build.sh installs it)" >&2; exit 1; }
done
source "$here/bench/bench_session.sh"
ensure_xpad

workspace=$(mktemp -d)
cleanup() { stop_session; rm -rf "$workspace"; }
trap cleanup EXIT

write_bytes() { awk '/^write_bytes:/ { print $2 }' "/proc/$1/io"; }

# The windows openbox manages, oldest first: one request, where asking each window for its
# process would take minutes at 10,000 notes. Only the measured program runs in the session.
clients() { xprop -root _NET_CLIENT_LIST 2>/dev/null | grep -o '0x[0-9a-f]*' || true; }

# Waits until COUNT windows are on screen, and the process's writes have stopped for a second.
wait_until_settled() { # PID COUNT
  local shown=0 written=-1 now
  for _ in $(seq 2400); do
    shown=$(clients | wc -l)
    [ "$shown" -ge "$2" ] && break
    sleep 0.5
  done
  [ "$shown" -ge "$2" ] || { echo "bench_writes: only $shown of $2 windows showed" >&2; return 1; }
  while now=$(write_bytes "$1") && [ "$now" != "$written" ]; do
    written=$now
    sleep 1
  done
}

measure() { # PROGRAM COUNT -> "typing_bytes quit_bytes"
  local home=$workspace/home pid window before after
  fresh_home "$home"
  "seed_$1" "$home" "$2"
  start_session
  local command=("$vellumo")
  [ "$1" = xpad ] && command=(xpad)
  # The program runs under a parent that waits for it and keeps what it wrote in all.
  in_home "$home" /usr/bin/python3 -c '
import os, sys
pid = os.fork()
if pid == 0:
    os.execvp(sys.argv[2], sys.argv[2:])
with open(sys.argv[1] + ".pid", "w") as out:
    out.write("%d\n" % pid)
_, _, usage = os.wait4(pid, 0)
with open(sys.argv[1], "w") as out:
    out.write("%d\n" % (usage.ru_oublock * 512))
' "$workspace/total" "${command[@]}" >/dev/null 2>&1 &
  local parent=$!
  for _ in $(seq 100); do [ -s "$workspace/total.pid" ] && break; sleep 0.1; done
  pid=$(cat "$workspace/total.pid")
  wait_until_settled "$pid" "$2"

  # The last note opened, the one on top; the click puts the cursor at the end of its text.
  window=$(clients | tail -1)
  xdotool windowactivate --sync "$window" 2>/dev/null || xdotool windowfocus --sync "$window"
  xdotool mousemove --window "$window" $((width / 2)) $((height - 30)) click 1
  sleep 0.5
  before=$(write_bytes "$pid")
  for ((burst = 0; burst < bursts; burst++)); do
    [ "$burst" -gt 0 ] && sleep 1.2
    xdotool type --delay 40 "$burst_text"
  done
  # Vellumo saves half a second after the last key.
  sleep 2
  after=$(write_bytes "$pid")

  kill -TERM "$pid"
  wait "$parent"
  local total
  total=$(cat "$workspace/total")
  rm -f "$workspace/total" "$workspace/total.pid"
  stop_session
  if ! grep -rqa "${burst_text% }" "$home/config/xpad" "$home/data/Vellumo/stickies.db" 2>/dev/null; then
    echo "bench_writes: $1 with $2 notes: the typed text was not saved" >&2
  fi
  echo "$((after - before)) $((total - after))"
}

kib() { awk -v b="$1" 'BEGIN { printf "%.0f", b / 1024 }'; }

printf 'Bytes written (write_bytes of /proc/PID/io) for %d bursts of typing 1.2 s apart into one note,\n' "$bursts"
printf 'then by the quit. Vellumo %s, xpad %s, 1280x800 Xvfb with openbox.\n\n' \
  "$("$vellumo" --version | awk '{ print $2 }')" "$(xpad_version)"
printf '%6s  %14s  %14s  %8s  %14s  %14s\n' notes 'vellumo KiB' 'xpad KiB' 'ratio' 'vellumo quit' 'xpad quit'
for count in "${counts[@]}"; do
  read -r vt vq < <(measure vellumo "$count")
  read -r xt xq < <(measure xpad "$count")
  ratio=$(awk -v v="$vt" -v x="$xt" 'BEGIN { print x == 0 ? "-" : sprintf("%.2f", v / x) }')
  printf '%6d  %14s  %14s  %8s  %14s  %14s\n' "$count" "$(kib "$vt")" "$(kib "$xt")" "$ratio" \
    "$(kib "$vq") KiB" "$(kib "$xq") KiB"
done
