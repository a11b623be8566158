#!/usr/bin/env bash
# Drives fstore over archives as a person at a shell does: what other programs have made is read, and what it makes is
# read by them. Where one of them is missing, what needs it is skipped.
# Usage: archivesTest.sh FSTORE
# shellcheck source-path=SCRIPTDIR source=checks.sh
. "${BASH_SOURCE[0]%/*}/checks.sh"

has() { # has PROGRAM...: whether they are all there
  local program
  for program in "$@"; do
    command -v "$program" >/dev/null || { skipped "what needs $program, which is missing"; return 1; }
  done
}
succeeds() { # succeeds COMMAND...: of another program
  ((checks++))
  "$@" >"$work/other" 2>&1 || complain "$*: exit code $?, <$(<"$work/other")>"
}
entries() { # entries ARCHIVE: the files in a zip, as unzip sees them, sorted
  unzip -Z1 "$1" | grep -v '/$' | LC_ALL=C sort
}
python() { "${limit[@]}" python3 -c "$@"; }

# --- archives of other programs -----------------------------------------------------------------------

fresh
mkdir -p source/docs/deeper source/empty
for name in '100%' 'a#b?c' 'a b' 'a!b' 'ä€😀' '-n' '[x]' 'a:b'; do echo "content of $name" >"source/docs/$name"; done
head -c 3000000 /dev/urandom >source/docs/deeper/large
: >source/nothing
touch -d '2001-02-03 04:05:06' source/docs/* source/nothing
mkdir -p source-bytes/docs && cp -r source/. source-bytes
echo bytes >source-bytes/docs/$'\xff\xfe'
echo lines >source-bytes/docs/$'two\nlines'

pack() { # pack PROGRAM ARCHIVE SOURCE: puts all that is in a folder into an archive
  local archive=$PWD/$2
  cd "$3" || return
  case $1 in
    zip) zip -q -r "$archive" . ;;
    store) zip -q -0 -r "$archive" . ;;
    7z) 7z a -bd "$archive" . ;;
    bsdtar) bsdtar -a -cf "$archive" -- * ;;
    tar) tar -caf "$archive" . ;;
    pax) tar --format=pax -caf "$archive" -- * ;;
    python) python '
import os, sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as archive:
    for folder, _, files in os.walk("."):
        for name in files + ([] if folder == "." else [""]):
            archive.write(os.path.join(folder, name))' "$archive" ;;
    jar) # the manifest first, data descriptors as a program writes them that cannot go back
      python '
import os, sys, zipfile
class Stream:
    def __init__(self, file): self.file = file
    def write(self, data): return self.file.write(data)
    def flush(self): self.file.flush()
with open(sys.argv[1], "wb") as file, zipfile.ZipFile(Stream(file), "w", zipfile.ZIP_DEFLATED) as archive:
    for folder, _, files in os.walk("."):
        for name in files + ([] if folder == "." else [""]):
            archive.write(os.path.join(folder, name))' "$archive" ;;
  esac >"$work/other" 2>&1
  local code=$?
  cd "$work/files" && return "$code"
}
while read -r scheme archive source maker programs; do
  # shellcheck disable=SC2086 # they are several words
  has ${programs:-$maker} || continue
  ((checks++))
  pack "$maker" "$archive" "$source" || complain "$maker makes no $archive: $(<"$work/other")"
  ok cp -r "$scheme:file://$PWD/$archive!/" out
  same_tree "$source" out
  ok find "$scheme:$archive!/" --type f
  same "$(find "$source" -type f -printf x | wc -c)" "$(grep -c . "$work/out")" "files found in $archive"
  prints "content of 100%" cat "$scheme:$archive!/docs/100%"
  prints "content of ä€😀" cat "$scheme:file://$PWD/$archive!/docs/ä€😀" # other spellings of one name
  prints "content of ä€😀" cat "$scheme:file://$PWD/$archive!/docs/%C3%A4€%F0%9F%98%80"
  prints "content of a!b" cat "$scheme:file://$PWD/$archive!/docs/a%21b"
  ok ls -l "$scheme:$archive!/docs"
  same "-           14 $(date -r "$source/docs/-n" '+%F %T')" \
    "$(sed -n 's/^\(.\).\(.*\) -n$/\1\2/p' "$work/out")" "a line of ls -l about $archive"
  rm -r out "$archive"
done <<'TABLE'
zip zip.zip source-bytes zip
zip stored.zip source store zip
zip python.zip source python python3
zip library.jar source jar python3
zip seven.zip source-bytes 7z
zip bsd.zip source-bytes bsdtar
archive any.zip source-bytes zip
tar gnu.tar source-bytes tar
tar pax.tar source-bytes pax tar
tar gnu.tar.gz source-bytes tar tar gzip
tar gnu.tgz source tar tar gzip
tar gnu.tar.bz2 source tar tar bzip2
tar gnu.tar.xz source tar tar xz
tar gnu.tar.zst source tar tar zstd
archive any.tar.xz source tar tar xz
sevenzip seven.7z source 7z
sevenzip bsd.7z source bsdtar
archive any.7z source 7z
archive any.cpio source bsdtar
archive any.iso source bsdtar
TABLE

# --- a zip as a place ---------------------------------------------------------------------------------

fresh
has zip unzip || finish
mkdir -p docs/sub
echo one >docs/one
echo two >docs/sub/two
echo outside >outside
zip -q -r a.zip docs outside
for archive in a.zip ./a.zip ../files/a.zip "$PWD/a.zip" "file:$PWD/a.zip" "$here/a.zip" "readonly+$here/a.zip"; do
  prints one cat "zip:$archive!/docs/one"
done
prints $'docs\noutside' ls zip:a.zip!/
prints $'one\nsub' ls zip:a.zip!/docs
prints "\
zip:a.zip!/docs
├── one
└── sub
    └── two

1 folder, 2 files" tree zip:a.zip!/docs
prints "zip:$here/a.zip!/docs/sub/two" find zip:a.zip!/docs --name 't?o'
prints "$(sha256sum <outside | cut -c 1-64)  zip:a.zip!/outside" sum zip:a.zip!/outside
ok stat zip:a.zip!/docs zip:a.zip!/docs/one
[[ $out == *"Location: zip:$here/a.zip!/docs/one"$'\n'"Type:     RegularFile"$'\n'"Size:     4"* ]] ||
  complain "stat of an entry prints <$out>"
ok ls --json zip:a.zip!/docs
[[ $out == *'{"location":"zip:'"$here"'/a.zip!/docs/one","name":"one","type":"file","symlink":false,"size":4,'* ]] ||
  complain "ls --json of an archive prints <$out>"
ok df zip:a.zip!/
ok cp -r "zip:$here/a.zip!/docs" copy
same_tree docs copy

# Writing: what was not meant stays as it is.
holds_entries() { # holds_entries ARCHIVE NAME...: whole, and with these files
  local archive=$1
  shift
  succeeds unzip -tqq "$archive"
  same "$(printf '%s\n' "$@" | LC_ALL=C sort)" "$(entries "$archive")" "files in $archive"
}
holds_entry() { # holds_entry ARCHIVE NAME TEXT
  same "$3" "$(unzip -p "$1" "$2")" "content of $2 in $1"
}
ok cp -r copy "zip:$here/a.zip!/again"
holds_entries a.zip docs/one docs/sub/two outside again/one again/sub/two
ok cp outside copy zip:a.zip!/docs
holds_entries a.zip docs/{one,sub/two,outside,copy/one,copy/sub/two} outside again/{one,sub/two}
ok rm -r zip:a.zip!/again zip:a.zip!/docs/copy zip:a.zip!/outside
holds_entries a.zip docs/{one,sub/two,outside}
ok mv zip:a.zip!/docs/outside zip:a.zip!/moved
ok mv zip:a.zip!/docs/sub zip:a.zip!/docs/one zip:a.zip!/
holds_entries a.zip one moved sub/two
holds_entry a.zip moved outside
ok put zip:a.zip!/one <<<'one more'
holds_entry a.zip one 'one more'
ok put --append zip:a.zip!/one <<<'and more'
holds_entry a.zip one $'one more\nand more'
ok truncate -s 3 zip:a.zip!/one
holds_entry a.zip one one
ok mkdir -p zip:a.zip!/x/y zip:a.zip!/x/z
ok touch -d '2011-12-13 14:15:16' zip:a.zip!/one zip:a.zip!/x/y/new
holds_entries a.zip one moved sub/two x/y/new
ok ls -l zip:a.zip!/one
same '-w            3 2011-12-13 14:15:16 one' "${out/zip:*one/one}" "a time that was set"
ok cp zip:a.zip!/one zip:a.zip!/moved zip:a.zip!/x/y # within
holds_entries a.zip one moved sub/two x/y/{new,one,moved}
ok cp --verify --atomic -j 3 docs/one docs/sub zip:a.zip!/x
holds_entries a.zip one moved sub/two x/{one,sub/two,y/new,y/one,y/moved}
fails "zip:$here/a.zip!/x/one: ResourceAlreadyExists: *
zip:$here/a.zip!/x/sub/two: ResourceAlreadyExists: *" cp -n docs/one docs/sub zip:a.zip!/x
# What fails does not keep the rest from being written.
fails "$here/missing: ResourceNotFound: No such file or directory" cp missing outside zip:a.zip!/x
holds_entry a.zip x/outside outside
fails "zip:$here/a.zip!/missing: ResourceNotFound: *" rm zip:a.zip!/missing zip:a.zip!/x/outside
same '' "$(entries a.zip | grep outside)" "an entry that was removed"
for operation in 'cat' 'ls' 'rm' 'stat' 'sum'; do
  fails "zip:$here/a.zip!/missing: ResourceNotFound: *" $operation zip:a.zip!/missing
done
fails "zip:$here/a.zip!/: InvalidLocation: The root is not to be removed" rm -r zip:a.zip!/
fails "zip:$here/a.zip!/x: InvalidLocation: is a folder; use -r" rm zip:a.zip!/x
fails "zip:$here/a.zip!/x/new: InvalidLocation: A folder cannot be copied into itself" cp zip:a.zip!/x zip:a.zip!/x/new
fails "zip:$here/a.zip!/one: InvalidLocation: A file cannot be copied onto itself" cp zip:a.zip!/one "zip:$here/a.zip!/one"
cp a.zip before.zip
elsewhere='InvalidLocation: It cannot be moved into or out of an archive; copy it, and remove it then'
fails "$here/moved-out: $elsewhere" mv zip:a.zip!/one moved-out
fails "zip:$here/a.zip!/outside: $elsewhere" mv outside zip:a.zip!/outside
cp a.zip b.zip
fails "zip:$here/b.zip!/other: $elsewhere" mv zip:a.zip!/one zip:b.zip!/other
ln -s a.zip link.zip
ok mv zip:a.zip!/one zip:link.zip!/renamed
ok mv "zip:$here/./a.zip!/renamed" zip:a.zip!/one
[[ -L link.zip ]] || complain "writing an archive has replaced the link to it"
rm link.zip
cp a.zip before.zip
absent moved-out
holds outside outside
same "$(entries a.zip)" "$(entries b.zip)" "the archives after moves that were refused"
same '' "$(find . -name '.*' -type f)" "scratch files"

# Missing archives, and new ones.
fails "zip:$here/new.zip!/: ResourceNotFound: *" ls zip:new.zip!/
fails "zip:$here/new.zip!/file: ResourceNotFound: *" put zip:new.zip!/file <outside
fails "zip:$here/new.zip!/: ResourceNotFound: There is no such folder" cp outside zip:new.zip!/
fails "zip:$here/new.zip!/a: ResourceNotFound: *" mkdir zip:new.zip!/a
fails "zip:$here/missing/new.zip!/: ResourceNotFound: *" mkdir zip:missing/new.zip!/
absent new.zip
ok mkdir zip:new.zip!/
same 22 "$(stat -c %s new.zip)" "the size of an empty zip"
fails "zip:$here/new.zip!/: ResourceAlreadyExists: *" mkdir zip:new.zip!/
ok cp outside zip:new.zip!/
holds_entries new.zip outside
ok mkdir -p zip:made.zip!/a/b zip:made.zip!/c
same 'a/ a/b/ c/ ' "$(unzip -Z1 made.zip | LC_ALL=C sort | tr '\n' ' ')" "folders of a new archive"
ok cp -r docs zip:copied.zip!/
holds_entries copied.zip one sub/two
: >empty.zip
ok cp outside zip:empty.zip!/
holds_entries empty.zip outside
ok rm zip:new.zip!/outside
same 22 "$(stat -c %s new.zip)" "the size of a zip without entries"

# Several archives in one go, of which one cannot be written.
for ((i = 1; i <= 20; ++i)); do cp a.zip "many$i.zip"; done
ok rm zip:many{1..20}.zip!/one
for ((i = 1; i <= 20; ++i)); do
  same "$(entries a.zip | grep -vx one)" "$(entries "many$i.zip")" "files in the archive $i of 20"
done
echo broken >broken.zip
fails "zip:$here/broken.zip!/: IOError: *" rm zip:a.zip!/one zip:broken.zip!/one zip:b.zip!/one
same '' "$(entries a.zip | grep -x one)$(entries b.zip | grep -x one)" "what was to be removed"
holds broken.zip broken

# --- any name -----------------------------------------------------------------------------------------

fresh
ok mkdir zip:names.zip!/ zip:names.zip!/inner
names=('100%' 'a#b?c' 'a b' 'ä€😀' '..x' 'a!b' '!' '[x]' $'\xff\xfe' '{}' '-n' 'a:b' ' ' $'\\' $'two\nlines' 'zip:x' '%21'
  "$(printf 'n%.0s' {1..255})")
for name in "${names[@]}"; do
  ok put "zip:names.zip!/inner/$name" <<<"content of $name"
  ok stat "zip:names.zip!/inner/$name"
  location=$(sed -n 's/^Location: //p' <<<"$out")
  prints "content of $name" cat "$location"
  ok cp "zip:names.zip!/inner/$name" "./$name"
  holds "./$name" "content of $name"
  rm -- "./$name"
done
same "$(printf '%s\n' "${names[@]}" | LC_ALL=C sort)" "$(python '
import os, sys
data = open("names.zip", "rb").read()
at = data.find(b"PK\1\2")
while data[at:at + 4] == b"PK\1\2":
    name, extra, comment = (int.from_bytes(data[at + i:at + i + 2], "little") for i in (28, 30, 32))
    sys.stdout.buffer.write(data[at + 46:at + 46 + name].removeprefix(b"inner/") + b"\n")
    at += 46 + name + extra + comment' | sed '/^$/d' | LC_ALL=C sort)" "names as they stand in the zip"
ok cp zip:names.zip!/inner out
ok cp out zip:names.zip!/again
ok cp zip:names.zip!/again out2
same_tree out out2
mkdir '100% #1! ?'
mv names.zip '100% #1! ?/a!b.zip'
prints "content of a b" cat 'zip:100% #1! ?/a!b.zip!/again/a b'
prints "content of a!b" cat "zip:$here/100%25%20%231!%20%3F/a!b.zip!/again/a%21b"
mkdir 'x!' && mv '100% #1! ?/a!b.zip' 'x!/a.zip'
prints "content of a b" cat 'zip:x!/a.zip!/again/a b'
for argument in zip: zip:a.zip zip:!/x zip:zip:a.zip!/x ZIP:a.zip 'readonly+zip:a.zip'; do
  fails "$argument: InvalidLocation: A place in an archive is written as in zip:letters.zip!/may.txt, with a '!/' for each" \
    cat "$argument"
done
fails 'zip:/a.zip: InvalidLocation: *' cat zip:/a.zip
prints "content of a b" cat 'ReadOnly+ZIP:x!/a.zip!/again/a b'
fails "readonly+zip:$here/x!/a.zip!/again/new: ReadOnlyProvider: *" put 'readonly+zip:x!/a.zip!/again/new' </dev/null
fails "zip:readonly+$here/x!/a.zip!/*" rm "zip:readonly+$here/x!/a.zip!/again/a%20b"
prints "content of a b" cat 'zip:x!/a.zip!/again/a b'

# --- archives in archives -----------------------------------------------------------------------------

fresh
mkdir docs
echo one >docs/one
zip -q -r inner.zip docs
zip -q -0 outer.zip inner.zip
tar -czf outer.tar.gz inner.zip
cp outer.zip middle.zip
zip -q outermost.zip middle.zip
for place in "zip:zip:$here/outer.zip!/inner.zip!/docs" zip:zip:outer.zip!/inner.zip!/docs \
  zip:tar:outer.tar.gz!/inner.zip!/docs zip:zip:zip:outermost.zip!/middle.zip!/inner.zip!/docs \
  "archive:zip:$PWD/outer.zip!/inner.zip!/docs"; do
  prints one cat "$place/one"
  prints $'one' ls "$place"
  ok tree "$place"
  same "$place"$'\n└── one\n\n0 folders, 1 file' "$out" "the tree of $place"
done
inner_of() { # inner_of ARCHIVE COMMAND...: another program's view of an inner archive
  unzip -p "$1" inner.zip >taken.zip
}
ok put zip:zip:outer.zip!/inner.zip!/docs/two <<<two
holds_entries outer.zip inner.zip
inner_of outer.zip
holds_entries taken.zip docs/one docs/two
holds_entry taken.zip docs/two two
ok cp -r zip:zip:outer.zip!/inner.zip!/docs zip:outer.zip!/
holds_entries outer.zip inner.zip docs/one docs/two
ok rm zip:zip:outer.zip!/inner.zip!/docs/one zip:outer.zip!/docs/one zip:zip:outer.zip!/inner.zip!/docs/two
holds_entries outer.zip inner.zip docs/two
inner_of outer.zip
same '' "$(entries taken.zip 2>&1 | grep -v '^Empty')" "files in an inner archive that was emptied"
ok put zip:zip:zip:outermost.zip!/middle.zip!/inner.zip!/docs/three <<<three
prints three cat zip:zip:zip:outermost.zip!/middle.zip!/inner.zip!/docs/three
succeeds unzip -tqq outermost.zip
ok put zip:tar:outer.tar.gz!/inner.zip!/docs/two <<<two
tar -xOzf outer.tar.gz inner.zip >taken.zip
holds_entries taken.zip docs/one docs/two
ok mkdir zip:tar:outer.tar.gz!/new.zip!/
same $'inner.zip\nnew.zip' "$(tar -tzf outer.tar.gz | sort)" "an archive made in an archive"
fails "zip:sevenzip:$here/a.7z!/inner.zip!/: *" ls zip:sevenzip:a.7z!/inner.zip!/

# --- other formats ------------------------------------------------------------------------------------

fresh
mkdir -p docs
echo one >docs/one
for suffix in tar tar.gz tgz tar.bz2 tar.xz tar.zst; do
  ok mkdir "tar:new.$suffix!/"
  ok cp docs "tar:new.$suffix!/"
  ok put "tar:new.$suffix!/a b%" <<<text
  if [[ $suffix != *zst ]] || has zstd; then
    same 'a b% docs/ docs/one ' "$(tar -taf "new.$suffix" | LC_ALL=C sort | tr '\n' ' ')" "entries of new.$suffix"
    same text "$(tar -xOaf "new.$suffix" 'a b%')" "content of an entry of new.$suffix"
  fi
  ok rm "tar:new.$suffix!/docs/one"
  prints text cat "tar:new.$suffix!/a b%"
done
# What can only be read from its beginning is listed, and so copied, in its own order.
mkdir -p order/a
for name in c a/2 b a/1 0; do echo "$name" >"order/$name"; done
tar -C order -czf order.tar.gz c a/2 b a/1 0
prints $'c\na\nb\n0' ls -U tar:order.tar.gz!/
prints $'2\n1' ls -U tar:order.tar.gz!/a
ok cp tar:order.tar.gz!/ ordered
same_tree order ordered
ok put tar:order.tar.gz!/a/0 <<<new
prints $'2\n1\n0' ls -U tar:order.tar.gz!/a
for row in "gz gzip" "bz2 bzip2" "xz xz"; do
  has "${row#* }" && succeeds "${row#* }" -t "new.tar.${row% *}"
done
if has 7z; then
  7z a -bd a.7z docs >/dev/null
  cp a.7z before.7z
  for scheme in sevenzip archive; do
    refused="ReadOnlyProvider: Archives of this format are not written"
    place=$scheme:$here/a.7z!
    prints one cat "$scheme:a.7z!/docs/one"
    fails "$place/docs/new: $refused" put "$scheme:a.7z!/docs/new" </dev/null
    fails "$place/docs/one: $refused" put "$scheme:a.7z!/docs/one" </dev/null
    fails "$place/docs/one: $refused" rm "$scheme:a.7z!/docs/one"
    fails "$place/docs/one: $refused" rm -r "$scheme:a.7z!/docs"
    fails "$place/docs/one: $refused" mv "$scheme:a.7z!/docs/one" "$scheme:a.7z!/other"
    fails "$place/new: $refused" mkdir "$scheme:a.7z!/new"
    fails "$place/one: $refused" cp docs/one "$scheme:a.7z!/"
    fails "$place/docs/one: $refused" touch "$scheme:a.7z!/docs/one"
    fails "$place/docs/one: $refused" truncate -s 0 "$scheme:a.7z!/docs/one"
  done
  cmp -s a.7z before.7z || complain "a 7z archive has changed"
fi

# Damaged ones, encrypted ones, and what is none.
zip -q -P secret secret.zip docs/one
zip -q a.zip docs/one
head -c -10 a.zip >cut.zip
printf 'text' >text.zip
fails "zip:$here/secret.zip!/docs/one: UnsupportedOperation: *" cat zip:secret.zip!/docs/one
fails "zip:$here/secret.zip!/docs/one: UnsupportedOperation: *" cp zip:secret.zip!/docs/one out
absent out
fails "zip:$here/cut.zip!/: IOError: *" cat zip:cut.zip!/docs/one
fails "zip:$here/text.zip!/: IOError: *" ls zip:text.zip!/
fails "zip:$here/docs!/: InvalidLocation: *" ls zip:docs!/
fails "zip:$here/missing.zip!/x: ResourceNotFound: *" cat zip:missing.zip!/x
python '
data = bytearray(open("a.zip", "rb").read())
data[data.find(b"one\n")] ^= 1
open("flipped.zip", "wb").write(data)'
fails "zip:$here/flipped.zip!/docs/one: IOError: *" cat zip:flipped.zip!/docs/one
fails "zip:$here/flipped.zip!/docs/one: IOError: *" cp --atomic zip:flipped.zip!/docs/one out
absent out
ok mkdir zip:sound.zip!/
echo two >docs/two
fails "zip:$here/flipped.zip!/docs/one: IOError: *" cp zip:flipped.zip!/docs/one docs/two zip:sound.zip!/
holds_entries sound.zip two # without half of the other

# Their options.
printf 'zip { max-entries 1 }\n' >limits.info
zip -q two.zip docs docs/one
configured=(-c limits.info)
fails "zip:$here/two.zip!/: FileTooLarge: *" ls zip:two.zip!/
for options in 'zip { max-entries many }' 'zip { colour red }' 'tar { commit sometimes }'; do
  echo "$options" >wrong.info
  configured=(-c wrong.info)
  run ls
  same 2 "$code" "the exit code for the options $options"
done
configured=()
ok backends
[[ $out == *archive*container* && $out == *zip* ]] || complain "backends prints <$out>"

# --- when an archive cannot be written ------------------------------------------------------------------

fresh
mkdir many
for ((i = 0; i < 100; ++i)); do head -c 10000 /dev/urandom >"many/$i"; done
zip -q -r a.zip many/1*
cp a.zip before.zip
whole() { # whole WHAT: the archive is the old one, and nothing lies beside it
  ((checks++))
  cmp -s a.zip before.zip || complain "$1 has changed the archive"
  same '' "$(find . -name '.?*' -type f)" "scratch files after $1"
}
head -c 3000000 /dev/urandom >large
# A write beyond the limit is a signal, unless that is ignored: then it fails.
through=(bash -c 'trap "" XFSZ; ulimit -f 1000; exec "$@"' bash)
fails "zip:$here/a.zip!/: FileTooLarge: *" cp -r many zip:a.zip!/all
whole "a commit beyond the limit of a file's size"
through=()
if ((EUID == 0)) && unshare -m true 2>/dev/null; then
  mkdir small
  "${limit[@]}" unshare -m bash -c '
    mount -t tmpfs -o size=1m none small && cp a.zip small || exit 99
    "$1" cp -r many "zip:small/a.zip!/all"
    echo "code $?"
    cmp a.zip small/a.zip && ls -A small
    "$1" rm "zip:small/a.zip!/many/1" && unzip -tqq small/a.zip && echo written' bash "$fstore" >"$work/out" 2>"$work/err"
  if (($? == 99)); then
    skipped "a full disk: no file system can be mounted"
  else
    same $'0 files copied, 0 bytes (0), 1 failed\ncode 1\na.zip\nwritten' "$(<"$work/out")" "an archive on a full disk"
    same "fstore cp: zip:$here/small/a.zip!/: NoSpaceLeft: The store that holds the archive failed: No space left on device" "$(<"$work/err")" \
      "the error on a full disk"
  fi
else
  skipped "a full disk: only root can mount a small one"
fi
if ((EUID == 0)); then through=(setpriv --bounding-set=-all --inh-caps=-all); fi
chmod 555 .
if ! "${through[@]}" touch new 2>/dev/null; then
  fails "zip:$here/a.zip!/: PermissionDenied: *" rm zip:a.zip!/many/1
else
  skipped "a folder that cannot be written to: this is root, and setpriv(1) cannot take its privileges away"
fi
chmod 755 .
through=()
rm -f new
whole "a commit without permission"

# Somebody else writes it meanwhile: that stays.
mkfifo "$work/pipe"
"$fstore" put zip:a.zip!/late <"$work/pipe" 2>"$work/err" &
putter=$!
exec 3>"$work/pipe"
echo text >&3
waits_for_input() { # as it does once it has looked into the archive
  [[ $(<"/proc/$putter/wchan") == *pipe* || $(</proc/"$putter"/syscall) == "0 0x0 "* ]]
}
if eventually waits_for_input 2>/dev/null; then
  zip -q a.zip large
  cp a.zip before.zip
  exec 3>&-
  wait "$putter"
  same "1 fstore put: zip:$here/a.zip!/: ResourceInUse: *" "$? $(sed 's/\(ResourceInUse: \).*/\1*/' "$work/err")" \
    "writing an archive that was changed meanwhile"
  whole "a commit over somebody else's change"
