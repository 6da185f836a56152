#!/usr/bin/zsh -f
# Presses Tab in a real shell and looks at what qutil does with the completed line: completion_test.zsh SHELL PREFIX, run
# through velq-sim on rig.json. A case is the characters entered and lines that qutil's output must then have.
zmodload zsh/zpty
setopt no_unset

shell=$1 prefix=$2
directory=$(mktemp -d)
trap 'zpty -d; rm -rf $directory' EXIT
export VELQ_STATE=$directory/state HOME=$directory ZDOTDIR=$directory
export XDG_CONFIG_HOME=$directory XDG_DATA_DIRS=$prefix/share:/usr/share TERM=dumb LC_ALL=C.UTF-8
cd $directory
touch 'not firmware'

mkdir fish
print 'set fish_greeting; function fish_prompt; echo "<.>"; end; set -g fish_autosuggestion_enabled 0' >fish/config.fish
print 'source /usr/share/bash-completion/bash_completion; PS1="<.>"; bind "set enable-bracketed-paste off"' >.bashrc
print 'fpath=('$prefix'/share/zsh/vendor-completions $fpath); autoload -Uz compinit; compinit -D; PS1="<.>"' >.zshrc
zpty shell "stty cols 200; $shell -i"
zpty -r shell seen '*<.>*'

failures=0
fail() {
  print -r -- "$shell: $1"
  failures=$((failures + 1))
}

# Types $1 and what follows, and gathers what the shell writes until it has made the file "done", in at most 20 s.
enter() {
  local chunk i
  screen=
  rm -f out done
  zpty -w -n shell "$1; : >done"$'\n'
  for i in {1..400}; do
    sleep 0.05
    while zpty -r -t shell chunk; do screen+=$chunk; done
    [[ -e done ]] && return
  done
}

# Completes $1, runs it, and expects $2 of it.
try() {
  enter "$1"$'\t'"| grep -a '^Detail\|fused\|: This' >out"
  local got=$(cat out 2>/dev/null)
  [[ $got == "$2" ]] || fail "\"$1\" and Tab: expected \"$2\", got \"$got\" after \"$screen\""
}

# Lists what can follow $1, and expects all of the words $2... in it. The line is then wiped out.
list() {
  local begin=$1 word
  (( $# > 1 )) || fail "\"$begin\": nothing to look for"
  if [[ $shell == fish ]]; then
    screen=$(fish -c 'complete -C "$argv"' -- "$begin")
  else
    enter "$begin"$'\t\t\x15:'
  fi
  for word in "${@:2}"; do
    print -r -- "${screen//\\/}" | grep -qP "(?<![^\s:])\Q$word\E(?!\S)" ||
      fail "\"$begin\" and Tab: \"$word\" is not in \"$screen\""
  done
}

detail='Detail information of device'
quoted='It'\''s "quoted" `so` $HOME \ it'
try 'qutil /dn:2' "$detail 29 (AnyXthingY)"
try 'qutil /dd:Pl' "$detail 3 (Plain,BID#0)"
try 'qutil /dd:Two\ bl' "$detail 4 (Two blanks here)"
try 'qutil /dd:It' "$detail 7 ($quoted)"
try "qutil '/dd:It" "$detail 7 ($quoted)"
try 'qutil "/dd:It' "$detail 7 ($quoted)"
try 'qutil /dd:Rack:\ 2=' "$detail 11 (Rack: 2=b@c)"
try 'qutil "/dd:Rack: 2' "$detail 11 (Rack: 2=b@c)"
try 'qutil /dd:Odd' "$detail 15 (Odd/dn:4)"
try 'qutil /dd:\#' "$detail 16 (#hash ~tilde; a&b <c> !x)"
if [[ $shell == fish ]]; then
  # Candidates have to begin with the characters entered, so a pattern's own character is entered as one.
  try "qutil '/dd:Any\\\\x" "$detail 8 (Any*thing?)"
  try "qutil '/dd:Rev \\\\(1\\\\." "$detail 12 (Rev (1.5) [a|b]{2}^+)"
else
  try 'qutil /dd:Any\*' "$detail 8 (Any*thing?)"
  try 'qutil /dd:Rev\ \(1.' "$detail 12 (Rev (1.5) [a|b]{2}^+)"
fi
try 'qutil /dn:15 -det' "$detail 15 (Odd/dn:4)"
try 'qutil /dn:15 -fwo:not' 'Error: This Firmware is not for the Device!'
try 'qutil /dd:New -fusion Two' 'New fused devices:Two blanks here'
try 'qutil /dd:Rev\ \(105\)\ -fusion Any*' ''
print '{"devices": [{"number": 30, "description": "Only here"}]}' >'its own.json'
try 'velq-sim --reset --rig its\ own.json qutil /dd:On' "$detail 30 (Only here)"
try 'velq-sim --state=mine qutil /dn:2' "$detail 29 (AnyXthingY)"

list 'qutil /dn:3 -' $(qutil '/?' | grep -o '^-[a-z]*:\?[a-z.]*')
list 'qutil /' '/?' $(qutil '/?' | grep -o '^/[a-z]*:')
list 'qutil /dn:' 3 4 7 8 10 11 12 13 15 16 29
list 'velq-sim --' $(velq-sim --help | grep -o '^  --[a-z]*')
list 'velq-compliance --' $($prefix/bin/velq-compliance --help | grep -o '^  --[a-z]*')
touch some.so some.so.1
list 'velq-compliance --write some.so' some.so some.so.1
exit $((failures > 0))
