#!/usr/bin/env bash
# Creates an authority and certificates for localhost, one for each way in which a certificate can be wrong:
# certificates.sh FOLDER
set -euo pipefail
cd "$1"

new_key=(-newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes)
openssl req -x509 "${new_key[@]}" -subj /CN=authority -days 30 -keyout ca.key -out ca.pem
cat >ca.conf <<'CONF'
[ca]
default_ca = test
[test]
database = index
serial = serial
new_certs_dir = .
default_md = sha256
policy = any
unique_subject = no
copy_extensions = copy
[any]
commonName = supplied
CONF

sign() { # sign NAME HOST NOT_BEFORE NOT_AFTER
  : >index
  openssl req "${new_key[@]}" -subj "/CN=$1" -addext "subjectAltName=DNS:$2" -keyout "$1.key" -out "$1.csr"
  openssl ca -batch -notext -config ca.conf -rand_serial -cert ca.pem -keyfile ca.key -in "$1.csr" -out "$1.pem" \
    -startdate "$3" -enddate "$4"
}
past=20200101000000Z
future=20480101000000Z
sign good localhost "$past" "$future"
sign other-host db.example.org "$past" "$future"
sign expired localhost "$past" 20210101000000Z
sign early localhost 20470101000000Z "$future"
openssl req -x509 "${new_key[@]}" -subj /CN=unknown -addext subjectAltName=DNS:localhost -days 30 \
  -keyout unknown.key -out unknown.pem
