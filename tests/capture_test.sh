#!/bin/bash
# Captures and changes. Arguments: velq-sim, qutil, the probe, and the minimal, the odd and the simulator's library.
set -u
rigs=$PWD/../src/simulator/rig velq_sim=$1 qutil=$2 probe=$3 minimal=${4%/*} odd=${5%/*} simulator=${6%/*}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1
export HOME="$work" MINIMAL_BOARD="$work/board" LC_ALL=C.UTF-8 ASAN_OPTIONS=verify_asan_link_order=0
unset VELQ_RIG VELQ_STATE VELQ_TRACE VELQ_FAULTS XDG_STATE_HOME

fail() { echo "$*" && exit 1; }

# expect STATUS LINES COMMAND...: the exit status, and standard output and error.
expect() {
  found=$("${@:3}" 2>&1)
  [ "$? $found" = "$1 $2" ] || fail "${*:3}: not $1 and $2, but $found"
}

# Every report of one library, but for the library's version and devices of which the copy has no or another report.
reports() {
  for options in '' /dn:{{0..9},256}{,' -fw',' -fusion'}; do "$qutil" $options; done | grep -v '^DLL version\|,Lost'
}

# same DIRECTORY [FAULTS]: a copy of the library there, captured with FAULTS by reading alone, has the same reports.
same() {
  rm -f copy.json trace
  LD_LIBRARY_PATH=$1 LD_PRELOAD=$probe VELQ_TRACE=trace VELQ_FAULTS=${2-} "$velq_sim" --capture copy.json 2>left-out ||
    fail "$1: $(cat left-out)"
  diff -a <(LD_LIBRARY_PATH=$1 reports) <(VELQ_RIG=copy.json reports) || fail "$1: the copy differs"
  "$velq_sim" --rig copy.json "$velq_sim" --capture - | cmp - copy.json || fail "$1: the copy of the copy is another"
  reading='[A-Za-z]+_(Create|dispose|get(?!State|Progress)[A-Za-z]+)|CvxIsFusionDevice|CvxFusionDeviceGetChildren'
  grep -vP "^(#|($reading|DaqCtrlBase_setSelectedDevice)\()" trace && fail "$1: more than reading"
  [ "$(grep -c '_Create(.*#' trace)" = "$(grep -c '_dispose(' trace)" ] || fail "$1: not disposed of"
}

"$qutil" /dn:2 -ci:5 >out && "$qutil" '/dd:QS*' '-cd:Pump *' >out && "$qutil" /dn:0 -cali:ai.reverse >out
"$qutil" /dd:Rig -fusion 'Pump 04,BID#1' 'Pump 04,BID#0' >out
same "$simulator"
strings='(name|instruction|notice|version|location|product_id)": ".*?"|"0x\w{4,}"'
diff <(grep -oP "$strings" "$rigs/builtin_rig.json") <(grep -oP "$strings" copy.json) || fail "not as in the rig"
expect 0 'device 0: calibration 0.0.0 0x00000080 -> 0x0000007e
device 0: calibration 0.1.0 0x00000080 -> 0x00000081
device 2: description "QD-0096,BID#2" -> "QD-0096,BID#5"
device 2: board id 2 -> 5
device 6: description "QS-2004,BID#0" -> "Pump 04,BID#0"
device 6: fusion device none -> 256
device 7: description "QS-2004,BID#1" -> "Pump 04,BID#1"
device 7: fusion device none -> 256
device 256: description none -> "Rig"' "$velq_sim" --changes
"$velq_sim" --rig copy.json --state dissolved "$qutil" /dn:256 -defusion >out
expect 0 'device 6: fusion device 256 -> none
device 7: fusion device 256 -> none
device 256: description "Rig" -> none' "$velq_sim" --rig copy.json --state dissolved --changes
expect 1 'velq-sim: /: is not a regular file' "$velq_sim" --state / --changes

same "$minimal"
cat >odd.json <<'END'
{"devices": [
  {"number": 11, "description": "Rig,Lost", "children": [7, 3, 12, 14]},
  {"number": 7, "description": "QB \u00fc\"\\", "product_id": 2, "board_id": 16, "highest_board_id": 16},
  {"number": 10, "description": "Odd", "firmware": [{"description": "", "version": 0}]},
  {"number": 3, "description": "Group", "product_id": 2, "board_version": "1234567890"},
  {"number": 14, "description": "Product", "product_id": 2}, {"number": 12, "description": "1,Lost", "product_id": 2},
  {"number": 13, "description": "2,Lost"}, {"number": 15, "description": "3,Lost"}]}
END
VELQ_RIG=odd.json same "$odd" 'DaqCtrlBase_Create#2=null; DaqCtrlBase_setSelectedDevice#1=-1; DeviceCtrl_Create#6=null;
  DeviceCtrl_getDeviceNumber#6=7; DeviceCtrl_getDeviceNumber#7=-4; DeviceCtrl_getDescription#2=0; CvxIsFusionDevice#4=0;
  DeviceCtrl_getBoardId#4=-5; DeviceCtrl_getProductId#5=-2; FirmwareItem_getDescription=null'
diff <(cat left-out; grep notice copy.json) - <<'END' || fail "left out otherwise"
velq-sim: the device library cannot create a calibration control, left out
velq-sim: device "Rig,Lost": firmware control cannot be bound, left out
velq-sim: device "QB \x{fc}\"\\": has the description "" when it is open; the listed one is written
velq-sim: device "Odd": location: truncated to the 1000 characters that a rig can have
velq-sim: device "Odd": version "0x12" of a chip: written with a capital X, so that it is not a number in the rig
velq-sim: device "Odd": description of a chip: null
velq-sim: device "Odd": notice of a chip: replaced characters that are not Unicode
velq-sim: device "Group": board id -5: replaced by 0
velq-sim: device "Product": product id -2: replaced by 0
velq-sim: device "1,Lost": cannot be opened, left out
velq-sim: device "2,Lost": opens device 7, which is listed before; left out
velq-sim: device "3,Lost": has the invalid number -4, left out
velq-sim: device "Rig,Lost": child 3 is a fusion device, left out
velq-sim: device "Rig,Lost": child 12 is not listed, left out
velq-sim: device "Rig,Lost": child 14 has another product id than the first child, left out
velq-sim: device "Group": is a fusion device without children; on the copy it is a plain device
          "notice": "�"
END

export LD_LIBRARY_PATH=$simulator
ln -s nowhere taken && touch libvelq.so
expect 1 'velq-sim: taken: already exists; nothing was written' "$velq_sim" --capture taken
expect 1 'velq-sim: none/copy: No such file or directory; nothing was written' "$velq_sim" --capture none/copy
expect 1 'velq-sim: new: File too large; nothing was written' sh -c 'ulimit -f 0; "$1" --capture new' - "$velq_sim"
expect 1 'velq-sim: standard output: No space left on device' sh -c '"$1" --capture - >/dev/full' - "$velq_sim"
export LD_PRELOAD=$probe VELQ_FAULTS=DeviceCtrl_getInstalledDevices=null
expect 1 'velq-sim: the device library returns no list of devices' "$velq_sim" --capture new
expect 1 'velq-sim: the device library lists no devices' env VELQ_FAULTS=Array_getLength=0 "$velq_sim" --capture new
expect 1 'velq-sim: ./libvelq.so: file too short' env LD_LIBRARY_PATH=. "$velq_sim" --capture new
[ "$(echo new*)" = 'new*' ] || fail "a file is left behind"
