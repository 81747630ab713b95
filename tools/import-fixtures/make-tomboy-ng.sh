#!/bin/bash
# Remakes the tomboy-ng golden case from Debian's tomboy-ng itself: its command line imports a
# Markdown and a text file into the notes folder its configuration names, under Xvfb; the .note
# files it wrote are copied unchanged.
set -euo pipefail

repo=$(cd "$(dirname "$0")/../.." && pwd)
case_dir=$repo/tests/import/data/golden/tomboy-ng/imported-markdown

if ! command -v tomboy-ng >/dev/null || ! command -v xvfb-run >/dev/null; then
    sudo apt-get install -y tomboy-ng xvfb
fi

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
home=$work/home
notes=$home/.local/share/tomboy-ng
config=$home/.config/tomboy-ng
mkdir -p "$notes" "$config"
# The command line imports only into a folder the configuration names.
printf '[BasicSettings]\nNotesPath=%s/\n' "$notes" >"$config/tomboy-ng.cfg"

# Everything its Markdown import turns into marks: bold, italic, strikeout, monospace, the three
# sizes and bullets three levels deep.
cat >"$work/shopping.md" <<'MD'
Shopping list
===========

**Milk** and *eggs*, ~~butter~~, `2 x 1.5 l` and <sub>small print</sub>

Big heading
--------

Huge heading
========

* one
* two
   * nested **bold**
      * deeper
* three

    four spaces make a monospaced line

See https://example.org
MD
printf 'Café notes\n\nFirst line of the body.\nÜbermorgen & <tomorrow>.\n' >"$work/cafe.txt"

run() {
    env -i PATH=/usr/bin:/bin HOME="$home" LANG=C.UTF-8 \
        xvfb-run -a tomboy-ng --config-dir="$config/" "$@"
}
run --import-md="$work/shopping.md"
sleep 1 # a second apart, so that the two notes' dates differ
run --import-txt="$work/cafe.txt"

rm -rf "$case_dir/home"
mkdir -p "$case_dir/home/.local/share" "$case_dir/home/.config"
cp -a "$notes" "$case_dir/home/.local/share/tomboy-ng"
cp -a "$config" "$case_dir/home/.config/tomboy-ng"
ls -lR "$case_dir/home"
