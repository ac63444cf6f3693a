#!/usr/bin/env python3
"""Seed corpora of the fuzz targets: small pieces of the real files of the
shared data folder (a header and a few records, header counts made to fit the
piece), small hand-written files in the layouts the data folder has no
example of, and the committed regression inputs of fuzz/regressions/.

    fuzz/make-corpora.py [DATA_DIR [OUT_DIR]]

DATA_DIR defaults to ../shared/data beside the repository, OUT_DIR to
build/fuzz/corpus; each target gets OUT_DIR/<target>/, made afresh."""

import gzip
import os
import re
import shutil
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DATA = os.path.abspath(sys.argv[1]) if len(sys.argv) > 1 else os.path.join(ROOT, "..", "shared", "data")
OUT = os.path.abspath(sys.argv[2]) if len(sys.argv) > 2 else os.path.join(ROOT, "build", "fuzz", "corpus")
ESBC = os.path.join(DATA, "esbc-2020-177")
ZIMM = os.path.join(DATA, "zimm-2015-235")

seeds = {}  # target -> list of (name, text)


def add(target, name, text):
    seeds.setdefault(target, []).append((name, text))


def lines(path, limit=None):
    """The first `limit` lines of a file (all without a limit), newlines kept."""
    out = []
    with open(path, encoding="latin-1", newline="") as f:
        for line in f:
            if limit is not None and len(out) >= limit:
                break
            out.append(line)
    return out


def header_and_records(path, is_record_start, nrec, skip=0):
    """Header up to END OF HEADER, then `nrec` records from record `skip` on;
    a record starts at a line for which is_record_start is true."""
    head, body, k = [], [], -1
    with open(path, encoding="latin-1", newline="") as f:
        in_head = True
        for line in f:
            if in_head:
                head.append(line)
                in_head = "END OF HEADER" not in line
                continue
            if is_record_start(line):
                k += 1
                if k >= skip + nrec:
                    break
            if k >= skip:
                body.append(line)
    return "".join(head + body)


# RINEX 2 observations: an epoch line starts " yy mm dd hh mm ss.sssssss  f".
EPOCH = re.compile(r"^ [ \d]\d [ \d]\d [ \d]\d [ \d]\d [ \d]\d [ \d]\d\.\d{7}  \d")
for name, path in (("esbc", os.path.join(ESBC, "esbc1770.20o")), ("zimm", os.path.join(ZIMM, "ZIMM2350.15O"))):
    add("rinex_obs", name + "-first3", header_and_records(path, EPOCH.match, 3))
    add("rinex_obs", name + "-noon2", header_and_records(path, EPOCH.match, 2, skip=1440))


# Compact RINEX: the head of the real CRINEX 3 day (header, the 43-satellite
# initialisation epoch and a few differenced epochs), and a short CRINEX 1.0
# stream with an event and a 13-satellite epoch.
with gzip.open(os.path.join(ESBC, "ESBC00DNK_R_20201770000_01D_30S_MO.crx.gz"), "rt", encoding="latin-1",
               newline="") as f:
    add("compact_rinex", "esbc-head", "".join(line for _, line in zip(range(300), f)))
add("compact_rinex", "crx1", "1.0                 COMPACT RINEX FORMAT                    CRINEX VERS   / TYPE\n"
    "EXAMPLE 1.0                             01-Mar-21 12:00     CRINEX PROG / DATE\n"
    "     4    C1    L1    P2    L2                              # / TYPES OF OBSERV\n" + " " * 60 + "END OF HEADER\n"
    "&21  3  1  0  0  0.0000000  0 13G01G02G03G04G05G06G07G08G09G10G11G12G 3\n3&-1500\n" + "\n" * 12
    + "3&21345678123 3&112170123456 3&21345681012 3&87405281789  7 7 5 5\n                3\n1\n" + "\n" * 12
    + "223333 1173667 223338 914569\n&21  3  1  0  0 45.0000000  5  0\n")

