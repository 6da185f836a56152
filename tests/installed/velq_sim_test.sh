#!/bin/sh
# Runs velq-sim from a tree: velq_sim_test.sh PREFIX, where PREFIX/bin contains it.
set -u
prefix=$1
directory=$(mktemp -d)
trap 'rm -rf "$directory"' EXIT
cd "$directory" || exit 1
export HOME="$directory" ASAN_OPTIONS=verify_asan_link_order=0
unset VELQ_RIG VELQ_STATE VELQ_TRACE VELQ_FAULTS LD_LIBRARY_PATH LD_PRELOAD XDG_STATE_HOME
failures=0

# Runs velq-sim with the arguments behind the first two and expects its exit status, and a line that matches one of
# its output. "-" means no output at all.
expect() {
  status=$1 line=$2
  shift 2
  "$prefix/bin/velq-sim" "$@" >out 2>&1
  got=$?
  [ $got = "$status" ] && case $line in
    -) [ ! -s out ] ;;
    *) grep -qx -- "$line" out ;;
  esac && return
  echo "velq-sim $*: expected $status and \"$line\", got $got and:" && cat out
  failures=$((failures + 1))
}

echo '{"devices": [{"number": 4, "description": "Board"}]}' >rig.json
echo '{"devices": [{"number": 4}]}' >bad.json

# Wrong usage
expect 2 'velq-sim: no command is given; see velq-sim --help'
expect 2 'velq-sim: unknown option "--\\x{1f}\\x{80}\\x{9f}";.*' "$(printf -- '--\037\302\200\302\237')"
expect 2 'velq-sim: --rig needs a value; see velq-sim --help' --rig
expect 2 'velq-sim: --rig needs a value; see velq-sim --help' --rig '' qutil
expect 2 'velq-sim: --rig is given twice; see velq-sim --help' --rig a --rig=b qutil
expect 2 'velq-sim: --reset takes no value; see velq-sim --help' --reset=x
expect 2 'velq-sim: --check cannot be used with a command or another option; see velq-sim --help' --check rig.json qutil

expect 0 '  --reset         delete the state, and with it all changes' --help
expect 0 "velq-sim $VERSION" --version

# Rigs
expect 0 'rig.json: good, number of devices: 1' --check rig.json
expect 1 'velq-sim: bad.json: /devices/0: expected the key "description"' --check bad.json
expect 1 'velq-sim: none.json: cannot be opened: No such file or directory' --rig none.json sh -c 'echo not reached'
expect 0 '0,Board' --rig rig.json sh -c 'cd / && qutil'

# The command, its exit status, and what it finds
expect 7 - sh -c 'exit 7'
expect 0 '\[--rig] \[--] \[--help]' --state s -- printf '[%s] [%s] [%s]\n' --rig -- --help
expect 127 'velq-sim: -x: No such file or directory' -- -x
expect 126 'velq-sim: ./rig.json: Permission denied' ./rig.json
(PATH="/opt:$prefix/bin:$PATH" && expect 0 "$PATH" sh -c 'echo "$PATH"'; exit $failures) || failures=1
(export LD_LIBRARY_PATH=/opt LD_PRELOAD=libm.so.6
 expect 0 '/.*/velq-sim:/opt,libm.so.6' sh -c 'echo "$LD_LIBRARY_PATH,$LD_PRELOAD"'
 expect 0 '/.*/velq-sim:/opt,libvelq-probe.so:libm.so.6' --trace t sh -c 'echo "$LD_LIBRARY_PATH,$LD_PRELOAD"'
 exit $failures) || failures=1

# The probe
expect 2 'No Quellis device in system!(Errorlevel = 2)' --faults Array_getLength=0 qutil
expect 0 'velq-probe: # faults never reached: 1; CvxIsFusionDevice=0' --faults 'CvxIsFusionDevice=0;' qutil
expect 0 '0,Board' --rig rig.json --trace trace sh -c 'cd / && qutil && qutil'
[ "$(stat -c %a trace; grep -c DeviceCtrl_getInstalledDevices trace; tail -n 1 trace)" = "600
2
Array_getItem(Array#1, 0) = Array#1[0]" ] || { echo "another trace" && failures=1; }

mkfifo pipe
lost='continuing without a trace'
expect 0 "velq-probe: VELQ_TRACE: .*/pipe: cannot be opened: No such device or address; $lost" --trace pipe qutil
expect 0 "velq-probe: VELQ_TRACE: /dev/full: cannot be written: No space left on device; $lost" \
  --trace /dev/full sh -c 'qutil <>input && [ ! -s input ]'
expect 0 "velq-probe: VELQ_TRACE: .*/new: cannot be written: File too large; $lost" \
  --trace new sh -c '(ulimit -f 0; qutil) 2>&1 | cat'
expect 0 - --rig rig.json --trace closed sh -c 'qutil >&-'
grep -q '^0,Board' closed && echo "the list in the trace" && failures=1

# The state
touch empty empty-journal
expect 0 - --state empty --reset
[ -e empty ] || [ -e empty-journal ] && echo "not deleted" && failures=1
expect 0 'Device description has changed from QA-1808,BID#1 to Old' --state=mine qutil /dn:1 -cd:Old
expect 0 '1,QA-1808,BID#1' --state mine --reset qutil
expect 1 'velq-sim: .*/rig.json: is not a state of the simulator, so it is not deleted' --state rig.json --reset
touch closed && chmod 0 closed && mkdir -m 500 home
reason='Permission denied; name another file with VELQ_STATE or velq-sim --state'
plain=env && [ "$(id -u)" != 0 ] || plain='setpriv --bounding-set=-all --inh-caps=-all'
expect 1 "velq-sim: .*/closed: cannot be opened: $reason" $plain velq-sim --state closed --reset
expect 0 "velq-sim: .*/closed: cannot be opened: $reason" --state closed $plain qutil /dn:1 -fwo:rig.json
[ "$(grep -c velq-sim: out)" = 1 ] || { cat out && failures=1; }
expect 0 "velq-sim: .*/home/.*/state: its directory cannot be created: $reason" $plain env HOME="$PWD/home" qutil /dn:1 -cd:New
ln -s rig.json link
expect 1 'velq-sim: .*/link: is a symbolic link, which is not followed' --state link --reset
(unset HOME
 expect 1 'velq-sim: --reset: VELQ_STATE, XDG_STATE_HOME and HOME name no state' --reset
 exit $failures) || failures=1

# Without the simulator a command must not meet the library of the system, and the name of a directory may contain a space.
mkdir 'another directory'
cp -r "$prefix/bin" "$prefix"/lib*/ 'another directory'
prefix="$directory/another directory"
expect 0 '0,Board' --rig rig.json --trace 'a trace' qutil
[ -s 'a trace' ] || { echo "no trace from a directory with a blank" && failures=1; }
rm -r 'another directory'/lib*
expect 1 "velq-sim: $prefix/.*/libvelq.so: No such file or directory" sh -c 'echo not reached'
exit $((failures > 0))
