#include "reporting/WriteStaticClock.h"

#include <fstream>
#include <iostream>

#include "geodesy/mjd.h"
#include "orbits/ClkErr.h"

void WriteStaticClock(const gCPosC& gc)
{
    if (!gc.isClkFile) return;
    if (gc.verbose)
        std::cerr << "Orvo::ProcStatic(): WRITING RECEIVER STATIC CLOCK CORRECTIONS -> ";
    mjdns::NDecSecond = 3;
    const char refSystem = gc.isGPS ? 'G' : (gc.isGLN ? 'R' : 'E');
    std::ofstream f(gc.clkfile);
    ClkErr::Write(f, gc.rnxh.mname, gc.rnxh.mnumber, refSystem, gc.rnxd.epoch, gc.dtAll);
    f.close();
    if (gc.verbose) std::cerr << gc.rnxd.NOKEph << " EPOCHS!\n";
}
