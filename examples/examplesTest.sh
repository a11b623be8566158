#!/usr/bin/env bash
# Runs each example with real input, and compares what it prints and leaves behind.
#
#     examplesTest.sh FOLDER-OF-PROGRAMS
set -u
export LC_ALL=C.UTF-8 TZ=UTC
programs=$(realpath -- "${1:?the folder of the programs is missing}")
sources=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
readonly programs sources
readonly limit=(timeout 30) # nothing here may hang

work=$(TMPDIR=/tmp mktemp -d -t examples-test.XXXXXXXX) && work=$(realpath -- "$work") && cd "$work" || exit 1
trap 'rm -rf -- "$work"' EXIT
readonly here=file://$work

checks=0
failures=0
same() { # same EXPECTED FOUND WHAT
  ((checks++))
  [[ $1 == "$2" ]] && return
  ((failures++))
  printf 'line %s: %s: expected %q, found %q\n' "${BASH_LINENO[-2]}" "$3" "$1" "$2" >&2
}
# run EXAMPLE ARGUMENT...: leaves its exit code and what it printed.
run() {
  local name=$1
  shift
  out=$("${limit[@]}" "$programs/example-$name" "$@" 2>"$work/.errors")
  code=$?
  err=$(<"$work/.errors")
}
prints() { # prints TEXT EXAMPLE ARGUMENT...: and nothing else, nor fails
  local expected=$1
  shift
  run "$@"
  same "0  $expected" "$code $err $out" "$*"
}
fails() { # fails ERROR EXAMPLE ARGUMENT...
  local expected=$1
  shift
  run "$@"
  same "1 $expected " "$code $err $out" "$*"
}
content() { # content FILE TEXT
  same "$2" "$(cat -- "$1" 2>&1)" "what is in $1"
}

# --- sources ----------------------------------------------------------------------------------------

# Whoever opens an example reads it to its end.
while IFS= read -r file; do
  lines=$(wc -l <"$file")
  same yes "$( ((lines < 60)) && echo yes || echo "$lines lines")" "$file is under 60 lines"
  same '' "$(grep -n 'include.*detail/' "$file")" "$file uses public headers only"
done < <(find "$sources" -path "$sources/backend" -prune -o \( -name '*.cpp' -o -name '*.h' \) -print)
same yes "$( ((checks >= 20)) && echo yes)" 'all examples were found'
lines=$(grep -vc '^// \[' "$sources/readme/program.cpp")
same yes "$( ((lines <= 15)) && echo yes || echo "$lines lines")" "the README's program has at most 15 lines"

# --- list -------------------------------------------------------------------------------------------

