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

# expect STATUS FAILS LINE COMMAND...: the command ends with the status, so many of its lines are failures, one of its
# lines, in the form below, begins with LINE, and each check that is planned has its line.
#   ok   NAME                      FAIL NAME: FINDING, with "(and 3 more)" ahead of NAME as "+3 "
#   ok   NAME: refused, ...        --   NAME: not run, REASON
readable='
  function flush() { if (held != "") print held; held = "" }
  /^# refused, not tried/ { held = held ": " substr($0, 3) }
  { flush() }
  /^ok / { sub(/^ok [0-9]+ - /, ""); skip = index($0, " # SKIP ")
    held = skip ? "--   " substr($0, 1, skip - 1) ": not run, " substr($0, skip + 8) : "ok   " $0; next }
  /^not ok / { sub(/^not ok [0-9]+ - /, ""); name = $0; getline; print "FAIL " name ": " substr($0, 3); next }
  !/^# refused, not tried/ { sub(/^# /, ""); print }
  END { flush() }'
expect() {
  status=$1 fails=$2 line=$3
  shift 3
  "$@" >"$work/output" 2>&1
  found=$?
  planned=$(sed -n 's/^1\.\.//p' "$work/output")
  judged=$(grep -cE '^(not )?ok [0-9]+ - ' "$work/output")
  awk "$readable" "$work/output" >"$work/lines"
  sed -E 's/^FAIL (.*) \(and ([0-9]*) more\)$/FAIL +\2 \1/' "$work/lines" >"$work/output"
  if [ $found -ne "$status" ] || [ "$(grep -c ^FAIL "$work/output")" -ne "$fails" ] ||
    [ "$judged" -ne "${planned:-0}" ] ||
    ! cut -c "-${#line}" "$work/output" | grep -qxF -e "$line"; then
    printf '%s\nended with %s, not %s, or without %s failures, one of its lines being "%s":\n' \
      "$*" $found "$status" "$fails" "$line"
    grep -v '^velq-probe' "$work/output"
    failures=$((failures + 1))
  fi
  rm -f "$VELQ_STATE" "$MINIMAL_BOARD"
}

# Devices of every kind, three of them to be fused. Five tell as much as eight, in a third of the time.
export VELQ_RIG="$work/rig"
python3 -c 'import json, sys
devices = [device for device in json.load(sys.stdin)["devices"] if device["number"] in (0, 2, 6, 7)]
devices += [devices[3] | {"number": 8, "description": "QS-2004,BID#2", "location": "\U0010FFFF"}]
print(json.dumps({"devices": devices}))
' <"$(dirname "$0")/../src/simulator/rig/builtin_rig.json" >"$VELQ_RIG"

# A minute for each check, which a busy machine may need, but for what hangs.
all=$("$checker" "$simulator" | sed -n 's/^1\.\.//p')
expect 0 0 "$all ok, 0 failed, 0 not run, 0 refused" "$checker" --timeout 3600 --write "$simulator"
expect 0 0 'ok   write-fusion: refused, not tried: fusion devices of two' \
  env --ignore-signal=INT,PIPE "$checker" --timeout 60 --write "$minimal"
expect 0 0 "through $probe" env VELQ_FAULTS=FirmwareItem_loadFile=0xE0000019 "LD_PRELOAD=$probe" \
  "$checker" --timeout 60 "$simulator"
refused='DaqCtrlBase_Create=null; DeviceCtrl_setDescription=0xE0000001; DeviceCtrl_setBoardId=0xE0000001'
expect 0 0 "$all ok, 0 failed, 0 not run, 10 refused" env "VELQ_FAULTS=$refused" "LD_PRELOAD=$probe" \
  "$checker" --timeout 60 --write "$minimal"
expect 0 0 "$((all - 4)) ok, 0 failed, 4 not run, 0 refused" "$checker" --timeout 60 "$simulator"

