#!/usr/bin/env python3
"""Station-day campaigns of Orvo: the table of station-days, the orvo command
of one row, and the gathering of the reports into a time series with plots.

Plain Python 3, no third-party modules: the Snakefile imports it, and the
gathering and plotting also run by hand:

  campaign.py gather OUT.tsv OUT.log [--catalogue CAT.tsv] DAYDIR...
  campaign.py plot TIMESERIES.tsv STATION OUT.png
  campaign.py truth TIMESERIES.tsv TRUTHFILE...

A DAYDIR is the job folder STATION/DATE of one station-day holding the
exit status of orvo ("status"), its report ("orvo.report") and its error
stream ("orvo.log").
"""
import datetime
import math
import os
import re
import subprocess
import sys

# Table columns naming a file, with the orvo option that takes it.
FILE_OPTIONS = {
    "obs": "-r", "orbit": "-ep", "clock": "-ec", "channel": "-gf", "antex": "-pv",
    "blq": "-bq", "erp": "-eo", "nav_gps": "-eg", "nav_glonass": "-er",
    "nav_galileo": "-ee", "ionex": "-ii", "dcb": "-cb1", "problems": "-sx",
}
REQUIRED = ("station", "date", "obs")

# GRS80: the ellipsoid of the ITRF coordinates in the reports and catalogues.
GRS80_A = 6378137.0
GRS80_F = 1.0 / 298.257222101

TS_COLUMNS = ("station", "date", "X_m", "Y_m", "Z_m", "sX_m", "sY_m", "sZ_m",
              "N_mm", "E_mm", "U_mm", "sN_mm", "sE_mm", "sU_mm", "sL3_mm",
              "nobs", "nrej", "ref")

# Beyond this, a simulated day does not reproduce its truth: the default
# simulated noise gives a few millimetres over six hours.
TRUTH_TOL_MM = 10.0


class CampaignError(Exception):
    """A table, catalogue or truth file that cannot be used as it stands."""


class Row:
    """One station-day of the table: files as absolute paths by column."""

    def __init__(self, station, date, files, options):
        self.station, self.date, self.files, self.options = station, date, files, options

    def key(self):
        return self.station + "/" + self.date


def _tsv_lines(path):
    """Yields (line number, cells) of a tab-separated file, past blank and # lines."""
    try:
        with open(path, encoding="utf-8") as f:
            lines = f.read().splitlines()
    except OSError as e:
        raise CampaignError(f"{path}: cannot be read ({e.strerror})")
    for n, line in enumerate(lines, 1):
        if line.strip() and not line.lstrip().startswith("#"):
            yield n, [c.strip() for c in line.split("\t")]


def _check_date(path, n, text):
    try:
        datetime.date.fromisoformat(text)
    except ValueError:
        raise CampaignError(f"{path}:{n}: date '{text}' is not yyyy-mm-dd")


def read_table(path):
    """Rows of a station-day table; file paths are taken relative to the table."""
    base = os.path.dirname(os.path.abspath(path))
    lines = list(_tsv_lines(path))
    if not lines:
        raise CampaignError(f"{path}: no header line")
    hn, header = lines[0]
    for name in header:
        if name not in FILE_OPTIONS and name not in ("station", "date", "options"):
            raise CampaignError(f"{path}:{hn}: unknown column '{name}'")
    for name in REQUIRED:
        if name not in header:
            raise CampaignError(f"{path}:{hn}: column '{name}' missing")
    if len(set(header)) != len(header):
        raise CampaignError(f"{path}:{hn}: a column appears twice")
    rows, seen = [], set()
    for n, cells in lines[1:]:
        if len(cells) > len(header):
            raise CampaignError(f"{path}:{n}: {len(cells)} cells for {len(header)} columns")
        cell = dict(zip(header, cells + [""] * (len(header) - len(cells))))
        station, date = cell["station"], cell["date"]
        # The station names the job folder: one path component.
        if not re.fullmatch(r"[A-Za-z0-9_.-]+", station) or station.startswith("."):
            raise CampaignError(f"{path}:{n}: station '{station}' is not a plain name")
        _check_date(path, n, date)
        if not cell["obs"]:
            raise CampaignError(f"{path}:{n}: no observation file")
        if (station, date) in seen:
            raise CampaignError(f"{path}:{n}: {station} {date} appears twice")
        seen.add((station, date))
        files = {c: os.path.normpath(os.path.join(base, cell[c]))
                 for c in header if c in FILE_OPTIONS and cell[c]}
        rows.append(Row(station, date, files, cell.get("options", "").split()))
    return rows


