# Completion of qutil for fish.
#
# The argument of /dd: is a pattern, so each device is completed to a pattern that matches only its description:
# characters of regular expressions are escaped, "*" and "?", which qutil replaces first, are written as \x2a and \x3f,
# and the colon of "/dn:", which qutil would read as a number, is in brackets. After -fusion, and before it, qutil reads
# descriptions and not patterns, so they are completed unchanged. A description that is empty, longer than 63 characters
# or not ASCII cannot be selected by /dd:, and is not completed.

# Runs the command that is being completed; velq-sim sets __qutil_through to its prefix.
function __qutil_run
    set -l command $__qutil_through (commandline -opc)[1] $argv
    $command 2>/dev/null
end

function __qutil_descriptions
    __qutil_run | LC_ALL=C sed -n 's/^[0-9]*,\([ -~]\{1,63\}\)$/\1/p'
end

function __qutil_patterns
    LC_ALL=C sed -e 's/[][\\\\.^$+(){}|]/\\\\&/g' -e 's/\*/\\\\x2a/g' -e 's/?/\\\\x3f/g' -e 's|/dn:|/dn[:]|g'
end

# The listing counts positions; only the reports know the numbers.
function __qutil_numbers
    __qutil_run '/dd:*' | LC_ALL=C sed -n 's/^Detail information of device \([0-9]*\) (\(.*\))$/\/dn:\1\t\2/p'
end

function __qutil_selectors
    switch (string unescape -- (commandline -ct); or commandline -ct)
        case '*/dn:*'
            __qutil_numbers
        case '*/dd:*'
            if contains -- -fusion (commandline -o)
                __qutil_descriptions | string replace -r '^' /dd:
            else
                __qutil_descriptions | __qutil_patterns | string replace -r '^' /dd:
            end
        case '*'
            printf '%s\t%s\n' '/?' 'show help' \
                /dn: 'the device with a number' \
                /dd: 'the devices whose description matches a pattern' \
                -detail 'list the installed devices'
    end
end

function __qutil_options
    printf '%s\t%s\n' -detail 'show all about the device' \
        -cd: 'change the description' \
        -ci: 'change the board id' \
        -fw 'show the firmware' \
        -fwo: 'overwrite the firmware of a chip with a file' \
        -cali:ai.auto 'calibrate the analog inputs' \
        -cali:ai.reverse 'restore the backup codes of the analog inputs' \
        -cali:ao.auto 'calibrate the analog outputs' \
        -cali:ao.reverse 'restore the backup codes of the analog outputs' \
        -fusion 'show the fused devices, or fuse devices' \
        -defusion 'dissolve the fusion device'
    string match -q -- '*-fwo:*' (commandline -ct)
    and __fish_complete_path (string replace -- -fwo: '' (commandline -ct)) | string replace -r '^' -- -fwo:
end

# The number of whole words before the cursor, the command included.
function __qutil_words
    test (count (commandline -opc)) -eq $argv[1]
end

complete -c qutil -f
complete -c qutil -n '__qutil_words 1' -a '(__qutil_selectors)'
complete -c qutil -n '__qutil_words 2' -a '(__qutil_options)'
for count in 3 4
    complete -c qutil -n "__qutil_words $count; and test (commandline -opc)[3] = -fusion" -a '(__qutil_descriptions)'
end
