#include "numerics/MError.h"

#include <cstdlib>
#include <iomanip>
#include <iostream>

namespace {

const std::string Stars(60, '*');

void Head(const char* kind, const std::string& err)
{
    std::cout << "\n" << Stars << "\n" << kind << "\n" << "\n\t" << err;
}

[[noreturn]] void TailError()
{
    std::cout << Stars << "\n" << "Exiting program...\n" << "\n";
    // The listing may hold the lines that explain the failure; the log too.
    std::cout.flush();
    std::cerr.flush();
    std::exit(1);
}

}  // namespace

namespace MError {

void Error(const std::string& err, long i, long r)
{
    Head("MATRIX::ERROR:", err);
    std::cout << std::setw(5) << i << " -> [" << std::setw(5) << 0 << "," << std::setw(5) << r
              << "]\n\n";
    TailError();
}

void Error(const std::string& err, long r1, long c1, long r2, long c2)
{
    Head("MATRIX::ERROR:", err);
    std::cout << "  [" << std::setw(5) << r1 << "," << std::setw(5) << c1 << "] -> ["
              << std::setw(5) << r2 << "," << std::setw(5) << c2 << "]\n\n";
    TailError();
}

void invError(const std::string& err, long r, long c)
{
    Head("MATRIX::ERROR:", err);
    std::cout << " [" << std::setw(5) << r << "," << std::setw(5) << c << "]\n\n";
    TailError();
}

void UError(const std::string& err, long n)
{
    Head("MATRIX::ERROR:", err);
    std::cout << " [" << std::setw(5) << n << "]\n\n";
    TailError();
}

void invError(const std::string& err, long double ods, long j)
{
    Head("MATRIX::ERROR:", err);
    std::cout << std::setw(10) << ods << " 10**-15 " << std::setw(5) << j << "\n\n";
    TailError();
}

void invWarning(const std::string& err, long double ods, long j)
{
    Head("MATRIX::WARNING:", err);
    std::cout << std::setw(10) << ods << " 10**-15 " << std::setw(5) << j << "\n\n";
    std::cout << Stars << "\n";
}

void normWarning(const std::string& err)
{
    Head("MATRIX::WARNING:", err);
    std::cout << "\n\n" << Stars << "\n" << "Continuing program...\n" << "\n";
}

void qrgivError(const std::string& err)
{
    Head("MATRIX::ERROR:", err);
    std::cout << "\n\n";
    TailError();
}

void subnormError(const std::string& err, long n, long r, long c)
{
    Head("MATRIX::ERROR:", err);
    std::cout << " [" << std::setw(5) << r << "," << std::setw(5) << c << "] -> n = "
              << std::setw(5) << n << "\n\n";
    TailError();
}

void MatrixAccessError(long i, long j, long r, long c)
{
    if (r == 0 || c == 0) invError("Operator:   ()\nMatrix is not set: ", r, c);
    if (i < 0 || i >= r) Error("Operator:   ()\nRow index not in range: ", i, r - 1);
    Error("Operator:   ()\nColumn index not in range: ", j, c - 1);
}

void MatrixFlatAccessError(long i, long r, long c)
{
    if (r == 0 || c == 0) invError("Operator:   ()\nMatrix is not set: ", r, c);
    Error("Operator:   ()\nMatrix index not in range: ", i, r * c - 1);
}

void UMatrixAccessError(long i, long j, long n)
{
    if (n == 0) UError("Operator:   ()\nUMatrix is not set: ", n);
    if (i < 0 || i >= n) Error("Operator:   ()\nRow index not in range: ", i, n - 1);
    Error("Operator:   ()\nColumn index not in range: ", j, n - 1);
}

void AllocationError(long r, long c)
{
    invError("Function:   matrix\nMatrix can not be allocated: ", r, c);
}

}  // namespace MError
