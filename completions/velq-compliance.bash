# Completion of velq-compliance for bash.                                                            -*- shell-script -*-

_velq_compliance() {
  local cur prev words cword
  _init_completion || return
  case $prev:$cur in
    --timeout:*) ;;
    *:-*) mapfile -t COMPREPLY < <(compgen -W '--write --timeout --help --version' -- "$cur") ;;
    *) _filedir 'so*' ;;
  esac
}

complete -F _velq_compliance velq-compliance