# On a fusion device as well; everything is put back.
"$qutil" /dd:Pair -fusion QS-2004,BID#0 QS-2004,BID#1 >"$work/fused"
cp "$VELQ_STATE" "$work/fused"
"$qutil" '/dd:*' >"$work/before"
"$checker" --timeout 60 --write "$simulator" >"$work/output" || failures=$((failures + 1))
"$qutil" '/dd:*' | cmp - "$work/before" || failures=$((failures + 1))

# A fault, of the probe where it has a "=", of the bad library else, and what is said of it: once, for what follows from
# it is no failure of its own.
while IFS='|' read -r fault line; do
  cp "$work/fused" "$VELQ_STATE"
  library=$simulator
  case $fault in
    *Create=* | *AddChildren* | *RemoveChildren* | several:*) rm "$VELQ_STATE" ;;
    DeviceCtrl_setBoardId*) library=$minimal ;;
  esac
  limit=60
  [ "$fault" != hang ] || limit=1
  case $fault in
    *=*)
      expect 1 1 "FAIL $line" env "VELQ_FAULTS=$fault" "LD_PRELOAD=$probe" \
        "$checker" --write --timeout $limit "$library"
      ;;
    several:*) expect 1 1 "FAIL $line" env "BAD_LIBRARY=$fault" "BAD_BASE=$simulator" \
        "$checker" --write --timeout $limit "$bad" ;;
    *) expect 1 1 "FAIL $line" env "BAD_LIBRARY=$fault" "$checker" --write --timeout $limit "$bad" ;;
  esac
