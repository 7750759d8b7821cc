#!/usr/bin/env bash
# Compares what libDVUtilities.so exports with the list beside this script, both ways.
# Arguments: the library, the list.
set -euo pipefail
library=$1
list=$2

exported=$(nm -D --defined-only "$library" | awk '{ $1 = ""; $2 = ""; sub(/^ +/, ""); print }' | c++filt | LC_ALL=C sort -u)
documented=$(LC_ALL=C sort -u "$list")

status=0
undocumented=$(LC_ALL=C comm -23 <(echo "$exported") <(echo "$documented"))
missing=$(LC_ALL=C comm -13 <(echo "$exported") <(echo "$documented"))
[[ -z "$undocumented" ]] || { echo "exported, but not in the list:"; echo "$undocumented"; status=1; }
[[ -z "$missing" ]] || { echo "in the list, but not exported:"; echo "$missing"; status=1; }

# The entry points for programs that look names up at run time carry plain names.
plain=$(nm -D --defined-only "$library" | awk '$2 == "T" { print $3 }')
for name in TS_IsTscriptSP TS_ExecTscript_SP TS_ExecTscript_SQL TS_ExecTscript_SQL_In TS_PreviewTscript_SQL TS_PreviewTscript_SP \
  GetDatabaseList RestoreDatabase; do
  grep -qx "$name" <<<"$plain" || { echo "$name is not exported under its plain name"; status=1; }
done
for name in VtListenToCauses VtSetting; do
  [[ $(nm -D "$library") == *" w "*$name* ]] || { echo "the library needs $name of the platform layer"; status=1; }
done
[[ $(readelf -dW "$library") == *BIND_NOW* ]] || { echo "the table of called functions stays writable"; status=1; }
exit $status
