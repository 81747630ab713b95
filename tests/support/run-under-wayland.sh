#!/usr/bin/env bash
# Runs one test program on a private headless Wayland desktop: KWin on a virtual screen with
# XWayland, the global shortcut service KWin hosts itself (kglobalaccel), and the desktop portal
# with its KDE back end, all on a private session bus. Programs draw through XWayland (DISPLAY)
# and reach the desktop's shortcuts only through the portal, as on a Plasma session.
#
# With VELLUMO_NO_PORTAL=1 no portal runs, and the bus cannot start one on demand either.
#
# The desktop gets a home of its own on every run, since KWin keeps the keys of every shortcut
# it was given in kglobalshortcutsrc; the test program keeps the home and XDG folders it was
# given, and gets the desktop's bus, displays and runtime folder.
set -euo pipefail

no_portal=${VELLUMO_NO_PORTAL:-}
portal=/usr/libexec/xdg-desktop-portal
portal_kde=
for candidate in /usr/lib/*/libexec/xdg-desktop-portal-kde /usr/libexec/xdg-desktop-portal-kde; do
  if [ -x "$candidate" ]; then
    portal_kde=$candidate
    break
  fi
done

missing() { echo "run-under-wayland: $1 is missing (./build.sh installs it)" >&2; exit 1; }
for tool in kwin_wayland Xwayland dbus-daemon gdbus setsid; do
  command -v "$tool" >/dev/null || missing "$tool"
done
if [ -z "$no_portal" ]; then
  [ -x "$portal" ] || missing "$portal"
  [ -n "$portal_kde" ] || missing xdg-desktop-portal-kde
fi

# The desktop, started in a session of its own: everything in it, including the services its
# bus starts on demand, shares one process group that a single signal ends.
desktop() {
  local dir=$1 watched=$2 no_portal=$3 portal=$4 portal_kde=$5

  has_owner() { # NAME: whether NAME is owned on the desktop's bus
    gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
      --method org.freedesktop.DBus.NameHasOwner "$1" 2>/dev/null | grep -q true
  }
  # NAME LOG PID SECONDS COMMAND…: polls COMMAND until it succeeds; gives up with the
  # component's log when the time is over or the component ended.
  wait_for() {
    local name=$1 log=$2 pid=$3 tries=$(($4 * 10))
    shift 4
    until "$@"; do
      tries=$((tries - 1))
      if [ "$tries" -le 0 ] || ! kill -0 "$pid" 2>/dev/null; then
        printf '%s\n%s\n' "$name did not come up" "$log" >"$dir/failed.tmp"
        mv "$dir/failed.tmp" "$dir/failed"
        exit 1
      fi
      sleep 0.1
    done
  }
  started() { # NAME PID LOG: remembered, to tell later which component ended early
    echo "$1 $2 $3" >>"$dir/components"
  }

  echo "$$" >"$dir/group.tmp" && mv "$dir/group.tmp" "$dir/group"
  export XDG_RUNTIME_DIR=$dir/runtime HOME=$dir/home
  export XDG_CONFIG_HOME=$HOME/.config XDG_DATA_HOME=$HOME/.local/share
  export XDG_CACHE_HOME=$HOME/.cache XDG_STATE_HOME=$HOME/.local/state
  export DBUS_SESSION_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/bus
  export XDG_CURRENT_DESKTOP=KDE XDG_SESSION_DESKTOP=KDE XDG_SESSION_TYPE=wayland
  unset WAYLAND_DISPLAY WAYLAND_SOCKET DISPLAY XAUTHORITY QT_QPA_PLATFORM

  # The stock configuration always reads /usr/share/dbus-1/services, from where a call to the
  # portal would start one; without a portal the bus gets an empty folder instead.
  local bus_config=/usr/share/dbus-1/session.conf
  if [ -n "$no_portal" ]; then
    mkdir -p "$dir/services"
    sed "s|<standard_session_servicedirs */>|<servicedir>$dir/services</servicedir>|" \
      /usr/share/dbus-1/session.conf >"$dir/bus.conf"
    bus_config=$dir/bus.conf
  fi
  dbus-daemon --config-file="$bus_config" --address="$DBUS_SESSION_BUS_ADDRESS" --nofork \
    --nopidfile >"$dir/log/dbus.log" 2>&1 &
  started dbus-daemon $! "$dir/log/dbus.log"
  wait_for "The session bus" "$dir/log/dbus.log" $! 10 test -S "$XDG_RUNTIME_DIR/bus"

  # KWin tells the displays it made (WAYLAND_DISPLAY, and DISPLAY for XWayland) only to the
  # programs it starts: this one writes them down.
  cat >"$dir/bin/report-displays" <<EOF
