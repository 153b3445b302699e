# bash completion for velhost: commands, options, their words, files, and the classes of the schema.

# The words given so far for an option, one per line: _velhost_given --schema
_velhost_given() {
  local i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    # "--schema=x" reaches bash as three words.
    if [[ ${COMP_WORDS[i]} == "$1" ]]; then
      if [[ ${COMP_WORDS[i + 1]} == "=" ]]; then printf '%s\n' "${COMP_WORDS[i + 2]}"; else printf '%s\n' "${COMP_WORDS[i + 1]}"; fi
    fi
  done
}

# The first column of "velhost classes", for the schema named on this command line: the names that
# begin with $1 in any case, as class names are looked up.
_velhost_classes() {
  local path arguments=()
  while IFS= read -r path; do arguments+=(--schema "${path/#\~\//$HOME/}"); done < <(_velhost_given --schema)
  # The machine type does not matter for the list, and giving it opens no service processor.
  "${COMP_WORDS[0]}" classes --machine-type 0 "${arguments[@]}" 2>/dev/null |
    awk -v start="$1" '$1 ~ /^KROSG_[A-Za-z0-9_]*$/ && index(tolower($1), tolower(start)) == 1 && !seen[$1]++ { print $1 }'
}

# The command among the words so far; the value of an option is never taken for one.
_velhost_verb() {
  local i
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      --plugin | --schema | --sp | --machine-type | --log | --log-format | --color | --password-file | --cipher-suite | \
        --privilege | -o | --output | --format | --record | --timeout | --capture-dir | --progress | --node | --port | \
        --serial-port)
        # "--log=x" and "--sp sim:x" reach bash in pieces.
        [[ ${COMP_WORDS[i + 1]} == "=" ]] && ((++i))
        ((++i))
        while [[ ${COMP_WORDS[i + 1]} == ":" ]]; do ((i += 2)); done
        ;;
      collect | classes | plugin | check | simulate)
        printf '%s' "${COMP_WORDS[i]}"
        return
        ;;
    esac
  done
}

_velhost_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2"); }

# compopt comes first: it fails if no completion is in progress, although a value was found.
_velhost_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
}

# Server files: those in the file system and, by name, the shipped ones.
_velhost_servers() {
  local program file name
  _velhost_files "$1"
  if [[ $1 == */* ]] || ! program=$(type -P -- "${COMP_WORDS[0]}"); then return 0; fi
  for file in "$(dirname -- "$(readlink -f -- "$program")")"/../share/velhost/servers/*.toml; do
    name=${file##*/}
    if [[ -e $file && ! -e $name && $name == "$1"* ]]; then COMPREPLY+=("$name"); fi
  done
}

# Completes the value of an option; returns 1 if the option takes none or is unknown.
_velhost_value() {
  case $1 in
    --plugin | --schema | --log | -o | --output | --record | --password-file) _velhost_files "$2" ;;
    --capture-dir)
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -d -- "$2")
      ;;
    --log-format) _velhost_words "text jsonl" "$2" ;;
    --color | --progress) _velhost_words "auto always never" "$2" ;;
    --privilege) _velhost_words "user operator admin" "$2" ;;
    --cipher-suite) _velhost_words "17 3" "$2" ;;
    --sp) _velhost_service_processor "$2" ;;
    --format)
      if [[ $3 == check ]]; then _velhost_words "text json" "$2"; else _velhost_words "table json jsonl mof cimxml" "$2"; fi
      ;;
    --machine-type | --timeout | --node | --port | --serial-port) COMPREPLY=() ;;
    *) return 1 ;;
  esac
}

# Bash ends a word at a colon, so the part after it is completed by itself.
_velhost_service_processor() {
  local before=${COMP_WORDS[COMP_CWORD - 1]} scheme=${COMP_WORDS[COMP_CWORD - 2]}
  if [[ $1 == ":" ]]; then
    scheme=$before before=":"
    set -- ""
  fi
  if [[ $before != ":" ]]; then
    compopt -o nospace 2>/dev/null
    _velhost_words "sim sim: replay: inband inband:/dev/ipmi lan:" "$1"
  elif [[ $scheme == inband ]]; then
    mapfile -t COMPREPLY < <(compgen -G "/dev/ipmi*" | grep -- "^$1")
  elif [[ $scheme == sim ]]; then
    _velhost_servers "$1"
  elif [[ $scheme != lan ]]; then
    _velhost_files "$1"
  fi
}

_velhost() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} verb
  local common="--plugin --schema --sp --machine-type --log --log-format -v -vv -vvv --color --password-file
    --cipher-suite --privilege --replay-timing --help"
  COMPREPLY=()
  verb=$(_velhost_verb)
  # "--option=" and "--sp sim:" arrive in pieces; find the option that a piece belongs to.
  local option=$previous
  if [[ $current == "=" ]]; then
    current=
  elif [[ $previous == "=" ]]; then
    option=${COMP_WORDS[COMP_CWORD - 2]}
  elif [[ $current == ":" && "${COMP_WORDS[*]:0:COMP_CWORD-1} " == *" --sp "?(= ) ]]; then
    option=--sp
  elif [[ $previous == ":" && "${COMP_WORDS[*]:0:COMP_CWORD-2} " == *" --sp "?(= ) ]]; then
    option=--sp
  fi
  _velhost_value "$option" "$current" "$verb" && return
  if [[ $current == -* ]]; then
    case $verb in
      "") common="$common --version" ;;
      collect) common="$common --format -o --output --record --timeout --single-request --capture-dir --progress" ;;
      check) common="$common --format" ;;
      simulate) common="$common --node --port --serial-port" ;;
    esac
    _velhost_words "$common" "$current"
    return
  fi
  case $verb in
    "") _velhost_words "collect classes plugin check simulate" "$current" ;;
    collect) mapfile -t COMPREPLY < <(_velhost_classes "$current") ;;
    check) _velhost_files "$current" ;;
    simulate) _velhost_servers "$current" ;;
  esac
}

complete -F _velhost velhost
