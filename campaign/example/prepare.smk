# The example's simulated station-days, written by orvo-simulate into sim/
# beside the table (not kept in the repository), and one observation file
# cut short on purpose to show a failed day. Included by the Snakefile with
# --config prepare=THIS simulate=ORVO-SIMULATE; reads the catalogue's
# coordinates, so the truth of every simulated day is its catalogue entry.
import datetime

SIMULATE = os.path.abspath(config.get("simulate", "orvo-simulate"))
# Six hours at 30 s: a few millimetres from the truth, under a second per run.
SIM_HOURS = 6
SIM_DAYS = [("ALFA", "2020-06-25"), ("ALFA", "2020-06-26"), ("ALFA", "2020-06-27"),
            ("ALFA", "2020-06-28"), ("BETA", "2020-06-25"), ("BETA", "2020-06-26")]
CUT_DAY, CUT_BYTES = ("ALFA", "2020-06-28"), 200000
SIM_XYZ = camp.read_catalogue(CATALOGUE)


def sim_files(station, date):
    d = datetime.date.fromisoformat(date)
    stem = os.path.join(TABLE_DIR, "sim", f"{station}-{date}",
                        f"{station}{d.timetuple().tm_yday:03d}0.")
    obs = stem + f"{d.year % 100:02d}o"
    return [obs, stem + "sp3", stem + "clk", obs + ".glnfc", stem + "truth"]


for station, date in SIM_DAYS:
    rule:
        name: f"simulate_{station}_{date.replace('-', '')}"
        output: sim_files(station, date)
        params:
            folder=os.path.dirname(sim_files(station, date)[0]),
            # Each day its own noise: the seed is the day of the year.
            opts=f"-m{station} -d{date} -h{SIM_HOURS} -seed{datetime.date.fromisoformat(date).timetuple().tm_yday} -x"
                 + ",".join(f"{v:.4f}" for v in SIM_XYZ[station]),
        shell: "{SIMULATE:q} -o{params.folder:q} {params.opts} > /dev/null"

rule cut_observations:
    input: sim_files(*CUT_DAY)[0]
    output: sim_files(*CUT_DAY)[0] + ".cut"
    shell: "head -c {CUT_BYTES} {input:q} > {output:q}"

localrules: cut_observations
