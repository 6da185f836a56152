#!/bin/bash
# What --capture copies, what it leaves out, and what --changes shows. Arguments: velq-sim, qutil, the probe, the
# minimal library, the odd library.
set -u
velq_sim=$1 qutil=$2 probe=$3 minimal=$4 odd=$5
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
export HOME="$work" MINIMAL_BOARD="$work/board" LC_ALL=C.UTF-8 ASAN_OPTIONS=verify_asan_link_order=0
unset VELQ_RIG VELQ_STATE VELQ_TRACE VELQ_FAULTS XDG_STATE_HOME

fail() { echo "$*" && exit 1; }

# expect STATUS LINES COMMAND...: the exit status, and standard output and error.
expect() {
  local status=$1 lines=$2 found
  shift 2
  "$@" >out 2>&1
  found=$?
  [ $found = "$status" ] && [ "$(cat out)" = "$lines" ] && return
  fail "$*: $found, not $status, and: $(diff out - <<<"$lines")"
}

# Every report of one library, but for the library's version.
reports() {
  "$qutil"
  for number in $(seq 0 9) 256; do
    for option in '' -fw -fusion; do "$qutil" "/dn:$number" $option; done
  done | grep -v '^DLL version'
}

# same DIRECTORY [DIFFERENCE]: the reports of the library there are those of its copy; the capture only reads, and
# disposes of all.
same() {
  rm -f copy.json again.json trace
  LD_LIBRARY_PATH=$1 LD_PRELOAD=$probe VELQ_TRACE=trace "$velq_sim" --capture copy.json 2>left-out ||
    fail "$1: $(cat left-out)"
  # What printf() makes of a character that is not Unicode depends on glibc.
  difference=$(diff -a <(LD_LIBRARY_PATH=$1 reports) <(VELQ_RIG=copy.json reports) | grep -a '^[<>]' | grep -av ',QB-1')
  [ "$difference" = "${2-}" ] || fail "$1: the copy differs: $difference"
  "$velq_sim" --rig copy.json "$velq_sim" --capture again.json
  cmp copy.json again.json || fail "$1: the copy of the copy is another"
  getters='InstalledDevices|DeviceNumber|Description|ProductId|BoardId'
  getters="$getters|(Board|Driver|Dll)?Version|Location|BaseAddresses|Interrupts|Length|Item|Notice"
  getters="$getters|SelectedDevice|Device|Firmwares|Solutions|Sections|Items|Name|Instruction"
  reading="[A-Za-z]*_get($getters)|CvxIsFusionDevice|CvxFusionDeviceGetChildren"
  reading="$reading|DaqCtrlBase_setSelectedDevice|(DeviceCtrl|DaqCtrlBase)_(Create|dispose)"
  grep -vE "^($reading)\\(" trace && fail "$1: more than reading"
  [ "$(grep -c '_Create(.*#' trace)" = "$(grep -c '_dispose(' trace)" ] || fail "$1: not disposed of"
}

expect 0 '' "$velq_sim" --changes
"$qutil" /dn:2 -ci:5 >out && "$qutil" '/dd:QS*' '-cd:Pump *' >out && "$qutil" /dn:0 -cali:ai.reverse >out
"$qutil" /dd:Rig -fusion 'Pump 04,BID#0' >out
simulator=$(dirname "$(ldd "$qutil" | sed -n 's/.*libvelq.so => \([^ ]*\).*/\1/p')")
same "$simulator"
expect 0 'device 0: calibration 0.0.0 0x00000080 -> 0x0000007e
device 0: calibration 0.1.0 0x00000080 -> 0x00000081
device 2: description "QD-0096,BID#2" -> "QD-0096,BID#5"
device 2: board id 2 -> 5
device 6: description "QS-2004,BID#0" -> "Pump 04,BID#0"
device 6: fusion device none -> 256
device 7: description "QS-2004,BID#1" -> "Pump 04,BID#1"
device 256: description none -> "Rig"' "$velq_sim" --changes
"$velq_sim" --rig copy.json --state dissolved "$qutil" /dn:256 -defusion >out
expect 0 'device 6: fusion device 256 -> none
device 256: description "Rig" -> none' "$velq_sim" --rig copy.json --state dissolved --changes
expect 1 "velq-sim: rig.json: cannot be opened: No such file or directory" "$velq_sim" --rig rig.json --changes
echo x >bad
other='name another file with VELQ_STATE or velq-sim --state'
expect 1 "velq-sim: $work/bad: cannot be used: file is not a database; $other" "$velq_sim" --state bad --changes

same "$(dirname "$minimal")"
same "$(dirname "$odd")" '< 5,Locked
< 6,Twin
< 7,Negative
< Board ID: -5
> Board ID: 0
< ProductID:0xFFFFFFFE
> ProductID:0x0
< version:0x12
> version:0X12
< Query firmware information Start!
< N/A,Empty is a SW device.
< Empty fused devices:
> Query firmware information Start!
> Empty is not a fusion device.'
diff left-out - <<'END' || fail "left out otherwise"
velq-sim: the device library cannot create a calibration control, left out
velq-sim: device "QB-11 \x{fc}\"\\": location: truncated to the 1000 characters that a rig can have
velq-sim: device "QB-11 \x{fc}\"\\": notice of a chip: null
velq-sim: device "QB-11 \x{d800}": board id -5: replaced by 0
velq-sim: device "QB-11 \x{d800}": description: replaced characters that are not Unicode
velq-sim: device "QB-11 \x{d800}": notice of a chip: null
velq-sim: device "QB-12": product id -2: replaced by 0
velq-sim: device "QB-12": version "0x12" of a chip: written with a capital X, so that it is not a number in the rig
velq-sim: device "QB-12": notice of a chip: null
velq-sim: device "Locked": cannot be opened, left out
velq-sim: device "Twin": opens device 7, which is listed before; left out
velq-sim: device "Negative": has the invalid number -4, left out
velq-sim: device "Rig": child 4 has another product id than the first child, left out
velq-sim: device "Rig": child 9 is a fusion device, left out
velq-sim: device "Empty": child 77 is not listed, left out
velq-sim: device "Empty": is a fusion device without children; on the copy it is a plain device
END

# By name, for the sanitizers' dlopen() does not search where the program would.
export LD_LIBRARY_PATH=$simulator
exists='already exists; nothing was written'
expect 1 "velq-sim: copy.json: $exists" "$velq_sim" --capture copy.json
expect 1 'velq-sim: none/copy: No such file or directory; nothing was written' "$velq_sim" --capture none/copy
expect 1 'velq-sim: standard output: No space left on device' \
  sh -c '"$1" --capture - >/dev/full' - "$velq_sim"
expect 1 'velq-sim: new: File too large; nothing was written' \
  sh -c '(ulimit -f 0; "$1" --capture new) 2>&1 | cat; exit 1' - "$velq_sim"
export LD_LIBRARY_PATH=${odd%/*}
expect 1 'velq-sim: the device library returns no list of devices' env NO_LIST= "$velq_sim" --capture new
expect 1 'velq-sim: the device library lists no devices' env NO_DEVICES= "$velq_sim" --capture new
touch libvelq.so
LD_LIBRARY_PATH=. "$velq_sim" --capture new 2>out
[ "$?$(wc -l <out)" = 11 ] || fail "no library: $(cat out)"
[ "$(echo new*)" = 'new*' ] || fail "a file is left behind"
