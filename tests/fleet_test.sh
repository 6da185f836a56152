#!/bin/sh
# Runs the playbooks of examples/fleet on two simulated hosts: fleet_test.sh QUTIL PROBE.
set -u
qutil=$1 probe=$2
fleet=$(cd "$(dirname "$0")/../examples/fleet" && pwd)
work=$(mktemp -d) && trap 'rm -rf "$work"' EXIT
export HOME="$work" LC_ALL=C.UTF-8 ANSIBLE_NOCOLOR=1 ASAN_OPTIONS=verify_asan_link_order=0
cat >"$work/rig.json" <<RIG
{"devices": [{"number": 0, "description": "Mühle"}, {"number": 2, "description": "Mill to mill"},
             {"number": 4, "description": "Pump 1"}, {"number": 7, "description": "Pump 2"}]}
RIG
# play PLAYBOOK QUTIL VARIABLES [OPTION]: runs it; its output is kept for fail and recap.
play() {
  ansible-playbook -i "$fleet/simulated.yml" "$fleet/$1" ${4-} -e "{\"qutil_program\": \"$2\", \"qutil_lists\": \"$work/lists\", $3
    \"qutil_environment\": {\"VELQ_RIG\": \"$work/rig.json\", \"VELQ_STATE\": \"$work/{{ inventory_hostname }}.state\"}}" >"$work/out" 2>&1
}
rename() { play rename.yml "${4-$qutil}" "\"qutil_match\": \"$1\", \"qutil_text\": \"$2\"," "${3-}"; }
fail() { echo "FAILED: $1"; cat "$work/out"; exit 1; }
# recap TEXT: what must stand in the last lines for both hosts.
recap() { [ "$(grep -c "^[ns][a-z]* .* $1 " "$work/out")" = 2 ] || fail "expected $1"; }
# holds DESCRIPTIONS: what both hosts must list.
holds() {
  play devices.yml "$qutil" '' || fail "collecting"
  python3 -c 'import json, sys; lists, want = json.load(open(sys.argv[1])), sys.argv[2].split("|")
sys.exit(lists != {"north": want, "south": want})' "$work/lists" "$1" || { cat "$work/lists"; fail "expected $1"; }
}
# faulty FAULTS: a qutil with these faults.
faulty() { printf '#!/bin/sh\nexport LD_PRELOAD=%s VELQ_FAULTS=%s\nexec %s "$@"\n' "$probe" "$1" "$qutil" >"$work/faulty"; chmod +x "$work/faulty"; }

holds 'Mühle|Mill to mill|Pump 1|Pump 2'
rename 'Pump*' "'; x *" --check && recap changed=0 || fail "a rehearsal"
rename 'Pump*' "'; x *" && recap changed=1 || fail "a rename"
rename 'Pump*' "'; x *" && recap changed=0 || fail "a rename that is done already"
rename 'm*' 'A to *' && recap changed=1 || fail "a message that is ambiguous"
rename 'A*' '*' && recap changed=0 || fail "a rename to the same"
holds "Mühle|A to to mill|'; x 1|'; x 2"
rename "';*" 'Same' && fail "the second device refused"
recap failed=1
grep -q 'setDescription error!' "$work/out" || fail "no reason shown"
faulty DeviceCtrl_setDescription=0
rename "';*" 'Lost' '' "$work/faulty" && fail "reported but not kept"
grep -q 'but the list is now' "$work/out" || fail "no comparison"
for text in -fwo:x '$HOME' Ü; do rename 'S*' "$text"; recap ok=0; done
rename '/dn:4' 'Other'; recap ok=0
holds "Mühle|A to to mill|Same|'; x 2"
faulty DeviceCtrl_getInstalledDevices=null
play devices.yml "$work/faulty" '' && fail "no list"
recap failed=1
