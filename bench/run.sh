#!/usr/bin/env bash
# Runs the benchmarks of a build and prints one table: run.sh BUILD [NAME...]
set -euo pipefail

build=$1
shift
names=("${@:-}")
work=$(mktemp -d "${TMPDIR:-/tmp}/pedvar-bench-XXXXXX")
trap 'rm -rf "$work"' EXIT

wanted() { [[ -z ${names[0]} || " ${names[*]} " == *" $1 "* ]]; }
note() { printf '%s\n' "$*" >&2; }

echo '| job | ratio | goal | met | measured |'
echo '|---|---|---|---|---|'

if wanted import; then
    note 'writing a sample export of five years ...'
    "$build/tools/sample_export" --dense --days 1826 --end 2024-11-03 --out "$work/import"
    "$build/bench/import_bench" "$work/import/health_export/export.xml"
    rm -rf "$work/import"
fi
wanted health_store && "$build/bench/health_store_bench"
if wanted process || wanted achievements; then
    note 'filling data folders of half a year and of ten ...'
    for span in short:184 long:3652; do
        "$build/tools/sample_export" --days "${span#*:}" --end "$(date +%F)" --out "$work/${span%:*}-export"
        "$build/pedvar" --data "$work/${span%:*}" import "$work/${span%:*}-export/health_export" >/dev/null
        rm -rf "$work/${span%:*}-export"
    done
    ! wanted process || "$build/bench/process_bench" "$build/pedvar" "$work"
    ! wanted process || "$build/bench/insights_bench" "$work/long"
    ! wanted achievements || "$build/bench/achievements_bench" "$work/long"
fi
wanted gpx && "$build/bench/gpx_bench"
wanted recorder && "$build/bench/recorder_bench"
wanted session && "$build/bench/session_bench"
wanted widget && "$build/bench/widget_bench" "$build/pedvar"
exit 0
