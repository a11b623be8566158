#!/usr/bin/env bash
# capabilitiesTest.sh PROGRAM: docs/capabilities.md holds the table that the conformance program writes.
set -euo pipefail
program=$1
if ! diff -u --label docs/capabilities.md --label "$program --capabilities" \
  <(grep -E '^(\||- )' docs/capabilities.md) <("$program" --capabilities | grep -E '^(\||- )'); then
  echo "What the back ends can do has changed: bring docs/capabilities.md up to date." >&2
  exit 1
fi
