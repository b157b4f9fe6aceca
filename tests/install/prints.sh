#!/bin/bash
# Runs a program and compares what it prints with a file.
# usage: prints.sh EXPECTED PROGRAM [ARGUMENT...]
set -euo pipefail
expected=$1
shift

printed=$(mktemp)
trap 'rm -f "$printed"' EXIT
"$@" >"$printed"
diff "$expected" "$printed"
