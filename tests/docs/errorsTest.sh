#!/usr/bin/env bash
# docs/errors.md has a section and a row of its table on every value of ErrorCode, in their order, and on nothing else.
set -euo pipefail
header=libs/storage/foundation/storage/provider/ErrorCode.h
# A value without a number of its own would stand here without one, and match nothing.
codes=$(sed -nE '/^enum class ErrorCode/,/^};/s/^ *([A-Za-z]+)( *= *([0-9]+))?,.*/\3 \1/p' "$header")
(($(wc -l <<<"$codes") > 1)) || { echo "No codes were found in $header." >&2; exit 1; }
sections=$(sed -nE 's/^### ([A-Za-z]+) \(([0-9]+)\)$/\2 \1/p' docs/errors.md)
rows=$(sed -nE 's/^\| \[([A-Za-z]+)\]\(#\1-([0-9]+)\) \|.*/\2 \1/ip' docs/errors.md)
status=0
for found in sections rows; do
  diff -u --label "docs/errors.md: $found" --label "$header" - <(echo "$codes") <<<"${!found}" || status=1
done
((status == 0)) || echo 'docs/errors.md explains other codes than there are.' >&2
exit "$status"
