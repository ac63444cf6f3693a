#pragma once
// The program's help text.

/// Writes the help text (Slovene, Windows-1250 code page) to the error
/// stream, so that -we redirects it with the log.
void OrvoPrintHelp();
