#!/bin/sh
# Builds the Debian packages in two directories, which must give the same files, has lintian look at them, and runs
# debian/tests in a throw-away root of this Debian's release. Run as root.
set -eu
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  grep -v ' Passed ' "$work/log" | tail -n 300 >&2
  exit 1
}

mkdir -p "$work/one/qutil" "$work/another"
git ls-files -z | xargs -0 cp --parents -t "$work/one/qutil"
cp -r "$work/one/qutil" "$work/another/directory"
# The second one without the tests, which must not show in the packages. The compiler may not warn.
(cd "$work/one/qutil" && dpkg-buildpackage -us -uc) >"$work/log" 2>&1 || fail
! grep '[0-9]: warning: ' "$work/log" || exit 1
(cd "$work/another/directory" && DEB_BUILD_OPTIONS=nocheck dpkg-buildpackage -us -uc -b -Pnocheck) >"$work/log" 2>&1 || fail
for package in "$work"/one/*.deb; do cmp "$package" "$work/another/${package##*/}"; done
# debian/source has an override for Debian 12, whose lintian does not know the newest policy.
lintian --display-info --pedantic --allow-root --suppress-tags newer-standards-version \
  --fail-on error,warning,pedantic "$work"/one/*.changes >"$work/log" || fail
# Which strings lintian reads as one depends on how the compiler has cut them: an override for that may be unused.
! grep '^I:' "$work/log" | grep -v ': unused-override ' || exit 1

mmdebstrap --quiet --variant=minbase --dpkgopt=force-unsafe-io "$(. /etc/os-release && echo "$VERSION_CODENAME")" "$work/root"
# shellcheck disable=SC2016
unshare --mount sh -ec 'mount -t proc proc "$1/root/proc"
  exec autopkgtest --apt-upgrade "$1"/one/*.deb "$1/one/qutil" -- chroot "$1/root"' - "$work" >"$work/log" 2>&1 || fail
sed -n '/^autopkgtest.*@@@ summary/,$p' "$work/log"
