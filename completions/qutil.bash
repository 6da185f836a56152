# Completion of qutil for bash.                                                                      -*- shell-script -*-
#
# The argument of /dd: is a pattern, so each device is completed to a pattern that matches only its description:
# characters of regular expressions are escaped, "*" and "?", which qutil replaces first, are written as \x2a and \x3f,
# and the colon of "/dn:", which qutil would read as a number, is in brackets. After -fusion, and before it, qutil reads
# descriptions and not patterns, so they are completed unchanged. A description that is empty, longer than 63 characters
# or not ASCII cannot be selected by /dd:, and is not completed.

# Runs the command that is being completed; velq-sim sets _qutil_through to its prefix.
_qutil_run() {
  "${_qutil_through[@]}" "${words[0]/#\~\//$HOME/}" "$@" 2>/dev/null
}

_qutil_descriptions() {
  _qutil_run | LC_ALL=C sed -n 's/^[0-9]*,\([ -~]\{1,63\}\)$/\1/p'
}

_qutil_patterns() {
  LC_ALL=C sed -e 's/[][\\.^$+(){}|]/\\&/g' -e 's/\*/\\x2a/g' -e 's/?/\\x3f/g' -e 's|/dn:|/dn[:]|g'
}

# The listing counts positions; only the reports know the numbers.
_qutil_numbers() {
  _qutil_run '/dd:*' | LC_ALL=C sed -n 's/^Detail information of device \([0-9]*\) (.*/\1/p' | sort -nu
}

# Stores the word `$1` without its quotes in `plain`, the quote that is still open in `quote`, and in `kept` how much of
# `plain` readline leaves in place: all up to the last word break or the open quote.
_qutil_unquote() {
  local word=$1 i character before=
  plain='' quote='' kept=''
  for ((i = 0; i < ${#word}; ++i)); do
    character=${word:i:1}
    if [[ $character == \\ && $quote != \' ]]; then
      plain+=${word: ++i:1}
    elif [[ $character == "$quote" ]]; then
      quote='' kept=$before
    elif [[ ! $quote && $character == [\'\"] ]]; then
      quote=$character before=$kept kept=$plain
    else
      plain+=$character
      [[ ! $quote && $COMP_WORDBREAKS == *"$character"* ]] && kept=$plain
    fi
  done
}

# Offers the word `$1`, quoted as what is typed of it, when that begins it, or begins `$2`.
_qutil_offer() {
  [[ $1 == "$plain"* || ${2-} && $2 == "$plain"* ]] && [[ $1 == "$kept"?* ]] || return
  local rest=${1#"$kept"}
  case $quote in
    \') rest=${rest//\'/\'\\\'\'} ;;
    \") rest=$(sed 's/[\\"$`]/\\&/g' <<<"$rest") ;;
    *) printf -v rest %q "$rest" ;;
  esac
  COMPREPLY+=("$rest")
  # What ends in a colon goes on.
  [[ $1 == *: && $1 != *:?* ]] && compopt -o nospace
}

# Offers all devices behind `$1`, as `$2` writes their descriptions.
_qutil_offer_devices() {
  local descriptions written i
  mapfile -t descriptions < <(_qutil_descriptions)
  mapfile -t written < <(printf '%s\n' "${descriptions[@]}" | "$2")
  for i in "${!descriptions[@]}"; do _qutil_offer "$1${written[i]}" "$1${descriptions[i]}"; done
}

# Readline does the quoting of file names.
_qutil_offer_files() {
  local file files
  compopt -o filenames
  mapfile -t files < <(compgen -f -- "${plain#-fwo:}")
  for file in "${files[@]/#/-fwo:}"; do COMPREPLY+=("${file#"$kept"}"); done
}

_qutil() {
  local cur prev words cword plain quote kept word
  _init_completion -n :=@ || return
  _qutil_unquote "$cur"
  case $cword:$plain in
    1:/dn:*) for word in $(_qutil_numbers); do _qutil_offer "/dn:$word"; done ;;
    1:/dd:*)
      if [[ ${words[2]-} == -fusion ]]; then word=cat; else word=_qutil_patterns; fi
      _qutil_offer_devices /dd: $word
      ;;
    1:*) for word in '/?' /dn: /dd: -detail; do _qutil_offer "$word"; done ;;
    2:-fwo:*) _qutil_offer_files ;;
    2:*)
      for word in -detail -cd: -ci: -fw -fwo: -fusion -defusion \
        -cali:ai.auto -cali:ai.reverse -cali:ao.auto -cali:ao.reverse; do
        _qutil_offer "$word"
      done
      ;;
    [34]:*) [[ ${words[2]} == -fusion ]] && _qutil_offer_devices '' cat ;;
  esac
}

complete -F _qutil qutil
