#!/usr/bin/env bash
# architectureTest.sh LINKS: docs/architecture.dot has the arrows between our libraries that CMake links, which LINKS
# lists one a line, and no other.
set -euo pipefail
links=$1
ours='("foundation-[a-z0-9-]+"|fstore)'
if ! diff -u --label docs/architecture.dot --label 'what CMake links' \
  <(sed -nE "s/^ *($ours -> $ours).*/\1/p" docs/architecture.dot | tr -d '"' | sort) <(sort "$links"); then
  echo 'The picture of the libraries is wrong: bring docs/architecture.dot up to date, then docs/draw --write.' >&2
  exit 1
fi