else
  skipped "an archive that is changed meanwhile: the system does not tell what a program waits for"
  kill "$putter"
  exec 3>&-
fi

# --- interrupted copies ---------------------------------------------------------------------------------

fresh
mkdir source
name=$(printf '%%%.0s' {1..200})
for ((i = 0; i < 300; ++i)); do head -c 20000 /dev/urandom >"source/$name$i"; done
echo old >old
rm -f "$work/fifo"
mkfifo "$work/fifo"
while read -r signal code options; do
  rm -f a.zip
  zip -q a.zip old
  cp a.zip before.zip
  # It cannot be over before the signal comes, since nobody reads the names that it prints.
  # shellcheck disable=SC2086 # they are several words
  "$fstore" cp -v $options source zip:a.zip!/copy >"$work/fifo" 2>"$work/err" &
  copier=$!
  exec 3<"$work/fifo"
  IFS= read -r -u 3 _
  cmp -s a.zip before.zip || complain "cp $options writes the archive before it is over"
  kill "-$signal" "$copier"
  { cat <&3 >/dev/null && wait "$copier"; } 2>/dev/null # where the shell tells of a kill
  same "$code" $? "the end of an interrupted cp $options"
  exec 3<&-
  if [[ $signal == KILL ]]; then
    whole "a killed cp"
    continue
  fi
  succeeds unzip -tqq a.zip
  holds_entry a.zip old old
  rm -rf unpacked && mkdir unpacked && unzip -qq a.zip -d unpacked
  copied=0
  for file in unpacked/copy/*; do
    ((++copied))
    cmp -s "$file" "source/${file##*/}" || complain "cp $options leaves half of $file"
  done
  ((checks++))
  ((copied > 0 && copied < 300)) || complain "an interrupted cp $options has copied $copied files"
done <<'TABLE'
INT 130
TERM 143 -j 3
HUP 129 --verify
KILL 137
TABLE

# --- watching -------------------------------------------------------------------------------------------

fresh
echo one >one
zip -q a.zip one
: >"$work/out"
"$fstore" watch --poll 5 zip:a.zip!/ >"$work/out" 2>"$work/err" &
watcher=$!
number=0
add_until_told() {
  echo "$((++number))" >"new$number"
  cp a.zip next.zip
  zip -q next.zip "new$number"
  mv next.zip a.zip  # in one step: zip removes the old archive first, and then it is gone for a moment
  grep -q "^added file zip:$here/a.zip!/new" "$work/out"
}
((checks++))
eventually add_until_told || complain "watch does not tell what is new in an archive: <$(<"$work/out")> <$(<"$work/err")>"
kill -TERM "$watcher"
wait "$watcher"
same 0 $? "the end of a watch of an archive"

finish
