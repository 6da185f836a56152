#!/bin/sh
# What velq-compliance says of good libraries, of planted faults, and of wrong usage. Arguments: the checker, qutil, the
# simulator, the probe, the minimal library, the bad library, a library of another kind.
set -u
checker=$1 qutil=$2 simulator=$3 probe=$4 minimal=$5 bad=$6 other=$7

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The sanitizers' runtime may come after the probe.
export VELQ_STATE="$work/state" MINIMAL_BOARD="$work/board" LC_ALL=C ASAN_OPTIONS=verify_asan_link_order=0:handle_segv=0
failures=0

# expect STATUS FAILS LINE COMMAND...: the command ends with the status, so many of its lines are failures, and one of
# its lines begins with LINE.
expect() {
  status=$1 fails=$2 line=$3
  shift 3
  "$@" >"$work/output" 2>&1
  found=$?
  if [ $found -ne "$status" ] || [ "$(grep -c ^FAIL "$work/output")" -ne "$fails" ] ||
    ! cut -c "-${#line}" "$work/output" | grep -qxF -e "$line"; then
    printf '%s\nended with %s, not %s, or without %s failures, one of its lines being "%s":\n' \
      "$*" $found "$status" "$fails" "$line"
    grep -v '^velq-probe' "$work/output"
    failures=$((failures + 1))
  fi
  rm -f "$VELQ_STATE" "$MINIMAL_BOARD"
}

# A minute for each check, which a busy machine may need, but for what hangs.
expect 0 0 '33 ok, 0 failed, 0 not run, 1 refused' "$checker" --timeout 60 --write "$simulator"
expect 0 0 'ok   write-fusion: refused, not tried: fusion devices of two' \
  env --ignore-signal=INT,PIPE "$checker" --timeout 60 --write "$minimal"
expect 0 0 "through $probe" env "LD_PRELOAD=$probe" "$checker" --timeout 60 "$simulator"
expect 0 0 '29 ok, 0 failed, 4 not run, 0 refused' "$checker" --timeout 60 "$simulator"

# On a fusion device as well; everything is put back. Five devices tell as much as eight, in a third of the time.
export VELQ_RIG="$work/rig"
python3 -c 'import json, sys
print(json.dumps({"devices": [device for device in json.load(sys.stdin)["devices"] if device["number"] in (0, 2, 6, 7)]}))
' <"$(dirname "$0")/../src/simulator/builtin_rig.json" >"$VELQ_RIG"
"$qutil" /dd:Pair -fusion QS-2004,BID#0 QS-2004,BID#1 >"$work/fused"
cp "$VELQ_STATE" "$work/fused"
"$qutil" '/dd:*' >"$work/before"
"$checker" --timeout 60 --write "$simulator" >"$work/output" || failures=$((failures + 1))
"$qutil" '/dd:*' | cmp - "$work/before" || failures=$((failures + 1))

# A fault, of the probe where it has a "=", of the bad library else, and what is said of it: once, for what follows from
# it is no failure of its own.
while IFS='|' read -r fault line; do
  cp "$work/fused" "$VELQ_STATE"
  case $fault in
    *Create=* | *RemoveChildren=*) rm "$VELQ_STATE" ;;
  esac
  limit=60
  [ "$fault" != hang ] || limit=1
  case $fault in
    *=*)
      expect 1 1 "FAIL $line" env "VELQ_FAULTS=$fault" "LD_PRELOAD=$probe" \
        "$checker" --write --timeout $limit "$simulator"
      ;;
    *) expect 1 1 "FAIL $line" env "BAD_LIBRARY=$fault" "$checker" --write --timeout $limit "$bad" ;;
  esac
