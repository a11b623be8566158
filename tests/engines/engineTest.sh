#!/usr/bin/env bash
# Puts the back end for object stores, and the command over it, to a real store, and sums up.
#
#     tests/engines/withEngine ceph tests/engines/engineTest.sh CONFORMANCE ENGINE_TESTS FSTORE
#
# The arguments are programs of the build: the conformance kit's, the tests that need a store, the command.
set -euo pipefail
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
# shellcheck source-path=SCRIPTDIR source=store.sh
. "$here/store.sh"
conformance=$1 engineTests=$2 fstore=$3
failed=()

part() { # part NAME COMMAND [ARGUMENT...]: what it prints is shown; when it fails, the others go on
  local start=$SECONDS code=0
  printf '\n=== %s\n' "$1"
  "${@:2}" || code=$?
  ((code == 0)) || failed+=("$1 (exit code $code)")
  results+=("$(printf '%-28s %s, %d s' "$1" "$( ((code == 0)) && echo passed || echo FAILED)" $((SECONDS - start)))")
}
results=()

nothing_left_open() {
  local left
  left=$(open_uploads)
  [[ -z $left ]] || { printf 'Uploads left open: %s\n' "$left"; return 1; }
  echo 'No upload is left open.'
}

# The checks that the back end declares not to pass, with the reasons.
deviations() { "$conformance" --capabilities | grep -E '^- .*S3' || echo 'none'; }

conform() {
  local checks
  checks=$("$conformance" --gtest_list_tests --gtest_filter='S3/*' | grep -c '^  ')
  echo "$checks checks"
  ((checks > 0)) && "$conformance" --gtest_filter='S3/*' --gtest_brief=1
}
part 'conformance kit' conform
part 'nothing left by the kit' nothing_left_open
part 'many processes, and kills' "$engineTests" --gtest_brief=1
part 'nothing left by these' nothing_left_open
part 'fstore' bash "$here/fstoreTest.sh" "$fstore"
part 'nothing left by fstore' nothing_left_open

printf '\n=== %s, %s\n' "${FOUNDATION_ENGINE_NAME:-the store}" "$(date -u +%F)"
printf '%s\n' "${results[@]}" 'Declared deviations:' "$(deviations)"
if ((${#failed[@]} > 0)); then
  printf 'FAILED: %s\n' "${failed[@]}"
  exit 1
fi
