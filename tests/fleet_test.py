#!/usr/bin/env python3
"""Runs the playbooks of examples/fleet on simulated hosts, one for each kind of rename: fleet_test.py QUTIL PROBE."""
import json, os, pathlib, re, subprocess, sys, tempfile

qutil, probe = sys.argv[1:]
fleet = pathlib.Path(__file__).absolute().parent.parent / 'examples/fleet'
KEPT = ['Mühle', 'Mill to mill', 'Pump 1', 'Pump 2']
# host: what is renamed, to what, with which faults; what the recap says, and what the host lists in the end
HOSTS = {
    'renamed': ('Pump*', '\'" x *', '', 'changed=1', ['Mühle', 'Mill to mill', '\'" x 1', '\'" x 2']),
    'ambiguous': ('m*', 'A to *', '', 'changed=1', ['Mühle', 'A to to mill', 'Pump 1', 'Pump 2']),
    'same': ('Pump*', 'Pump*', '', 'changed=0', KEPT),
    'refused': ('Pump*', 'Same', '', 'failed=1', ['Mühle', 'Mill to mill', 'Same', 'Pump 2']),
    'lost': ('Pump 1', 'Lost', 'DeviceCtrl_setDescription=0', 'failed=1', KEPT),
    'option': ('Pump 1', '-fwo:x', '', 'ok=0', KEPT),
    'variable': ('Pump 1', '$HOME', '', 'ok=0', KEPT),
    'umlaut': ('Pump 1', 'Ü', '', 'ok=0', KEPT),
    'number': ('/dn:4', 'Other', '', 'ok=0', KEPT),
    'listless': ('*', 'x', 'DeviceCtrl_getInstalledDevices=null', 'failed=1', None),
}

with tempfile.TemporaryDirectory() as folder:
    work = pathlib.Path(folder)
    (work / 'rig.json').write_text(json.dumps(
        {'devices': [{'number': number, 'description': text} for number, text in zip([0, 2, 4, 7], KEPT)]}))

    def host(name, match, text, faults):
        script = work / name
        script.write_text(f'#!/bin/sh\nVELQ_FAULTS={faults} LD_PRELOAD={probe if faults else ""} exec {qutil} "$@"\n')
        script.chmod(0o755)
        return {'qutil_match': match, 'qutil_text': text, 'qutil_program': str(script),
                'qutil_environment': {'VELQ_RIG': f'{work}/rig.json', 'VELQ_STATE': f'{work}/{name}.state'}}

    (work / 'hosts.json').write_text(json.dumps({'all': {
        'vars': {'ansible_connection': 'local', 'ansible_python_interpreter': '{{ ansible_playbook_python }}'},
        'hosts': {name: host(name, *case[:3]) for name, case in HOSTS.items()}}}))

    os.environ.update(HOME=folder, LC_ALL='C.UTF-8', ANSIBLE_NOCOLOR='1', ANSIBLE_PIPELINING='1',
                      ASAN_OPTIONS='verify_asan_link_order=0')

    def play(inventory, playbook, expected, *options):
        """Runs it, and expects for each host what its line of the recap holds."""
        run = subprocess.run(['ansible-playbook', '-i', inventory, fleet / playbook, *options],
                             capture_output=True, text=True)
        for name, result in expected.items():
            if not re.search(rf'^{name} .* {result} ', run.stdout, re.M):
                sys.exit(f'{run.stdout}{run.stderr}\n{playbook}: expected {result} of {name}')
        return run.stdout

    os.environ['TMPDIR'] = folder
    simulator = {'velq_sim_program': str(pathlib.Path(qutil).with_name('velq-sim'))}
    said = play(work / 'hosts.json', 'rename.yml', {'renamed': 'failed=0', 'refused': 'failed=1'}, '--check',
                '-l', 'renamed,refused', '-e', json.dumps(simulator))
    if list(work.glob('ansible.*')) or 'Pump 1 -> Same' not in said or 'Pump 2 -> ' not in said:
        sys.exit(f'{said}\nanother rehearsal')
    said = play(work / 'hosts.json', 'rename.yml', {name: case[3] for name, case in HOSTS.items()})
    for reason in 'setDescription error!', 'but the list is now':
        if reason not in said:
            sys.exit(f'{said}\nno reason: {reason}')
    play(work / 'hosts.json', 'rename.yml', {'renamed': 'changed=0'}, '-l', 'renamed')
    play(work / 'hosts.json', 'devices.yml', {'listless': 'failed=1'}, '-e', f'qutil_lists={work}/lists')
    lists = json.loads((work / 'lists').read_text())
    for name, case in HOSTS.items():
        if lists.get(name) != case[4]:
            sys.exit(f'{name} lists {lists.get(name)}, not {case[4]}')
