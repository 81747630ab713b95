#!/bin/bash
# Remakes the KNotes golden case from Debian's knotes itself: Akonadi (with its SQLite back end,
# so that no MySQL server is needed) and knotes run in a home of their own under Xvfb with a
# private session bus; notes come in through knotes' org.kde.KNotes D-Bus interface, and the
# maildir files the notes resource wrote are copied unchanged.
#
# On its first note knotes asks for the folder to keep notes in, and warns that the folder is
# not shown: the script answers both dialogs with xdotool clicks at the places they take on a
# 1280x1024 screen (the first folder in the list, "Use folder by default", OK; "Show
# Collection").
set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd)
case_dir=$repo/tests/import/data/golden/knotes/akonadi-notes

need=()
command -v knotes >/dev/null || need+=(knotes)
[ -e /usr/lib/x86_64-linux-gnu/qt5/plugins/sqldrivers/libqsqlite.so ] || need+=(akonadi-backend-sqlite)
command -v xdotool >/dev/null || need+=(xdotool)
command -v xvfb-run >/dev/null || need+=(xvfb)
[ ${#need[@]} -eq 0 ] || sudo apt-get install -y "${need[@]}"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
home=$work/home
mkdir -p "$home/.config/akonadi" "$work/run"
chmod 700 "$work/run"
printf '[%%General]\nDriver=QSQLITE\n' >"$home/.config/akonadi/akonadiserverrc"
# The colour every new note takes: the files keep no colour of their own.
printf '[Display]\nbgcolor=173,216,230\nfgcolor=0,0,128\n' >"$home/.config/knotesrc"

cat >"$work/drive.sh" <<'INNER'
set -uo pipefail
pass=$1
start_akonadi() {
    akonadictl start >>"$HOME/akonadi.log" 2>&1 &
    for _ in $(seq 1 90); do
        akonadictl status 2>&1 | grep -q 'Akonadi Server.*running' && break
        sleep 1
    done
    sleep 10 # the resources start after the server
}
start_knotes() {
    knotes >>"$HOME/knotes.log" 2>&1 &
    knotes_pid=$!
    for _ in $(seq 1 60); do
        gdbus introspect --session --dest org.kde.knotes --object-path /KNotes >/dev/null 2>&1 && break
        sleep 1
    done
    sleep 5
}
answer_dialogs() {
    for _ in 1 2 3 4 5 6; do
        sleep 2
        if xdotool search --onlyvisible --name 'Select Note Folder' >/dev/null 2>&1; then
            xdotool mousemove 82 74 click 1; sleep 1
            xdotool mousemove 28 346 click 1; sleep 1
            xdotool mousemove 472 376 click 1
        elif xdotool search --onlyvisible --name 'Warning' >/dev/null 2>&1; then
            xdotool mousemove 782 491 click 1
        fi
    done
}
new_note() {
    gdbus call --timeout 60 --session --dest org.kde.knotes --object-path /KNotes \
        --method org.kde.KNotes.newNote "$1" "$2" >/dev/null &
    answer_dialogs
    wait $! || true
}
stop_all() {
    kill "$knotes_pid" 2>/dev/null
    wait "$knotes_pid" 2>/dev/null
    akonadictl stop >/dev/null 2>&1
    sleep 5
}

start_akonadi
start_knotes
if [ "$pass" = setup ]; then
    # The first start makes the notes resources; their folder is made before the next start.
    sleep 10
elif [ "$pass" = plain ]; then
    new_note "Shopping" "Milk
Eggs – a dozen
Bread"
    new_note "Grüße aus Köln" "Das Wetter ist schön ☀"
    sleep 10
else
    new_note "Rich" "<html><body><p><b>Bold</b>, <i>italic</i>, <u>underlined</u> and <s>struck</s> text.</p><ul><li>first</li><li>second</li></ul><p><a href=\"https://example.org/\">a link</a></p></body></html>"
    sleep 10
fi
stop_all
INNER

run() {
    env -i PATH=/usr/bin:/bin HOME="$home" XDG_RUNTIME_DIR="$work/run" LANG=C.UTF-8 \
        xvfb-run -a -s '-screen 0 1280x1024x24' dbus-run-session -- bash "$work/drive.sh" "$1"
}
run setup
for rc in "$home"/.config/akonadi_akonotes_resource_*rc; do
    path=$(sed -n 's/^Path\(\[\$e\]\)\?=//p' "$rc" | sed "s|\$HOME|$home|")
    mkdir -p "$path/cur" "$path/new" "$path/tmp"
done
run plain
# Rich text is a global setting: the next notes are HTML.
printf '[Editor]\nrichtext=true\n' >>"$home/.config/knotesrc"
run rich 2>/dev/null || true

found=$(find "$home/.local/share/notes" -type f | wc -l)
[ "$found" -gt 0 ] || { echo "knotes wrote no note; see $home/*.log" >&2; exit 1; }
rm -rf "$case_dir/home"
mkdir -p "$case_dir/home/.local/share" "$case_dir/home/.config"
cp -a "$home/.local/share/notes" "$case_dir/home/.local/share/notes"
cp -a "$home/.config/knotesrc" "$home"/.config/akonadi_akonotes_resource_*rc "$case_dir/home/.config/"
find "$case_dir/home" -type f