def orvo_command(orvo, row):
    """The orvo call of one row, run in its job folder: the result files
    (static plot, troposphere, SINEX) are named after the station there."""
    cmd = [orvo] + [FILE_OPTIONS[c] + p for c, p in row.files.items()] + row.options
    s = row.station
    return cmd + [f"-gps{s}.gps", f"-ot{s}.trp", f"-os{s}.snx"]


def read_catalogue(path):
    """Station -> (X, Y, Z) in metres from a TSV: station, X, Y, Z."""
    cat = {}
    for n, cells in _tsv_lines(path):
        if len(cells) < 4:
            raise CampaignError(f"{path}:{n}: needs station, X, Y, Z")
        try:
            cat[cells[0]] = tuple(float(c) for c in cells[1:4])
        except ValueError:
            raise CampaignError(f"{path}:{n}: a coordinate is not a number")
    return cat


def _number_after(label, text):
    m = re.search(re.escape(label) + r"\s*:\s*(-?[0-9.]+)", text)
    return m.group(1) if m else None


def parse_report(text):
    """Static solution of an orvo report: coordinates and sigmas (m), the
    N/E/U sigmas (m), sigma of L3 (mm, None without phase), observations used
    and rejected; None when the report holds no static solution."""
    at = text.find("STATIC SOLUTION:")
    if at < 0:
        return None
    sol = text[at:]
    ecef = sol.find("ECEF COORDINATES:")
    geod = sol.find("GEODETIC COORDINATES:")
    if ecef < 0 or geod < 0:
        return None
    r = {}
    for axis in "XYZ":
        m = re.search(r"^\s*" + axis + r":\s+\S+\s+\S+\s+(-?[0-9.]+)\s+([0-9.]+)\s*$",
                      sol[ecef:], re.M)
        if not m:
            return None
        r[axis], r["s" + axis] = float(m.group(1)), float(m.group(2))
    for axis in "NEU":
        m = re.search(r"^\s*" + axis + r":.*\s([0-9.]+)\s*$", sol[geod:], re.M)
        if not m:
            return None
        r["s" + axis] = float(m.group(1))
    nobs, nrej = _number_after("# of OBS", sol), _number_after("# of OUTLIERS", sol)
    if nobs is None or nrej is None:
        return None
    r["nobs"], r["nrej"] = int(nobs), int(nrej)
    l3 = _number_after("REF. STD. APOSTERIORI - L3", sol)
    r["sL3"] = float(l3) if l3 is not None else None
    return r


def framed_error(text):
    """The text of the last framed error message ("X: Error -> ..."), or None."""
    found = re.findall(r"(?:\*\*\*\*|####) (\S+): Error -> (.*?) (?:\*\*\*\*|####)\s*$",
                       text, re.M)
    return f"{found[-1][0]}: {found[-1][1]}" if found else None


def geodetic_lat_lon(x, y, z):
    """Geodetic latitude and longitude (rad) on GRS80 (Bowring's iteration)."""
    e2 = GRS80_F * (2.0 - GRS80_F)
    p = math.hypot(x, y)
    lat = math.atan2(z, p * (1.0 - e2))
    for _ in range(5):  # converges to 1e-12 rad in three steps at any height on Earth
        n = GRS80_A / math.sqrt(1.0 - e2 * math.sin(lat) ** 2)
        lat = math.atan2(z + e2 * n * math.sin(lat), p)
    return lat, math.atan2(y, x)


