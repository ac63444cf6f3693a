#!/usr/bin/env bash
# Whole-program timing on the real ESBC day (G+R+E, Pc3 and L3, troposphere
# with gradients, blunder threshold so that the second adjustment runs),
# static and static plus kinematic: wall time, CPU time and peak memory for
# 6, 12 and 24 hours of observations cut from the same file, so that the
# growth with the number of epochs can be read off. Each figure is the best
# of the repeats, on one core (core 0) where taskset is there, since others'
# load only ever adds time. Times are taken to the microsecond (the kernel's
# account of the child, wait4), since 10 ms steps are 3 % of a 6 h run. Run from the repository root after a Release
# build; `make bench` does both. With --once the whole day is run once,
# static and kinematic, untimed: the counting build's run (`make train`).
#
#   bench/whole_day.sh [--once] [orvo binary] [data folder] [repeats]
set -euo pipefail

ONCE=0
if [[ ${1:-} == --once ]]; then ONCE=1; shift; fi
ORVO=${1:-build/bench/orvo}
DATA=${2:-../shared/data/esbc-2020-177}
REPEATS=${3:-5}

if [[ ! -x $ORVO ]]; then echo "whole_day.sh: no program at $ORVO" >&2; exit 1; fi
if [[ ! -r $DATA/esbc1770.20o ]]; then echo "whole_day.sh: no ESBC data in $DATA" >&2; exit 1; fi
if ! command -v python3 > /dev/null; then echo "whole_day.sh: python3 is needed for the timing" >&2; exit 1; fi

# Absolute paths: the runs happen in a scratch folder, where the plot and
# report files land.
ORVO=$(readlink -f "$ORVO")
DATA=$(readlink -f "$DATA")
WORK=$(mktemp -d /tmp/orvo_whole_day_XXXXXX)
trap 'rm -rf "$WORK"' EXIT

# First n epochs of a RINEX 2 observation file: the header, then per epoch
# the epoch line, its satellite continuation lines (12 satellites a line) and
# ceil(types/5) lines per satellite.
cut_epochs() {
    awk -v n="$2" '
        hdr == 0 {
            print
            if (index($0, "# / TYPES OF OBSERV") && substr($0, 1, 6) !~ /^ *$/) ntypes = substr($0, 1, 6) + 0
            if (index($0, "END OF HEADER")) { hdr = 1; per = int((ntypes + 4) / 5) }
            next
        }
        left > 0 { print; left--; next }
        {
            if (ep >= n) exit
            ep++
            print
            nsat = substr($0, 30, 3) + 0
            left = int((nsat - 1) / 12) + nsat * per
        }' "$1"
}

# One core, the first this shell may use (core 0 where nothing restricts it).
CORE=$(taskset -pc $$ 2>/dev/null | sed 's/.*: *//; s/[,-].*//')
PIN=(taskset -c "${CORE:-0}")
ARGS=(-ep"$DATA"/GRG0MGXFIN_20201770000_01D_15M_ORB.SP3 -ec"$DATA"/GRG0MGXFIN_20201770000_01D_30S_CLK.CLK
      -csGRE -gf"$DATA"/esbc1770.20o.glnfc -lPc3,L3 -tmSAAST,NIELL -ti02:00:00 -tg -bt4)

# Runs the command given, report to report.txt and log to log.txt, and
# prints its wall time (s), its CPU time, user plus system (s), and its peak
# resident memory (KiB); exits with the command's status.
measure() {
    python3 - "$@" <<'PY'
import os, subprocess, sys, time
with open("report.txt", "wb") as out, open("log.txt", "wb") as err:
    t0 = time.perf_counter()
    child = subprocess.Popen(sys.argv[1:], stdout=out, stderr=err)
    _, status, use = os.wait4(child.pid, 0)
    wall = time.perf_counter() - t0
print(f"{wall:.6f} {use.ru_utime + use.ru_stime:.6f} {use.ru_maxrss}")
sys.exit(os.waitstatus_to_exitcode(status) != 0)
PY
}

if ((ONCE)); then
    (cd "$WORK" && "$ORVO" -r"$DATA"/esbc1770.20o "${ARGS[@]}" -xSTA,KIN > report.txt) ||
        { echo "whole_day.sh: run of the day failed" >&2; exit 1; }
    exit 0
fi

for hours in 6 12 24; do cut_epochs "$DATA/esbc1770.20o" $((hours * 120)) > "$WORK/esbc_${hours}h.20o"; done
for mode in STA STA,KIN; do
printf '\nWhole program -x%s, ESBC 2020-177, G+R+E, Pc3+L3, ZTD 2 h + gradients, -bt4 (best of %d runs)\n' "$mode" "$REPEATS"
printf '%6s %8s %10s %10s %12s %14s %14s %12s\n' hours epochs wall_s cpu_s peak_MiB wall_ms/epoch cpu_ms/epoch iterations
for hours in 6 12 24; do
    epochs=$((hours * 120))
    obs=$WORK/esbc_${hours}h.20o
    best_wall=""; best_cpu=""; peak=0
    # One run untimed first: the first run after a change of file often
    # pays for the page cache and the clock ramp, which no repeat shows.
    (cd "$WORK" && "${PIN[@]}" "$ORVO" -r"$obs" "${ARGS[@]}" -x"$mode" > /dev/null 2>&1) || true
    for ((r = 0; r < REPEATS; r++)); do
        times=$(cd "$WORK" && measure "${PIN[@]}" "$ORVO" -r"$obs" "${ARGS[@]}" -x"$mode") ||
            { echo "whole_day.sh: run of $hours h failed" >&2; cat "$WORK/log.txt" >&2; exit 1; }
        read -r wall cpu rss <<< "$times"
        if [[ -z $best_wall ]] || awk -v a="$wall" -v b="$best_wall" 'BEGIN { exit !(a < b) }'; then best_wall=$wall; fi
        if [[ -z $best_cpu ]] || awk -v a="$cpu" -v b="$best_cpu" 'BEGIN { exit !(a < b) }'; then best_cpu=$cpu; fi
        (( rss > peak )) && peak=$rss
    done
    iters=$(awk -F': *' '/# of ITERATIONS :/ { split($2, a, " "); print a[1]; exit }' "$WORK/report.txt")
    awk -v h="$hours" -v e="$epochs" -v w="$best_wall" -v c="$best_cpu" -v k="$peak" -v it="$iters" \
        'BEGIN { printf "%6d %8d %10.3f %10.3f %12.1f %14.3f %14.3f %12s\n", h, e, w, c, k / 1024, 1000 * w / e, 1000 * c / e, it }'
done
done
