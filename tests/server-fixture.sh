#!/bin/sh
# One private database server for the whole test run: started before the
# first test, stopped after the last (also when a test crashed).
set -u
action=$1 corvane=$2 dir=$3
case $action in
start)
    "$corvane" --app-path "$dir" server stop >/dev/null 2>&1
    rm -rf "$dir"
    mkdir -p "$dir"
    exec "$corvane" --app-path "$dir" server start ;;
stop)
    "$corvane" --app-path "$dir" server stop
    status=$?
    rm -rf "$dir"
    exit $status ;;
esac
exit 2
