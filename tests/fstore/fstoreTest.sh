#!/usr/bin/env bash
# Drives fstore as a person at a shell does, in a folder of its own, and prints what is not as it should be.
# Usage: fstoreTest.sh FSTORE
# shellcheck source-path=SCRIPTDIR source=checks.sh
. "${BASH_SOURCE[0]%/*}/checks.sh"

# --- usage ------------------------------------------------------------------------------------------

while read -ra arguments; do misused "${arguments[@]}"; done <<'TABLE'

nonsense
--nonsense
--generate
--generate book
ls --nonsense
ls -l=maybe
rm --recursive=false file
cp --no-clobber=false file file
stat
cat
cat -x file
put
put a b
cp a
cp -n -- a
cp -n --policy clobber a b
cp --policy x a b
cp -j 0 a b
cp -q -v a b
mv a
rm -r
mkdir -p --
watch
watch a b
watch --poll 0 a
watch --poll a
find
find a b
find a --type x
find a --size x
find a --size +
find a --max-depth -1
tree -L x
truncate a
truncate -s a b
truncate -s -1 a
truncate -s 1X a
truncate -s 1iB a
truncate -s 99999999999E a
touch -d 2001-02-30 a
touch -d 2001-02-03T24:00:00 a
touch -d 2001-02-03T04:05:06.Z a
touch -d 2001-02-03T04:05:06Zx a
sum
TABLE
run --help
same "0 " "$code $err" "--help"
[[ $out == *mkdir* ]] || complain "--help names no operations"
run cp nowhere --help
same "0 " "$code $err" "cp --help"
[[ $out == *" SOURCE... DESTINATION"* ]] || complain "cp --help shows no usage"
run --version
[[ $code == 0 && $out =~ ^fstore\ [0-9]+\.[0-9]+\.[0-9]+$ ]] || complain "--version prints <$out>"

# --- the manual page and completion -------------------------------------------------------------------

fresh
operations=$("$fstore" --help | sed -n '/^Operations:/,/^$/s/^  \([a-z]*\) .*/\1/p')
ok --generate man
same "$operations" "$(sed -n 's/^\.SS //p' "$work/out")" "operations in the manual page"
if command -v man >/dev/null; then
  same '' "$(MANROFFSEQ='' man --warnings -E UTF-8 -l "$work/out" 2>&1 >/dev/null)" "warnings about the manual page"
else
  skipped "warnings about the manual page: man(1) is missing"
