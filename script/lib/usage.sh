# For scripts: what they say when asked for help, and to arguments that they do not take.

# Prints the comment that the calling script, which may have left the folder it was called from,
# begins with.
usage() {
  awk 'NR > 1 { if (!/^#/) exit; sub(/^# ?/, ""); print }' "${BASH_SOURCE[0]%/lib/*}/${0##*/}"
}

# takesNoArguments "$@": answers --help, and refuses everything else.
takesNoArguments() {
  case "${1:-}" in
    '') ;;
    -h | --help)
      usage
      exit 0
      ;;
    *)
      printf '%s: takes no arguments (see --help)\n' "${0##*/}" >&2
      exit 2
      ;;
  esac
}