done <<'END'
DeviceCtrl_getInstalledDevices=null|device-list: null, list of installed devices
Array_getLength=-1|device-list: length -1, list of installed devices
Array_getLength=10000001|device-list: length 10000001, list of installed devices
Array_getLength=0|device-list: no device to check, list of installed devices
Array_getLength#2=9|device-list: length 6, and 9 when asked again, list of installed devices
Array_getLength#4=4|device-list: other addresses when asked again, list of installed devices
Array_getLength#5=4|device-list: another length after its elements were asked for, list of installed devices
Array_getItem#5=null|device-list: element 4 of 6 is null, list of installed devices
DeviceCtrl_Create#3=null|open-listed: cannot be opened by its description, device "QS-2004,BID#0"
DeviceCtrl_getDeviceNumber=7|+4 open-listed: has the number 7 of device "QA-3216,BID#0", device "QD-0096,BID#2"
DeviceCtrl_getDeviceNumber#1=-1|open-listed: has the number -1, device "QA-3216,BID#0"
DeviceCtrl_getDeviceNumber#2=5|open-by-description: is another with AccessFusion, device "QA-3216,BID#0"
DeviceCtrl_getDeviceNumber#18=5|open-by-number: number 6 with description "Pair" opens "QS-2004,BID#0", device
DeviceCtrl_getDescription=0|+1805 text-description: no terminator, status 0x00000000, device "QA-3216,BID#0", capacity
DeviceCtrl_getLocation#10=0xE0000001|text-location: status 0xe0000001, but 0x00000000 at capacity 1024, device
DeviceCtrl_getInterrupts#2=null|+1 array-interrupts: once null and once not, device "QA-3216,BID#0"
CvxIsFusionDevice#2=0|fusion-children: is called a fusion device, number 0, which is no fusion device
CvxFusionDeviceGetChildren=0|+521 fusion-children: has children, number 0, which is no fusion device
CvxFusionDeviceCheckChildren=0|+7 fusion-children: would take a child, number 0, which is no fusion device
CvxIsFusionDevice#12=0|fusion-children: child 6 is a fusion device, device "Pair"
CvxFusionDeviceCheckChildren#6=0|fusion-children: child 6 would be taken once more, device "Pair"
CvxFusionDeviceCheckChildren#8=0|fusion-children: would take a child that is not there, device "Pair"
CvxFusionDeviceGetChildren#11=0|+510 fusion-children: child -12345 cannot be opened, device "Pair"
CvxFusionDeviceGetChildren#11=0xE0000001|fusion-children: children: status 0xe0000001, device "Pair"
CvxFusionDeviceGetChildren#12=0|fusion-children: lists 2 children in the room for 1, device "Pair"
DaqCtrlBase_setSelectedDevice=0|+19 control-unknown: is bound to a device that is not there, status 0x00000000, firmware
DaqCtrlBase_getSelectedDevice=0|+1 control-unbound: tells of a device although it is not bound, status 0x00000000
DaqCtrlBase_getDevice=null|+59 control-binding: has no device although it is bound, firmware control, device
DaqCtrlBase_getDevice#2=null|control-binding: has another device when asked again, firmware control, device
DaqCtrlBase_getSelectedDevice#1=0xE0000001|+4 control-binding: status 0xe0000001 for the record of the bound device
FirmwareItem_getVersion#2=null|firmware: version is another when asked for again, device "QA-3216,BID#0", chip 0
FirmwareItem_loadFile=0|+7 firmware: status 0x00000000 for a firmware file that does not exist
FirmwareItem_loadFile#4=0|firmware: status 0x00000000 for an empty firmware file, device "QA-3216,BID#0", chip 0
FirmwareItem_getDescription=null|+1 firmware: description is null, device "QA-3216,BID#0", chip 0
CalibrationSolution_getName=null|+1 calibration: name is null, device "QA-3216,BID#0", solution 0
CalibrationItem_getState=2|+4 calibration: runs although its section was not started, device "QA-3216,BID#0", solution
DeviceCtrl_getBoardId#15=9|devices-side-by-side: device 7: board id is 9, not 1, as the device of a firmware control
DeviceCtrl_getBoardId#2=9|devices-side-by-side: device 0: board id is 9, not 0, when opened with AccessFusion
DeviceCtrl_getBoardId#28=9|devices-side-by-side: device 6: board id is 9, not 0, while other devices are open
DeviceCtrl_getBoardId#31=9|devices-side-by-side: device 0: board id is 9, not 0, after another opening of it was
DeviceCtrl_getBoardId#32=9|devices-side-by-side: device 0: board id is 9, not 0, after another device was disposed of
DeviceCtrl_setDescription#2=0|+3 write-description: device 0: description is "QA-3216,BID#0", not "velq-compliance 1"
DeviceCtrl_setDescription#12=0|write-description: takes "QD-0096,BID#2", device "QA-3216,BID#0"
DeviceCtrl_setBoardId=0|+38 write-board-id: device 0: board id is 0, not 1, after a change of the board id to 1 with
CvxFusionDeviceCreate=0xE0000001|+30 write-fusion: is refused with status 0xe0000001, after which tools go on with
CvxFusionDeviceCreate=0|+30 write-fusion: gets the number 0, fusion device of [0, 2147483647]
CvxFusionDeviceAddChildren=0|+53 write-fusion: takes [2147483647], fusion device 256
CvxFusionDeviceAddChildren=0xE0000001|+6 write-fusion: takes [7] with status 0xe0000001, but the check says 0x00000000, fusion
CvxFusionDeviceAddChildren#7=0|+57 write-fusion: takes [7] with status 0x00000000, but the check says 0xe0000027, fusion
CvxFusionDeviceRemoveChildren=0|+396 write-fusion: lets [2147483647] go, fusion device 256
CvxFusionDeviceRemoveChildren#5=0xE0000001|write-fusion: does not let [0] go, status 0xe0000001, fusion device 256
CvxFusionDeviceRemoveChildren#10=0|+71 write-fusion: has the children [6, 7, 8], not [7], fusion device 256 after
CvxFusionDeviceRemoveChildren#11=0|+70 write-fusion: is a fusion device without a child, fusion device 256
several: check adds|+107 write-fusion: has the children [6, 7], not [6], fusion device 256 after a look whether it
several: no single child|write-fusion: can be grouped at once, but not one after the other, devices [6, 7]
several: hidden device|+2 open-unknown: opens a device that is not there, DeviceCtrl_Create(5, null)
constructor|load: ends the process with SIGABRT during dlopen()
destructor|load: ends the process with SIGABRT during exit()
last words|process-left-alone: writes to standard output
exit|first-look: ends the process with status 0 during DeviceCtrl_getProductId
signal|first-look: ends the process with SIGSEGV during DeviceCtrl_getProductId
throw|first-look: lets an exception out during DeviceCtrl_getProductId: std::runtime_error
throw a number|first-look: lets an exception out during DeviceCtrl_getProductId: int
hang|first-look: is not done within 1 s, during DeviceCtrl_getProductId
print|process-left-alone: writes to standard output, which is the tool's, during DeviceCtrl_getProductId
locale|process-left-alone: sets the locale, during DeviceCtrl_getProductId
folder|process-left-alone: changes the working directory, during DeviceCtrl_getProductId
environment|process-left-alone: changes the environment, during DeviceCtrl_getProductId
umask|process-left-alone: changes the umask, during DeviceCtrl_getProductId
signal handler|process-left-alone: takes over SIGALRM, during DeviceCtrl_getProductId
blocked signals|process-left-alone: changes which signals are blocked, during DeviceCtrl_getProductId
alarm|process-left-alone: starts a timer, during DeviceCtrl_getProductId
input|process-left-alone: reads, closes or changes standard input, during DeviceCtrl_getProductId
closed output|process-left-alone: closes standard output, during DeviceCtrl_getProductId
hole|complete-tables: null, ObjectTable::CalibrationItem_getState
overrun|+15 text-library-version: writes outside of the buffer, device "Minimal board", capacity 1024
unterminated|+300 text-library-version: no terminator, status 0xa0000001, device "Minimal board", capacity 1024
long version|text-library-version: "1.0-minima" has more than the 9 characters that tools have room for, device
always warns|+8 text-library-version: status 0xa0000001 for a text that fits, device "Minimal board", capacity 1024
surrogate|+19 text-library-version: "\x{d800}" has what is no character, device "Minimal board", capacity 2
silently cut|+6 text-library-version: status 0x00000000 for a text that is cut, device "Minimal board", capacity 1
reading changes|+1 reads-change-nothing: device 0: description is "x", not "Minimal board", although nothing was done
any device|+20 open-unknown: opens a device that is not there, DeviceCtrl_Create(-2147483648, null)
no fusion mode|open-by-description: cannot be opened with AccessFusion, device "Minimal board"
changing list|+1 device-list: 1 devices or their descriptions differ from the 1 devices of the call before, list of
no names|+2 device-list: an empty description, device "" in the list of installed devices
moving addresses|+1 returned-stays: device 0: base addresses reads elsewhere: 0 , not 0 , after all other operations
long name|device-list: 64 characters, more than the 63 that a record holds, device
counting addresses|+1 array-base-addresses: other values after other calls, device "Minimal board"
bad end|first-look: ends the process with SIGABRT during exit()
shared items|+7 returned-stays: firmware control of device 0: list of chips reads other handles, not as before, after
negative number|+1 open-unknown: opens a device that is not there, DeviceCtrl_Create(-2147483648, "Minimal board")
alike|+4 open-unknown: opens a device that is not there, DeviceCtrl_Create(-1, "MINIMAL BOARD")
old name|write-description: can still be opened as "Minimal board" after a change to "velq-compliance 1", terminator not
one list|write-description: a list that was taken before the change reads otherwise, device "Minimal board"
unbound device|+1 control-unbound: has a device although it is not bound, firmware control
unbound solutions|control-unbound: has chips or solutions although it is not bound, calibration control
bound once|+11 control-rebinding: has a device although it is not bound, firmware control bound anew, device "Minimal
several: first chips|+3 control-rebinding: device 2: chip 0 is "Bus FPGA", version "1.12", not nothing as for a new control
refuses what it binds|+29 control-binding: has a device although it is not bound, firmware control, device
no group|+1 fusion-children: has children, number 0, which is no fusion device
no children|fusion-children: 0 children, device "Minimal board"
stays bound|+5 control-rebinding: has a device although it is not bound, firmware control, record of number 2147483647
other number|+9 control-binding: number is 1 in the record, firmware control, device "Minimal board"
other mode|+1 control-binding: mode is 1 in the record, firmware control, device "Minimal board"
module index|+9 control-binding: module index is 1 in the record, firmware control, device "Minimal board"
old record|+1 write-description: is described "Minimal board" in the record of a firmware control that was bound before
long record|+9 control-binding: writes behind the record, firmware control, device "Minimal board"
one text|+11 returned-stays: firmware control of device 0: notice of a chip reads
earlier texts|+5 returned-stays: firmware control of device 0: description of a chip reads "?", not "0", after all
rebinding|+5 returned-stays-after-rebinding: firmware control bound to device 0: notice of a chip reads "1", not "0"
address by id|+36 write-board-id: device 0: base addresses is 1 , not 0 , after a change of the board id to 1
binds what it refuses|+29 control-unknown: has a device although it is not bound, firmware control
name by id|+36 write-board-id: device 0: solution 0 is "1" of 1 sections, not "0" of 1 sections, after a change of the
chip by id|+36 write-board-id: device 0: chip 0 is "Bus FPGA", version "1", not nothing, after a change of the board
version by id|+36 write-board-id: device 0: chip 0 is "Bus FPGA", version "1", not "Bus FPGA", version "0", after a
codes|calibration: writes more than 15 codes, device "Minimal board", solution 0, section 0, item 0
cuts a description|+6 write-description: takes "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"
no way back|+3 write-description: the old description is refused, status 0xe0000001, device "Minimal board"
warns of a change|+19 write-description: device 0: description is "velq-compliance 1", not "Minimal board", after a
no id back|+3 write-board-id: the old board id is refused, status 0xe0000001, device "Minimal board"
needs the terminator|+16 write-description: device 0: description is "velq-compliance ", not "velq-compliance 1", after
says no but does|+35 write-board-id: device 0: board id is 1, not 0, after a change of the board id to 1 with status
forgets others|write-from-two-processes: device 0: description is "Minimal board", not "velq-compliance, other", after
next process|write-board-id: device 0: board id is 0, not 2147483647, in the next process after changes of the board id
END

