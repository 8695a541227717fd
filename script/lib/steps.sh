# For script/test: the steps of a run, and its last lines, which say what failed and what was flaky.

failed=()
flaky=()
started=$SECONDS

# step NAME COMMAND...: runs a step, remembers whether it failed, says how long it took.
step() {
  local name=$1 begin=$SECONDS
  shift
  printf '\n== %s\n' "$name"
  "$@" || failed+=("$name")
  printf '== %s: %d s\n' "$name" $((SECONDS - begin))
}

# everyTest BUILD_FOLDER [CTEST_OPTION...]: runs all tests of a build, and once more what failed.
everyTest() {
  local report status=0 verdict name
  report=$(mktemp)
  /usr/bin/python3 "${BASH_SOURCE[0]%/*}/run_tests.py" "$report" "$@" || status=1
  while read -r verdict name; do
    case "$verdict" in
      flaky) flaky+=("$name") ;;
      failed) failed+=("$name") ;;
    esac
  done <"$report"
  rm -f "$report"
  return "$status"
}

# "1 test was FLAKY: a" or "2 tests were FLAKY: a b".
flakyTests() {
  local what='tests were'
  [ ${#flaky[@]} -ne 1 ] || what='test was'
  printf '%d %s FLAKY: %s' ${#flaky[@]} "$what" "${flaky[*]}"
}

# The last lines of a run. Fails when anything failed; a flaky test alone is no failure.
finish() {
  if [ ${#failed[@]} -gt 0 ]; then
    printf 'Failed: %s\n' "${failed[@]}"
    [ ${#flaky[@]} -eq 0 ] || printf '%s\n' "$(flakyTests)"
    return 1
  fi
  printf 'All steps passed in %d s' $((SECONDS - started))
  if [ ${#flaky[@]} -gt 0 ]; then
    printf '; %s\n' "$(flakyTests)"
  else
    printf '.\n'
  fi
}
