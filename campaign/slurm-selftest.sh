#!/bin/bash
# Runs the example campaign through Snakemake's Slurm executor on a one-node
# Slurm cluster started here, and checks that its time series equals the
# local run's. Run by hand as root on a Debian-like machine (a container will
# do: no cgroups are used); it installs slurm-wlm and munge, keeps every file
# of the cluster in one temporary folder and stops every daemon it started.
# The controller and the node are addressed as 127.0.0.1, but Slurm's daemons
# bind every address of the host (ports 16817 and 16818; munge keeps to its
# own socket here). A network namespace with the loopback alone would not do:
# Slurm resolves 127.0.0.1 with AI_ADDRCONFIG, which fails without another
# interface.
# Snakemake polls the job states once a second (a --max-status-checks-per-second
# above 1 falls back to once in 33 s).
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
WORK=build/campaign-slurm
LOCAL=build/campaign

[ "$(id -u)" = 0 ] || { echo "slurm-selftest: run as root (it installs packages and starts daemons)"; exit 1; }
echo "== installing slurm-wlm and munge"
DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends slurm-wlm munge >/dev/null
slurmctld -V
echo "== local run (make campaign)"
make campaign JOBS="${JOBS:-1}" >/dev/null

T=$(mktemp -d /tmp/orvo-slurm.XXXXXX)
PIDS=()
stop() {
    for p in "${PIDS[@]}"; do kill "$p" 2>/dev/null || true; done
    for p in "${PIDS[@]}"; do wait "$p" 2>/dev/null || true; done
    echo "== stopped munged, slurmctld and slurmd (${PIDS[*]}); cluster files in $T"
}
trap stop EXIT
trap "exit 1" INT TERM

echo "== munge and a one-node cluster in $T"
mkdir -p "$T/state" "$T/spool"
mungekey --create --keyfile="$T/munge.key"
chmod 600 "$T/munge.key"
munged --foreground --force --socket="$T/munge.socket" --key-file="$T/munge.key" \
    --pid-file="$T/munged.pid" --log-file="$T/munged.log" --seed-file="$T/munge.seed" >"$T/munged.out" 2>&1 &
PIDS+=($!)
for _ in $(seq 50); do [ -S "$T/munge.socket" ] && break; sleep 0.1; done

NODE=$(hostname -s)
CPUS=$(nproc)
cat > "$T/slurm.conf" <<EOF
ClusterName=orvoselftest
SlurmctldHost=$NODE(127.0.0.1)
SlurmUser=root
SlurmdUser=root
SlurmctldPort=16817
SlurmdPort=16818
AuthType=auth/munge
AuthInfo=socket=$T/munge.socket
CredType=cred/munge
StateSaveLocation=$T/state
SlurmdSpoolDir=$T/spool
SlurmctldPidFile=$T/slurmctld.pid
SlurmdPidFile=$T/slurmd.pid
SlurmctldLogFile=$T/slurmctld.log
SlurmdLogFile=$T/slurmd.log
ProctrackType=proctrack/linuxproc
TaskPlugin=task/none
JobAcctGatherType=jobacct_gather/none
AccountingStorageType=accounting_storage/none
SchedulerType=sched/backfill
SelectType=select/cons_tres
SelectTypeParameters=CR_Core
SlurmdParameters=config_overrides
ReturnToService=2
MpiDefault=none
NodeName=$NODE NodeAddr=127.0.0.1 CPUs=$CPUS RealMemory=4000 State=UNKNOWN
PartitionName=selftest Nodes=ALL Default=YES MaxTime=INFINITE State=UP
EOF
export SLURM_CONF=$T/slurm.conf
export USER=${USER:-$(id -un)}
slurmctld -D -f "$SLURM_CONF" >"$T/slurmctld.out" 2>&1 &
PIDS+=($!)
sleep 2
slurmd -D -f "$SLURM_CONF" -N "$NODE" >"$T/slurmd.out" 2>&1 &
PIDS+=($!)
for _ in $(seq 60); do
    state=$(sinfo -h -o %T 2>/dev/null || true)
    [ "$state" = idle ] && break
    sleep 0.5
done
sinfo
[ "$state" = idle ] || { echo "slurm-selftest: the node did not come up"; tail "$T"/*.log; exit 1; }

echo "== the example campaign through the Slurm executor into $WORK"
rm -rf "$WORK"
mkdir -p "$WORK"
start=$(date +%s)
snakemake -s campaign/Snakefile -d "$WORK" --profile campaign/slurm --max-status-checks-per-second 1 \
    --config table="$ROOT/campaign/example/campaign.tsv" catalogue="$ROOT/campaign/example/catalogue.tsv" \
    orvo="$ROOT/build/release/orvo" simulate="$ROOT/build/release/orvo-simulate" \
    prepare="$ROOT/campaign/example/prepare.smk" > "$T/snakemake.out" 2>&1 || {
    tail -40 "$T/snakemake.out"; exit 1; }
echo "snakemake finished in $(( $(date +%s) - start )) s"
grep -E "submitted with SLURM jobid" "$T/snakemake.out" | sed 's/^/  /'
echo "Slurm accounting of the controller:"
grep -E "_job_complete: JobId=[0-9]+ done" "$T/slurmctld.log" | sed 's/^/  /'

echo "== time series, Slurm against local"
if diff "$LOCAL/timeseries.tsv" "$WORK/timeseries.tsv" && diff "$LOCAL/timeseries.log" "$WORK/timeseries.log"; then
    column -t -s $'\t' "$WORK/timeseries.tsv"
    cat "$WORK/timeseries.log"
    echo "slurm-selftest: PASSED (time series and failures equal the local run's)"
else
    echo "slurm-selftest: FAILED (the time series differ)"
    exit 1
fi
