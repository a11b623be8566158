# shellcheck shell=bash
# What the tests of fstore share, to be sourced: a folder of their own, and checks that print what is not as it should
# be. The caller's first argument is the path of fstore.
set -u
export LC_ALL=C.UTF-8 # names are bytes all the same
fstore=$(realpath -- "${1:?the path of fstore is missing}")
readonly fstore
readonly limit=(timeout 20) # nothing here may hang,
ulimit -f 102400            # or fill the disk

work=$(TMPDIR=/tmp mktemp -d -t fstore-test.XXXXXXXX) && work=$(realpath -- "$work") || exit 1
trap 'chmod -R u+rwx -- "$work"; rm -rf -- "$work"' EXIT
readonly here=file://$work/files
fresh() { # goes to an empty folder
  cd "$work" && mkdir -p files && chmod -R u+rwx files && rm -rf files && mkdir files && cd files || exit 1
}
fresh

# --- checks -----------------------------------------------------------------------------------------

checks=0
failures=0
complain() { # complain TEXT: also says in which line the test stands
  ((failures++))
  printf 'line %s: %s\n' "${BASH_LINENO[-2]}" "$*" >&2
}
same() { # same EXPECTED FOUND WHAT
  ((checks++))
  [[ $1 == "$2" ]] || complain "$(printf '%s: expected %q, found %q' "$3" "$1" "$2")"
}
through=() # a command that starts fstore
configured=() # what stands before the operation
run() {    # run ARGUMENT...: runs fstore; leaves its exit code and what it printed
  "${limit[@]}" "${through[@]}" "$fstore" "${configured[@]}" "$@" >"$work/out" 2>"$work/err"
  code=$?
  out=$(tr '\0' '?' <"$work/out")
  err=$(<"$work/err")
}
ok() { # ok ARGUMENT...: succeeds without a word on standard error
  run "$@"
  same "0 " "$code $err" "fstore $*"
}
prints() { # prints TEXT ARGUMENT...
  local expected=$1
  shift
  ok "$@"
  same "$expected" "$out" "what fstore $* prints"
}
# fails LINES ARGUMENT...: fails with these errors, in any order. A line that ends in "*" may go on.
fails() {
  local wanted=$1 line index problem=
  shift
  run "$@"
  mapfile -t found <"$work/err"
  while IFS= read -r line; do
    line="fstore $1: $line"
    for index in "${!found[@]}"; do
      if [[ ${found[index]} == "$line" || ($line == *\* && ${found[index]} == "${line%\*}"?*) ]]; then
        unset "found[index]"
        continue 2
      fi
    done
    problem=$line
  done <<<"$wanted"
  ((checks++))
  [[ $code == 1 && -z $problem && ${#found[@]} == 0 ]] ||
    complain "fstore $*: expected exit code 1 and <$wanted>, found $code and <$err>"
}
fails_with() { # fails_with CODE_AND_REASON ARGUMENT...: with one error, at some location in this test's folder
  local wanted=$1
  shift
  run "$@"
  ((checks++))
  [[ $code == 1 && $err == "fstore $1: $here"*": $wanted" && $err != *$'\n'* ]] ||
    complain "fstore $*: expected exit code 1 and <$wanted>, found $code and <$err>"
}
misused() { # misused ARGUMENT...: the usage on standard error
  run "$@"
  same "2 " "$code $out" "fstore $*"
  [[ $err == *"Usage: fstore "* ]] || complain "fstore $*: no usage in <$err>"
}
holds() { # holds FILE TEXT
  same "$2" "$(cat -- "$1" 2>&1)" "content of $1"
}
absent() {
  ((checks++))
  [[ ! -e $1 && ! -L $1 ]] || complain "$1 is there"
}
same_tree() { # same_tree FOLDER FOLDER
  same "" "$(diff -r -- "$1" "$2" 2>&1)" "difference of $1 and $2"
}
skipped() { printf 'skipped: %s\n' "$*"; }
eventually() { # eventually COMMAND...: waits until it succeeds, for 20 s at most
  local end=$((SECONDS + 20))
  until "$@"; do
    ((SECONDS < end)) || return 1
    sleep 0.02
  done
}
finish() { # to be the last command
  printf '%s checks, %s failures\n' "$checks" "$failures"
  ((failures == 0))
}