done <<'END'
DeviceCtrl_getInstalledDevices=null|device-list: null, list of installed devices
Array_getLength=-1|device-list: length -1, list of installed devices
Array_getLength#2=9|device-list: length 5, and 9 when asked again, list of installed devices
Array_getItem#5=null|device-list: element 4 of 5 is null, list of installed devices
DeviceCtrl_Create#3=null|open-listed: cannot be opened by its description, device "QS-2004,BID#0"
DeviceCtrl_getDeviceNumber=7|open-listed: has the number 7 of device "QA-3216,BID#0", device "QD-0096,BID#2" (and 3
DeviceCtrl_getDescription=0|text-description: no terminator, status 0x00000000, device "QA-3216,BID#0", capacity 1024
DeviceCtrl_getLocation#10=0xE0000001|text-location: status 0xe0000001, but 0x00000000 at capacity 1024, device "QA-3216
DeviceCtrl_getInterrupts#2=null|array-interrupts: once null and once not, device "QA-3216,BID#0"
CvxIsFusionDevice=0|fusion-unknown: is called a fusion device, number -1, which is no fusion device
CvxFusionDeviceGetChildren=0|fusion-unknown: has children, number -1, which is no fusion device
CvxFusionDeviceCheckChildren=0|fusion-unknown: would take a child, number -1, which is no fusion device
DaqCtrlBase_setSelectedDevice=0|control-unknown: is bound to a device that is not there, status 0x00000000, firmware
DaqCtrlBase_getSelectedDevice=0|control-unbound: tells of a device although it is not bound, status 0x00000000, firmware
DaqCtrlBase_getDevice=null|control-binding: has no device although it is bound, firmware control, device "QA-3216,BID#0"
FirmwareItem_getVersion#2=null|firmware: version is another when asked for again, device "QA-3216,BID#0", chip 0
FirmwareItem_loadFile=0|firmware: status 0x00000000 for a firmware file that does not exist
CalibrationItem_getName=null|calibration: name is null, device "QA-3216,BID#0", solution 0, section 0, item 0
CalibrationItem_getState=2|calibration: runs although its section was not started, device "QA-3216,BID#0", solution 0
DeviceCtrl_getBoardId#15=9|devices-side-by-side: device 
DeviceCtrl_setDescription#2=0|write-description: device 0: description is "QA-3216,BID#0", not "velq-compliance 1", afte
DeviceCtrl_setBoardId#3=0|write-board-id: device 0: board id is 0, not 1, after a change of the board id to 1 with stat
CvxFusionDeviceCreate=0xE0000001|write-fusion: is refused with status 0xe0000001, after which tools go on with device 0
CvxFusionDeviceAddChildren=0|write-fusion: takes 2147483647, fusion device 256
CvxFusionDeviceRemoveChildren=0|write-fusion: lets 2147483647 go, fusion device 256
constructor|load: ends the process with SIGABRT during dlopen()
destructor|load: ends the process with SIGABRT during exit()
exit|first-look: ends the process with status 0 during DeviceCtrl_getProductId
quick exit|first-look: ends the process with status 0 during DeviceCtrl_getProductId
signal|first-look: ends the process with SIGSEGV during DeviceCtrl_getProductId
stack|first-look: ends the process with SIGSEGV during DeviceCtrl_getProductId
throw|first-look: lets an exception out during DeviceCtrl_getProductId: std::runtime_error
hang|first-look: is not done within 1 s, during DeviceCtrl_getProductId
print|process-left-alone: writes to standard output, which is the tool's, during DeviceCtrl_getProductId
locale|process-left-alone: sets the locale to C.UTF-8, which is the tool's to choose, during DeviceCtrl_getProductId
folder|process-left-alone: changes the working folder, which is the user's, during DeviceCtrl_getProductId
hole|complete-tables: null, ObjectTable::CalibrationItem_getState
overrun|text-library-version: writes outside of the buffer, device "Minimal board", capacity 1024
unterminated|text-library-version: no terminator, status 0xa0000001, device "Minimal board", capacity 1024
silently cut|text-library-version: status 0x00000000 for a text that is cut, device "Minimal board", capacity 1
reading changes|reads-change-nothing: device 0: description is "x", not "Minimal board"
any device|open-unknown: opens a device that is not there, DeviceCtrl_Create(2147483647, null)
one list|write-description: a list that was taken before the change reads otherwise, device "Minimal board"
unbound chips|control-unbound: has chips or solutions although it is not bound, firmware control
rebinding|returned-stays-when-bound-anew: firmware control bound to device 0
module index|control-binding: module index is 1515870810 in the record, firmware control, device "Minimal board"
codes|calibration: writes more than 15 codes, device "Minimal board", solution 0, section 0, item 0
cuts a description|write-description: takes "xxxxxxxx
needs the terminator|write-description: 
negative id|write-board-id: takes the board id -1
says no but does|write-board-id: device 0: board id is 1, not 0, after a change of the board id to 1 with status 0xe0
forgets others|write-from-two-processes: device 0: description is "Minimal board", not "velq-compliance, other", after
next process|write-board-id: device 0: board id is 0, not 2147483647, in the next process after changes of the board id
END

expect 1 2 'FAIL one-export: exports ' "$checker" "$other"
expect 1 2 "FAIL load: $other: does not export CvxQuellisLibInitialize" "$checker" "$other"
head -c 20000 "$minimal" >"$work/cut.so"
expect 1 2 "FAIL one-export: $work/cut.so: has " "$checker" "$work/cut.so"
expect 2 0 'velq-compliance: standard output: No space left on device' sh -c "'$checker' '$minimal' >/dev/full"
expect 0 0 'Usage: velq-compliance [--write] [--timeout SECONDS] LIBRARY' "$checker" --help
expect 0 0 'velq-compliance 1.0.0' "$checker" --version
expect 2 0 'velq-compliance: no LIBRARY given; see velq-compliance --help' "$checker" --write
expect 2 0 'velq-compliance: unknown option "--writes"; see velq-compliance --help' "$checker" --writes "$minimal"
expect 2 0 'velq-compliance: --timeout: "0" is no number of seconds from 1 to 3600' "$checker" --timeout 0 "$minimal"
expect 2 0 'velq-compliance: "second": one LIBRARY only, "first" is given before' "$checker" first second
expect 2 0 "velq-compliance: $work/none: No such file" "$checker" "$work/none"
expect 2 0 "velq-compliance: $0: is no shared library" "$checker" "$0"

[ $failures -eq 0 ] || echo "$failures failures"
[ $failures -eq 0 ]
