#!/usr/bin/env bash
# What takes too long for every day: run.sh BUILD [OPTIONS of imports.py]
set -euo pipefail
build=$1
soak=$(dirname "${BASH_SOURCE[0]}")
shift
"$soak/recordings.py" "$build/pedvar"
exec "$soak/imports.py" "$build/pedvar" "$build/tools/sample_export" "$@"
