#!/usr/bin/env bash
# Runs one test program on a private X server with a real window manager (openbox) and a
# private session bus, as the integration tests need: window levels, workspaces and focus
# are the window manager's business, and nothing reaches the user's own desktop.
set -euo pipefail

for tool in Xvfb openbox dbus-run-session; do
  command -v "$tool" >/dev/null || { echo "run-under-x11: $tool is missing (./build.sh installs it)" >&2; exit 1; }
done

runtime=$(mktemp -d)
cleanup() {
  [ -n "${wm_pid:-}" ] && kill "$wm_pid" 2>/dev/null || true
  [ -n "${xvfb_pid:-}" ] && kill "$xvfb_pid" 2>/dev/null || true
  rm -rf "$runtime"
}
trap cleanup EXIT

# Let the X server pick a free display and tell us which.
exec {display_fd}<> <(:)
Xvfb -displayfd "$display_fd" -screen 0 1280x800x24 -nolisten tcp >"$runtime/xvfb.log" 2>&1 &
xvfb_pid=$!
read -r -t 20 display_number <&"$display_fd" || { echo "run-under-x11: Xvfb did not start" >&2; cat "$runtime/xvfb.log" >&2; exit 1; }
export DISPLAY=":$display_number"

# The server may take a moment to accept clients after it has named its display.
server_ready=
for _ in $(seq 200); do
  if xprop -root >/dev/null 2>&1; then
    server_ready=yes
    break
  fi
  sleep 0.05
done
if [ -z "$server_ready" ]; then
  echo "run-under-x11: Xvfb on $DISPLAY does not answer" >&2
  cat "$runtime/xvfb.log" >&2
  exit 1
fi

# Wait until the window manager has taken the screen; without it the tests mean nothing. On a
# busy machine its first start now and then loses a race with the server, so it gets three.
wm_ready=
for attempt in 1 2 3; do
  openbox --sm-disable >"$runtime/openbox.log" 2>&1 &
  wm_pid=$!
  for _ in $(seq 100); do
    if xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; then
      wm_ready=yes
      break 2
    fi
    kill -0 "$wm_pid" 2>/dev/null || break
    sleep 0.05
  done
  kill "$wm_pid" 2>/dev/null || true
  sleep 0.2
done
if [ -z "$wm_ready" ]; then
  echo "run-under-x11: openbox did not start on $DISPLAY" >&2
  cat "$runtime/openbox.log" >&2
  exit 1
fi

export QT_QPA_PLATFORM=xcb
dbus-run-session -- "$@"
