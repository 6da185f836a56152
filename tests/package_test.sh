#!/bin/sh
# Builds the Debian packages, installs them into a root of their own, uses them there as their users would, and removes
# them without a trace. Needs no network; one who is not root becomes root in a user namespace.
set -eu
[ "$(id -u)" = 0 ] || exec unshare --map-root-user "$0"
cd "$(dirname "$0")/.."
PATH=$PATH:/usr/sbin:/sbin
export LC_ALL=C

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
packages=$work/packages
architecture=$(dpkg --print-architecture)
private=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)/velq-sim

fail() {
  echo "package_test: $*" >&2
  exit 1
}

# expect WHAT WANTED FOUND
expect() {
  [ "$2" = "$3" ] || fail "$1: expected \"$2\", found \"$3\""
}

in_root() {
  chroot "$root" "$@"
}

# expect_compliance LIBRARY
expect_compliance() {
  in_root velq-compliance --write "$1" >"$work/checks" || fail "$1: $(grep -v ^ok "$work/checks")"
  grep -q '^[1-9][0-9]* ok, 0 failed, 0 not run, [1-9] refused$' "$work/checks" || fail "$1: $(tail -n 1 "$work/checks")"
}

in_dpkg() {
  dpkg --root="$root" --log=/dev/null --path-include='/usr/share/*' "$@"
}

files_in() {
  (cd "$1" && find . -path ./var/lib/dpkg -prune -o -print | sort)
}

build() {
  script/build release
  (cd build/release && cpack -B "$packages") >"$work/cpack" 2>&1 || fail "cpack: $(cat "$work/cpack")"
  rm -r "$packages/_CPack_Packages"
  expect packages "libvelq-dev qutil velq-compliance velq-sim" \
    "$(for file in "$packages"/*; do dpkg-deb -f "$file" Package; done | xargs)"
  expect lintian "" "$(lintian --display-info "$packages"/*.deb 2>&1 | grep -v 'root privileges')"
}

# What `cmake --install` installs is what the packages hold, but for Debian's own files.
check_install() {
  DESTDIR=$work/installed cmake --install build/release >"$work/install"
  for file in "$packages"/*.deb; do dpkg-deb -x "$file" "$work/unpacked"; done
  expect "difference between installation and packages" "" "$(
    files_in "$work/unpacked" | grep -vE '/lintian|/(copyright|changelog.Debian.gz)$' >"$work/unpacked.list"
    files_in "$work/installed" | diff - "$work/unpacked.list" | grep -vE '^[0-9]|share/doc/[a-z-]*$')"
  for program in "$work"/unpacked/usr/bin/*; do
    page=$work/unpacked/usr/share/man/man1/$(basename "$program").1.gz
    gzip -dc "$page" | grep -q . || fail "$page: no manual page"
  done
}

# A root that holds what the packages depend on, as dpkg knows it and as programs need it.
make_root() {
  mkdir -p "$root/srv" "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates"
  for name in $(for file in "$packages"/*.deb; do dpkg-deb -f "$file" Depends; done |
    tr ',' '\n' | awk 'NF {print $1}' | sort -u); do
    dpkg-query -s "$name" >>"$root/var/lib/dpkg/status"
    echo >>"$root/var/lib/dpkg/status"
    : >"$root/var/lib/dpkg/info/$name:$architecture.list"
  done
  sqlite=$(ldconfig -p | awk '/libsqlite3\.so\.0 / {print $NF; exit}')
  { ldd build/release/bin/* "build/release/lib/${private#/usr/lib/}"/* "$sqlite"; echo "$sqlite"; } | tr -s '[:space:]' '\n' |
    grep -E '^/(usr/)?lib.*[^:]$' | sort -u | xargs cp -L --parents -t "$root"
  # In place of a mounted /proc, which not every root may mount: where velq-sim looks for itself.
  mkdir -p "$root/proc/self"
  ln -s /usr/bin/velq-sim "$root/proc/self/exe"
}

check_tool() {
  expect "run path of qutil" "" "$(readelf -d "$root/usr/bin/qutil" | grep -E 'RPATH|RUNPATH')"
  status=0
  in_root qutil >"$work/output" 2>"$work/errors" || status=$?
  expect "qutil without a library" "127||qutil: error while loading shared libraries: libvelq.so: cannot open shared \
object file: No such file or directory" "$status|$(cat "$work/output")|$(cat "$work/errors")"
}

check_simulator() {
  export VELQ_STATE=/srv/state
  in_root velq-sim qutil '/dn:0' '-cd:Renamed' >"$work/output"
  in_root velq-sim qutil >"$work/launched"
  LD_LIBRARY_PATH=$private in_root qutil >"$work/named"
  expect "the simulator's devices" 8 "$(wc -l <"$work/launched")"
  expect "a renamed device" "0,Renamed" "$(sed -n 2p "$work/launched")"
  cmp "$work/launched" "$work/named"
  in_root velq-sim --trace /srv/trace qutil '/dn:0' >"$work/output"
  expect "a detail report" "DLL version: 1.0-sim" "$(grep DLL "$work/output")"
  grep -q '^DeviceCtrl_Create(0, "", 1) = DeviceCtrl#1$' "$root/srv/trace" || fail "the probe traced nothing"
  expect_compliance "$private/libvelq.so"
}

# The minimal library, from the installed headers in both ways.
build_library() {
  example=$root/usr/share/doc/libvelq-dev/examples/minimal-library
  cmake -S "$example" -B "$work/by-cmake" "-DCMAKE_PREFIX_PATH=$root/usr" >"$work/output"
  cmake --build "$work/by-cmake" >>"$work/output"
  grep -qxF "velq_DIR:PATH=$root/usr/share/cmake/velq" "$work/by-cmake/CMakeCache.txt" ||
    fail "find_package(velq) did not find the installed package"
  mkdir "$work/by-pkg-config"
  # shellcheck disable=SC2046
  c++ -std=c++20 -shared -fPIC -static-libstdc++ -static-libgcc -Wl,--version-script="$example/one_entry.map" \
    $(PKG_CONFIG_LIBDIR=$root/usr/share/pkgconfig PKG_CONFIG_SYSROOT_DIR=$root pkg-config --cflags 'velq >= 1.0') \
    -Wl,-soname,libvelq.so "$example/minimal_library.cpp" -o "$work/by-pkg-config/libvelq.so"
}

check_library() {
  build_library
  for way in by-cmake by-pkg-config; do
    mkdir "$root/srv/$way"
    cp "$work/$way/libvelq.so" "$root/srv/$way"
    expect "the library built $way" "0,Minimal board" "$(LD_LIBRARY_PATH=/srv/$way in_root qutil | tail -n 1)"
    expect_compliance "/srv/$way/libvelq.so"
  done
}

build
check_install
make_root
files_in "$root" >"$work/before"
in_dpkg --install "$packages"/*.deb >"$work/dpkg" 2>&1 || fail "dpkg: $(cat "$work/dpkg")"
check_tool
check_simulator
check_library
rm -r "$root"/srv/*
in_dpkg --purge qutil velq-sim velq-compliance libvelq-dev >"$work/dpkg" 2>&1 || fail "dpkg: $(cat "$work/dpkg")"
expect "what the packages leave" "" "$(files_in "$root" | diff "$work/before" -)"
echo "package_test: all good"