# RINEX 3/4 observation texts written by hand: G, R, E and C records, codes
# on two lines, more than 12 satellites, an event with header records, a
# cycle-slip record, a clock offset and GLONASS channels.
def rnx3_line(data, label):
    return data.ljust(60) + label + "\n"


def rnx3_text(version):
    head = (rnx3_line("     %s           OBSERVATION DATA    M (MIXED)" % version, "RINEX VERSION / TYPE")
            + rnx3_line("SEED", "MARKER NAME")
            + rnx3_line("G   14 L1C C1C S1C C1W D1C L5Q C2W S2W L2W C5Q C1L L2L S1W", "SYS / # / OBS TYPES")
            + rnx3_line("       C5X", "SYS / # / OBS TYPES")
            + rnx3_line("R    4 C1C L1C C2P L2P", "SYS / # / OBS TYPES")
            + rnx3_line("E    4 C1C L1C C7Q L7Q", "SYS / # / OBS TYPES")
            + rnx3_line("C    2 C2I L2I", "SYS / # / OBS TYPES")
            + rnx3_line("  2 R01  1 R02 -4", "GLONASS SLOT / FRQ #")
            + rnx3_line("  2020     6    25     0     0    0.0000000     GPS", "TIME OF FIRST OBS")
            + rnx3_line("", "END OF HEADER"))
    gps = "".join("G%02d 1100000%02d.000 5  2100000%02d.500 7\n" % (n, n, n) for n in range(2, 12))
    return (head + "> 2020 06 25 00 00  0.0000000  0 15\n"
            + "G01 105000000.30017  20000000.100 7        45.500    20000001.200       -1000.400    78000000.123 8"
            + "  20000002.600          40.800    82000000.700 6  20000003.900    20000004.000    82000000.999 6\n"
            + "C05  30000000.000 6 156000000.000 6\n" + gps
            + "R01  19000000.111 6 101000000.222 6  19000001.333 6  78000000.444 6\n"
            + "E01  23000000.555 7 121000000.666 7  23000001.777 7  93000000.888 7\n"
            + "E02                                  24000000.999 5\n"
            + ">                              4  1\n" + rnx3_line("SPARE ANTENNA", "COMMENT")
            + "> 2020 06 25 00 00 30.0000000  6  1\nG01 105000100.30011\n"
            + "> 2020 06 25 00 00 30.0000000  0  2       0.000123456789\n"
            + "G 2 110000099.000\nE01  23000099.000\n")


add("rinex3_observation", "rnx304", rnx3_text("3.04"))
add("rinex3_observation", "rnx400", rnx3_text("4.00"))

def sp3_piece(path, nep, nsat):
    """Header and the first nep epochs of the first nsat satellites of the
    list, the epoch count of line 1 and the list made to fit."""
    text = lines(path)
    plus = [i for i, l in enumerate(text) if l.startswith("+ ")]
    ids = "".join(text[i][9:60].ljust(51) for i in plus)
    sats = [ids[j:j + 3] for j in range(0, len(ids), 3)][:nsat]
    sats += ["0"] * (17 * len(plus) - nsat)
    for k, i in enumerate(plus):
        count = "+   %2d   " % nsat if k == 0 else "+        "
        text[i] = count + "".join("%3s" % x for x in sats[17 * k:17 * k + 17]) + "\n"
    out, k = [], 0
    for line in text:
        if line.startswith("*"):
            k += 1
        if k > nep or line.startswith("EOF"):
            break
        if k == 0 or line.startswith("*") or line[1:4] in sats[:nsat]:
            out.append(line)
    out[0] = out[0][:32] + "%7d" % nep + out[0][39:]
    return "".join(out) + "EOF\n"


for nep, nsat in ((14, 3), (16, 6)):
    add("sp3", "grg-%d" % nep, sp3_piece(os.path.join(ESBC, "GRG0MGXFIN_20201770000_01D_15M_ORB.SP3"), nep, nsat))
    add("sp3", "igs-%d" % nep, sp3_piece(os.path.join(ZIMM, "igs18590.sp3"), nep, nsat))

