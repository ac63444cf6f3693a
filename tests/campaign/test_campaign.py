"""Tests of campaign/campaign.py on hand-written tables, reports and job
folders; run by ctest (python3 -m unittest), no Snakemake needed."""
import math
import os
import shutil
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "..", "campaign"))
import campaign as camp  # noqa: E402

# 1 µm: the N/E/U rotation of a 1 m offset in double precision carries
# round-off near 1e-10 m; a wrong axis or sign is off by the whole offset.
ROTATION_TOL_M = 1e-6
# 0.05 mm: the time series prints N/E/U rounded to 0.1 mm.
PRINT_TOL_MM = 0.05

# The labels and layout of an orvo report's static solution, cut to the
# lines the gathering reads (numbers made up).
REPORT = """
STATIC SOLUTION:
================
  # of ITERATIONS :          3       THRESHOLD:   5.55e-10
  # of OBS        :      34030    G:    11081    R:    11890    E:    11059
  # of OUTLIERS   :         17    G:        5    R:       12    E:        0
  REF. STD. APOSTERIORI - Pc3                    :           378.5 mm
  REF. STD. APOSTERIORI - L3                     :             2.4 mm

  ECEF COORDINATES:
            Approximate  Correction       Estimated   Precision
    X:     {x0:.4f}      1.2575    {x:.4f}      0.0005
    Y:      {y0:.4f}      0.6813     {y:.4f}      0.0006
    Z:     {z0:.4f}     -2.6368    {z:.4f}      0.0007

  GEODETIC COORDINATES:
             Approximate  Correction           Estimated   Precision
    N:    46 52 37.62452     -2.7771      46 52 37.53460      0.0002
    E:     7 27 54.93150      0.5122       7 27 54.95568      0.0004
    U:          956.5400     -1.0117            955.5282      0.0009

PROGRAM:     Orvo     ***** SUCCESFULLY ENDED [0.381 s] *****
"""
ALFA = (4331297.0, 567555.0, 4633133.0)


def report(x, y, z):
    return REPORT.format(x0=x - 1, y0=y - 1, z0=z - 1, x=x, y=y, z=z)


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w") as f:
        f.write(text)


class Rotation(unittest.TestCase):
    def test_offsets_on_the_axes_of_known_frames(self):
        # Where the local axes are Earth-fixed axes the rotation is known
        # without it: at latitude 0, longitude 0 north is +Z, east +Y, up +X;
        # at longitude 90 deg east is -X; at the north pole north is -X.
        a, b = camp.GRS80_A, camp.GRS80_A * (1 - camp.GRS80_F)
        cases = [((a, 0, 0), (0, 0, 1), (1, 0, 0)), ((a, 0, 0), (0, 1, 0), (0, 1, 0)),
                 ((a, 0, 0), (1, 0, 0), (0, 0, 1)), ((0, a, 0), (-1, 0, 0), (0, 1, 0)),
                 ((0, 0, b), (-1, 0, 0), (1, 0, 0)), ((0, 0, b), (0, 0, 1), (0, 0, 1))]
        for ref, d, expected in cases:
            got = camp.neu(tuple(r + e for r, e in zip(ref, d)), ref)
            for g, e in zip(got, expected):
                self.assertAlmostEqual(g, e, delta=ROTATION_TOL_M, msg=(ref, d))

    def test_rotation_keeps_length_and_up_follows_the_ellipsoid_normal(self):
        lat, _ = camp.geodetic_lat_lon(*ALFA)
        # The geodetic latitude of the simulated station, 46.8770929 deg, is
        # that of its antenna 0.1 m higher in the simulator's truth file.
        self.assertAlmostEqual(math.degrees(lat), 46.8770929401, delta=1e-7)
        for d in [(0.3, -0.2, 0.7), (-5.0, 2.0, 1.0), (0.0, 0.0, -0.01)]:
            n, e, u = camp.neu(tuple(r + v for r, v in zip(ALFA, d)), ALFA)
            self.assertAlmostEqual(math.hypot(n, e, u), math.hypot(*d), delta=ROTATION_TOL_M)


class Report(unittest.TestCase):
    def test_static_solution_is_read_and_broken_reports_give_none(self):
        r = camp.parse_report(report(*ALFA))
        self.assertEqual((r["X"], r["sY"], r["sZ"]), (ALFA[0], 0.0006, 0.0007))
        self.assertEqual((r["sN"], r["sE"], r["sU"]), (0.0002, 0.0004, 0.0009))
        self.assertEqual((r["sL3"], r["nobs"], r["nrej"]), (2.4, 34030, 17))
        no_l3 = camp.parse_report(report(*ALFA).replace("APOSTERIORI - L3", "APOSTERIORI - Lx"))
        self.assertIsNone(no_l3["sL3"])
        text = report(*ALFA)
        cases = {"no static section": text.replace("STATIC SOLUTION:", "KINEMATIC:"),
                 "cut before the coordinates": text[:text.index("ECEF")],
                 "Z line missing": text.replace("    Z:", "    W:"),
                 "no outlier count": text.replace("# of OUTLIERS", "# of OTHERS")}
        for why, t in cases.items():
            self.assertIsNone(camp.parse_report(t), why)

    def test_framed_error_takes_the_last_error_of_either_frame(self):
        cases = [("\n**** Orvo: Error -> NO OBSERVATION ENTERED ****\n     Exiting Orvo ...",
                  "Orvo: NO OBSERVATION ENTERED"),
                 ("#### Orvo: Warning -> W ####\n#### RINEXData: Error -> CUT -> line: 4 ####\n",
                  "RINEXData: CUT -> line: 4"),
                 ("#### Orvo: Warning -> ONLY A WARNING ####\n", None),
                 ("**** Orvo: Error -> FIRST ****\n**** Orvo: Error -> LAST ****\n", "Orvo: LAST")]
        for text, expected in cases:
            self.assertEqual(camp.framed_error(text), expected, text)


