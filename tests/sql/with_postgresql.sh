#!/bin/sh
# with_postgresql.sh COMMAND...: runs COMMAND with a PostgreSQL server of its
# own, started from a fresh cluster on a Unix socket in a temporary folder
# and stopped afterwards. The command finds the server's connection string in
# QUOREL_TEST_POSTGRESQL. As root the server runs as the user nobody, since
# PostgreSQL refuses to run as root. Exit status 77 (skipped) when the
# server's programs are missing.
set -eu

bin=
for dir in "$(pg_config --bindir 2>/dev/null || true)" /usr/lib/postgresql/*/bin; do
  if [ -x "$dir/initdb" ] && [ -x "$dir/pg_ctl" ]; then bin=$dir; break; fi
done
if [ -z "$bin" ]; then
  echo "SKIPPED: no PostgreSQL server programs (initdb, pg_ctl; Debian package postgresql)"
  exit 77
fi

work=$(mktemp -d /tmp/quorel-pg-XXXXXX)
as_server() { "$@"; }
if [ "$(id -u)" = 0 ]; then
  chown nobody "$work"
  as_server() { runuser -u nobody -- "$@"; }
fi
stop() {
  as_server "$bin/pg_ctl" -D "$work/data" -m immediate stop >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap stop EXIT INT TERM

as_server "$bin/initdb" -D "$work/data" -U postgres -A trust -E UTF8 --no-locale >"$work/initdb.log" 2>&1 ||
  { cat "$work/initdb.log"; exit 1; }
as_server "$bin/pg_ctl" -D "$work/data" -l "$work/server.log" -w -t 60 \
  -o "-k $work -c listen_addresses= -F -c fsync=off" start >/dev/null ||
  { cat "$work/server.log"; exit 1; }
"$bin/createdb" -h "$work" -U postgres quorel

QUOREL_TEST_POSTGRESQL="postgresql:///quorel?host=$work&user=postgres"
export QUOREL_TEST_POSTGRESQL
"$@"