# RINEX clock: the header without most station lines, and the AS lines of
# four satellites (one of them G05) over the first epochs.
clk = lines(os.path.join(ESBC, "GRG0MGXFIN_20201770000_01D_30S_CLK.CLK"), 201 + 8 * 75)
head = [l for l in clk[:201] if "SOLN STA NAME / NUM" not in l]
for nep in (4, 8):
    add("rinex_clk", "grg-%d" % nep, "".join(head + [l for l in clk[201:201 + 75 * nep]
                                                      if l[3:6] in ("E01", "G05", "G12", "R07")]))

add("glnfc", "esbc", "".join(lines(os.path.join(ESBC, "esbc1770.20o.glnfc"), 8)))


def nav_piece(path, record_lines, nrec, skip=0):
    text = lines(path)
    end = next(i for i, l in enumerate(text) if "END OF HEADER" in l) + 1
    start = end + skip * record_lines
    return "".join(text[:end] + text[start:start + nrec * record_lines])


add("gpsnav", "esbc-3", nav_piece(os.path.join(ESBC, "esbc1770.20n"), 8, 3))
add("gpsnav", "esbc-noon", nav_piece(os.path.join(ESBC, "esbc1770.20n"), 8, 2, skip=120))
add("glnnav", "esbc-3", nav_piece(os.path.join(ESBC, "esbc1770.20g"), 4, 3))
add("glnnav", "esbc-noon", nav_piece(os.path.join(ESBC, "esbc1770.20g"), 4, 2, skip=250))
add("klobuchar", "esbc", nav_piece(os.path.join(ESBC, "esbc1770.20n"), 8, 1))

# RINEX 3.05 mixed navigation: the header and the first records of each of
# GPS, GLONASS and Galileo (an F/NAV and I/NAV pair), and the same as RINEX
# 4.00 with record lines.
with gzip.open(os.path.join(ESBC, "ESBC00DNK_R_20201770000_01D_MN.rnx.gz"), "rt", encoding="latin-1", newline="") as f:
    mixed = f.readlines()
end = next(i for i, l in enumerate(mixed) if "END OF HEADER" in l) + 1
starts = {}
for i in range(end, len(mixed)):
    starts.setdefault(mixed[i][0], []).append(i)
pieces = [mixed[s:s + (5 if c == "R" else 8)] for c in "GRE" for s in starts[c][:2]]
add("rinex3_navigation", "esbc-3.05", "".join(mixed[:end] + [l for p in pieces for l in p]))


def message(p):
    if p[0][0] != "E":
        return {"G": "LNAV", "R": "FDMA"}[p[0][0]]
    return "FNAV" if float(p[5][23:42]) == 258 else "INAV"


add("rinex3_navigation", "esbc-4.00", "".join(["     4.00" + mixed[0][9:]] + [l for l in mixed[1:end] if " CORR " not in l]
                                             + ["> EPH %s %s\n%s" % (p[0][:3], message(p), "".join(p)) for p in pieces]))

# ANTEX: the header, the first five satellite blocks (G05 among them) and
# the receiver block, which ends each file.
for name, path in (("ngs14", os.path.join(ESBC, "ngs14_esbc_trimmed.atx")),
                   ("igs08", os.path.join(ZIMM, "igs08_trimmed.atx"))):
    text = "".join(lines(path))
    head, rest = text.split("END OF HEADER", 1)
    head += "END OF HEADER" + rest[:rest.index("\n") + 1]
    blocks = re.findall(r".*START OF ANTENNA.*\n(?:.*\n)*?.*END OF ANTENNA.*\n", rest)
    add("antex", name, head + "".join(blocks[:5] + blocks[-1:]))

# BLQ: the header and the first station block (the file holds one).
blq = lines(os.path.join(ZIMM, "zimm.blq"))
first = next(i for i, l in enumerate(blq) if not l.startswith("$$"))
add("blq", "zimm", "".join(blq[:first + 10]))


