# Completion of tvrscan for bash. Hardware ids come from "tvrscan devices".

_tvrscan_devices() {
  tvrscan devices 2>/dev/null | awk 'NR > 1 { print $2 }'
}

_tvrscan_folders() {
  mapfile -t COMPREPLY < <(compgen -d -- "$1")
  compopt -o filenames 2>/dev/null
}

_tvrscan_files() {
  mapfile -t COMPREPLY < <(compgen -f -- "$1")
  compopt -o filenames 2>/dev/null
}

_tvrscan_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

# The value of an option; fails for one that has none to offer.
_tvrscan_value() {
  case "$1" in
    --device) _tvrscan_words "$(_tvrscan_devices)" "$2" ;;
    --virtual) _tvrscan_words "hp lowend qz" "$2" ;;
    --family)
      case "${COMP_WORDS[1]}" in
        models | alerts) _tvrscan_words "MERIDIAN LANTERN HARBOR AMBER LOWEND" "$2" ;;
        *) _tvrscan_words "hp lowend qz" "$2" ;;
      esac
      ;;
    --over) _tvrscan_words "usb nsp ipp" "$2" ;;
    --resolution) _tvrscan_words "75 100 150 200 300 400 600 1200" "$2" ;;
    --mode) _tvrscan_words "color gray bw auto" "$2" ;;
    --sides) _tvrscan_words "one two flip" "$2" ;;
    --size)
      _tvrscan_words "a3 a4 a5 a6 b4 b5 jisb4 jisb5 jisb6 letter legal ledger tabloid executive
        statement folio oficio monarch number10 dl c5 c6 4x6 5x7 8x10 auto mixed" "$2"
      ;;
    --background) _tvrscan_words "off on" "$2" ;;
    --out | -o | --device-folder) _tvrscan_folders "$2" ;;
    --page | --log | --listen) _tvrscan_files "$2" ;;
    --fault) _tvrscan_words "help" "$2" ;;
    --name | --text | --model | --instance-id | --brightness | --contrast | --timeout | --feeder) COMPREPLY=() ;;
    *) return 1 ;;
  esac
}

_tvrscan() {
  local current="${COMP_WORDS[COMP_CWORD]}"
  local previous="${COMP_WORDS[COMP_CWORD - 1]}"
  local command="${COMP_WORDS[1]}"
  local choice="--device --virtual --family"
  local scanner="--page --feeder --flatbed --fault"
  COMPREPLY=()

  if ((COMP_CWORD == 1)); then
    _tvrscan_words "scan devices models alerts ranges store virtual help --help --version" "$current"
    return
  fi
  _tvrscan_value "$previous" "$current" && return

  case "$command" in
    scan)
      _tvrscan_words "$choice $scanner --resolution --mode --sides --size --brightness --contrast
        --background --out --name --timeout --dialogs --json --quiet --log --help" "$current"
      ;;
    devices) _tvrscan_words "--json --help" "$current" ;;
    models)
      _tvrscan_words "--text --family --over --resolution --mode --sides --size --json --help" \
        "$current"
      ;;
    alerts) _tvrscan_words "--family --model --json --quiet --help" "$current" ;;
    ranges) _tvrscan_words "$choice $scanner --json --help" "$current" ;;
    store)
      _tvrscan_words "scan cancel initialize inquiry reserve release start window read mode-select
        mode-sense ready block-header wake-up --check --print-template --quiet --log --help" "$current"
      ;;
    virtual)
      if ((COMP_CWORD == 2)); then
        _tvrscan_words "hp lowend qz --help" "$current"
      else
        _tvrscan_words "$scanner --listen --instance-id --device-folder --help" "$current"
      fi
      ;;
    help) _tvrscan_words "exit-codes sizes faults scan devices models alerts ranges store virtual" "$current" ;;
  esac
}

complete -F _tvrscan tvrscan
