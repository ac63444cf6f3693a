#pragma once
// File tests and path splitting on plain names, for the checks that run
// before any input is read.
#include <string>

/// True when the file f opens for reading; false for a folder and for a null
/// pointer.
bool FileExists(const char* f);

/// True when the file f opens for reading.
bool FileExists(const std::string& f);

/// Removes the file; true when it is gone afterwards, also when it never
/// existed (no such file or a path through a non-folder); false on any other
/// failure, e.g. a folder or a missing permission.
bool RemFile(char* file);

/// RemFile for constant text.
bool RemFile(const char* file);

/// Copies into bname the text of file behind its last sep, or all of it when
/// there is no sep; empty for a null file. bname needs room for it.
void GetBasename(const char* file, char* bname, char sep = '/');

/// Copies into dname the text of file before its last sep, or the empty text
/// when there is no sep. dname needs room for it.
void GetDirname(const char* file, char* dname, char sep = '/');