def ionex_piece(path, nmaps):
    """Header with few station lines and the first nmaps TEC maps, every
    fourth latitude row (10 degrees), counts and latitude range to fit."""
    text = lines(path)
    end = next(i for i, l in enumerate(text) if "END OF HEADER" in l) + 1
    stations = [i for i in range(end) if "STATION / BIAS / RMS" in text[i]]
    head = [l for i, l in enumerate(text[:end]) if i not in stations[:-3]]
    out = []
    for l in head:
        if "# OF MAPS IN FILE" in l:
            l = "%6d" % nmaps + l[6:]
        elif "# OF STATIONS" in l:
            l = "%6d" % 3 + l[6:]
        elif "LAT1 / LAT2 / DLAT" in l:
            l = "  %6.1f%6.1f%6.1f" % (87.5, -82.5, -10.0) + l[20:]
        out.append(l)
    i, maps, keep = end, 0, True
    while i < len(text) and maps < nmaps:
        l = text[i]
        if "LAT/LON1/LON2/DLON/H" in l:
            keep = round((87.5 - float(l[2:8])) / 2.5) % 4 == 0
        if "END OF TEC MAP" in l:
            keep, maps = True, maps + 1
        if keep:
            out.append(l)
        i += 1
    out.append(" " * 60 + "END OF FILE         \n")
    return "".join(out)


add("ionex", "corg-3", ionex_piece(os.path.join(ZIMM, "corg2350.15i"), 3))
add("ionex", "corg-2", ionex_piece(os.path.join(ZIMM, "corg2350.15i"), 2))

# GPT2: the header, the two northernmost rows of nodes, every fourth
# longitude (20 degrees, still round the Earth).
grd = lines(os.path.join(DATA, "models", "gpt2_5.grd"))
nodes = [l for l in grd[1:] if float(l.split()[0]) >= 82.4 and round((float(l.split()[1]) - 2.5) / 5.0) % 4 == 0]
add("gpt2", "gpt2_5-cut", grd[0] + "".join(nodes))

# Layouts without an example in the data folder, written after the
# readers' documented columns, with values of the ESBC day.
add("satcrx", "two", "SATELLITE PROBLEMS\n------------------\n SAT  PROBLEM  ACTION      FROM                 TO\n\n"
    "     (1 phase, 2 code, 3 both)\n" + "-" * 71 + "\n"
    "   5          3      1          2020 06 25 00 05 00  2020 06 25 00 10 00\n"
    " 112          1      0          2020 06 25 12 00 00\n")
add("clkerr", "three", "CLOCK ERROR FILE: ESBC / 10118M001\nCLOCK REF. SYS. : G\n"
    " 59025     0.000      -0.0123456\n 59025    30.000      -0.0124001\n 59025    60.000      -0.0124532\n")
add("vmf1", "esbc", "# Vienna series\nESBC zh 3\n 59025     0 2.3100\n 59025 21600 2.3080\n 59025 43200 2.3050\n"
    "ESBC zw 2\n 59025 0 0.1200 59025 21600 0.1250\n# coefficients\nESBC ah 2\n 59025 0 0.00121 59026 0 0.00125\n")
add("erp", "v1", "version 1\nsome producer\n  MJD      X       Y   UT1-UTC\n     (10**-5\") (10**-6 s)\n"
    "59024.50  10000  40000  -123456\n59025.50  12000  41000 -124456\n59026.50  11000  43000 -125456\n")
add("erp", "v2", "IGS ERP\nfinal\nVERSION 2\n  MJD    Xpole   Ypole  UT1-UTC\n  (10**-6\")  (0.1 usec)\n"
    "59024.50  100000  400000 0\n59025.50  100000  400000 0\n")
