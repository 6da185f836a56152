# Completion of velq-sim for fish.

# Splits the words before the cursor: velq-sim and its options go to `own`, the command to `command`, which is empty while
# the cursor is among the options.
function __velq_sim_split --no-scope-shadowing
    set own (commandline -opc)[1]
    set command
    set -l words (commandline -opc)[2..]
    while set -q words[1]
        switch $words[1]
            case --rig --state --trace --faults --check --capture
                set -a own $words[1] $words[2]
                set -e words[1]
            case --
            case '-*'
                set -a own $words[1]
            case '*'
                set command $words
                return
        end
        set -e words[1]
    end
end

function __velq_sim_has_no_command
    set -l own
    set -l command
    __velq_sim_split
    not set -q command[1]
end

# Completes the command as if it were alone. A qutil then has the devices of this velq-sim. Only
# --rig and --state are passed on, so that no key press resets or traces anything.
function __velq_sim_command
    set -l own
    set -l command
    __velq_sim_split
    set -lx __qutil_through $own[1]
    for i in (seq 2 (count $own))
        string match -qr -- '^--(rig|state)=' $own[$i]; and set -a __qutil_through $own[$i]
        contains -- $own[$i] --rig --state; and set -a __qutil_through $own[$i] $own[(math $i + 1)]
    end
    set -l line (string escape -- $command) (commandline -ct)
    complete --do-complete="$line"
end

complete -c velq-sim -f
complete -c velq-sim -n __velq_sim_has_no_command -l rig -rF -d 'use the devices of this rig'
complete -c velq-sim -n __velq_sim_has_no_command -l state -rF -d 'save changes in this file'
complete -c velq-sim -n __velq_sim_has_no_command -l reset -d 'delete the state, and with it all changes'
complete -c velq-sim -n __velq_sim_has_no_command -l trace -rF -d 'append a line for each library call to this file'
complete -c velq-sim -n __velq_sim_has_no_command -l faults -x -d 'make library calls return given answers'
complete -c velq-sim -n __velq_sim_has_no_command -l check -rF -d 'report whether a rig is valid'
complete -c velq-sim -n __velq_sim_has_no_command -l capture -rF -d 'write the installed devices as a rig'
complete -c velq-sim -n __velq_sim_has_no_command -l changes -d 'print what commands have changed'
complete -c velq-sim -n __velq_sim_has_no_command -l help -d 'print the help'
complete -c velq-sim -n __velq_sim_has_no_command -l version -d 'print the version'
complete -c velq-sim -a '(__velq_sim_command)'