#!/bin/sh
env | grep -E '^(WAYLAND_DISPLAY|DISPLAY)=' >"$dir/displays.tmp" && mv "$dir/displays.tmp" "$dir/displays"
EOF
  chmod +x "$dir/bin/report-displays"
  # The installed binary carries a file capability (cap_sys_resource) that a container's
  # bounding set may lack, and then it cannot be run at all; a copy carries none. The copy
  # keeps the name, since KWin's platform plugin checks its own file name.
  cp "$(command -v kwin_wayland)" "$dir/bin/kwin_wayland"
  "$dir/bin/kwin_wayland" --virtual --xwayland --no-lockscreen --socket wayland-test \
    --width 1280 --height 800 "$dir/bin/report-displays" >"$dir/log/kwin.log" 2>&1 &
  local kwin=$!
  started kwin_wayland $kwin "$dir/log/kwin.log"
  wait_for "KWin with XWayland" "$dir/log/kwin.log" $kwin 60 test -f "$dir/displays"
  wait_for "KWin's kglobalaccel" "$dir/log/kwin.log" $kwin 30 has_owner org.kde.kglobalaccel

  if [ -z "$no_portal" ]; then
    # Started here rather than by the bus, which would give them its own environment: no
    # displays and no desktop name, by which the portal picks its back end.
    export "$(grep '^WAYLAND_DISPLAY=' "$dir/displays")" "$(grep '^DISPLAY=' "$dir/displays")"
    QT_QPA_PLATFORM=wayland "$portal_kde" >"$dir/log/portal-kde.log" 2>&1 &
    started xdg-desktop-portal-kde $! "$dir/log/portal-kde.log"
    wait_for "xdg-desktop-portal-kde" "$dir/log/portal-kde.log" $! 30 \
      has_owner org.freedesktop.impl.portal.desktop.kde
    "$portal" --verbose >"$dir/log/portal.log" 2>&1 &
    started xdg-desktop-portal $! "$dir/log/portal.log"
    wait_for "xdg-desktop-portal" "$dir/log/portal.log" $! 30 has_owner org.freedesktop.portal.Desktop
  fi
  touch "$dir/ready"

  # Lives as long as the script that started it, and cleans up in its place when it was killed.
  while kill -0 "$watched" 2>/dev/null; do
    sleep 1
  done
  trap '' TERM
  kill -TERM 0
  local _ name pid log
  while read -r name pid log; do
    for _ in $(seq 50); do
      kill -0 "$pid" 2>/dev/null || break
      sleep 0.1
    done
  done <"$dir/components"
  if mountpoint -q "$dir/runtime/doc"; then
    fusermount3 -u "$dir/runtime/doc" 2>/dev/null || umount -l "$dir/runtime/doc" 2>/dev/null
  fi
  rm -rf "$dir"
  kill -KILL 0
}

dir=$(mktemp -d "${TMPDIR:-/tmp}/wayland-desktop.XXXXXX")
mkdir -p "$dir/runtime" "$dir/home" "$dir/bin" "$dir/log"
chmod 700 "$dir/runtime"
cleanup() {
  local group
  group=$(cat "$dir/group" 2>/dev/null || echo "${desktop_pid:-}")
  if [ -n "$group" ]; then
    kill -TERM -- "-$group" 2>/dev/null || true
    for _ in $(seq 50); do
      kill -0 -- "-$group" 2>/dev/null || break
      sleep 0.1
    done
    kill -KILL -- "-$group" 2>/dev/null || true
  fi
  # The document portal mounts a file system there; it normally goes with its owner.
  if mountpoint -q "$dir/runtime/doc" 2>/dev/null; then
    fusermount3 -u "$dir/runtime/doc" 2>/dev/null || umount -l "$dir/runtime/doc" 2>/dev/null || true
  fi
  rm -rf "$dir"
}
trap cleanup EXIT

# Prints the log of every component that is no longer running.
report_ended() {
  local name pid log
  [ -f "$dir/components" ] || return 0
  while read -r name pid log; do
    if ! kill -0 "$pid" 2>/dev/null; then
      echo "run-under-wayland: $name has ended; its log:" >&2
      tail -n 40 "$log" >&2
    fi
  done <"$dir/components"
}

export -f desktop
setsid bash -c 'desktop "$@"' desktop "$dir" "$$" "$no_portal" "$portal" "$portal_kde" \
  </dev/null >"$dir/log/desktop.log" 2>&1 &
desktop_pid=$!
for _ in $(seq 1200); do
  [ ! -f "$dir/ready" ] || break
  if [ -f "$dir/failed" ]; then
    echo "run-under-wayland: $(head -n 1 "$dir/failed"); its log:" >&2
    cat "$(sed -n 2p "$dir/failed")" >&2
    exit 1
  fi
  if ! kill -0 "$desktop_pid" 2>/dev/null && [ ! -f "$dir/ready" ]; then
    echo "run-under-wayland: the desktop did not start" >&2
    cat "$dir/log/desktop.log" >&2
    report_ended
    exit 1
  fi
  sleep 0.1
done
if [ ! -f "$dir/ready" ]; then
  echo "run-under-wayland: the desktop did not come up in two minutes" >&2
  report_ended
  exit 1
fi

export XDG_RUNTIME_DIR=$dir/runtime DBUS_SESSION_BUS_ADDRESS=unix:path=$dir/runtime/bus
export "$(grep '^WAYLAND_DISPLAY=' "$dir/displays")" "$(grep '^DISPLAY=' "$dir/displays")"
export XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=KDE
# Programs choose their platform themselves here; and nothing but the desktop tells them
# whether it offers a portal.
unset QT_QPA_PLATFORM XAUTHORITY WAYLAND_SOCKET VELLUMO_NO_PORTAL
status=0
"$@" || status=$?
if [ "$status" -ne 0 ]; then
  report_ended
fi
exit "$status"
