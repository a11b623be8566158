#!/usr/bin/env bash
# Drives fstore over an object store as a person at a shell does; what it writes is compared with what curl finds.
# Usage: withEngine ceph fstoreTest.sh FSTORE
# shellcheck source-path=SCRIPTDIR source=store.sh source=../fstore/checks.sh
. "${BASH_SOURCE[0]%/*}/store.sh"
. "${BASH_SOURCE[0]%/*}/../fstore/checks.sh"

readonly bucket=s3://$FOUNDATION_S3_BUCKET there=s3://$FOUNDATION_S3_BUCKET/fstore
write_options() { # write_options ENDPOINT [LINE...]
  printf '%s\n' 's3 {' "endpoint \"$1\"" "region \"$FOUNDATION_S3_REGION\"" "${@:2}" '}'
}
write_options "$FOUNDATION_S3_ENDPOINT" 'part-size 5242880' >"$work/store.info"
configured=(-c "$work/store.info")
key_of() { # key_of NAME...: a path of a URL with these names, strictly encoded
  python3 -c 'import sys, urllib.parse
print("".join("/" + urllib.parse.quote(name.encode("utf-8", "surrogateescape"), "-._~") for name in sys.argv[1:]))' "$@"
}
stored() { # stored TEXT NAME...: what curl finds under that key
  same "$1" "$(signed "$(key_of fstore "${@:2}")")" "the object ${*:2}"
}
missing() { # missing NAME...: curl finds nothing there
  same 404 "$(signed -o /dev/null -w '%{http_code}' "$(key_of fstore "$@")")" "the status of $*"
}

# --- one file and folder after the other --------------------------------------------------------------

ok mkdir "$there"
ok put "$there/one" <<<one
stored one one
prints one cat "$there/one"
ok put --append "$there/one" <<<more
stored $'one\nmore' one
ok truncate -s 3 "$there/one"
stored one one
ok truncate -s 5 "$there/one"
same 'one\0\0' "$(signed "$(key_of fstore one)" | sed 's/\x00/\\0/g')" 'an object that was filled up'
ok put "$there/one" <<<one
ok mkdir -p "$there/a/b" "$there/empty"
ok touch "$there/a/new"
stored '' a new
ok cp "$there/one" "$there/a/b/copy"
stored one a b copy
ok ls "$there"
same $'a\nempty\none' "$out" "the folder's entries"
ok ls -l "$there/one"
[[ $out =~ ^-w?\ +4\ [0-9-]{10}\ [0-9:]{8}\ "$there/one"$ ]] || complain "ls -l prints <$out>"
ok tree "$there"
same "$there"$'\n├── a\n│   ├── b\n│   │   └── copy\n│   └── new\n├── empty\n└── one\n\n3 folders, 3 files' "$out" "the tree"
prints "$there/a/b/copy" find "$there" --name 'c*y'
prints "$(sha256sum <<<one | cut -d ' ' -f 1)  $there/one" sum "$there/one"
ok stat "$there/one"
[[ $out == *$'Size:     4\n'* ]] || complain "stat prints <$out>"
ok mv "$there/one" "$there/a/moved"
missing one
stored one a moved
ok mv "$there/a" "$there/c"
missing a moved
stored one c moved
stored one c b copy
ok mv "$there/c/moved" "$there/c/b/copy"
fails "$there/c: InvalidLocation: is a folder; use -r" rm "$there/c"
ok rm "$there/c/new"
ok rm -r "$there/c"
missing c b copy
prints empty ls "$there"
ok rm -r "$there"
same '' "$(signed "?prefix=fstore" | grep -o '<Key>[^<]*')" 'keys that are left'

# --- any name, any size, both ways ------------------------------------------------------------------

fresh
mkdir -p tree/folder/empty
names=('100%' 'a#b?c' 'a b' 'a+b' 'ä€😀' '..x' 'a!b' '[x]' '{}' '%%' '%2F' '++' '-n' 'a:b' ' ' $'\\' "'\"&<>" '$x;y=z,@'
  "$(printf 'n%.0s' {1..255})")
for name in "${names[@]}"; do
  echo "content of $name" >"tree/$name"
  mkdir -p "tree/in $name" && echo "inside of $name" >"tree/in $name/$name"
done 2>/dev/null # one name with "in " before it is too long
head -c 12345678 /dev/urandom >tree/folder/large
head -c 5242880 /dev/urandom >tree/folder/part
: >tree/folder/nothing
for ((i = 0; i < 200; ++i)); do echo "$i" >"tree/folder/small$i"; done
for options in '' '-j 8' '--atomic -j 3' '--verify -j 4'; do
  # shellcheck disable=SC2086 # they are several words
  ok cp -r $options tree "$there"
  # shellcheck disable=SC2086
  ok cp -r $options "$there" back
  same_tree tree back
  rm -r back
  ok rm -r "$there"
done
ok cp -r -j 4 tree "$there"
for name in "${names[@]}"; do stored "content of $name" "$name"; done
same "$(sha256sum <tree/folder/large)" "$(signed "$(key_of fstore folder large)" | sha256sum)" 'a large object'
ok cp -r -j 4 "$there" "$bucket/copy" # within the store
ok cp -r "$bucket/copy" back
same_tree tree back
rm -r back
ok mv "$there/folder" "$bucket/copy/moved"
ok mv "$bucket/copy/moved" "$bucket/copy/folder2"
ok cp -r "$bucket/copy/folder2" back
same_tree tree/folder back
fails "$there/100%25: ResourceAlreadyExists: *" cp -n "tree/100%" "$there/"
ok rm -r "$there" "$bucket/copy"
same '' "$(signed '?prefix=fstore' | grep -o '<Key>[^<]*')$(signed '?prefix=copy' | grep -o '<Key>[^<]*')" 'keys that are left'