def neu(xyz, ref):
    """North, east, up (m) of xyz minus ref in the local frame at ref."""
    lat, lon = geodetic_lat_lon(*ref)
    dx, dy, dz = (a - b for a, b in zip(xyz, ref))
    sl, cl, sp, cp = math.sin(lon), math.cos(lon), math.sin(lat), math.cos(lat)
    return (-sp * cl * dx - sp * sl * dy + cp * dz,
            -sl * dx + cl * dy,
            cp * cl * dx + cp * sl * dy + sp * dz)


def _mm(v_m):
    """Millimetres to 0.1 mm, with no "-0.0" for a value that rounds to zero."""
    t = f"{v_m * 1e3:.1f}"
    return "0.0" if t == "-0.0" else t


def _read(path):
    try:
        with open(path, encoding="utf-8", errors="replace") as f:
            return f.read()
    except OSError:
        return ""


def read_day(daydir):
    """(solution, None) of a successful station-day, or (None, why it failed)."""
    status = _read(os.path.join(daydir, "status")).strip()
    report = _read(os.path.join(daydir, "orvo.report"))
    message = framed_error(_read(os.path.join(daydir, "orvo.log")) + "\n" + report)
    if status != "0":
        why = message or "no framed message"
        return None, f"exit status {status or 'unknown'}: {why}"
    sol = parse_report(report)
    if sol is None:
        return None, "exit status 0 but no static solution in the report"
    return sol, None


def gather(daydirs, catalogue):
    """Time-series rows (dicts of TS_COLUMNS) and failures (station, date, why).
    N/E/U refer to the catalogue coordinate of the station, else to its first
    successful day."""
    days, failures = [], []
    for d in daydirs:
        parts = os.path.normpath(d).split(os.sep)
        station, date = parts[-2], parts[-1]
        sol, why = read_day(d)
        if sol is None:
            failures.append((station, date, why))
        else:
            days.append((station, date, sol))
    days.sort(key=lambda t: (t[0], t[1]))
    failures.sort()
    refs, rows = {}, []
    for station, date, s in days:
        xyz = (s["X"], s["Y"], s["Z"])
        if station in catalogue:
            ref, kind = catalogue[station], "catalogue"
        else:
            ref, kind = refs.setdefault(station, xyz), "first day"
        n, e, u = neu(xyz, ref)
        sl3 = "" if s["sL3"] is None else f"{s['sL3']:.1f}"
        rows.append(dict(zip(TS_COLUMNS, (
            station, date, f"{s['X']:.4f}", f"{s['Y']:.4f}", f"{s['Z']:.4f}",
            f"{s['sX']:.4f}", f"{s['sY']:.4f}", f"{s['sZ']:.4f}",
            _mm(n), _mm(e), _mm(u), _mm(s["sN"]), _mm(s["sE"]), _mm(s["sU"]),
            sl3, str(s["nobs"]), str(s["nrej"]), kind))))
    return rows, failures


def write_gathered(rows, failures, tsv, log):
    with open(tsv, "w", encoding="utf-8") as f:
        f.write("\t".join(TS_COLUMNS) + "\n")
        for r in rows:
            f.write("\t".join(r[c] for c in TS_COLUMNS) + "\n")
    with open(log, "w", encoding="utf-8") as f:
        f.write(f"{len(rows)} station-days solved, {len(failures)} failed\n")
        for station, date, why in failures:
            f.write(f"FAILED\t{station}\t{date}\t{why}\n")


def read_timeseries(path):
    lines = [cells for _, cells in _tsv_lines(path)]
    if not lines or tuple(lines[0]) != TS_COLUMNS:
        raise CampaignError(f"{path}: not a time series written by campaign.py gather")
    return [dict(zip(TS_COLUMNS, cells)) for cells in lines[1:]]


