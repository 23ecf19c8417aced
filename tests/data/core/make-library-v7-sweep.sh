#!/bin/sh
# Rebuilds library-v7-sweep.sqlite, a library at the ninth schema step, from its SQL.
set -eu
cd "$(dirname "$0")"
rm -f library-v7-sweep.sqlite
sqlite3 library-v7-sweep.sqlite < library-v7-sweep.sql
sqlite3 library-v7-sweep.sqlite 'PRAGMA integrity_check; PRAGMA foreign_key_check;'
