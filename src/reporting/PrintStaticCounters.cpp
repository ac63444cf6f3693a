#include "reporting/PrintStaticCounters.h"

#include <iomanip>
#include <iostream>

#include "reporting/FixedColumn.h"

long double OutlierShare(long outliers, long observations)
{
    if (observations == 0) return 0.0L;
    return 100.0L * static_cast<long double>(outliers) / static_cast<long double>(observations);
}

long StaticRedundancy(const gCPosC& gc)
{
    return gc.NObs - gc.NUnk - gc.NClk + gc.ndcbConstr + gc.NUnkUndef;
}

void PrintStaticCounters(const gCPosC& gc)
{
    std::ostream& os = std::cout;
    os << "  # of ITERATIONS : " << std::setw(10) << gc.IterDone << "       THRESHOLD: "
       << std::scientific << std::setprecision(2) << std::setw(10) << gc.IterThresFin
       << std::fixed << "\n";
    os << "  # of EPOCHS     : " << std::setw(10) << gc.rnxd.nepochall << "\n";
    os << "  # of OBS        : " << std::setw(10) << gc.NObs << "    G: " << std::setw(8)
       << gc.NObsG << "    R: " << std::setw(8) << gc.NObsR << "    E: " << std::setw(8)
       << gc.NObsE << "\n";
    os << "  # of OUTLIERS   : " << std::setw(10) << gc.NObsOutl << "    G: " << std::setw(8)
       << gc.NObsOutlG << "    R: " << std::setw(8) << gc.NObsOutlR << "    E: "
       << std::setw(8) << gc.NObsOutlE << "\n";
    os << std::string(20, ' ');
    FixedColumn(os, OutlierShare(gc.NObsOutl, gc.NObs), 10, 2);
    os << "%   G: ";
    FixedColumn(os, OutlierShare(gc.NObsOutlG, gc.NObsG), 8, 2);
    os << "%   R: ";
    FixedColumn(os, OutlierShare(gc.NObsOutlR, gc.NObsR), 8, 2);
    os << "%   E: ";
    FixedColumn(os, OutlierShare(gc.NObsOutlE, gc.NObsE), 8, 2);
    os << "\n\n";

    os << "  # of UNKNOWNS   : " << std::setw(10) << gc.NUnk << "\n";
    os << "  # of CRD        : " << std::setw(10) << gc.NXcrd << "\n";
    os << "  # of SYS DT BIAS: " << std::setw(10) << gc.nDTsys << "\n";
    os << "  # of DBC BIAS   : " << std::setw(10) << gc.NUnkDCB << "\n";
    os << "  # of AMBIGUITIES: " << std::setw(10) << gc.nAmb << "\n";
    os << "  # of TROPO DELAY: " << std::setw(10) << gc.nTropoUnk << "\n";
    os << "  # of TRP GRAD E : " << std::setw(10) << gc.nTropoUnkGradE << "\n";
    os << "  # of TRP GRAD N : " << std::setw(10) << gc.nTropoUnkGradN << "\n";
    os << "  # of GNSS C. ERR:[" << std::setw(10) << gc.NClk << "]\n";
    os << "  # of CONSTRAINTS: " << std::setw(10) << gc.ndcbConstr << "\n";
    os << "  # of UNDEF UNKS : " << std::setw(10) << gc.NUnkUndef << "\n";
    os << "  # of REDUNDANCY : " << std::setw(10) << StaticRedundancy(gc) << "\n\n";
}
