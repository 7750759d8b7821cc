#!/usr/bin/env bash
# Creates a Kerberos realm with a person and a service, and their keytabs: realm.sh FOLDER KDC_PORT
set -euo pipefail
cd "$1"

cat >krb5.conf <<CONF
[libdefaults]
default_realm = EXAMPLE.TEST
dns_lookup_kdc = false
dns_canonicalize_hostname = false
default_rcache_name = file2:$1/replays
[realms]
EXAMPLE.TEST = {
  kdc = 127.0.0.1:$2
}
CONF
cat >kdc.conf <<CONF
[realms]
EXAMPLE.TEST = {
  database_name = $1/principals
  key_stash_file = $1/stash
  kdc_listen = 127.0.0.1:$2
  kdc_tcp_listen = 127.0.0.1:$2
}
[logging]
kdc = FILE:$1/kdc.log
CONF
/usr/sbin/kdb5_util create -s -W -P master
/usr/sbin/kadmin.local <<COMMANDS
addprinc -randkey person
addprinc -randkey other
addprinc -randkey MSSQLSvc/localhost:1433
ktadd -k client.keytab person other
ktadd -k server.keytab MSSQLSvc/localhost:1433
COMMANDS