class Gather(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.root = self.tmp.name

    def tearDown(self):
        self.tmp.cleanup()

    def day(self, station, date, status, rep, log=""):
        d = os.path.join(self.root, station, date)
        write(os.path.join(d, "status"), f"{status}\n")
        write(os.path.join(d, "orvo.report"), rep)
        write(os.path.join(d, "orvo.log"), log)
        return d

    def test_rows_offsets_and_failed_days(self):
        # 1 cm up at ALFA: the unit normal from the station's own latitude.
        lat, lon = camp.geodetic_lat_lon(*ALFA)
        n = (math.cos(lat) * math.cos(lon), math.cos(lat) * math.sin(lon), math.sin(lat))
        up1cm = tuple(round(v + 0.01 * c, 4) for v, c in zip(ALFA, n))
        east = (ALFA[0] - 0.02 * math.sin(lon), ALFA[1] + 0.02 * math.cos(lon), ALFA[2])
        east = tuple(round(v, 4) for v in east)
        dirs = [self.day("BETA", "2020-06-26", 0, report(*east)),
                self.day("BETA", "2020-06-25", 0, report(*ALFA)),
                self.day("ALFA", "2020-06-26", 0, report(*up1cm)),
                self.day("ALFA", "2020-06-27", 1, "#### RINEXData: Error -> CUT -> line: 9 ####\n"),
                self.day("ALFA", "2020-06-28", 1, "", "\n**** Orvo: Error -> NO REDUNDANCY ****\n"),
                self.day("ALFA", "2020-06-29", 0, "SUCCESFULLY ENDED\n"),
                self.day("ALFA", "2020-06-30", 139, "")]
        rows, failures = camp.gather(dirs, {"ALFA": ALFA})
        got = [(r["station"], r["date"], r["ref"]) for r in rows]
        self.assertEqual(got, [("ALFA", "2020-06-26", "catalogue"),
                               ("BETA", "2020-06-25", "first day"),
                               ("BETA", "2020-06-26", "first day")])
        # expected N, E, U in mm: ALFA 1 cm up of its catalogue entry; BETA
        # refers to its first day, then 2 cm east of it.
        for r, enu in zip(rows, [(0, 0, 10), (0, 0, 0), (0, 20, 0)]):
            for col, v in zip(("N_mm", "E_mm", "U_mm"), enu):
                self.assertAlmostEqual(float(r[col]), v, delta=PRINT_TOL_MM, msg=(r["date"], col))
        self.assertEqual((rows[0]["sL3_mm"], rows[0]["nobs"], rows[0]["nrej"]), ("2.4", "34030", "17"))
        self.assertEqual(failures, [
            ("ALFA", "2020-06-27", "exit status 1: RINEXData: CUT -> line: 9"),
            ("ALFA", "2020-06-28", "exit status 1: Orvo: NO REDUNDANCY"),
            ("ALFA", "2020-06-29", "exit status 0 but no static solution in the report"),
            ("ALFA", "2020-06-30", "exit status 139: no framed message")])
        tsv, log = os.path.join(self.root, "ts.tsv"), os.path.join(self.root, "ts.log")
        camp.write_gathered(rows, failures, tsv, log)
        self.assertEqual(camp.read_timeseries(tsv), rows)
        with open(log) as f:
            lines = f.read().splitlines()
        self.assertEqual(lines[0], "3 station-days solved, 4 failed")
        self.assertEqual(lines[2], "FAILED\tALFA\t2020-06-28\texit status 1: Orvo: NO REDUNDANCY")

    def test_truth_check_passes_a_close_day_and_fails_a_far_one(self):
        truth = ("# orvo-simulate truth of station ALFA\n"
                 f"MARKER XYZ (m)  {ALFA[0]:.4f} {ALFA[1]:.4f} {ALFA[2]:.4f}\n"
                 " 59026     0.000   2.058623   0.038511     0.000020000000\n")
        write(os.path.join(self.root, "t.truth"), truth)
        self.assertEqual(camp.read_truth(os.path.join(self.root, "t.truth"))[:2],
                         ("ALFA", "2020-06-26"))
        for dz, ok in [(0.005, True), (0.02, False)]:
            d = self.day("ALFA", "2020-06-26", 0, report(ALFA[0], ALFA[1], ALFA[2] + dz))
            tsv = os.path.join(self.root, "ts.tsv")
            camp.write_gathered(*camp.gather([d], {}), tsv, os.path.join(self.root, "ts.log"))
            out = open(os.devnull, "w")
            self.assertEqual(camp.truth_check(tsv, [os.path.join(self.root, "t.truth")], out), ok)
            out.close()


class Table(unittest.TestCase):
    HEAD = "station\tdate\tobs\torbit\tclock\toptions\n"

    def table(self, body, head=HEAD):
        self.tmp = tempfile.TemporaryDirectory()
        path = os.path.join(self.tmp.name, "t.tsv")
        write(path, "# comment\n" + head + body)
        return path

    def test_rows_paths_and_orvo_command(self):
        path = self.table("ESBC\t2020-06-25\td/e.20o\t../o.sp3\t\t-csGR  -me10\nX\t2020-06-26\tx.20o\n")
        base = os.path.dirname(path)
        rows = camp.read_table(path)
        self.assertEqual([r.key() for r in rows], ["ESBC/2020-06-25", "X/2020-06-26"])
        self.assertEqual(camp.orvo_command("/bin/orvo", rows[0]), [
            "/bin/orvo", "-r" + os.path.join(base, "d", "e.20o"),
            "-ep" + os.path.normpath(os.path.join(base, "..", "o.sp3")), "-csGR", "-me10",
            "-gpsESBC.gps", "-otESBC.trp", "-osESBC.snx"])
        self.assertEqual(rows[1].files, {"obs": os.path.join(base, "x.20o")})
        self.tmp.cleanup()

    def test_bad_tables_name_file_and_line(self):
        cases = [("S\t2020-13-01\to\n", self.HEAD, ":3: date '2020-13-01'"),
                 ("S/T\t2020-06-25\to\n", self.HEAD, ":3: station 'S/T'"),
                 ("S\t2020-06-25\t\to.sp3\n", self.HEAD, ":3: no observation file"),
                 ("S\t2020-06-25\to\nS\t2020-06-25\tp\n", self.HEAD, ":4: S 2020-06-25 appears twice"),
                 ("S\t2020-06-25\to\t1\t2\t3\t4\n", self.HEAD, ":3: 7 cells for 6 columns"),
                 ("", "station\tdate\tobs\tnav\n", ":2: unknown column 'nav'"),
                 ("", "station\tobs\n", ":2: column 'date' missing")]
        for body, head, message in cases:
            with self.assertRaises(camp.CampaignError, msg=message) as e:
                camp.read_table(self.table(body, head))
            self.assertIn(message, str(e.exception))
            self.tmp.cleanup()


class Plot(unittest.TestCase):
    def test_one_day_gets_a_range_and_no_day_a_placeholder(self):
        # Regression: a station of one day gave gnuplot an empty x range.
        row = {"date": "2020-06-25", "N_mm": "1.0", "sN_mm": "0.2", "E_mm": "2.0",
               "sE_mm": "0.3", "U_mm": "-3.0", "sU_mm": "0.9", "ref": "first day"}
        cases = [([row], ["set xrange ['2020-06-24':'2020-06-26']", "2020-06-25 1.0 0.2 2.0 0.3 -3.0 0.9",
                          "set xtics 86400", "relative to first day"]),
                 ([], ["set title 'S: no solution'"])]
        for rows, wanted in cases:
            script = camp.gnuplot_script("S", rows, "out.png")
            for w in wanted:
                self.assertIn(w, script)

    @unittest.skipIf(shutil.which("gnuplot") is None, "gnuplot missing")
    def test_gnuplot_draws_a_png(self):
        with tempfile.TemporaryDirectory() as tmp:
            tsv, png = os.path.join(tmp, "ts.tsv"), os.path.join(tmp, "S.png")
            row = dict.fromkeys(camp.TS_COLUMNS, "1.0")
            row.update(station="S", date="2020-06-25", ref="catalogue")
            camp.write_gathered([row], [], tsv, os.path.join(tmp, "ts.log"))
            camp.plot(tsv, "S", png)
            with open(png, "rb") as f:
                self.assertEqual(f.read(8), b"\x89PNG\r\n\x1a\n")


class Catalogue(unittest.TestCase):
    def test_coordinates_and_bad_lines(self):
        with tempfile.TemporaryDirectory() as tmp:
            path = os.path.join(tmp, "c.tsv")
            write(path, "# station X Y Z\nALFA\t4331297.0\t567555.0\t4633133.0\n")
            self.assertEqual(camp.read_catalogue(path), {"ALFA": ALFA})
            for text, message in [("A\t1\t2\n", ":1: needs station, X, Y, Z"),
                                  ("A\t1\tx\t3\n", ":1: a coordinate is not a number")]:
                write(path, text)
                with self.assertRaises(camp.CampaignError) as e:
                    camp.read_catalogue(path)
                self.assertIn(message, str(e.exception))


if __name__ == "__main__":
    unittest.main()
