#!/usr/bin/env bash
# The collector's units as systemd reads them: `systemd-analyze verify` on the copies that name
# the built collector, for the system manager and for a user's. Any complaint fails the test,
# also the ones systemd only warns about (an unknown key is ignored, not refused).
# Skipped (77) where systemd-analyze is missing or cannot set up a manager in this container.
set -u
units=$1
command -v systemd-analyze >/dev/null || { echo "no systemd-analyze"; exit 77; }
runtime=$(mktemp -d)
trap 'rm -rf "$runtime"' EXIT
chmod 700 "$runtime"
status=0
for kind in system user; do
  flags=(--man=no)
  [ "$kind" = user ] && flags+=(--user)
  said=$(XDG_RUNTIME_DIR=$runtime systemd-analyze verify "${flags[@]}" \
         "$units/$kind/stellwyn-collector.service" 2>&1)
  rc=$?
  if grep -q "Failed to initialize manager\|Failed to lookup RuntimeDirectory" <<<"$said"; then
    echo "$kind: systemd-analyze cannot run here: $said"
    exit 77
  fi
  if [ $rc -ne 0 ] || [ -n "$said" ]; then
    echo "$kind unit: status $rc"
    echo "$said"
    status=1
  else
    echo "$kind unit: verified"
  fi
done
exit $status