def gnuplot_script(station, rows, png):
    """Three panels, N, E, U (mm) against date with one-sigma error bars."""
    head = ["set terminal png size 800,900", f"set output '{png}'", "unset key"]
    if not rows:
        return "\n".join(head + [f"set title '{station}: no solution'",
                                 "plot [0:1][0:1] 2"]) + "\n"
    data = "\n".join(f"{r['date']} {r['N_mm']} {r['sN_mm']} {r['E_mm']} {r['sE_mm']} "
                     f"{r['U_mm']} {r['sU_mm']}" for r in rows)
    # A day of margin on both sides: one day alone has no x range.
    day = datetime.timedelta(days=1)
    first = datetime.date.fromisoformat(min(r["date"] for r in rows)) - day
    last = datetime.date.fromisoformat(max(r["date"] for r in rows)) + day
    lines = head + [f"$d << EOD\n{data}\nEOD",
                    f"set multiplot layout 3,1 title '{station}: N, E, U (mm) relative to "
                    f"{rows[0]['ref']}'",
                    "set xdata time", "set timefmt '%Y-%m-%d'", "set format x '%Y-%m-%d'",
                    f"set xrange ['{first}':'{last}']", "set grid", "set offsets 0, 0, 1, 1", "set rmargin 6",
                    # whole days between ticks, about eight of them
                    f"set xtics {86400 * math.ceil((last - first).days / 8)}"]
    for name, col in (("north", 2), ("east", 4), ("up", 6)):
        lines += [f"set ylabel '{name} (mm)'",
                  f"plot $d using 1:{col}:{col + 1} with yerrorbars pt 7"]
    return "\n".join(lines + ["unset multiplot"]) + "\n"


def plot(tsv, station, png):
    rows = [r for r in read_timeseries(tsv) if r["station"] == station]
    subprocess.run(["gnuplot"], input=gnuplot_script(station, rows, png), text=True,
                   check=True)


def read_truth(path):
    """Station, date and marker (X, Y, Z in m) of an orvo-simulate truth file."""
    text = _read(path)
    name = re.search(r"^# orvo-simulate truth of station (\S+)", text, re.M)
    marker = re.search(r"^MARKER XYZ \(m\)\s+(\S+)\s+(\S+)\s+(\S+)", text, re.M)
    epoch = re.search(r"^\s*(\d+)\s+[0-9.]+\s", text, re.M)
    if not (name and marker and epoch):
        raise CampaignError(f"{path}: not an orvo-simulate truth file")
    date = datetime.date(1858, 11, 17) + datetime.timedelta(days=int(epoch.group(1)))
    return name.group(1), date.isoformat(), tuple(float(v) for v in marker.groups())


def truth_check(tsv, truths, out=sys.stdout):
    """Prints N/E/U of each simulated day's estimate minus its truth; True when
    every solved one is within TRUTH_TOL_MM (a failed day is in the log)."""
    rows = {(r["station"], r["date"]): r for r in read_timeseries(tsv)}
    ok = True
    for path in truths:
        station, date, marker = read_truth(path)
        r = rows.get((station, date))
        if r is None:
            out.write(f"{station}\t{date}\tno solution in the time series\n")
            continue
        d = [v * 1e3 for v in neu((float(r["X_m"]), float(r["Y_m"]), float(r["Z_m"])), marker)]
        good = max(abs(v) for v in d) <= TRUTH_TOL_MM
        ok = ok and good
        out.write(f"{station}\t{date}\testimate minus truth N {d[0]:+.1f} E {d[1]:+.1f} "
                  f"U {d[2]:+.1f} mm\t{'within' if good else 'BEYOND'} "
                  f"{TRUTH_TOL_MM:.0f} mm\n")
    return ok


def main(argv):
    try:
        if len(argv) >= 3 and argv[0] == "gather":
            args, cat = argv[3:], {}
            if args[:1] == ["--catalogue"] and len(args) >= 2:
                cat, args = read_catalogue(args[1]), args[2:]
            write_gathered(*gather(args, cat), argv[1], argv[2])
            return 0
        if len(argv) == 4 and argv[0] == "plot":
            plot(argv[1], argv[2], argv[3])
            return 0
        if len(argv) >= 2 and argv[0] == "truth":
            return 0 if truth_check(argv[1], argv[2:]) else 1
    except CampaignError as e:
        sys.stderr.write(f"campaign.py: {e}\n")
        return 1
    sys.stderr.write(__doc__)
    return 2


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
