#!/bin/bash
# Remakes the Gnote golden case from Debian's gnote itself: it runs gnote in a home of its own
# under Xvfb with a private session bus, writes notes through its RemoteControl D-Bus interface
# and copies the .note files gnote saved, unchanged.
set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd)
case_dir=$repo/tests/import/data/golden/gnote/notebooks-and-formatting

if ! command -v gnote >/dev/null || ! command -v xvfb-run >/dev/null; then
    sudo apt-get install -y gnote xvfb dbus libglib2.0-bin
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/home"

cat >"$work/drive.sh" <<'INNER'
set -euo pipefail
call() {
    gdbus call --session --dest org.gnome.Gnote --object-path /org/gnome/Gnote/RemoteControl \
        --method "org.gnome.Gnote.RemoteControl.$1" "${@:2}"
}
uri() { sed -e "s/^('//" -e "s/',)$//"; }
NS='xmlns:link="http://beatniksoftware.com/tomboy/link" xmlns:size="http://beatniksoftware.com/tomboy/size"'

gnote --background >"$HOME/gnote.log" 2>&1 &
gnote_pid=$!
# The remote control object comes a moment after the bus name.
for _ in $(seq 1 60); do
    call Version >/dev/null 2>&1 && break
    sleep 0.5
done

# Every mark Gnote's toolbar and add-ins can set, a nested list and both kinds of link; in the
# notebook "Home", which makes Gnote write that notebook's template note too.
shopping=$(call CreateNamedNote "Shopping" | uri)
call SetNoteContentsXml "$shopping" "<note-content version=\"0.1\" $NS>Shopping

<bold>Milk</bold> and <italic>eggs</italic>, <strikethrough>butter</strikethrough>, <underline>bread</underline>
<monospace>2 x 1.5 l</monospace> <size:small>small</size:small> <size:large>large</size:large> <size:huge>huge</size:huge> <highlight>marked</highlight>
<list><list-item dir=\"ltr\">one
<list><list-item dir=\"ltr\">nested <bold>bold</bold>
</list-item></list></list-item><list-item dir=\"ltr\">two</list-item></list>
See <link:url>https://example.org/shop</link:url> and <link:internal>Start Here</link:internal>.</note-content>"
call AddTagToNote "$shopping" "system:notebook:Home"

# A note in a second notebook, with text beyond the Basic Multilingual Plane.
trip=$(call CreateNamedNote "Trip to Zürich" | uri)
call SetNoteContentsXml "$trip" "<note-content version=\"0.1\" $NS>Trip to Zürich

Pack the charger 🔌 and <italic>the map</italic>.</note-content>"
call AddTagToNote "$trip" "system:notebook:Travel"

# A deleted note: Gnote moves its file into Backup/, which is no note any more.
old=$(call CreateNamedNote "Old idea" | uri)
call SetNoteContentsXml "$old" "<note-content version=\"0.1\">Old idea

Thrown away.</note-content>"
sleep 6
call DeleteNote "$old"

# Gnote saves four seconds after the last change.
sleep 6
kill "$gnote_pid"
wait "$gnote_pid" || true
INNER

env -i PATH=/usr/bin:/bin HOME="$work/home" XDG_DATA_HOME="$work/home/.local/share" \
    XDG_CONFIG_HOME="$work/home/.config" XDG_CACHE_HOME="$work/home/.cache" LANG=C.UTF-8 \
    xvfb-run -a dbus-run-session -- bash "$work/drive.sh"

rm -rf "$case_dir/home"
mkdir -p "$case_dir/home/.local/share"
cp -a "$work/home/.local/share/gnote" "$case_dir/home/.local/share/gnote"
ls -lR "$case_dir/home/.local/share/gnote"
