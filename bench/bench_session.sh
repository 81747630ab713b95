# Shared by the benchmarks that run Vellumo beside xpad: a private X session, xpad itself, and
# both programs' notes. Sourced, not run; the caller sets `width` and `height`.

ensure_xpad() {
  command -v xpad >/dev/null && return
  echo "$(basename "$0"): installing xpad for the comparison" >&2
  local sudo=()
  [ "$(id -u)" -ne 0 ] && sudo=(sudo)
  "${sudo[@]}" apt-get install -y --no-install-recommends xpad >&2
}

xpad_version() { dpkg-query -W -f='${Version}' xpad 2>/dev/null || echo unknown; }

session_pids=()
stop_session() {
  local pid
  for pid in "${session_pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  session_pids=()
}

# A private X server with openbox and a session bus; sets DISPLAY and DBUS_SESSION_BUS_ADDRESS.
start_session() {
  local display_fd display
  exec {display_fd}<> <(:)
  Xvfb -displayfd "$display_fd" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
  session_pids+=($!)
  read -r -t 20 display <&"$display_fd"
  export DISPLAY=":$display"
  openbox --sm-disable >/dev/null 2>&1 &
  session_pids+=($!)
  for _ in $(seq 100); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id' && break
    sleep 0.05
  done
  local bus
  bus=$(dbus-daemon --session --fork --print-address=1 --print-pid=1)
  export DBUS_SESSION_BUS_ADDRESS=$(sed -n 1p <<<"$bus")
  session_pids+=("$(sed -n 2p <<<"$bus")")
}

# A fresh home with its own config, data, cache and runtime folders.
fresh_home() { # HOME
  rm -rf "$1"
  mkdir -p "$1/config" "$1/data" "$1/runtime"
  chmod 700 "$1/runtime"
}

# Runs a command with the home's folders as its own.
in_home() { # HOME COMMAND...
  local home=$1
  shift
  HOME=$home XDG_CONFIG_HOME=$home/config XDG_DATA_HOME=$home/data \
    XDG_CACHE_HOME=$home/cache XDG_RUNTIME_DIR=$home/runtime "$@"
}

# Vellumo's notes, written by bench_startup_seed (the caller sets `seed` to it), and a user who
# has met the welcome window already.
seed_vellumo() { # HOME COUNT
  "$seed" "$2" "$1/data" "$width" "$height" >/dev/null
  mkdir -p "$1/config/Vellumo"
  printf '[General]\nQWWelcomeWindowWasShown=true\n' >"$1/config/Vellumo/Vellumo.conf"
}

# xpad's notes, in ~/.config/xpad: the same text, sizes and places as bench_startup_seed's.
seed_xpad() { # HOME COUNT
  local folder=$1/config/xpad i x y
  mkdir -p "$folder"
  printf 'decorations 0\nwidth %d\nheight %d\ntray_enabled 1\ntoolbar 1\nauto_hide_toolbar 1\n' \
    "$width" "$height" >"$folder/default-style"
  for ((i = 0; i < $2; i++)); do
    x=$(( (i * 37) % (1280 - width) ))
    y=$(( 30 + (i * 23) % (800 - height - 30) ))
    printf 'Note %d\nMilk, eggs and bread. Call Anna about the #weekend.' $((i + 1)) >"$folder/content-$i"
    printf 'width %d\nheight %d\nx %d\ny %d\nfollow_font 1\nfollow_color 1\nsticky 0\nhidden 0\ncontent content-%d\n' \
      "$width" "$height" "$x" "$y" "$i" >"$folder/info-$i"
  done
}
