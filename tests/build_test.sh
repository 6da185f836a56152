#!/bin/sh
# Builds in a copied tree, whose build directory names the tree that it was copied from, and with changelogs of another version.
set -eu
cd "$(dirname "$0")/.."
copy=$(mktemp -d)
trap 'rm -r "$copy"' EXIT
tar -c --exclude=./build --exclude=./.git . | tar -x -C "$copy"
mkdir -p "$copy/build/dev"
echo "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" >"$copy/build/dev/CMakeCache.txt"
touch "$copy/build/dev/build.ninja"

"$copy/script/build" dev manual_qutil.1 2>"$copy/said"
grep -qx 'building dev ... 1 of 1' "$copy/said" || { cat "$copy/said" && exit 1; }
"$copy/script/build" dev manual_qutil.1 2>&1 | grep . && exit 1
for changelog in CHANGELOG.md debian/changelog; do
  sed -i.good 's/^\(## \[\|qutil (\)/&9/' "$copy/$changelog"
  "$copy/script/build" dev manual_qutil.1 >"$copy/said" 2>&1 && echo "$changelog is not compared" && exit 1
  grep -q "$changelog: the newest version is" "$copy/said" || { cat "$copy/said" && exit 1; }
  mv "$copy/$changelog.good" "$copy/$changelog"
done
