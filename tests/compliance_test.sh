#!/bin/sh
# What velq-compliance says of good libraries, of planted faults, and of wrong usage. Arguments: the checker, qutil, the
# simulator, the probe, the minimal library, the bad library.
set -u
checker=$1 qutil=$2 simulator=$3 probe=$4 minimal=$5 bad=$6

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The sanitizers' runtime may come after the probe.
export VELQ_STATE="$work/state" LC_ALL=C ASAN_OPTIONS=verify_asan_link_order=0
failures=0

# expect STATUS LINE COMMAND...: the command ends with the status, and one of its lines begins with LINE.
expect() {
  status=$1 line=$2
  shift 2
  "$@" >"$work/output" 2>&1
  found=$?
  if [ $found -ne "$status" ] || ! cut -c "-${#line}" "$work/output" | grep -qxF -e "$line"; then
    printf '%s\nended with %s, not %s, or without the line "%s":\n' "$*" $found "$status" "$line"
    cat "$work/output"
    failures=$((failures + 1))
  fi
}

good() {
  expect 0 "25 ok, 0 failed, 0 not run" "$checker" --write "$1"
}

# planted FAULTS LINE: the checker finds what the probe makes the simulator do.
planted() {
  expect 1 "FAIL $2" env "VELQ_FAULTS=$1" "LD_PRELOAD=$probe" "$checker" --write "$simulator"
}

# spoiled FAULT LINE: it finds what the bad library does.
spoiled() {
  expect 1 "$2" env "BAD_LIBRARY=$1" "$checker" "$bad"
}

good "$simulator"
good "$minimal"
expect 0 "through $probe" env "LD_PRELOAD=$probe" "$checker" "$simulator"
expect 0 "21 ok, 0 failed, 4 not run" "$checker" "$simulator"

planted 'DeviceCtrl_setDescription#2=0' 'write-description: described "QA-3216,BID#0" after a change to "velq-compliance 1"'
planted 'DeviceCtrl_setBoardId#3=0' 'write-board-id: board id 1 instead of 0 after a change with status 0x00000000, device'
rm -f "$VELQ_STATE"
planted 'DeviceCtrl_setBoardId#3=0' 'writes-put-back: device "QA-3216,BID#0": board id 0 before, device "QA-3216,BID#0": b'
rm -f "$VELQ_STATE"
planted 'CvxFusionDeviceCreate=0' 'write-fusion: is made of a device that is not there, fusion device 0'
planted 'CvxFusionDeviceAddChildren=0' 'write-fusion: takes a child that is not there, fusion device 256'
planted 'CvxFusionDeviceRemoveChildren=0' 'write-fusion: is a fusion device without its last child, fusion device 256'

# On a fusion device, which the last fault has left behind as well.
rm -f "$VELQ_STATE"
"$qutil" /dd:Pair -fusion QS-2004,BID#0 QS-2004,BID#1 >"$work/output"
"$qutil" '/dd:*' >"$work/before"
good "$simulator"
"$qutil" '/dd:*' | cmp - "$work/before" || failures=$((failures + 1))

planted 'DeviceCtrl_getInstalledDevices=null' 'device-list: null, list of installed devices'
planted 'Array_getLength=-1' 'array-installed-devices: length -1, list of installed devices'
planted 'Array_getItem=null' 'array-installed-devices: element 0 of 8 is null, list of installed devices'
planted 'DeviceCtrl_Create=null' 'open-by-description: cannot be opened by its description, device "QA-3216,BID#0" (and 7'
planted 'DeviceCtrl_getDeviceNumber=7' 'open-by-number: number 7 with description null opens "QS-2004,BID#1", device "QA-3'
planted 'DaqCtrlBase_setSelectedDevice=0' 'control-unbound: is bound to a device that is not there, status 0x00000000'
planted 'DaqCtrlBase_getSelectedDevice=0' 'control-binding: number 1515870810 in the record'
planted 'DaqCtrlBase_getDevice=null' 'control-binding: has no device although it is bound, firmware control, device "QA-3216'
planted 'CvxIsFusionDevice=0' 'fusion-unknown: is called a fusion device, number -1'
planted 'CvxFusionDeviceGetChildren=0' 'fusion-children: child -12345 cannot be opened, device "Pair"'
planted 'CvxFusionDeviceCheckChildren=0' 'fusion-children: would take a child that is not there, device "Pair"'
planted 'DeviceCtrl_getDescription=0' 'text-description: no terminator, status 0x00000000, device "QA-3216,BID#0", capaci'
planted 'DeviceCtrl_getLocation#10=0xE0000001' 'text-location: status 0xe0000001, but 0x00000000 at capacity 1024, device'
planted 'FirmwareItem_getVersion=null' 'firmware: version is null, device "QA-3216,BID#0", chip 0'
planted 'FirmwareItem_loadFile=0' 'firmware: status 0x00000000 for a firmware file that does not exist'
planted 'CalibrationItem_getName=null' 'calibration: name is null, device "QA-3216,BID#0", solution 0, section 0, item 0'
planted 'DeviceCtrl_getInterrupts#10=null' 'array-interrupts: once null and once not, device "QA-3216,BID#0"'
planted 'DeviceCtrl_getBoardId#4=9' 'reads-change-nothing: device "QC-0408,BID#3": board id 9 before, device "QC-0408,BID#3'

spoiled '' 'FAIL one-export: exports "exportedByMistake", '
spoiled '' '20 ok, 1 failed, 4 not run'
spoiled hole 'FAIL complete-tables: null, ObjectTable::CalibrationItem_getState'
spoiled hole '0 ok, 2 failed, 23 not run'
spoiled crash 'FAIL first-reading: the library ended the process with SIGABRT'
spoiled overrun 'FAIL text-library-version: writes outside of the buffer, device "Minimal board", capacity 1024'
spoiled unterminated 'FAIL text-library-version: no terminator, status 0xa0000001, device "Minimal board", capacity 1024'
spoiled silently-cut 'FAIL text-library-version: status 0x00000000 for a text that is cut, device "Minimal board", capaci'
spoiled moving 'FAIL array-installed-devices: other addresses when asked again, list of installed devices'
spoiled changing 'FAIL reads-change-nothing: device "Minimal board": board id '

expect 0 'Usage: velq-compliance [--write] LIBRARY' "$checker" --help
expect 2 'velq-compliance: no LIBRARY given; see velq-compliance --help' "$checker" --write
expect 2 'velq-compliance: unknown option "--writes"; see velq-compliance --help' "$checker" --writes "$minimal"
expect 2 'velq-compliance: "second": one LIBRARY only, "first" is given before' "$checker" first second
expect 2 "velq-compliance: $work/none: cannot open shared object file" "$checker" "$work/none"
expect 2 "velq-compliance: $0: invalid ELF header" "$checker" "$0"

[ $failures -eq 0 ] || echo "$failures failures"
[ $failures -eq 0 ]