fi
ok --generate completion
cp "$work/out" completion
completes() { # completes EXPECTED WORD...: the last word is being completed
  local expected=$1
  shift
  same "$expected" "$(
    # shellcheck disable=SC1091,SC2034,SC2317 # made above; what the script reads and writes
    compopt() { :; }
    . ./completion
    COMP_WORDS=("$@") COMP_CWORD=$(($# - 1))
    _fstore && printf '%s\n' "${COMPREPLY[*]}"
  )" "completing $*"
}
completes "mv mkdir" fstore m
completes "$(tr '\n' ' ' <<<"$operations")--config --help --version" fstore ''
completes "--config --help --version" fstore --
completes "--no-create" fstore -c options.info touch file --no
completes "--no-create" fstore touch file --no
completes "overwrite" fstore cp --policy o
completes "noclobber" fstore cp --policy = no
completes "preserve overwrite clobber noclobber" fstore cp a --policy =
completes "f d l" fstore find . --type ''
completes "" fstore truncate -s '' # nothing to guess
completes "" fstore ls fo          # a path, which readline completes

# --- any name goes in and comes out -----------------------------------------------------------------

names=('100%' 'a#b?c' 'a b' 'ä€😀' '..x' 'a!b' '[x]' $'\xff\xfe' '{}' '%%' '++' '-n' 'ls' 'a:b' 'C:' ' ' $'\\'
  $'two\nlines' "$(printf 'n%.0s' {1..255})")
mkdir tree moved
for name in "${names[@]}"; do
  ok put "tree/$name" <<<"content of $name"
  holds "tree/$name" "content of $name"
  ok stat "tree/$name"
  location=$(sed -n 's/^Location: //p' <<<"$out")
  prints "content of $name" cat "$location"
  prints "tree/$name" ls "tree/$name"
  ok cp "tree/$name" moved
  ok mv "moved/$name" "./$name"
  absent "moved/$name"
  holds "./$name" "content of $name"
  ok rm -- "./$name"
  absent "./$name"
done
ok ls -a tree
same "$(printf '%s\n' "${names[@]}" | sort)" "$(sort "$work/out")" "names in a listing"
ok cp tree copy
same_tree tree copy
ok mv copy "$here/100%25"
same_tree tree '100%'
ok rm -r '100%'
absent '100%'
for row in '100% 100%25' 'a#b?c a%23b%3Fc' $'\xff\xfe %FF%FE' 'ä€😀 ä€😀' 'a!b a!b'; do # name, location
  echo "${row% *}" >"${row% *}"
  prints "${row% *}" cat "$here/${row#* }"
done
for name in '[x]' '[a,b]' '{}' '%%' '++' 'ls' 'cp' '-'; do # without a folder in front of it
  echo "$name" >"$name"
  prints "$name" cat "$name"
done
echo dash >-n
prints dash cat -- -n
prints -n ls -- -n

# How arguments are read.
fresh
mkdir folder
echo text >folder/file
for argument in folder/file ./folder/file .//folder//file "$PWD/folder/file" "//$PWD/folder/file" \
  folder/../folder/file "$here/folder/file" "file:$PWD/folder/file" "$here/folder/%66ile"; do
  prints text cat "$argument"
done
for argument in folder folder/ folder// ./folder "$here/folder" "$here/folder/"; do prints file ls "$argument"; done
for arguments in '' . ./ ././/. "$PWD" "$here"; do
  # shellcheck disable=SC2086  # none or one
  prints folder ls $arguments
done
mkdir folder/sub
ln -s folder/sub shortcut
prints $'file\nsub' ls shortcut/.. # above the folder that the link leads to

# --- ls and stat ------------------------------------------------------------------------------------

fresh
mkdir folder
printf 12345 >file
echo inner >folder/inner
: >.hidden
ln -s folder link
ln -s nothing dangling
TZ=UTC touch -d '2001-02-03 04:05:06' file folder .hidden
TZ=UTC touch -h -d '2001-02-03 04:05:06' dangling
prints $'dangling\nfile\nfolder\nlink' ls
prints $'.hidden\ndangling\nfile\nfolder\nlink' ls -a
ok ls -U
same $'dangling\nfile\nfolder\nlink' "$(sort "$work/out")" "unsorted listing"
prints "\
-w            0 2001-02-03 04:05:06 .hidden
l-            7 2001-02-03 04:05:06 dangling
-w            5 2001-02-03 04:05:06 file
dw            - 2001-02-03 04:05:06 folder
lw            - 2001-02-03 04:05:06 link" ls -la
prints $'file\n\nfolder:\ninner\n\nlink:\ninner' ls folder file link
prints '-w            5 2001-02-03 04:05:06 file' ls -l file
prints 'l?            ? ?                   dangling' ls -l dangling
mkdir empty
prints '' ls empty
: >empty/$'\xff'
: >empty/ÿ
: >empty/😀
: >empty/$'\x80'
: >empty/＿
prints $'ÿ\n😀\n\x80\n\xff\n＿' ls empty # by UTF-16 code units
status() { # status TYPE SIZE WRITABLE HIDDEN SYMLINK NAME
  prints "\
Location: $here/$6
Type:     $1
Size:     $2
Modified: 2001-02-03 04:05:06
Writable: $3
Hidden:   $4
Symlink:  $5" stat "$6"
}
mkfifo pipe
TZ=UTC touch -d '2001-02-03 04:05:06' pipe
status RegularFile 5 yes no no file
status RegularFolder - yes no no folder
status SymlinkToFolder - yes no yes link
status RegularFile 0 yes yes no .hidden
status SpecialFile 0 yes no no pipe
ok stat dangling
[[ $out == "Location: $here/dangling"$'\nType:     BrokenSymlink\n'*'Symlink:  yes' ]] || complain "a dangling link: <$out>"
ok stat file folder
same 2 "$(grep -c '^Location: ' "$work/out")" "items told"
same 1 "$(grep -c '^$' "$work/out")" "blank lines between two items"
if [[ $(script -qec 'echo works' /dev/null </dev/null 2>/dev/null) == works* ]]; then
  : >$'\x1b[31mred\n'
  same '\x1b[31mred\n' "$(script -qec "'$fstore' ls" /dev/null </dev/null | head -n 1 | tr -d '\r')" "a name on a terminal"
  same $'\x1b[31mred' "$("$fstore" ls | head -n 1)" "a name in a pipe"
else
  skipped "names on a terminal: script(1) is missing"
fi

# --- tree and find ------------------------------------------------------------------------------------

fresh
mkdir -p top/empty top/sub/deeper top/.hidden
printf 12345 >top/sub/file
: >top/sub/deeper/a.txt
: >top/.hidden/b.txt
: >'top/[x]%'
ln -s sub top/linkToSub
ln -s .. top/sub/up
ln -s nothing top/dangling
TZ=UTC find top -exec touch -h -d '2001-02-03 04:05:06' {} +
prints 'top
├── [x]%
├── dangling
├── empty
├── linkToSub
└── sub
    ├── deeper
    │   └── a.txt
    ├── file
    └── up

5 folders, 4 files' tree top
prints $'top/sub\n├── deeper\n│   └── a.txt\n├── file\n└── up\n\n2 folders, 2 files' tree top/sub
prints $'top\n├── .hidden\n├── empty\n├── linkToSub\n└── sub\n\n4 folders' tree -a -d -L 1 top
prints $'top\n\n0 folders, 0 files' tree -L 0 top
prints $'top/sub/file\ntop/empty\n\n0 folders, 1 file' tree top/sub/file top/empty
while IFS='|' read -r options expected; do
  # shellcheck disable=SC2086 # they are several words
  run find top $options
  same "0 $expected" "$code ${out//$'\n'/ }" "fstore find top $options"
done <<'TABLE'
--type d|top top/.hidden top/empty top/sub top/sub/deeper
--type l|top/dangling top/linkToSub top/sub/up
--type f|top/.hidden/b.txt top/[x]% top/sub/deeper/a.txt top/sub/file
--name *.txt|top/.hidden/b.txt top/sub/deeper/a.txt
--name [[]x*|top/[x]%
--name [a-e]*|top/.hidden/b.txt top/dangling top/empty top/sub/deeper top/sub/deeper/a.txt
--name top|top
--name *.txt --max-depth 2|top/.hidden/b.txt
--max-depth 0|top
--type f --size 5|top/sub/file
--type f --size +4|top/sub/file
--size=-5 --name *b*|top/.hidden/b.txt
--size +5|top/dangling
--size -1K --type f --name f*|top/sub/file
--newer 2001-02-03T04:05:05.999999Z --type d --max-depth 0|top
--newer 2001-02-03T04:05:06Z|
--newer top/sub/file|
TABLE
echo >top/empty/new
prints top/empty/new find top --newer top/sub/file --type f
prints "$here/top/%5Bx%5D%25" find "$here/top" --name '*]%'
prints $'top/sub/\ntop/sub/deeper' find top/sub/ --type d
prints $'top/linkToSub/\ntop/linkToSub/deeper\ntop/linkToSub/file' find top/linkToSub/ --name '[ldf]*' --max-depth 1
prints top/linkToSub find top/linkToSub
fails "$here/missing: ResourceNotFound: No such file or directory" find missing
fails "$here/missing: ResourceNotFound: No such file or directory" find top --newer missing
fails "$here/missing: ResourceNotFound: No such file or directory" tree missing

# --- JSON ---------------------------------------------------------------------------------------------

fresh
mkdir folder
printf 12345 >folder/file
: >folder/$'\xff'
ln -s nothing folder/dangling
TZ=UTC touch -h -d '2001-02-03 04:05:06.5' folder/* folder
modified='"modified":"2001-02-03T04:05:06.500000Z"'
dangling='{"location":"'$here'/folder/dangling","name":"dangling","type":"file","symlink":true,'
file='{"location":"'$here'/folder/file","name":"file","type":"file","symlink":false,"size":5,'$modified
file+=',"writable":true,"hidden":false'
unnamed='{"location":"'$here'/folder/%FF","name":null,"type":"file","symlink":false,"size":0,'$modified
folder='{"location":"'$here'/folder","name":"folder","type":"folder","symlink":false,"size":null,'$modified
has_json() { # has_json ELEMENT_COUNT BEGINNING_OF_ELEMENT...: what was printed is one array
  local wanted elements=$1
  shift
  same "[ ]" "${out:0:1} ${out: -1}" "the ends of a JSON array"
  same "$elements" "$(grep -c '^{.*},\?$' "$work/out")" "elements of a JSON array"
  for wanted in "$@"; do
    ((++checks))
    [[ $'\n'$out == *$'\n'"$wanted"* ]] || complain "no <$wanted> in <$out>"
  done
}
ok ls --json folder
has_json 3 "$file}" "$unnamed" "$dangling"
ok ls --json -U folder folder/file
has_json 4 "$file}" "$unnamed"
ok find --json folder
has_json 4 "$folder" "$file}" "$unnamed"
ok tree --json folder
has_json 4 "$folder" "$file,\"depth\":1}"
ok stat --json folder/file folder/dangling
has_json 2 "$file,\"existence\":\"RegularFile\"}" "$dangling"
ok sum --json folder/file
has_json 1 "{\"location\":\"$here/folder/file\",\"sha256\":\"$(sha256sum <folder/file | cut -c 1-64)\"}"
for operation in ls find tree stat sum df; do
  run "$operation" --json missing
  same '1 []' "$code $out" "fstore $operation --json missing"
done
mkdir empty
prints '[]' ls --json empty

# --- cat and put ------------------------------------------------------------------------------------

fresh
head -c 3000000 /dev/urandom >large
printf 'a\0b' >zero
: >empty
ok cat zero empty large zero
cat zero empty large zero | cmp -s - "$work/out" || complain "cat changes bytes"
ok put copy <large
cmp -s large copy || complain "put changes bytes"
ok put copy <zero
cmp -s zero copy || complain "put keeps what was there before"
ok put --append copy <large
cat zero large | cmp -s - copy || complain "put --append does not append"
ok put --append new </dev/null
holds new ''
ok put copy </dev/null
holds copy ''
ln -s target link
ok put link <<<'through the link'
holds target 'through the link'

echo kept >file
fails "$here/file: IOError: Standard input cannot be read: Is a directory" put file <.
fails "$here/file: IOError: Standard input cannot be read: Bad file descriptor" put file <&-
holds file kept
if [[ -c /dev/full ]]; then
  for command in 'cat large' 'ls' 'stat file' '--help'; do
    # shellcheck disable=SC2086  # words
    err=$("${limit[@]}" "$fstore" $command 2>&1 >/dev/full)
    code=$?
    [[ $code == 1 && $err == *": standard output: NoSpaceLeft: No space left on device" ]] ||
      complain "fstore $command with standard output full: exit code $code, <$err>"
  done
  run put /dev/full <zero
  same "1 fstore put: file:///dev/full: NoSpaceLeft: No space left on device" "$code $err" "a full device"
fi
err=$("${limit[@]}" "$fstore" ls 2>&1 >&-)
same "1 fstore ls: standard output: IOError: Bad file descriptor" "$? $err" "without standard output"
"${limit[@]}" "$fstore" cat nowhere 2>&-
same 1 $? "without standard error"
"${limit[@]}" "$fstore" cat large large large | head -c 1 >/dev/null
same $((128 + 13)) "${PIPESTATUS[0]}" "exit code when the reader goes away (SIGPIPE)"

# --- cp ---------------------------------------------------------------------------------------------

fresh
echo one >one
echo two >two
mkdir folder
ok cp one copy
holds copy one
ok cp two copy
holds copy two
: >empty
ok cp empty copy
holds copy ''
ok cp one two folder
holds folder/one one
holds folder/two two
mkdir -p outer/inner target
ok cp outer/inner/.. target
[[ -d target/outer/inner ]] || complain "'..' does not go by the folder's own name"

# Keeping what is there.
fails "$here/copy: ResourceAlreadyExists: *" cp -n one copy
holds copy ''
ok cp -n one other
holds other one

# Onto itself, under any name.
ln one hard
ln -s one soft
ln -s . here
for row in 'one one' 'one ./one' 'one soft' 'soft one' 'one here/one' 'one hard' 'one .' 'here/one one'; do
  fails_with 'InvalidLocation: A file cannot be copied onto itself' cp "${row% *}" "${row#* }"
  holds one one
done

# A tree, to a new name, into a folder, over what is there.
fresh
mkdir -p source/sub/empty source/.hidden existing
printf 'a\0b' >source/file
echo inner >source/sub/inner
echo secret >source/.hidden/secret
ln -s sub source/folderLink
ln -s ../source/file source/fileLink
ok cp source copy
ok cp -r source/ again
ok cp source existing
same_tree source copy
same_tree source again
same_tree source existing/source
same '' "$(find copy -type l)" "links in a copy"
echo changed >copy/file
echo mine >copy/mine
rm -r copy/sub
ok cp source/file source/sub copy
same_tree source/sub copy/sub
cmp -s source/file copy/file || complain "a file in an existing folder was not replaced"
holds copy/mine mine
echo changed >existing/source/file
fails "$here/existing/source/file: ResourceAlreadyExists: *
$here/existing/source/fileLink: ResourceAlreadyExists: *
$here/existing/source/sub/inner: ResourceAlreadyExists: *
$here/existing/source/folderLink/inner: ResourceAlreadyExists: *
$here/existing/source/.hidden/secret: ResourceAlreadyExists: *" cp -n source existing
holds existing/source/file changed
fails "$here/copy/file: ResourceAlreadyExists: *" cp source copy/file
rm -r copy/sub
echo file >copy/sub
fails "$here/copy/sub: ResourceAlreadyExists: *" cp source/sub copy
holds copy/sub file
mkdir -p blocked/source/file
fails "$here/blocked/source/file: InvalidLocation: Is a directory" cp source blocked
holds blocked/source/sub/inner inner

# Into itself: nothing is written.
before=$(find source | sort)
ln -s source/sub shortcut
for destination in source source/new source/sub source/sub/new . ./ shortcut shortcut/new; do
  fails_with 'InvalidLocation: A folder cannot be copied into itself' cp source "$destination"
done
same "$before" "$(find source | sort)" "a folder not to be copied into itself"

# Links that never end, or that lead nowhere: reported, and the rest is copied.
fresh
mkdir -p source/sub
echo text >source/sub/file
ln -s .. source/sub/parent
ln -s . source/self
ln -s "$PWD" source/around
ln -s nothing source/dangling
ln -s turn source/turn
mkfifo source/pipe
ln -s /dev/zero source/device
for options in '' '-j 3' '--atomic --verify'; do
  # shellcheck disable=SC2086 # they are several words
  fails "$here/source/sub/parent: InvalidLocation: The folder leads back into itself
$here/source/self: InvalidLocation: The folder leads back into itself
$here/source/around: InvalidLocation: The folder leads back into itself
$here/source/dangling: ResourceNotFound: No such file or directory
$here/source/turn: InvalidLocation: Too many levels of symbolic links
$here/source/pipe: InvalidLocation: *
$here/source/device: InvalidLocation: *" cp $options source copy
  same $'copy\ncopy/sub\ncopy/sub/file' "$(find copy 2>&1 | sort)" "what was copied"
  rm -r copy
done
mkdir -p other target
ln -s ../target other/link
echo text >target/file
fails "$here/other/link: InvalidLocation: The folder leads back into itself" cp other target
same $'target\ntarget/file\ntarget/other' "$(find target | sort)" "a copy that a link leads to"
fails "$here/source/dangling: ResourceNotFound: No such file or directory" cp source/dangling new
absent new

# In other ways: always the same result.
fresh
mkdir -p source/{1..5}/sub
for file in source/{1..5}/{1..30} source/{1..5}/sub/'a b%'; do echo "$file" >"$file"; done
head -c 5000000 /dev/urandom >source/large
: >source/empty
while read -ra options; do
  ok cp "${options[@]}" source copy
  same_tree source copy
  ok cp "${options[@]}" source/{1..5} source/large copy # over what is there
  same_tree source copy
  same '' "$(find copy -name '.*')" "scratch files of cp ${options[*]}"
  rm -r copy
done <<'TABLE'
-j 4
-j 3 --atomic
-j 2 --verify
--atomic --verify
--quiet --jobs=64
TABLE
echo new >new
for policy in --policy=overwrite '--policy clobber' '-j 2' --atomic; do
  echo old >old
  # shellcheck disable=SC2086 # they may be two words
  ok cp $policy new old
  holds old new
done
for policy in '--policy preserve' --policy=noclobber '-n --atomic' '-n -j 2'; do
  echo old >old
  # shellcheck disable=SC2086
  fails "$here/old: ResourceAlreadyExists: *" cp $policy new old
  holds old old
done
prints "$here/new -> $here/copy
1 file copied, 4 bytes (4), 0 failed" cp -v new copy
run cp -j 2 source missing existing
same 1 "$code" "several sources without a folder"
mkdir existing
run cp -j 2 source missing existing
same '157 files copied, 5001845 bytes (4.8M), 1 failed' "$out" "the summary of a copy that fails in part"
run cp --quiet missing existing
same '1 ' "$code $out" "a copy without a summary"
uuid=/proc/sys/kernel/random/uuid # tells another one whenever it is read
if [[ -r $uuid ]]; then
  fails "$here/uuid: IOError: The copy differs from its source at byte *" cp --verify "$uuid" "$here/uuid"
else
  skipped "a copy that differs: there is no $uuid"
fi

# Where links at the destination lead to one file, that is written by one copy at a time.
mkdir two
head -c 5000000 /dev/urandom >two/a
head -c 5000000 /dev/urandom >two/b
mkdir target
: >target/a
ln -s a target/b
ok cp -j 4 two/a two/b target
cmp -s two/a target/a || cmp -s two/b target/a || complain "a copy mixes two files"

# Interrupted: it cannot be over before, since nobody reads the names that it prints.
fresh
has_copied() { [[ -n $(find copy ! -name '.*' -type f 2>/dev/null | head -n 1) ]]; }
begin_copy() { # begin_copy ARGUMENT...: until there is a first file
  "$fstore" cp -v "$@" source copy >"$work/fifo" 2>"$work/err" &
  copier=$!
  exec 3<"$work/fifo"
  eventually has_copied || complain "cp $* copies nothing: $(<"$work/err")"
}
rm -f "$work/fifo"
mkfifo "$work/fifo"
truncate -s 9M large
mkdir source
name=$(printf '%%%.0s' {1..200})
for ((i = 0; i < 300; ++i)); do ln large "source/$name$i"; done
while read -r signal code options; do
  # shellcheck disable=SC2086 # they are several words
  begin_copy $options
  kill "-$signal" "$copier"
  cat <&3 >"$work/out"
  wait "$copier"
  same "$code" $? "the end of an interrupted cp $options"
  exec 3<&-
  while IFS= read -r -d '' file; do
    cmp -s large "$file" || [[ $options != *--atomic* && $(<"$work/err") == *"${file//%/%25}: IOError: Interrupted; what is there now may be incomplete"* ]] ||
      complain "cp $options leaves half of $file: $(<"$work/err")"
  done < <(find copy -type f -print0)
  same '' "$(find copy -name '.*')" "scratch files of an interrupted cp $options"
  rm -r copy
done <<'TABLE'
INT 130 --atomic
HUP 129 --atomic
TERM 143 --atomic -j 3
INT 130
TERM 143 -j 2
TABLE
begin_copy -j 2
kill -TERM "$copier"
kill -INT "$copier"
wait "$copier"
code=$?
exec 3<&-
[[ $code == 130 || $code == 143 ]] || complain "a second signal does not end cp: exit code $code"

# Whether somebody watches makes no difference to what is copied.
fresh
truncate -s 50M large
printf end >>large
chmod 640 large
ok cp large unwatched
if command -v script >/dev/null; then
  script -qec "'$fstore' cp '$PWD/large' '$PWD/watched'" /dev/null >/dev/null
  same "$(stat -c '%a %s %b' unwatched)" "$(stat -c '%a %s %b' watched)" "mode, size and blocks of a copy on a terminal"
fi

# A filter does not hide that it is one folder.
mkdir top
fails "$here/top/copy: InvalidLocation: A folder cannot be copied into itself" cp "readonly+$here/top" top/copy
fails "$here/top/./top: InvalidLocation: A folder cannot be copied into itself" cp "readonly+$here/top" top/.

# Several sources.
fresh
mkdir a b target
echo first >a/file
echo second >b/file
echo third >third
fails "$here/target/file: ResourceAlreadyExists: *
$here/missing: ResourceNotFound: No such file or directory" cp a/file b/file missing third target
holds target/file first
holds target/third third
for operation in cp mv; do
  fails "$here/new: InvalidLocation: Several sources need *" "$operation" a b new
  fails "$here/third: InvalidLocation: Several sources need *" "$operation" a/file b/file third
done
rm target/file
fails "$here/target/file: ResourceAlreadyExists: *" mv a/file b/file target
holds target/file first
holds b/file second

# --- mv ---------------------------------------------------------------------------------------------

fresh
echo one >one
echo two >two
mkdir -p folder/sub full/folder
: >full/folder/file
ln -s folder link
ln -s nothing dangling
fails "$here/two: ResourceAlreadyExists: *" mv -n one two
holds two two
ok mv one two
absent one
holds two one
ok mv -n two one
holds one one
ok mv dangling one folder
holds folder/one one
same nothing "$(readlink folder/dangling)" "a moved link"
fails "$here/full/folder: FolderNotEmpty: Directory not empty" mv folder full
for row in 'folder .' 'folder/one folder' 'full/folder/file ./full/folder/file'; do
  fails_with 'InvalidLocation: It cannot be moved onto itself' mv "${row% *}" "${row#* }"
done
for destination in folder folder/new folder/sub folder/sub/new link link/new; do
  fails_with 'InvalidLocation: A folder cannot be moved into itself' mv folder "$destination"
done
ok mv link renamed
same folder "$(readlink renamed)" "a moved link to a folder"
ok mv folder other
ok mv other "$here/folder"
ok mv full folder
[[ -f folder/full/folder/file ]] || complain "a folder was not moved into another"
fails "$here/missing: ResourceNotFound: No such file or directory" mv missing new

# --- rm and mkdir -----------------------------------------------------------------------------------

fresh
mkdir -p kept folder/sub/deeper
echo text >kept/file
echo text >folder/.hidden
ln -s ../../kept folder/sub/link
ln -s ../kept/file folder/fileLink
ln -s nothing folder/dangling
ln -s kept link
mkfifo folder/pipe
fails "$here/folder: InvalidLocation: is a folder; use -r" rm folder
ok rm link/
absent link
ok rm -r folder
absent folder
holds kept/file text
ln -s kept link
ok rm -r link
absent link
holds kept/file text
fails "$here/missing: ResourceNotFound: No such file or directory" rm missing kept/file
absent kept/file
# All of these lie in the folder of this test, whatever the command makes of them. That the root is refused
# is not tried: nobody should run such a test on the day when it fails.
for argument in . .. ./ kept/. kept/.. kept/../ "$here/." "$here/%2E."; do
  mkdir -p "$work/files/kept" && cd "$work/files" || exit 1
  fails_with "InvalidLocation: '.' and '..' are not to be removed" rm -r "$argument"
done
fails ": InvalidLocation: The path is empty" rm -r ''
[[ -d $work/files/kept ]] || complain "a folder is gone"

fresh
ok mkdir folder "$here/other%20one"
[[ -d folder && -d 'other one' ]] || complain "mkdir created no folders"
fails "$here/folder: ResourceAlreadyExists: File exists" mkdir folder
fails "$here/missing/folder: ResourceNotFound: No such file or directory" mkdir missing/folder
ok mkdir -p folder missing/a/b missing/a/c/ missing
[[ -d missing/a/b && -d missing/a/c ]] || complain "mkdir -p created no folders"
echo text >file
fails "$here/file: ResourceAlreadyExists: *" mkdir -p file

# --- touch, truncate, sum and df ----------------------------------------------------------------------

fresh
lacks() { # lacks ARGUMENT...: runs fstore; whether the store has no such operation, which is no fault of the command
  run "$@"
  [[ $err == *": UnsupportedOperation: "* ]] && skipped "fstore $*: the store cannot do it"
}
ok touch -c missing
absent missing
ok touch new
holds new ''
fails "$here/missing/file: ResourceNotFound: No such file or directory" touch missing/file
mkdir folder
if ! lacks touch folder; then
  while IFS='|' read -r time shown; do
    for target in new folder; do
      ok touch -d "$time" "$target"
      same "$shown" "$(TZ=UTC stat -c %y "$target")" "fstore touch -d $time $target"
    done
  done <<'TABLE'
2001-02-03T04:05:06.123456Z|2001-02-03 04:05:06.123456000 +0000
2001-02-03 04:05:06|2001-02-03 04:05:06.000000000 +0000
2024-02-29|2024-02-29 00:00:00.000000000 +0000
1969-12-31T23:59:59.5Z|1969-12-31 23:59:59.500000000 +0000
TABLE
  : >reference
  ok touch new
  [[ ! new -ot reference ]] || complain "touch without a time does not set the present one"
fi
while read -r size bytes; do
  ok truncate -s "$size" file
  same "$bytes" "$(stat -c %s file)" "fstore truncate -s $size"
done <<'TABLE'
5 5
3K 3072
2KiB 2048
2kB 2000
1M 1048576
0 0
TABLE
printf 12345 >file
ok truncate -s 3 file
holds file 123
ok truncate --no-create --size=3 missing
absent missing
fails "$here/folder: InvalidLocation: *" truncate -s 1 folder

head -c 1000000 /dev/urandom >'a b%'
for name in $'two\nlines' 'back\slash' $'carriage\rreturn' $'\xff' empty; do : >"$name"; done
expected=$(sha256sum ./*[!er] ./empty 2>/dev/null) # not the folder
run sum ./*[!er] ./empty
same "$expected" "$out" "what fstore sum prints"
fails "$here/folder: InvalidLocation: Is a directory" sum folder
same '' "$out" "the checksum of a folder"

if ! lacks df .; then
  # What is occupied changes all the time, the capacity does not.
  same "$(($(stat -f -c '%S * %b' .))) $here" "$(awk 'NR == 2 {print $1, $4}' "$work/out")" "the capacity of a store"
  ok df -h .
fi

# --- failures that all operations share -------------------------------------------------------------

fresh
echo text >file
mkdir folder
mkfifo pipe
long=$(printf 'n%.0s' {1..300})
for operation in ls tree find stat cat rm mkdir 'mkdir -p' put 'mv file' 'cp file' sum touch 'truncate -s 0'; do
  read -ra words <<<"$operation"
  while IFS='|' read -r argument problem; do
    fails "$problem" "${words[@]}" "$(printf '%b' "$argument")" </dev/null
  done <<TABLE
ftp://host/key|ftp://host/key: UnsupportedOperation: The scheme "ftp" is not known; these are: archive, file, memory, s3, sevenzip, tar, zip
file:// x|file:// x: InvalidLocation: Not a valid IRI: at offset 7, *
file:///a\\nb\\x1b|file:///a\\nb\\x1b: InvalidLocation: Not a valid IRI: at offset 9, *
file:///%zz|file:///%zz: InvalidLocation: Not a valid IRI: at offset 8, *
file://host/x|file://host/x: InvalidLocation: *
file:///a%00b|file:///a%00b: InvalidLocation: *
mailto:someone|mailto:someone: InvalidLocation: *
|: InvalidLocation: The path is empty
$long|$here/$long: InvalidLocation: File name too long
TABLE
done
for operation in ls stat cat rm mkdir put 'mv file' 'cp file' sum touch 'truncate -s 0'; do
  read -ra words <<<"$operation"
  fails "$here/file/below: InvalidLocation: Not a directory" "${words[@]}" file/below </dev/null
done
fails "$here/file*" mkdir -p file/below
for operation in cat ls stat rm sum; do
  fails "$here/missing: ResourceNotFound: No such file or directory" "$operation" missing
done
for operation in put mkdir; do
  fails "$here/missing/file: ResourceNotFound: No such file or directory" "$operation" missing/file </dev/null
done
for operation in cat put; do fails "$here/folder: InvalidLocation: Is a directory" "$operation" folder </dev/null; done
fails "$here/pipe: InvalidLocation: *" cat pipe
fails "$here/pipe: InvalidLocation: *" cp pipe new
fails "$here/pipe: *" put pipe </dev/null
fails "$here/pipe: *" cp file pipe
absent new
holds file text
run cat missing file folder
same '1 text' "$code $out" "what can be read is"

# --- without permission -----------------------------------------------------------------------------

mkdir locked open
echo secret >locked/file
echo secret >open/unreadable
echo fine >open/readable
chmod 000 open/unreadable
chmod 555 locked
if ((EUID == 0)); then through=(setpriv --bounding-set=-all --inh-caps=-all); fi # root, but without its privileges
if "${through[@]}" cat file >/dev/null 2>&1 && ! "${through[@]}" cat open/unreadable >/dev/null 2>&1; then
  denied='PermissionDenied: Permission denied'
  fails "$here/open/unreadable: $denied" cat open/unreadable
  fails "$here/open/unreadable: $denied" cp open/unreadable copy
  absent copy
  fails "$here/open/unreadable: $denied" cp open copy
  holds copy/readable fine
  fails "$here/locked/file: $denied" rm -r locked
  holds locked/file secret
  for row in 'mkdir locked/new' 'put locked/new' 'cp file locked/new' 'mv file locked/new'; do
    read -ra words <<<"$row"
    fails_with "$denied" "${words[@]}" </dev/null
  done
  holds file text
  chmod 000 locked
  for row in 'ls locked' 'tree locked' 'find locked' 'cat locked/file' 'stat locked/file' 'ls locked/file' 'rm -r locked'; do
    read -ra words <<<"$row"
    fails_with "$denied" "${words[@]}"
  done
else
  skipped "refused permissions: this is root, and setpriv(1) cannot take its privileges away"
fi
through=()

# --- a standard stream that is the file itself ---------------------------------------------------------

fresh
echo content >file
"${limit[@]}" "$fstore" cat file >>file 2>"$work/err"
same "1 fstore cat: $here/file: InvalidLocation: The file is standard output itself" "$? $(<"$work/err")" "cat file >>file"
"${limit[@]}" "$fstore" put file <file 2>"$work/err"
same "1 fstore put: $here/file: InvalidLocation: The file is standard input itself" "$? $(<"$work/err")" "put file <file"
holds file content
fails "$here/missing: ResourceNotFound: There is no such folder" mv file missing/
holds file content
mkdir folder
ok mv folder missing/

# --- watching ---------------------------------------------------------------------------------------

sees() { # sees LINE: waits until the watch prints it
  ((checks++))
  eventually grep -Fqx -- "$1" "$work/out" || complain "watch has not printed <$1>"
}
sees_sentinel() { # the watch has begun when it tells of one of many new files
  : >"folder/sentinel$((++sentinels))"
  grep -q sentinel "$work/out"
}
watching() { # watching ARGUMENT...: begins a watch of the folder
  sentinels=0
  : >"$work/out"
  "$fstore" watch "$@" >"$work/out" 2>"$work/err" &
  watcher=$!
  eventually sees_sentinel || complain "watch $* does not begin: $(<"$work/err")"
}
ends_with() { # ends_with CODE ERROR
  wait "$watcher"
  same "$1 $2" "$? $(<"$work/err")" "the end of the watch"
}
for options in '' '--poll 5' '-r' '-r --poll 5'; do
  fresh
  mkdir folder
  # shellcheck disable=SC2086 # they are several words
  watching $options folder
  echo >'folder/a b%'
  sees "added file $here/folder/a%20b%25"
  touch -d 2001-01-01 'folder/a b%'
  sees "modified file $here/folder/a%20b%25"
  mv 'folder/a b%' folder/c
  sees "removed file $here/folder/a%20b%25"
  sees "added file $here/folder/c"
  mkdir folder/sub
  sees "added folder $here/folder/sub"
  sees "folder-modified folder $here/folder"
  if [[ $options == -r* ]]; then
    echo >folder/sub/inner
    sees "added file $here/folder/sub/inner"
  fi
  kill -TERM "$watcher"
  ends_with 0 ""
done
fresh
mkdir folder
watching --json --poll=5 folder
: >folder/file
sees "{\"event\":\"added\",\"type\":\"file\",\"location\":\"$here/folder/file\",\"watched\":\"$here/folder\"}"
rm -r folder
ends_with 1 "fstore watch: $here/folder: ResourceNotFound: The watched folder is gone"
fails "$here/missing: ResourceNotFound: No such file or directory" watch --poll 5 missing
for options in '' '--poll 5'; do
  fresh
  mkdir folder
  echo >folder/abc
  : >"$work/out"
  # shellcheck disable=SC2086 # they are several words
  "$fstore" watch $options "$here/folder/%61bc" >"$work/out" 2>"$work/err" &
  watcher=$!
  touch_until_told() {
    touch -d "@$((++sentinels))" folder/abc
    grep -q '^modified file .*bc$' "$work/out"
  }
  eventually touch_until_told || complain "watch $options does not tell of the file"
  rm -r folder
  wait "$watcher"
  same "1 fstore watch: $here/folder/%61bc: ResourceNotFound: The watched folder is gone" "$? $(<"$work/err")" \
    "the end of watch $options of a file"
done

# --- stores and their options -----------------------------------------------------------------------

fresh
mkdir inner
echo inner >inner/file
echo outer >file
ln -s ../file inner/out
printf 'file {\n  root "%s/inner" ; nothing else\n}\n' "$PWD" >stores.info
printf '{"file": {"root": "%s/inner"}}' "$PWD" >stores.json
for words in "-c stores.info" "--config stores.json" "--config=stores.info"; do
  read -ra configured <<<"$words"
  prints inner cat inner/file
  out_of_root="PermissionDenied: The path leads out of the folder that this provider is confined to"
  fails "$here/file: $out_of_root" cat file
  fails "$here/inner/out: $out_of_root" cat inner/out
done
while IFS='|' read -r name text problem; do
  printf '%b' "$text" >"$name"
  configured=(-c "$name")
  run ls inner
  ((checks++))
  [[ $code == 2 && $err == "fstore ls: "*"$problem"* && $err != *$'\n'* && -z $out ]] ||
    complain "options '$text' in $name: expected exit code 2 and <$problem>, found $code and <$err>"
done <<'TABLE'
broken.info|file {\n|broken.info
broken.json|{"file": \n 1|broken.json
options.ini||options.ini
unknown.info|nfs { }|nfs
colour.info|file { colour red }|colour
flag.info|file { durable maybe }|durable
root.info|file { root inner }|root
TABLE
configured=(-c missing.info)
run ls inner
same 2 "$code" "the exit code for a missing file of options"
configured=()
misused -c
misused -c stores.info

prints inner cat "readonly+$here/inner/file"
fails "readonly+$here/inner/file: ReadOnlyProvider: *" rm "readonly+$here/inner/file"
fails "readonly+$here/inner/new: ReadOnlyProvider: *" put "readonly+$here/inner/new" <file
ok cp "readonly+$here/inner/file" copy
holds copy inner
fails 'other+file:///: UnsupportedOperation: *' ls other+file:///
prints '' ls memory:///
ok backends
[[ $out == *"recursive removal "*" yes "* ]] || complain "backends prints <$out>"
ok backends --json
if command -v python3 >/dev/null; then
  same "archive file memory readonly s3 sevenzip tar zip" \
    "$(python3 -c 'import json, sys; print(*(entry["name"] for entry in json.load(sys.stdin)))' <"$work/out")" \
    "the names in backends --json"
fi

# --- deep trees -------------------------------------------------------------------------------------

fresh
deep=$(printf 'd/%.0s' {1..1500})
ok mkdir -p "tree/$deep"
ok put "tree/${deep}file" <<<bottom
ok cp tree copy
prints bottom cat "copy/${deep}file"
ok rm -r copy
absent copy

finish