mkdir folder folder/inner
printf 12345 >folder/'100% sure.txt'
: >folder/$'not \xff UTF-8, and\ntwo lines'
touch -d '2026-01-02 03:04:05' folder/*
run list "$here/folder"
same 0 "$code" 'the exit code of list'
same "\
- 2026-01-02T03:04:05 $here/folder/inner
0 2026-01-02T03:04:05 $here/folder/not%20%FF%20UTF-8,%20and%0Atwo%20lines
5 2026-01-02T03:04:05 $here/folder/100%25%20sure.txt" "$(sort <<<"$out")" 'what list prints'
prints '' list "$here/folder/inner"
fails "list: $here/missing: ErrorCode::ResourceNotFound" list "$here/missing"
fails "list: $here/folder/100%25%20sure.txt: ErrorCode::InvalidLocation" list "$here/folder/100%25%20sure.txt"
fails "list: IRI 'folder' is not absolute." list folder

# --- save -------------------------------------------------------------------------------------------

mkdir saved
prints '' save "$here/saved/a%FF" < <(printf 'first\0\n\xff')
same "$(printf 'first\0\n\xff' | od -c)" "$(od -c saved/$'a\xff')" 'what save has saved'
prints '' save "$here/saved/report" 6 <<<'whole'
content saved/report whole
fails 'save: the input has another size, or broke off: nothing is saved' save "$here/saved/report" 600 <<<'broken'
content saved/report whole
fails 'save: the input has another size, or broke off: nothing is saved' save "$here/saved/report" </
content saved/report whole
fails 'save: the input has another size, or broke off: nothing is saved' save "$here/saved/new" 600 <<<'broken'
same $'a\xff report' "$(cd saved && shopt -s dotglob && echo *)" 'nothing is left of what was not saved'
fails "save: $here/none/a: No such file or directory: iostream error" save "$here/none/a" <<<'text'
: >save.zip # a file of no bytes is an empty archive
prints '' save "zip:$here/save.zip!/a" <<<'archived'
prints archived nested "zip:$here/save.zip!/a"

# --- note -------------------------------------------------------------------------------------------

prints '1 Write to Ben' note "$here/notes" 'Write to Ben'
prints $'1 Write to Ben\n2 \xff' note "$here/notes" $'\xff'
fails 'note: file:///dev/full: No space left on device: iostream error' note file:///dev/full text
fails "note: $here/folder: Is a directory: iostream error" note "$here/folder" text

# --- pack, nested -----------------------------------------------------------------------------------

inner=zip:tar:$here/outer.tar.gz!/letters.zip!
printf 'Dear Ann\n\xff' >$'\xff letter'
prints '' pack "$inner/" "$here/%FF%20letter" "$here/notes"
prints $'Dear Ann\n\xff' nested "$inner/%FF%20letter"
prints $'Write to Ben\n\xff' nested "$inner/notes"
fails "nested: $inner/none: Nothing is there: iostream error" nested "$inner/none"
fails "nested: zip:$here/notes!/a: this is no zip: it has no end of a directory: iostream error" \
  nested "zip:$here/notes!/a"
fails "pack: $here/none: No such file or directory: iostream error" pack "zip:$here/new.zip!/" "$here/none"

# --- copy -------------------------------------------------------------------------------------------

head -c 9000000 /dev/urandom >big
run copy "$here/big" "zip:$here/save.zip!/big"
same 0 "$code" 'the exit code of copy'
same $'4194304 bytes are copied\n8388608 bytes are copied\n9000000 bytes are copied' "$err" 'the progress of copy'
run copy "zip:$here/save.zip!/big" "$here/big-again"
same 0 "$code" 'the exit code of copy'
same '' "$(cmp big big-again 2>&1)" 'the copy of the copy'
fails "copy: $here/none: ErrorCode::ResourceNotFound" copy "$here/none" "$here/big-again"
run copy "$here/big" "$here/none/big"
same 1 "$code" 'the exit code of a copy into nowhere'

# Ctrl-C, in a copy that cannot end before: what it says is not read any further.
mkdir stopped && echo kept >stopped/file && mkfifo said
truncate -s 100G huge
"$programs/example-copy" "$here/huge" "$here/stopped/file" 2>said &
exec {lines}<said
IFS= read -r line <&"$lines"
same '4194304 bytes are copied' "$line" 'the progress of a huge copy'
kill -INT "$!"
cat <&"$lines" >/dev/null
wait "$!"
same 130 $? 'the exit code of a copy that was stopped'
exec {lines}<&-
same 'file kept' "$(cd stopped && shopt -s dotglob && echo * "$(<file)")" 'what a copy that was stopped leaves'

# --- watch ------------------------------------------------------------------------------------------

# Each change is made once the one before it was told.
mkfifo told
watch() { # watch LOCATION [COUNT]
  "${limit[@]}" "$programs/example-watch" "$@" >told 2>&1 &
  exec {lines}<told
}
tells() { # tells LINE
  local line=
  IFS= read -r -t 30 -u "$lines" line
  same "$1" "$line" 'what watch prints'
}
ends() { # ends CODE: without another line
  wait "$!"
  same "$1 " "$? $(cat <&"$lines")" 'the end of watch'
  exec {lines}<&-
}
mkdir watched
watch "$here/watched" 3
tells "watching $here/watched"
mkdir watched/$'a\xff'
tells "added $here/watched/a%FF"
mv watched/$'a\xff' b
tells "removed $here/watched/a%FF"
mv b watched
tells "added $here/watched/b"
ends 0

watch "$here/watched"
tells "watching $here/watched"
rmdir watched/b
tells "removed $here/watched/b"
rmdir watched
tells "gone $here/watched"
ends 0

watch "zip:$here/save.zip!/" 1 # which has no events of its own
tells "watching zip:$here/save.zip!/"
prints '' save "zip:$here/save.zip!/b" <<<'text'
tells "added zip:$here/save.zip!/b"
ends 0
fails "watch: foundation::storage::provider::ChangeEventsSubscriptionException{StorageIRI=\"$here/none\"}" \
  watch "$here/none" 1

# --- favourites -------------------------------------------------------------------------------------

prints archived favourites favourite:///a "$here/notes" "zip:$here/save.zip!/a"
prints $'Write to Ben\n\xff' favourites favourite:///notes "$here/notes" "zip:$here/save.zip!/a"
fails 'favourites: favourite:///none: ErrorCode::ResourceNotFound' favourites favourite:///none "$here/notes"
fails 'favourites: favourite:///: ErrorCode::InvalidLocation' favourites favourite:/// "$here/notes"

# --- the README's program ---------------------------------------------------------------------------

run readme
same "0 $(find /etc -mindepth 1 -maxdepth 1 | wc -l)" "$code $(wc -l <<<"$out")" 'the entries that the README lists'

printf '%s checks, %s failed\n' "$checks" "$failures"
((failures == 0 && checks > 0))
