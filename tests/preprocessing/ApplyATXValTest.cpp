// The antenna reduction on the real ESBC epochs with calibrations written
// here: every change of code and phase must be the offset projected on the
// line of sight minus the variation, with the geometry taken independently
// from the satellite and receiver positions.

#include <set>

#include "StagingSupport.h"
#include "observations/GLONASSc.h"
#include "observations/GPSc.h"
#include "preprocessing/ApplyATXVal.h"

using namespace stagingtest;

namespace {

// The corrections are sums of a few products of metre-sized numbers; 1e-9 m
// is far above long double rounding and far below any term of the model.
constexpr long double Tol_m = 1e-9L;

const std::string kAntenna = "ASH701945E_M    SCIS";

long double Zero(long double, long double) { return 0.0L; }
long double Grid(long double a, long double z) { return 0.01L * a + 0.1L * z; }  // mm, exact in the file's two decimals

TEST(ApplyATXVal, CodeAndPhaseMoveByTheProjectedOffsetsAndVariations) {
    const struct {
        const char* name;
        bool receiverListed;         // the file has the station's antenna
        long double up1_mm, up2_mm;  // its G01, G02 up offsets
        long double satZ_mm;         // body z offset of every satellite; 0: none listed
        bool grid;                   // receiver variation Grid, DAZI 5
        double azimuthOffset_deg;    // -ao; 0: none
    } rows[] = {
        {"offsets", true, 100.0L, 120.0L, 1500.0L, false, 0.0},
        {"unlisted", false, 100.0L, 120.0L, 1500.0L, false, 0.0},
        {"grid", true, 0.0L, 0.0L, 0.0L, true, 350.0},
    };
    Options o;
    o.obs = CutObs("atx_4.20o", 600, 4);
    o.gln = true;
    o.gal = false;
    o.channels = Channels();
    Context plain;
    Stage(plain, o);
    const RINEXData& a = plain.rnxd;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<AtxBlock> blocks{{row.receiverListed ? kAntenna : "TRM59800.00     NONE", "", row.grid ? 5.0L : 0.0L, 90.0L, 5.0L,
                                      {{"G01", 0, 0, row.up1_mm, row.grid ? Grid : Zero}, {"G02", 0, 0, row.up2_mm, row.grid ? Grid : Zero}}}};
        for (short s = 1; s <= 32 && row.satZ_mm != 0.0L; ++s)
            for (const bool gps : {true, false})
                blocks.push_back({gps ? "BLOCK IIR-M" : "GLONASS-M", (gps ? "G" : "R") + std::to_string(100 + s).substr(1), 0.0L, 15.0L, 1.0L,
                                  {{gps ? "G01" : "R01", 0, 0, row.satZ_mm, Zero}, {gps ? "G02" : "R02", 0, 0, row.satZ_mm, Zero}}});
        o.atx = WriteAntex("atx_" + std::string(row.name) + ".atx", blocks);
        Context corrected;
        Stage(corrected, o);
        gCPosC& g = corrected.gc;
        g.isAzmOffAtx = row.azimuthOffset_deg != 0.0;
        g.AzmOffAtx = row.azimuthOffset_deg;
        g.rnxd.L1(0) = gnssobs();  // a null phase must stay null
        Capture out(std::cout), err(std::cerr);
        ApplyATXVal(g);
        const RINEXData& b = corrected.rnxd;
        const V3 rec{g.RecPosFC.x, g.RecPosFC.y, g.RecPosFC.z};
        long checked = 0;
        std::set<short> seen;
        for (long k = 0; k < b.GetNObs(); ++k) {
            const short sat = b.sat(k);
            if (!g.OKSAT(k) || sat > 200) continue;
            seen.insert(sat);
            const xyzt at = g.SatellitePosition(k);
            const V3 sp{at.x, at.y, at.z}, los = Sub(rec, sp);
            // Nadir angle at the satellite between the geocentre and the
            // receiver; elevation against the receiver's normal.
            const long double cosNadir = -Dot(los, sp) / (Norm(los) * Norm(sp)), sinE = -Dot(los, Enu(rec)[2]) / Norm(los);
            long double az_deg = g.AZM(k) * 180.0L / Pi + row.azimuthOffset_deg;
            if (az_deg > 360.0L) az_deg -= 360.0L;
            const long double pcv = row.grid ? 1e-3L * Grid(az_deg, 90.0L - g.ELV(k) * 180.0L / Pi) : 0.0L;
            const long double rx = row.receiverListed ? 1.0L : 0.0L, sz = 1e-3L * row.satZ_mm * cosNadir;
            const long double d1 = rx * (1e-3L * row.up1_mm * sinE - pcv) + sz, d2 = rx * (1e-3L * row.up2_mm * sinE - pcv) + sz;
            for (const auto& [m, want] : {std::pair{&RINEXData::C1, d1}, {&RINEXData::P1, d1}, {&RINEXData::P2, d2}})
                if (!(a.*m)(k).IsNull()) {
                    EXPECT_NEAR((b.*m)(k).obs - (a.*m)(k).obs, want, Tol_m) << SatName(sat);
                }
            if (k == 0 || a.L1(k).IsNull() || a.L2(k).IsNull()) continue;
            const bool gln = IsGlonass(sat);
            EXPECT_NEAR((b.L1(k).obs - a.L1(k).obs) * (gln ? GLONASSc::lamb(sat - 101, 0) : GPSc::lamb1), d1, Tol_m) << SatName(sat);
            EXPECT_NEAR((b.L2(k).obs - a.L2(k).obs) * (gln ? GLONASSc::lamb(sat - 101, 1) : GPSc::lamb2), d2, Tol_m) << SatName(sat);
            ++checked;
        }
        EXPECT_GT(checked, 40);
        EXPECT_TRUE(b.L1(0).IsNull());
        // The station's antenna missing: one warning, no receiver part.
        EXPECT_EQ(Has(err.Text(), "RECEIVER ANTENNA -" + kAntenna), !row.receiverListed);
        // Satellites missing: one report line each, not one per record.
        size_t lines = 0;
        for (size_t p = out.Text().find("NO PCV INFORMATION FOUND"); p != std::string::npos; p = out.Text().find("NO PCV INFORMATION FOUND", p + 1)) ++lines;
        EXPECT_EQ(lines, row.satZ_mm != 0.0L ? 0u : seen.size());
        EXPECT_EQ(Has(out.Text(), "All satellites OK"), row.satZ_mm != 0.0L);
    }
}

}  // namespace
