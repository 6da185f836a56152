#!/bin/bash
# What velq-compliance says of good libraries, of planted faults, and of wrong usage. Arguments: the checker, qutil, the
# simulator, the probe, the minimal library, the bad library, a library of another kind.
set -u
checker=$1 qutil=$2 simulator=$3 probe=$4 minimal=$5 bad=$6 other=$7

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# The sanitizers' runtime may come after the probe.
export LC_ALL=C ASAN_OPTIONS=verify_asan_link_order=0:handle_segv=0
cases=0

# Lines of the checker in a form that is easy to compare:
#   ok   NAME                      FAIL NAME: FINDING
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

# All reports of the devices of the library that a case uses.
boards() { LD_LIBRARY_PATH=${library%/*} "$qutil" '/dd:*'; }

# in_directory DIRECTORY STATUS FAILS LINE COMMAND...: expect(), in a directory with states of its own.
in_directory() {
  export VELQ_STATE="$1/state" MINIMAL_BOARD="$1/board"
  mkdir "$1"
  [ -z "$start" ] || cp "$start" "$VELQ_STATE"
  boards >"$1/before"
  (cd "$1" && exec "${@:5}") >"$1/output" 2>&1
  found=$?
  planned=$(sed -n 's/^1\.\.//p' "$1/output")
  judged=$(grep -cE '^(not )?ok [0-9]+ - ' "$1/output")
  awk "$readable" "$1/output" >"$1/lines"
  if [ $found -ne "$2" ] || [ "$(grep -c ^FAIL "$1/lines")" -ne "$3" ] || { [ "$judged" -ne "${planned:-0}" ] && [ $found -lt 128 ]; } ||
    ! cut -c "-${#4}" "$1/lines" | grep -qxF -e "$4"; then
    echo "ended with $found, not $2, or without $3 failures, one of its lines being \"$4\""
  fi
  grep -q '^NOT RESTORED' "$1/lines" || boards | cmp -s - "$1/before" || echo 'leaves devices altered'
  grep '^through' "$1/lines" | grep -vxF "through $probe"
  grep -i 'restored: ' "$1/lines" | grep -vE ': (order |.*: (description|board id|children) |the library )'
  for ((wait = 0; wait < 50; ++wait)); do
    find /proc -maxdepth 2 -name cwd -lname "$1" 2>"$1/gone" | grep . >"$1/left" || break
    sleep 0.1
  done
  sed 's/^/leaves a process: /' "$1/left"
}

# expect STATUS FAILS LINE COMMAND...: the command ends with the status, so many of its lines are failures, one of its
# lines begins with LINE, each check that is planned has its line, and all devices are as before or the checker says
# that they are not. Several cases run at once.
expect() {
  cases=$((cases + 1))
  while [ "$(jobs -pr | wc -l)" -ge 4 ]; do wait -n; done
  {
    problems=$(in_directory "$work/$cases" "$@")
    [ -z "$problems" ] || { echo "${*:4}: $problems" && grep -v '^velq-probe' "$work/$cases/lines"; } >"$work/$cases/problems"
  } &
}

# Devices of every kind, three of them to be fused. Five tell as much as eight, in a third of the time.
export VELQ_RIG="$work/rig"
python3 -c 'import json, sys
devices = [device for device in json.load(sys.stdin)["devices"] if device["number"] in (0, 2, 6, 7)]
devices += [devices[3] | {"number": 8, "description": "QS-2004,BID#2", "location": "\U0010FFFF"}]
print(json.dumps({"devices": devices}))
' <"$(dirname "$0")/../src/simulator/rig/builtin_rig.json" >"$VELQ_RIG"

library=$simulator start=
# A minute for each call, which a busy machine may need, but for what hangs.
all=$("$checker" "$simulator" | sed -n 's/^1\.\.//p')
expect 0 0 "$all ok, 0 failed, 0 not run, 0 refused" "$checker" --timeout 3600 --write "$simulator"
expect 0 0 'ok   write-fusion: refused, not tried: fusion devices of two' \
  env --ignore-signal=INT,PIPE,CHLD "$checker" --timeout 60 --write "$minimal"
expect 0 0 "through $probe" env VELQ_FAULTS=FirmwareItem_loadFile=0xE0000019 "LD_PRELOAD=$probe" \
  "$checker" --timeout 60 "$simulator"
for fault in 'DaqCtrlBase_Create=null|22' 'DeviceCtrl_setDescription=0xE0000001; DeviceCtrl_setBoardId=0xE0000001|15'; do
  expect 0 0 "$all ok, 0 failed, 0 not run, ${fault#*|} refused" env "VELQ_FAULTS=${fault%|*}" "LD_PRELOAD=$probe" \
    "$checker" --timeout 60 --write "$simulator"
done
expect 0 0 "$((all - 4)) ok, 0 failed, 4 not run, 0 refused" "$checker" --timeout 60 "$simulator"

# On a fusion device as well.
VELQ_STATE="$work/fused" "$qutil" /dd:Pair -fusion QS-2004,BID#0 QS-2004,BID#1 >"$work/pair"
start=$work/fused
expect 0 0 "$all ok, 0 failed, 0 not run, 2 refused" "$checker" --timeout 60 --write "$simulator"

# A fault, of the probe where it has a "=", of the bad library else, and what is said of it, or of the devices after it:
# once, for what follows from it is no failure of its own, with few exceptions.
while IFS='|' read -r fault line fails; do
  library=$minimal start= limit=60 bad_base=()
  case $fault in
    hang* | 'keeps a lock') limit=5 ;;
    'reading changes') library= ;; # which looking at the devices would do, too
    DeviceCtrl_setBoardId*) ;;
    *Create=* | *AddChildren* | *RemoveChildren* | several:*) library=$simulator bad_base=("BAD_BASE=$simulator") ;;
    *=*) library=$simulator start=$work/fused ;;
  esac
  case $fault in
    *=*) settings=("VELQ_FAULTS=$fault" "LD_PRELOAD=$probe") tested=$library ;;
    *) settings=("BAD_LIBRARY=$fault" "${bad_base[@]}") tested=$bad ;;
  esac
  case $line in restored:* | 'NOT RESTORED:'*) ;; *) line="FAIL $line" ;; esac
  expect 1 "${fails:-1}" "$line" env "${settings[@]}" "$checker" --write --timeout $limit "$tested"
done <<'END'
DeviceCtrl_getInstalledDevices=null|device-list: null, list of installed devices
Array_getLength=-1|device-list: length -1, list of installed devices
Array_getLength=0|device-list: no device to check, list of installed devices
Array_getLength#2=9|device-list: length 6, and 9 when requested again, list of installed devices
Array_getLength#4=4|device-list: other addresses when requested again, list of installed devices
Array_getLength#5=4|device-list: another length after its elements were read, list of installed devices
Array_getItem#5=null|device-list: element 4 of 6 is null, list of installed devices
DeviceCtrl_Create#3=null|open-listed: cannot be opened by its description, device "QS-2004,BID#0"
DeviceCtrl_getDeviceNumber=7|open-listed: has the number 7 of device "QA-3216,BID#0", device "QD-0096,BID#2"
DeviceCtrl_getDeviceNumber#1=-1|open-listed: has the number -1, device "QA-3216,BID#0"
DeviceCtrl_getDeviceNumber#2=5|open-by-description: is another device with AccessFusion, device "QA-3216,BID#0"
DeviceCtrl_getDeviceNumber#18=5|open-by-number: number 6 with description "Pair" opens "QS-2004,BID#0", device
DeviceCtrl_getDescription=0|text-description: no terminator, status 0x00000000, device "QA-3216,BID#0", capacity
DeviceCtrl_getLocation#10=0xE0000001|text-location: status 0xe0000001, but 0x00000000 at capacity 1024, device
DeviceCtrl_getInterrupts#2=null|array-interrupts: once null and once not, device "QA-3216,BID#0"
CvxIsFusionDevice#2=0|fusion-children: is reported as a fusion device, number 0, which is no fusion device
CvxFusionDeviceGetChildren=0|fusion-children: has children, number 0, which is no fusion device
CvxFusionDeviceCheckChildren=0|fusion-children: would add a child, number 0, which is no fusion device
CvxIsFusionDevice#12=0|fusion-children: child 6 is a fusion device, device "Pair"
CvxFusionDeviceCheckChildren#6=0|fusion-children: child 6 would be added again, device "Pair"
CvxFusionDeviceCheckChildren#8=0|fusion-children: would add a child that is not there, device "Pair"
CvxFusionDeviceGetChildren#11=0|fusion-children: child -12345 cannot be opened, device "Pair"
CvxFusionDeviceGetChildren#11=0xE0000001|fusion-children: children: status 0xe0000001, device "Pair"
CvxFusionDeviceGetChildren#12=0|fusion-children: lists 2 children in the room for 1, device "Pair"
DaqCtrlBase_setSelectedDevice=0|control-unknown: is bound to a device that is not there, status 0x00000000, firmware
DaqCtrlBase_getSelectedDevice=0|control-unbound: returns the record of a device although it is not bound, status 0x00000000
DaqCtrlBase_getDevice=null|control-binding: has no device although it is bound, device "QA-3216,BID#0", firmware
DaqCtrlBase_getDevice#2=null|control-binding: has another device when requested again, device "QA-3216,BID#0", firmware
DaqCtrlBase_getSelectedDevice#1=0xE0000001|control-binding: status 0xe0000001 for the record of the bound device
FirmwareItem_getVersion#2=null|firmware: version differs when requested again, device "QA-3216,BID#0", chip 0
FirmwareItem_loadFile=0|firmware: status 0x00000000 for a firmware file that does not exist
FirmwareItem_loadFile#4=0|firmware: status 0x00000000 for an empty firmware file, device "QA-3216,BID#0", chip 0
FirmwareItem_getDescription=null|firmware: description is null, device "QA-3216,BID#0", chip 0
CalibrationSolution_getName=null|calibration: name is null, device "QA-3216,BID#0", solution 0
CalibrationItem_getState=2|calibration: runs although its section was not started, device "QA-3216,BID#0", solution
DeviceCtrl_getBoardId#15=9|devices-side-by-side: device 7: board id is 9, not 1, as the device of a firmware control
DeviceCtrl_getBoardId#2=9|devices-side-by-side: device 0: board id is 9, not 0, when opened with AccessFusion
DeviceCtrl_getBoardId#28=9|devices-side-by-side: device 6: board id is 9, not 0, while other devices are open
DeviceCtrl_getBoardId#31=9|devices-side-by-side: device 0: board id is 9, not 0, after another opening of it was
DeviceCtrl_getBoardId#32=9|devices-side-by-side: device 0: board id is 9, not 0, after another device was disposed of
DeviceCtrl_setDescription#2=0|write-description: device 0: description is "QA-3216,BID#0", not "velq-compliance 1"
DeviceCtrl_setDescription#12=0|write-description: takes "QD-0096,BID#2", device "QA-3216,BID#0"
DeviceCtrl_setBoardId=0|write-board-id: device 0: board id is 0, not 1, device "Minimal board", after a change of the board id
CvxFusionDeviceCreate=0xE0000001|write-fusion: is refused with status 0xe0000001, after which tools go on with
CvxFusionDeviceCreate=0|write-fusion: gets the number 0, fusion device of [0, 2147483647]
CvxFusionDeviceAddChildren=0|write-fusion: adds [2147483647] with status 0x00000000, but the check returns 0xe0000027, fusion
CvxFusionDeviceAddChildren=0xE0000001|write-fusion: adds [7] with status 0xe0000001, but the check returns 0x00000000, fusion
CvxFusionDeviceRemoveChildren=0|write-fusion: removes [2147483647], fusion device 256
CvxFusionDeviceRemoveChildren#5=0xE0000001|write-fusion: does not remove [0], status 0xe0000001, fusion device 256
CvxFusionDeviceRemoveChildren#10=0|write-fusion: has the children [6, 7, 8], not [7], fusion device 256, after
CvxFusionDeviceRemoveChildren#11=0|write-fusion: is a fusion device without a child, fusion device 256
several: check adds|write-fusion: has the children [6, 7], not [6], fusion device 256, after a look whether it
several: no single child|write-fusion: can be grouped at once, but not one after the other, devices [6, 7]
several: hidden device|open-unknown: opens a device that is not there, DeviceCtrl_Create(5, null)
constructor|load: ends the process with SIGABRT during dlopen()
destructor|process-left-alone: ends the process with SIGABRT during exit()
last words|process-left-alone: writes to standard output
exit|first-look: ends the process with status 0 during DeviceCtrl_getProductId
signal|first-look: ends the process with signal 34 during DeviceCtrl_getProductId
throw|first-look: lets an exception out during DeviceCtrl_getProductId: std::runtime_error
throw a number|first-look: lets an exception out during DeviceCtrl_getProductId: int
hang|first-look: does not return within 5 s, during DeviceCtrl_getProductId
kills its parent|first-look: ends the process that started it with SIGKILL, during
signals its parent|first-look: sends signal 34 to the process that started it
kills its group|first-look: ends the process with SIGKILL during DeviceCtrl_getProductId
seeks everywhere|first-look: ends the process with SIGXFSZ during DeviceCtrl_getProductId (a file may have 1024 MiB)
closes all|process-left-alone: reads, closes or changes standard input, during DeviceCtrl_getProductId|2
opens without end|process-left-alone: uses up all file descriptors, during DeviceCtrl_getProductId|3
prints without end|first-look: writes to standard output without end, during DeviceCtrl_getProductId|2
takes memory|first-look: ends the process with SIGSEGV during DeviceCtrl_getProductId (a check may use 2048 MiB of memory)
takes too much memory|first-look: lets an exception out during DeviceCtrl_getProductId: std::bad_alloc: std::bad_alloc (a check may
leaves processes|process-left-alone: leaves processes behind
crashes in a rename|write-description: ends the process with SIGSEGV during DeviceCtrl_setDescription
several: crashes in a group|restored: order of the list [0, 2, 6, 7, 8], was left at [0, 2, 6, 7, 8, 256]
crashes in a change|restored: device 0: board id 0, was left at 3
crashes for good|NOT RESTORED: device 0: board id is 3, was 0
crashes once changed|NOT RESTORED: the library ends the process with SIGSEGV during DeviceCtrl_getBoardId
hangs in a change|write-board-id: does not return within 5 s, during DeviceCtrl_setBoardId
changes at its end|write-board-id: device 0: board id is 9, not 0, after the process has ended
keeps a lock|write-board-id: does not return within 5 s, during DeviceCtrl_getBoardId; DeviceCtrl_setBoardId before
several: writes an id back|write-from-two-processes: loses a change in round
writes all back|write-from-two-processes: loses a change in round
print|process-left-alone: writes to standard output, which is the tool's, during DeviceCtrl_getProductId
locale|process-left-alone: sets the locale, during DeviceCtrl_getProductId
folder|process-left-alone: changes the working directory, during DeviceCtrl_getProductId
environment|process-left-alone: changes the environment, during DeviceCtrl_getProductId
umask|process-left-alone: changes the umask, during DeviceCtrl_getProductId
signal handler|process-left-alone: takes over SIGALRM, during DeviceCtrl_getProductId
blocked signals|process-left-alone: changes which signals are blocked, during DeviceCtrl_getProductId
alarm|process-left-alone: starts a timer, during DeviceCtrl_getProductId
input|process-left-alone: reads, closes or changes standard input, during DeviceCtrl_getProductId
closed output|process-left-alone: closes or changes standard output, during DeviceCtrl_getProductId
hole|complete-tables: null, ObjectTable::CalibrationItem_getState
overrun|text-library-version: writes outside of the buffer, device "Minimal board", capacity 1024
unterminated|text-library-version: no terminator, status 0xa0000001, device "Minimal board", capacity 1024
long version|text-library-version: "1.0-minima" has more than the 9 characters that tools have room for, device
always warns|text-library-version: status 0xa0000001 for a string that fits, device "Minimal board", capacity 1024
surrogate|text-library-version: "\x{d800}" has an element that is no character, device "Minimal board", capacity 2
silently cut|text-library-version: status 0x00000000 for a string that is cut, device "Minimal board", capacity 1
reading changes|reads-change-nothing: description of device 0 in the list is "x", not "Minimal board", although
any device|open-unknown: opens a device that is not there, DeviceCtrl_Create(-2147483648, null)
no fusion mode|open-by-description: cannot be opened with AccessFusion, device "Minimal board"
changing list|device-list: other devices when requested again, list of installed devices (and 1 more)
no names|device-list: an empty description, list of installed devices, device ""
moving addresses|returned-stays: device 0: base addresses reads elsewhere: 0 , not 0 , after all other operations
long name|device-list: 64 characters, more than the 63 that a record holds, list of installed devices, device
counting addresses|array-base-addresses: other values after other calls, device "Minimal board" (and 1 more)
silent end|process-left-alone: ends the process before the tool's output is written, during exit()
shared items|returned-stays: firmware control of device 0: list of every chip reads elsewhere: 1 handles, not 1 handles, after
alike|open-unknown: opens a device that is not there, DeviceCtrl_Create(-1, "MINIMAL BOARD")
old name|write-description: can still be opened as "Minimal board" after a change to "velq-compliance 1", terminator not
one list|write-description: a list that was returned before the change has changed, device "Minimal board"
unbound device|control-unbound: has a device although it is not bound, firmware control
unbound solutions|control-unbound: has chips or solutions although it is not bound, calibration control
bound once|control-rebinding: is refused, firmware control bound again, device 0
several: first chips|control-rebinding: device 2: chip 0, description is "Bus FPGA", not nothing, firmware control bound again
refuses what it binds|control-binding: has a device although it is not bound, device "Minimal board", firmware
no children|fusion-children: 0 children, device "Minimal board"
stays bound|control-rebinding: has a device although it is not bound, firmware control, record of number 2147483647
other mode|control-binding: has the record of number 0, mode 1, module index 0, description "Minimal board", not the record
old record|write-description: is described "Minimal board" in the record of a firmware control that was bound before
long record|control-binding: writes behind the record, device "Minimal board", firmware control
rebinding|returned-stays-after-rebinding: firmware control bound to device 0: chip 0, notice reads "1", not "0"
address by id|write-board-id: device 0: base addresses is 1 , not 0 , device "Minimal board", after a change of the board id
binds what it refuses|control-unknown: has a device although it is not bound, firmware control
name by id|write-board-id: device 0: solution 0, name is "1", not "0", device "Minimal board", after a change of the
chip by id|write-board-id: device 0: chip 0, description is "Bus FPGA", not nothing, device "Minimal board", after
codes|calibration: writes more than 15 codes, device "Minimal board", solution 0, section 0, item 0
cuts a description|write-description: takes "mmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmmm"
no way back|write-description: the old description is refused, status 0xe0000001, device "Minimal board"
warns of a change|write-description: device 0: description is "velq-compliance 1", not "Minimal board", device "Minimal board", after a
no id back|write-board-id: the old board id is refused, status 0xe0000001, device "Minimal board"
needs the terminator|write-description: device 0: description is "velq-compliance ", not "velq-compliance 1", device "Minimal board"
forgets others|write-from-two-processes: description of device 0 in the list is "Minimal board", not
next process|write-board-id: device 0: board id is 0, not 2147483647, device "Minimal board", in the next process after
END

library=$minimal start=
# Where it can be done out of sight of all other processes.
apart=(unshare --pid --fork --mount-proc --kill-child)
if "${apart[@]}" true 2>"$work/refusal"; then
  expect 1 1 'FAIL first-look: sends SIGTERM to the checker' "${apart[@]}" sh -c '"$@"; exit $?' - \
    env BAD_LIBRARY='signals everything' "$checker" --write --timeout 60 "$bad"
fi
# Ended by the user, and killed.
expect 130 0 'Bail out! Ended by the user' env BAD_LIBRARY='hangs in a change' \
  timeout --preserve-status -s INT 4 "$checker" --write --timeout 60 "$bad"
expect 137 0 'ok   load' env BAD_LIBRARY='hang' timeout --preserve-status -s KILL 4 "$checker" "$bad"
expect 1 2 "FAIL load: $other: does not export CvxQuellisLibInitialize" "$checker" "$other"
head -c 20000 "$minimal" >"$work/cut.so"
expect 1 2 "FAIL one-export: $work/cut.so: exports nothing that can be read" "$checker" "$work/cut.so"
expect 2 0 'velq-compliance: standard output: No space left on device' sh -c "'$checker' '$minimal' >/dev/full"
expect 0 0 'Usage: velq-compliance [--write] [--timeout SECONDS] LIBRARY' "$checker" --help
expect 0 0 "velq-compliance $VERSION" "$checker" --version
expect 2 0 'velq-compliance: --timeout needs a value; see velq-compliance --help' "$checker" --timeout
expect 2 0 'velq-compliance: no LIBRARY given; see velq-compliance --help' "$checker" --write
expect 2 0 'velq-compliance: unknown option "--writes"; see velq-compliance --help' "$checker" --writes "$minimal"
for seconds in 0 3601 1s ''; do
  expect 2 0 "velq-compliance: --timeout: \"$seconds\" is no number of seconds from 1 to 3600" \
    "$checker" "$minimal" --timeout "$seconds"
done
expect 2 0 'velq-compliance: "second": one LIBRARY only, "first" is given before' "$checker" first second
expect 2 0 "velq-compliance: $work/none: No such file" "$checker" "$work/none"
expect 2 0 "velq-compliance: $0: is no shared library" "$checker" "$0"

wait
cat "$work"/*/problems 2>"$work/none" && exit 1
exit 0
