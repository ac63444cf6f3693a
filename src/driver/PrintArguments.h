#pragma once
// The settings report that opens the result listing: what the run reads,
// writes and estimates, as CheckArguments left it.
#include "driver/gCPosC.h"

/// Prints the banner (with the program name, description and release set
/// here) and the settings report on the output stream: input, output and
/// plot file names (" ---" for a file not in use), processing settings,
/// standard deviations in metres, thresholds and the iteration limits. With
/// a troposphere model chosen, sets its codes into gc.trpmodel to name them.
/// Leaves the output stream in fixed notation. In verbose mode writes one
/// log line on the error stream.
void PrintArguments(gCPosC& gc);
