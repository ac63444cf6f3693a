#pragma once
// Operations on zero-terminated character arrays for the fixed-column file
// formats. Every function works in place on buffers owned by the caller and
// allocates nothing; the caller provides room for the text it asks for.
// Reads never pass the terminator of an input text, and a null pointer or a
// negative count or position is treated as an empty request.

/// Copies up to dol characters of str1 from position pos into str2, stopping
/// at the terminator, and always terminates str2. A position outside the text
/// (negative, or past its terminator) or a negative count gives the empty text.
/// str2 needs room for min(dol, strlen(str1) - pos) + 1 characters.
void substr(const char* str1, int pos, int dol, char* str2);

/// Copies str1 from position pos to its end into str2; a position outside the
/// text gives the empty text.
void substr(const char* str1, int pos, char* str2);

/// Index of the last occurrence of c in str, -1 for none (also for a null
/// pointer). With c == 0 the terminator itself is found: the text's length.
int indexLast(const char* str, char c);

/// Fills str with nx copies of c and terminates it; nx below 1 gives the
/// empty text. str needs room for nx + 1 characters.
void strcopy(char* str, char c, int nx);

/// Fills niz with nznak copies of znak and terminates it; the same as strcopy.
void strng(char* niz, char znak, int nznak);

/// Extends cstr with c to length finlen and terminates it there; a longer text
/// is cut to finlen. A negative finlen counts as 0. cstr needs room for
/// finlen + 1 characters.
void fillstr(char* cstr, int finlen, char c);

/// Removes trailing blanks (character 32 only; tabs and newlines stay).
void trimr(char* niz);

/// Removes leading blanks (character 32 only), moving the text down.
void triml(char* niz);

/// Removes leading and trailing blanks: trimr, then triml.
void trim(char* niz);

/// Number of words in niz, a word being a run of non-white-space characters.
int cwords(const char* niz);

/// Copies the iw-th word of niz (counted from 1, words as for cwords) into
/// wrd; the empty text when there is no such word. wrd needs room for the
/// word and its terminator.
void gword(const char* niz, int iw, char* wrd);

/// Replaces every character orig in niz by rep. Replacing by the terminator
/// cuts the text at the first occurrence.
void creplace(char* niz, char orig, char rep);

/// Replaces the character orig by rep in the first n positions of niz only
/// (never past its terminator).
void creplace(char* niz, char orig, char rep, int n);

/// Replaces every occurrence of ssOrig in nizOrig, scanning left to right
/// without overlap, by ssRep. Nothing happens when the two patterns differ in
/// length, when the pattern is empty or when the text is shorter than it, so
/// the text never changes length.
void sreplace(char* nizOrig, const char* ssOrig, const char* ssRep);

/// Writes x into snum in scientific form: total width nn, nd decimals of the
/// base, an exponent of ne characters with its sign, e.g. nn 12, nd 4, ne 3
/// gives "  1.2346e+03" for 1234.56. The exponent is floor(log10(|x|)); a base
/// that rounds up to 10 at nd decimals is printed as such ("10.0000e+00").
/// |x| below 1e-15 prints base 0 and exponent 0; NaN and infinity print with
/// exponent 0. Negative widths count as 0. snum needs room for the text,
/// at least nn + 1 characters.
void sciNotation(double x, int nn, int nd, int ne, char* snum);

/// Long double form of sciNotation, with the base computed and printed in
/// extended precision.
void sciNotation(long double x, int nn, int nd, int ne, char* snum);

/// Overwrites niz from position ix with the characters of iniz, stopping at
/// the end of niz: the length of niz never changes. A position outside niz
/// changes nothing.
void instr(char* niz, int ix, const char* iniz);

/// Converts niz to lower case in place.
void slower(char* niz);

/// Converts niz to upper case in place.
void supper(char* niz);
