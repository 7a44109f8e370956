#!/usr/bin/env bash
# What takes too long for every day: run.sh BUILD [OPTIONS of imports.py]
set -euo pipefail
build=$1
shift
exec "$(dirname "${BASH_SOURCE[0]}")/imports.py" "$build/pedvar" "$build/tools/sample_export" "$@"
