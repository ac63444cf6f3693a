#pragma once
// Hands the checked file names of the command line to the objects that will
// read them.
#include "driver/gCPosC.h"

/// Gives each input file name whose presence flag is set to its reader, in
/// a fixed order (observations, receiver clock, precise orbits and clocks,
/// satellite problem list, troposphere model, mapping function and their
/// series or grid file); chooses the troposphere model and mapping
/// function when one is in use. Reads no file. A reader that refuses a
/// name (one that does not open, or is too long to store) ends the run
/// with its framed error, status 1. In verbose mode each step is logged on
/// the error stream.
void SetFiles(gCPosC& gc);