# A folder of objects that others have made, and one behind it.
signed -X PUT --data-binary others /others/deep/file
prints deep ls "$bucket/others"
prints others cat "$bucket/others/deep/file"
ok rm -r "$bucket/others/deep"
fails "$bucket/others: ResourceNotFound: *" ls "$bucket/others"

# --- archives inside objects --------------------------------------------------------------------------

fresh
head -c 30000000 /dev/urandom >large
echo small >small
python3 -c 'import zipfile
with zipfile.ZipFile("a.zip", "w") as archive:
    archive.write("large")
    archive.write("small")'
ok cp a.zip "$bucket/a%20b.zip"
mark=$(mark_now)
prints small cat "zip:$bucket/a%20b.zip!/small"
bytes=$(requests_since "$mark" '"GET' | sed 's/.*HTTP[^"]*" [0-9]* \([0-9]*\) .*/\1/' | paste -sd + | bc)
((checks++))
((bytes > 0 && bytes < 10000000)) || complain "reading 6 bytes in an archive of 30 MB has fetched $bytes bytes"
ok cp "zip:$bucket/a%20b.zip!/large" copy
cmp large copy || complain 'a file from an archive in an object differs'
ok put "zip:$bucket/a%20b.zip!/new" <<<new
prints $'large\nnew\nsmall' ls "zip:$bucket/a%20b.zip!/"
prints new cat "zip:$bucket/a%20b.zip!/new"
ok rm "$bucket/a%20b.zip"

# --- what goes wrong ----------------------------------------------------------------------------------

fresh
echo file >file
# A store of these options fails so, whatever is asked of it, and says these words.
wrong() { # wrong CODE WORDS BUCKET ENDPOINT [LINE...]
  local place=s3://$3/x operation
  write_options "$4" 'attempts 2' "${@:5}" >wrong.info
  configured=(-c wrong.info)
  for operation in ls stat cat rm mkdir put 'cp file'; do
    # shellcheck disable=SC2086 # they are several words
    fails "$place: $1: *" $operation "$place" <file
    [[ $err == *"$2"* ]] || complain "$operation: no word of \"$2\" in <$err>"
  done
  configured=(-c "$work/store.info")
}
wrong PermissionDenied 'check ' "$FOUNDATION_S3_BUCKET" "$FOUNDATION_S3_ENDPOINT" 'access-key "nobody"' 'secret-key "wrong"'
wrong PermissionDenied 'check ' "$FOUNDATION_S3_BUCKET" "$FOUNDATION_S3_ENDPOINT" "access-key \"$AWS_ACCESS_KEY_ID\"" 'secret-key "wrong"'
wrong ResourceNotFound 'no such bucket' no-such-bucket "$FOUNDATION_S3_ENDPOINT"
wrong IOError 'cannot be reached' "$FOUNDATION_S3_BUCKET" http://127.0.0.1:1
wrong IOError none.invalid "$FOUNDATION_S3_BUCKET" http://none.invalid
name=$(printf 'n%.0s' {1..1025})
for operation in stat cat rm mkdir put 'cp file'; do
  # shellcheck disable=SC2086
  fails "$bucket/$name: InvalidLocation: *" $operation "$bucket/$name" <file
done

# A store that is full.
in_cluster radosgw-admin quota set --quota-scope=bucket --uid=tests --max-size=1 >/dev/null
in_cluster radosgw-admin quota enable --quota-scope=bucket --uid=tests
head -c 12000000 /dev/urandom >large
fails "$bucket/file: NoSpaceLeft: The store, or this account's share of it, is full: *" put "$bucket/file" <file
fails "$bucket/file: NoSpaceLeft: *" cp large "$bucket/file"
in_cluster radosgw-admin quota disable --quota-scope=bucket --uid=tests
ok cp large "$bucket/file"
ok rm "$bucket/file"

# A store that stops answering, and goes on.
ok put "$bucket/file" <file
write_options "$FOUNDATION_S3_ENDPOINT" 'operation-timeout 2000' 'idle-timeout 1000' 'attempts 2' >impatient.info
configured=(-c impatient.info)
signal_gateway STOP
trap 'signal_gateway CONT; chmod -R u+rwx -- "$work"; rm -rf -- "$work"' EXIT
for operation in ls stat cat rm mkdir put 'cp file' 'mv '"$bucket/file"; do
  # shellcheck disable=SC2086
  fails "$bucket/x: IOError: *" $operation "$bucket/x" <file
  [[ $err == *'in time'* ]] || complain "$operation: no word of the time in <$err>"
done
signal_gateway CONT
prints file cat "$bucket/file"
ok rm "$bucket/file"

# A copy that is interrupted leaves whole files, and no upload.
fresh
configured=(-c "$work/store.info")
head -c 12000000 /dev/urandom >large
mkdir many
for ((i = 0; i < 40; ++i)); do ln large "many/$i"; done
is_uploading() { [[ -n $(open_uploads) ]]; }
for options in '' '--atomic -j 3'; do
  # shellcheck disable=SC2086 # they are several words
  "$fstore" "${configured[@]}" cp -r $options many "$bucket/many" >"$work/out" 2>"$work/err" &
  copier=$!
  eventually is_uploading || complain "a copy begins no upload: $(<"$work/err")"
  kill -INT "$copier"
  wait "$copier"
  same 130 $? "the end of an interrupted cp $options"
  same '' "$(open_uploads)" "uploads that an interrupted cp $options has left open"
  ok cp -r "$bucket/many" back
  same '' "$(find back -type f ! -size 12000000c)" "halves of files that an interrupted cp $options has left"
  ok rm -r "$bucket/many"
  rm -r back
done

finish
