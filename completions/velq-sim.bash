# Completion of velq-sim for bash.                                                                   -*- shell-script -*-

# Completes the command that starts at word `$1` as if it were alone. A qutil then has the devices of this
# velq-sim. Only --rig and --state are passed on, so that no key press resets or traces anything.
_velq_sim_command() {
  local option value _qutil_through=("${words[0]/#\~\//$HOME/}")
  for option in "${!given[@]}"; do
    # Quotes are taken for what they mostly are, no part of the path.
    value=${given[$option]//[\'\"\\]/}
    [[ $option == --rig || $option == --state ]] && _qutil_through+=("$option" "${value/#\~\//$HOME/}")
  done
  COMP_WORDS=("${words[@]}") COMP_CWORD=$cword
  _command_offset "$1"
}

_velq_sim() {
  local cur prev words cword i option
  local -A given=()
  _init_completion -n :=@ || return
  for ((i = 1; i < cword; ++i)); do
    option=${words[i]%%=*}
    case ${words[i]} in
      --) _velq_sim_command $((i + 1)); return ;;
      --rig | --state | --trace | --faults | --check | --capture) given[$option]=${words[++i]} ;;
      --*=*) given[$option]=${words[i]#*=} ;;
      -*) ;;
      *) _velq_sim_command "$i"; return ;;
    esac
  done
  # If the cursor is on an option's value, the loop ran past it.
  case $((i > cword)):$cur in
    1:*) [[ $option == --faults ]] || _filedir ;;
    0:--faults=*) ;;
    0:--*=*) cur=${cur#*=} && _filedir ;;
    0:-*) mapfile -t COMPREPLY < <(compgen -W '--rig --state --reset --trace --faults --check --capture --changes --help --version' -- "$cur") ;;
    *) _velq_sim_command "$cword" ;;
  esac
}

complete -F _velq_sim velq-sim
