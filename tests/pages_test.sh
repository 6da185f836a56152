#!/bin/sh
# Runs the commands in the pages as a reader would, each page twice in a new home: pages_test.sh SOURCES. The tree in
# build/dev has to be built. A page removes what it creates.
set -u
cd "$1" || exit 1
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
failures=0
before=$(git status --porcelain 2>/dev/null)

for page in README.md docs/operating.md docs/simulator.md docs/fleet.md; do
  for _ in 1 2; do
    env -i PATH="$PATH" HOME="$home" LC_ALL=C.UTF-8 TERM=dumb clitest --prefix 4 --progress none "$page" || failures=1
    [ -z "$(find "$home" -name '*state*' -type f)" ] || { echo "$page: leaves a state behind" && failures=1; }
  done
done
[ "$(git status --porcelain 2>/dev/null)" = "$before" ] || { git status --short && failures=1; }
exit $failures
