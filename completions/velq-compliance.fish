# Completion of velq-compliance for fish.

complete -c velq-compliance -f -a '(__fish_complete_suffix .so)'
complete -c velq-compliance -l write -d 'also change devices, and put everything back'
complete -c velq-compliance -l timeout -x -d 'what a check may take, in seconds'
complete -c velq-compliance -l help -d 'show help'
complete -c velq-compliance -l version -d 'show the version'
