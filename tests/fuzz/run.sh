#!/usr/bin/env bash
# Runs each fuzz target for a while: run.sh BUILD [SECONDS]. What a target has learnt is kept in BUILD/fuzz/corpus, what
# breaks it in BUILD/fuzz/findings; the first finding ends the run of its target, and all of it with failure.
set -euo pipefail
build=$(realpath "$1")
seconds=${2:-60}
work=$build/fuzz
seeds=$work/seeds
collection=$(dirname "${BASH_SOURCE[0]}")/../../../shared/corpus # real files, where they lie beside the project

rm -rf "$seeds"
mkdir -p "$work/findings" "$seeds/zip_archive"
"$build/tests/fuzz/fuzz_seeds" "$seeds"
python3 - "$seeds" <<'PYTHON'
import sys, zipfile
seeds = sys.argv[1]
for name, method in (("stored", zipfile.ZIP_STORED), ("deflated", zipfile.ZIP_DEFLATED)):
    with zipfile.ZipFile(f"{seeds}/zip_archive/{name}.zip", "w", method) as archive:
        archive.write(f"{seeds}/export_reader/export.xml", "health_export/export.xml")
        archive.write(f"{seeds}/gpx/walk.gpx", "health_export/workout-routes/route.gpx")
PYTHON
if [[ -d $collection ]]; then
    find "$collection"/{gpx,truth} -name '*.gpx' -size -64k -exec cp -t "$seeds/gpx" {} +
    find "$collection/export" -name '*.xml' -size -8k -exec cp -t "$seeds/export_reader" {} +
    find "$collection/export" -name '*.zip' -size -64k -exec cp -t "$seeds/zip_archive" {} +
fi

failed=0
for target in export_reader zip_archive gpx session; do
    mkdir -p "$work/corpus/$target"
    log=$work/$target.log
    if "$build/tests/fuzz/${target}_fuzz" "$work/corpus/$target" "$seeds/$target" -max_total_time="$seconds" \
        -timeout=20 -rss_limit_mb=2048 -print_final_stats=1 \
        -artifact_prefix="$work/findings/$target-" >"$log" 2>&1; then
        printf '%-14s %s inputs, none of them a finding\n' "$target" \
            "$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")"
    else
        failed=1
        printf '%-14s broke; see %s\n' "$target" "$log"
    fi
done
exit "$failed"
