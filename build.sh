#!/usr/bin/env bash
# Vellumo's one set-up script.
#   ./build.sh run [ARGS...]  install what is missing, build, start Vellumo
#   ./build.sh test           install what is missing, build, run every test
#   ./build.sh build          install what is missing and build (no tests)
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$here"

# Debian 12 packages the build, the tests and the program need.
packages=(
  build-essential cmake ninja-build ccache pkg-config
  clang libclang-rt-14-dev
  qt6-base-dev qt6-base-dev-tools qt6-svg-dev
  libgl-dev x11proto-dev libx11-dev libxcb1-dev libxcb-xfixes0-dev
  libenchant-2-dev hunspell-en-us
  # Event sounds; the pulse driver reaches PulseAudio and PipeWire desktops.
  libcanberra-dev libcanberra-pulse
  python3 python3-cbor2
  # The Markdown export test reads its front matter as a YAML reader does.
  python3-yaml
  xvfb xauth openbox x11-utils xdotool dbus imagemagick desktop-file-utils
  # The Wayland tests run a private KWin with XWayland and the desktop portal's global shortcuts.
  kwin-wayland xwayland xdg-desktop-portal xdg-desktop-portal-kde
  libbenchmark-dev
  # The benchmarks run xpad beside Vellumo.
  xpad
  # The sync test passes notes between two Vellumos through two real Syncthings.
  syncthing
  pandoc
  fonts-dejavu-core fonts-liberation2
)

log() { printf '\033[1m==> %s\033[0m\n' "$*"; }

install_missing_packages() {
  local missing=()
  local package
  for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed'; then
      missing+=("$package")
    fi
  done
  if [ ${#missing[@]} -eq 0 ]; then
    return
  fi
  log "Installing missing Debian packages: ${missing[*]}"
  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    sudo=(sudo)
  fi
  "${sudo[@]}" apt-get update
  DEBIAN_FRONTEND=noninteractive "${sudo[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
}

jobs=$(nproc 2>/dev/null || echo 2)

# Paths inside this clone hash as relative ones, so that a fresh clone elsewhere (CI's) finds
# what an earlier build compiled in ccache.
export CCACHE_BASEDIR="${CCACHE_BASEDIR:-$here}"
export CCACHE_NOHASHDIR="${CCACHE_NOHASHDIR:-1}"

# configure DIR [CMAKE OPTIONS...]
configure() {
  local dir=$1
  shift
  if [ ! -f "$dir/build.ninja" ]; then
    cmake -S . -B "$dir" -G Ninja "$@"
  else
    cmake "$dir" "$@" >/dev/null
  fi
}

# configure_and_build DIR [CMAKE OPTIONS...]
configure_and_build() {
  configure "$@"
  cmake --build "$1" --parallel "$jobs"
}

build_plain() {
  log "Building (build/)"
  configure_and_build build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELLUMO_WERROR=ON -DVELLUMO_BENCH=ON
}

run_tests() {
  local status=0

  log "Layers of src/: no include runs upwards"
  /usr/bin/python3 tools/check_layers.py src || status=1

  build_plain
  log "Unit tests (build/)"
  ctest --test-dir build --output-on-failure --parallel "$jobs" || status=1

  # The sanitizer build is clang's, so that the same tree also gives the libFuzzer targets.
  log "Building with AddressSanitizer and UndefinedBehaviorSanitizer (build-sanitize/)"
  CC=clang CXX=clang++ configure_and_build build-sanitize \
    -DCMAKE_BUILD_TYPE=Debug -DVELLUMO_WERROR=ON -DVELLUMO_SANITIZE=ON -DVELLUMO_FUZZ=ON
  log "Unit tests under the sanitizers, then each fuzz target over its corpus (build-sanitize/)"
  # Clang 14's leak checker misreads the dynamic loader's thread-local blocks under Debian's
  # glibc (a range starting near address 0) and crashes at exit, depending only on where
  # things lie in memory; it is told not to follow them by hand, and finds the blocks through
  # ordinary pointers instead.
  ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1:intercept_tls_get_addr=0 \
  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  LSAN_OPTIONS=suppressions="$here/tests/support/lsan.supp" \
    ctest --test-dir build-sanitize --output-on-failure --parallel "$jobs" -LE integration || status=1

  # Only the save stress test needs ThreadSanitizer; the rest of the tree is not built there.
  log "Building the save stress test with ThreadSanitizer (build-tsan/)"
  CC=clang CXX=clang++ configure build-tsan -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVELLUMO_WERROR=ON -DVELLUMO_TSAN=ON
  cmake --build build-tsan --parallel "$jobs" --target TestSNStickyNoteManagerStress
  log "Save stress test under ThreadSanitizer (build-tsan/)"
  TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions="$here/tests/support/tsan.supp" \
    ctest --test-dir build-tsan --output-on-failure -L stress || status=1

  if [ $status -ne 0 ]; then
    log "Some tests failed (see above)"
  else
    log "All tests passed"
  fi
  return $status
}

command=${1:-run}
[ $# -gt 0 ] && shift
case "$command" in
  run)
    install_missing_packages
    build_plain
    exec build/src/vellumo "$@"
    ;;
  build)
    install_missing_packages
    build_plain
    ;;
  test)
    install_missing_packages
    run_tests
    ;;
  *)
    echo "usage: $0 run [ARGS...] | test | build" >&2
    exit 2
    ;;
esac
