# shellcheck shell=bash
# What tests that run under withEngine share, to be sourced: a look at the store that is none of ours.
: "${FOUNDATION_ENGINE:?this is to be run by withEngine}"

# signed [OPTION...] PATH: a request by curl to what is behind the bucket's URL.
signed() {
  curl -sS -m 30 --path-as-is --aws-sigv4 "aws:amz:$FOUNDATION_S3_REGION:s3" \
    --user "$AWS_ACCESS_KEY_ID:$AWS_SECRET_ACCESS_KEY" -H 'x-amz-content-sha256: UNSIGNED-PAYLOAD' \
    "${@:1:$#-1}" "$FOUNDATION_S3_ENDPOINT/$FOUNDATION_S3_BUCKET${!#}"
}

# Prints the keys with uploads that are neither completed nor aborted, one a line.
open_uploads() {
  signed -f '?max-uploads=1000&uploads=' | grep -o '<Upload><Key>[^<]*' | sed 's/.*>//' || true
}

# Requests that the gateway was sent since `mark_now` printed MARK, a line each, perhaps only those with PATTERN in it:
#     ... "METHOD PATH HTTP/1.1" STATUS BYTES - "AGENT" RANGE ...
mark_now() {
  local mark=mark-$RANDOM$RANDOM
  signed -o /dev/null "/$mark"
  until grep -qaF "/$mark " "$FOUNDATION_ENGINE/gateway.log"; do sleep 0.01; done # it writes after it has answered
  echo "$mark"
}
requests_since() { # requests_since MARK [PATTERN]
  mark_now >/dev/null
  sed "1,/\/$1 /d" "$FOUNDATION_ENGINE/gateway.log" | grep -a ' beast: ' | grep -av '/mark-' | grep -a -- "${2:-}" || true
}

signal_gateway() { # signal_gateway SIGNAL
  kill "-$1" "$(<"$FOUNDATION_ENGINE/gateway.pid")"
}

in_cluster() { # in_cluster PROGRAM [ARGUMENT...]: one of the store's own
  "$1" -c "$FOUNDATION_ENGINE/ceph.conf" "${@:2}"
}
