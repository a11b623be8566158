#!/usr/bin/env bash
# capabilitiesTest.sh PROGRAM: the documents hold the tables that the conformance program writes.
set -euo pipefail
program=$1
status=0

# compare DOCUMENT OPTION TABLE: TABLE is what the document has.
compare() {
  diff -u --label "$1" --label "$program $2" - <("$program" "$2" | grep -E '^(\||- )') <<<"$3" || {
    echo "What the back ends can do has changed: bring $1 up to date with what $program $2 writes." >&2
    status=1
  }
}

compare docs/capabilities.md --capabilities "$(grep -E '^(\||- )' docs/capabilities.md)"
compare README.md --summary "$(sed -n '/^<!-- capabilities -->$/,/^$/{/^|/p}' README.md)"
exit "$status"
