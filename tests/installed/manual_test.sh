#!/bin/sh
# Reads the manual pages as users and as their checkers do: manual_test.sh PREFIX. Every option that a program's own
# help shows has to have an item in its page, as a whole word.
set -u
prefix=$1
failures=0

fail() {
  echo "$*"
  failures=$((failures + 1))
}

# check PAGE OPTION...
check() {
  page=$prefix/share/man/man1/$1.gz
  shift
  [ $# -gt 0 ] || fail "$page: no options to look for"
  problems=$(man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
  [ -z "$problems" ] || fail "man: $problems"
  problems=$(gzip -dc "$page" | mandoc -T lint -W warning)
  [ -z "$problems" ] || fail "$page: $problems"
  text=$(gzip -dc "$page" | mandoc -T ascii | sed 's/.\x08//g')
  for option in "$@"; do
    echo "$text" | grep -qP "^ +\Q$option\E(\b|\s|$)" || fail "$page: $option is missing"
  done
}

simulated() { "$prefix/bin/velq-sim" "$@"; }

# examples PAGE: runs the commands in its EXAMPLES, as a user of the simulator in an empty directory.
examples() {
  directory=$(mktemp -d)
  gzip -dc "$prefix/share/man/man1/$1.gz" | mandoc -T ascii -O width=200 | sed 's/.\x08//g' |
    sed -n '/^EXAMPLES/,/^[A-Z]/p' >"$directory/page"
  (cd "$directory" && env -i PATH="$prefix/bin:$PATH" HOME="$directory" LC_ALL=C \
    LD_LIBRARY_PATH="$(echo "$prefix"/lib*/*velq-sim)" ASAN_OPTIONS=verify_asan_link_order=0 \
    clitest --prefix '           ' --progress none page) || fail "$1: EXAMPLES"
  rm -r "$directory"
}

# shellcheck disable=SC2046
check qutil.1 '/?' $(simulated qutil '/?' | grep -o '^[-/][a-z]*:\?[a-z.]*')
# shellcheck disable=SC2046
check velq-sim.1 $(simulated --help | grep -o '^  --[a-z]*')
# shellcheck disable=SC2046
check velq-compliance.1 $("$prefix/bin/velq-compliance" --help | grep -o '^  --[a-z]*')
examples qutil.1
examples velq-sim.1
examples velq-compliance.1
exit $((failures > 0))