add("dcb", "p1c1", "CODE'S MONTHLY GPS P1-C1 DCB SOLUTION, YEAR 2020, MONTH 06              06-JUL-20 07:47\n"
    + "-" * 80 + "\n\nDIFFERENTIAL (P1-C1) CODE BIASES FOR SATELLITES AND RECEIVERS:\n\n"
    "PRN / STATION NAME        VALUE (NS)  RMS (NS)\n***   ****************    *****.***   *****.***\n\n"
    + "".join("%-26s%9.3f   %9.3f\n" % (s, v, r) for s, v, r in
              (("G01", -0.734, 0.011), ("G05", 1.204, 0.012), ("R12", 2.061, 0.05))) + "\n")
meskal = "%11.4f%11.4f%11.4f%11.4f"
add("mydcb", "esbc", "# Meskal DCB estimates\n#REFERECNE EPOCH: 59025 43200.000\n"
    "R  ESBC   " + meskal % (1.2345, 0.0123, -2.5, 0.034) + "\n"
    "S     G05 " + meskal % (-0.5, 0.01, 1.75, 0.02) + "\nS     R12 " + meskal % (2.0625, 0.05, -3.125, 0.06) + "\n")
iono = "".join("%-8d%-8.1f%-14.6f%-9.4f%-16.6f%.4f\n" % (59025, s, 0.5 + 0.1 * i, 0.01, 0.2 - 0.05 * i, 0.005)
               for i, s in enumerate((0.0, 3600.0, 43200.0, 46800.0)))
add("myiono", "linear", "LINEAR\n# day   sec     value         rms      rate            rate rms\n" + iono)
add("myiono", "epochs", "EPOCH BY EPOCH\n# day   sec     value         rms\n" + iono)
add("rectrack", "list", "RECEIVER TYPE          #F    CODES\n"
    + "".join("%-20s   %d     %s   CODE TRACKING\n" % (n, 2, c1) + " " * 29 + c2 + "\n"
              for n, c1, c2 in (("TRIMBLE 4000SSI", "C1", "X2"), ("SEPT POLARX5", "P1", "P2")))
    + "%-20s   1     C1   CODE TRACKING\n" % "TRIMBLE 4000SE")
row = "%4d %-20s %-60s %.4f %.4f %.4f %.5f %.5f %.5f %s\n"
add("crd", "two", "# ID MARKER_NAME\n#*** ****\n"
    + row % (1, "ESBC", "10118M001", 3582104.7655, 532590.1789, 5232755.1393, -0.01465, 0.01537, 0.00967,
             "2020-06-25 12:00:00")
    + row % (2, "ZIMM", "14001M004", 4331296.9165, 567556.0689, 4633134.0586, -0.01396, 0.01803, 0.01168,
             "2015-08-23 12:00:00") + "\n")
add("teqc", "compact2", "COMPACT2\nGPS_START_TIME 2020  6 25  0  0  0.0000000\nSTART_TIME_MJD 59025.000000\n"
    "T_SAMP    30.000\n3 G05 G12 R07\n     0.123    -0.456     1.002\n-1\n     0.130    -0.400     0.998\n"
    "2 G05 G12\n     0.140  0.380\n")

shutil.rmtree(OUT, ignore_errors=True)
targets = sorted(os.path.splitext(f)[0] for f in os.listdir(os.path.join(ROOT, "fuzz", "targets")))
for t in targets:
    d = os.path.join(OUT, t)
    os.makedirs(d)
    for name, text in seeds.get(t, []):
        with open(os.path.join(d, name), "w", encoding="latin-1", newline="") as f:
            f.write(text)
    # Fixed findings stay in every run's corpus.
    reg = os.path.join(ROOT, "fuzz", "regressions", t)
    if os.path.isdir(reg):
        for f in sorted(os.listdir(reg)):
            shutil.copy(os.path.join(reg, f), os.path.join(d, "regression-" + f))
    if not os.listdir(d):
        sys.exit("make-corpora: no seed for target " + t)
    print("%-10s %3d files %8d bytes" % (t, len(os.listdir(d)),
                                         sum(os.path.getsize(os.path.join(d, f)) for f in os.listdir(d))))
