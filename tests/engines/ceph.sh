# shellcheck shell=bash disable=SC2034,SC2154 # withEngine and this share variables
# A Ceph of one node, for withEngine: a monitor, a store in memory and the gateway, version 16 or so. Nothing inside is
# authenticated, and nothing is kept twice.
readonly programs=(ceph ceph-mon ceph-osd monmaptool radosgw radosgw-admin)

start_engine() {
  local configuration=(-c "$folder/ceph.conf") cluster monitorPort port disk
  cluster=$(</proc/sys/kernel/random/uuid)
  monitorPort=$(free_port) || give_up 'no port is free'
  write_configuration "$cluster" "$monitorPort" >"$folder/ceph.conf"

  must monmaptool --create --fsid "$cluster" --addv a "[v2:$host:$monitorPort]" "$folder/monmap"
  must ceph-mon "${configuration[@]}" -i a --mkfs --monmap "$folder/monmap"
  start monitor ceph-mon "${configuration[@]}" -i a -f
  wait_for monitor answers "$monitorPort"

  disk=$(</proc/sys/kernel/random/uuid)
  must ceph "${configuration[@]}" osd new "$disk" 0
  mkdir "$folder/disk"
  must ceph-osd "${configuration[@]}" -i 0 --mkfs --osd-uuid "$disk"
  start store ceph-osd "${configuration[@]}" -i 0 -f

  # Makes the pools, too, as soon as there is a store for them.
  must radosgw-admin "${configuration[@]}" user create --uid=tests --display-name=tests \
    --access-key="$AWS_ACCESS_KEY_ID" --secret-key="$AWS_SECRET_ACCESS_KEY"
  port=$(free_port) || give_up 'no port is free'
  # Without tcp_nodelay, most answers come 40 ms late.
  start gateway radosgw "${configuration[@]}" -n client.admin -f \
    --rgw-frontends="beast endpoint=$host:$port tcp_nodelay=1"
  export FOUNDATION_S3_ENDPOINT=http://$host:$port
  wait_for gateway curl -fsS -m 5 -o /dev/null "$FOUNDATION_S3_ENDPOINT/"
  make_bucket
}

make_bucket() {
  must curl -fsS -m 30 -X PUT --aws-sigv4 "aws:amz:$FOUNDATION_S3_REGION:s3" \
    --user "$AWS_ACCESS_KEY_ID:$AWS_SECRET_ACCESS_KEY" \
    -H "x-amz-content-sha256: $(sha256sum </dev/null | cut -d ' ' -f 1)" \
    "$FOUNDATION_S3_ENDPOINT/$FOUNDATION_S3_BUCKET"
}

write_configuration() { # write_configuration CLUSTER MONITOR_PORT
  cat <<CONFIGURATION
[global]
fsid = $1
mon host = v2:$host:$2
ms bind msgr1 = false
public addr = $host
cluster addr = $host
auth cluster required = none
auth service required = none
auth client required = none
ms mon client mode = crc
keyring = /dev/null
# Nothing is to be written outside of this folder.
run dir = $folder
crash dir = $folder
admin socket =
pid file =
log file =
log to file = false
log to stderr = true
mon cluster log to file = false
# One copy on one disk is all there is.
osd pool default size = 1
osd pool default pg num = 8
osd pool default pg autoscale mode = off
osd crush chooseleaf type = 0
mon allow pool size one = true
mon max pg per osd = 1000
[mon]
mon data = $folder/monitor
# However full the disk is that the temporary folder is on.
mon data avail crit = 1
# Decide at once: nobody else has a say.
paxos propose interval = 0.05
paxos min wait = 0.01
[osd]
osd data = $folder/disk
osd objectstore = memstore
memstore device bytes = $((4 << 30))
[client]
rgw enable apis = s3
rgw run sync thread = false
# What was removed is to be gone within seconds, as the store is small.
rgw gc obj min wait = 5
rgw gc processor period = 5
rgw gc processor max time = 5
CONFIGURATION
}
