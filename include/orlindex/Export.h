/**
 * @file
 * Linkage of the names that Orlindex.dll exports. Plain C; every other header includes it.
 */
#ifndef ORLINDEX_EXPORT_H
#define ORLINDEX_EXPORT_H

/**
 * Marks a name that the library exports. ORLINDEX_STATIC is for a host that compiles in its own replacement of the
 * library, for example in tests; linkage is then normal.
 */
#if defined(ORLINDEX_STATIC) || !defined(_WIN32)
#define ORLINDEX_API
#elif defined(ORLINDEX_BUILDING_LIBRARY)
#define ORLINDEX_API __declspec(dllexport)
#else
#define ORLINDEX_API __declspec(dllimport)
#endif

/**
 * One calling convention for flat functions and their callbacks, whatever the host's compiler options say. Platforms
 * other than Windows have no library to call, but portable host code can still use the types there, for example in
 * tests.
 */
#ifdef _WIN32
#define TALIX_CALL __cdecl
#else
#define TALIX_CALL
#endif

#endif
