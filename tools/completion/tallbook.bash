# SPDX-License-Identifier: Apache-2.0
# SPDX-FileCopyrightText: 2026 The Tallbook authors

# Completion for bash, by the package bash-completion. What a word of tallbook's may become, the
# program itself knows; here the words are taken from the shell's quotation and put back into it.
# shellcheck shell=bash

# _tallbook_unquote WORD: sets "text" to what the shell would hand over, and "quote" to the
# quotation mark that is still open.
_tallbook_unquote() {
  local rest=$1
  text='' quote=''
  while [[ -n $rest ]]; do
    case $quote${rest:0:1} in
      [\"\'])
        quote=${rest:0:1} rest=${rest:1}
        continue
        ;;
      \"\" | \'\')
        quote='' rest=${rest:1}
        continue
        ;;
      \\) rest=${rest:1} ;;
      \"\\) if [[ ${rest:1:1} == [\\\"\$\`] ]]; then rest=${rest:1}; fi ;;
    esac
    text+=${rest:0:1} rest=${rest:1}
  done
}

# _tallbook_quote VALUE: sets "value" to what stands for it behind the open quotation mark.
_tallbook_quote() {
  local character
  value=$1
  case $quote in
    \") for character in \\ \" \$ \`; do value=${value//"$character"/"\\$character"}; done ;;
    \') value=${value//\'/"'\\''"} ;;
    *) printf -v value %q "$value" ;;
  esac
  # Readline closes the quotation, unless it takes the last character for the end of it.
  if [[ -n $quote && $value == *"$quote" ]]; then value+=$quote; fi
}

_tallbook() {
  local cur words cword
  _get_comp_words_by_ref -n :=@ cur words cword
  words[cword]=$cur

  local text quote value answer at
  local -a plain answers
  for value in "${words[@]:0:cword+1}"; do
    _tallbook_unquote "$value"
    plain+=("$text")
  done
  mapfile -t answers < <("${1/#\~/$HOME}" _complete "$cword" "${plain[@]}" 2>/dev/null)

  # Outside quotations readline replaces only what comes behind the last of these characters that is
  # not quoted itself; so many of them are to be left out.
  local breaks=${COMP_WORDBREAKS//[^:=@]/} left_out=''
  if [[ -z $quote && -n $breaks ]]; then
    local masked=${cur//\\?/..}
    local tail=${masked##*["$breaks"]}
    left_out=${cur:0:${#cur}-${#tail}}
    left_out=${left_out//[^"$breaks"]/}
  fi

  COMPREPLY=()
  compopt -o nosort
  for answer in "${answers[@]}"; do
    value=${answer%%$'\t'*}
    answer=${answer#*$'\t'}
    if [[ -z $value ]]; then
      if [[ $answer == folders ]]; then compopt -o dirnames; else compopt -o default; fi
      continue
    fi
    # A list that is only shown says what the candidates are.
    if [[ $COMP_TYPE -eq 63 && -n $answer && ${#answers[@]} -gt 1 ]]; then
      COMPREPLY+=("$value  ($answer)")
      continue
    fi
    _tallbook_quote "$value"
    for ((at = 0; at < ${#left_out}; ++at)); do value=${value#*["$breaks"]}; done
    COMPREPLY+=("$value")
  done
}
complete -F _tallbook tallbook
