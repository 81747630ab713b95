#!/bin/sh
# Remakes the xpad golden cases that xpad itself writes: Debian's xpad runs under a private X
# server and D-Bus session with a home of its own, opens pads from files written in its own
# inline markup, and saves them as it always does. The files it wrote are copied unchanged.
# The damaged cases beside them are made by hand and left alone.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
golden="$here/../../tests/import/data/golden/xpad"

command -v xpad >/dev/null || sudo apt-get install -y xpad
command -v xvfb-run >/dev/null || sudo apt-get install -y xvfb xauth
command -v dbus-run-session >/dev/null || sudo apt-get install -y dbus

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# xpad's markup: a tag name between two U+E000 characters, "/name" to close it.
m=$(printf '\356\200\200')
o() { printf '%s%s%s' "$m" "$1" "$m"; }
c() { printf '%s/%s%s' "$m" "$1" "$m"; }

# run CASE SCRIPT: runs the shell SCRIPT with HOME and XDG_CONFIG_HOME in the case's own home,
# then copies what xpad wrote into the case's golden folder.
run() {
    home="$work/$1/home"
    mkdir -p "$home/.config/xpad"
    [ -f "$work/$1/default-style" ] && cp "$work/$1/default-style" "$home/.config/xpad/"
    HOME="$home" XDG_CONFIG_HOME="$home/.config" timeout 120 \
        dbus-run-session -- xvfb-run -a sh -c "$2" >"$work/$1.log" 2>&1 || {
        cat "$work/$1.log"
        exit 1
    }
    target="$golden/$1/home/.config/xpad"
    rm -rf "$target"
    mkdir -p "$target"
    for file in "$home/.config/xpad"/info-* "$home/.config/xpad"/content-* \
        "$home/.config/xpad/default-style"; do
        [ -f "$file" ] && cp -p "$file" "$target/"
    done
    ls "$target"
}

# Pads xpad's save timer (4 s) has written, then a clean quit.
settle='sleep 6; xpad -N -q; wait'

# A formatted pad and a plain one in another script; the user's default colours and "sticky on
# start" (shown on every desktop) from default-style.
mkdir -p "$work/formatted"
{
    printf 'Shopping\n'
    printf '%sMilk%s and %s%seggs%s%s\n' "$(o bold)" "$(c bold)" "$(o italic)" "$(o underline)" \
        "$(c underline)" "$(c italic)"
    printf '%sbread%s done\n' "$(o strikethrough)" "$(c strikethrough)"
    for size in small-xx small-x small medium large large-x large-xx; do
        printf '%s%s%s ' "$(o $size)" "$size" "$(c $size)"
    done
    printf '\n%s%sBold large %sand italic%s%s%s' "$(o bold)" "$(o large)" "$(o italic)" \
        "$(c italic)" "$(c large)" "$(c bold)"
} >"$work/formatted/shopping.txt"
printf 'Grüße aus Köln 😀\nzweite Zeile, ohne Format' >"$work/formatted/plain.txt"
cat >"$work/formatted/default-style" <<'STYLE'
back rgb(173,216,230)
use_back 1
text rgb(20,30,40)
use_text 1
sticky_on_start 1
STYLE
run formatted "xpad -N --new-from-file='$work/formatted/shopping.txt' \
    --new-from-file='$work/formatted/plain.txt' & $settle"

# A pad hidden with "xpad --hide", with the theme's colours (no default-style).
mkdir -p "$work/hidden"
printf 'Hidden pad\nclosed to the tray\n%sstill bold%s' "$(o bold)" "$(c bold)" \
    >"$work/hidden/pad.txt"
run hidden "xpad -N --new-from-file='$work/hidden/pad.txt' & sleep 3; xpad -N -h; $settle"
