#pragma once
// Reports of the matrix family. They go to the output stream, so that a
// failed solve stands in the result listing beside the numbers it spoiled.
// Every error ends the process with status 1 at once; warnings return.
#include <string>

namespace MError {

/// Index error: prints the text, the bad index i and the allowed range
/// [0, r], then ends the process with status 1.
[[noreturn]] void Error(const std::string& err, long i, long r);

/// Shape error: prints the text and the two shapes [r1, c1] -> [r2, c2],
/// then ends the process with status 1.
[[noreturn]] void Error(const std::string& err, long r1, long c1, long r2, long c2);

/// Shape error of a solver: prints the text and the shape [r, c], then ends
/// the process with status 1.
[[noreturn]] void invError(const std::string& err, long r, long c);

/// Unset packed triangle: prints the text and the dimension [n], then ends
/// the process with status 1.
[[noreturn]] void UError(const std::string& err, long n);

/// Pivot error: prints the text, the pivot ods in units of 1e-15 and the
/// pivot's index j, then ends the process with status 1.
[[noreturn]] void invError(const std::string& err, long double ods, long j);

/// Pivot warning: prints the text, the pivot ods in units of 1e-15 and the
/// pivot's index j, and returns.
void invWarning(const std::string& err, long double ods, long j);

/// Norm warning: prints the text and returns.
void normWarning(const std::string& err);

/// Factorisation error: prints the text alone, then ends the process with
/// status 1.
[[noreturn]] void qrgivError(const std::string& err);

/// Norm length error: prints the text, the vector shape [r, c] and the
/// requested count n, then ends the process with status 1.
[[noreturn]] void subnormError(const std::string& err, long n, long r, long c);

/// Cold path of the checked element access of a matrix of r by c: reports
/// an unset matrix, then a bad row i, then a bad column j, and ends the
/// process with status 1. Kept out of line so the inline check stays small.
[[noreturn]] [[gnu::cold]] void MatrixAccessError(long i, long j, long r, long c);

/// Cold path of the checked flat access of a matrix of r by c: reports an
/// unset matrix or a flat index i outside [0, r*c - 1], and ends the
/// process with status 1.
[[noreturn]] [[gnu::cold]] void MatrixFlatAccessError(long i, long r, long c);

/// Cold path of the checked access of a packed triangle of dimension n:
/// reports an unset triangle, then a bad row i, then a bad column j, and
/// ends the process with status 1.
[[noreturn]] [[gnu::cold]] void UMatrixAccessError(long i, long j, long n);

/// A matrix of r by c that cannot exist (a negative dimension, more elements
/// than the address space holds, or a refused allocation): prints the shape
/// and ends the process with status 1.
[[noreturn]] [[gnu::cold]] void AllocationError(long r, long c);

}  // namespace MError