expect 1 2 'FAIL +4 calibration: description is null, device "Minimal board", solution 0' \
  env BAD_LIBRARY='null texts' "$checker" --timeout 60 "$bad"
expect 1 2 "FAIL load: $other: does not export CvxQuellisLibInitialize" "$checker" "$other"
head -c 20000 "$minimal" >"$work/cut.so"
expect 1 2 "FAIL one-export: $work/cut.so: exports nothing that can be read" "$checker" "$work/cut.so"
expect 2 0 'velq-compliance: standard output: No space left on device' sh -c "'$checker' '$minimal' >/dev/full"
expect 0 0 'Usage: velq-compliance [--write] [--timeout SECONDS] LIBRARY' "$checker" --help
expect 0 0 "velq-compliance $VERSION" "$checker" --version
expect 2 0 'velq-compliance: no LIBRARY given; see velq-compliance --help' "$checker" --write
expect 2 0 'velq-compliance: unknown option "--writes"; see velq-compliance --help' "$checker" --writes "$minimal"
for seconds in 0 3601 1s ''; do
  expect 2 0 "velq-compliance: --timeout: \"$seconds\" is no number of seconds from 1 to 3600" \
    "$checker" "$minimal" --timeout "$seconds"
done
expect 2 0 'velq-compliance: "second": one LIBRARY only, "first" is given before' "$checker" first second
expect 2 0 "velq-compliance: $work/none: No such file" "$checker" "$work/none"
expect 2 0 "velq-compliance: $0: is no shared library" "$checker" "$0"

[ $failures -eq 0 ] || echo "$failures failures"
[ $failures -eq 0 ]
