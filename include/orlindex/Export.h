/** @file
 * Linkage of the names that Orlindex.dll exports. Plain C; included by every other header here. */
#ifndef ORLINDEX_EXPORT_H
#define ORLINDEX_EXPORT_H

/** Marks a name that the library exports. ORLINDEX_STATIC: the host compiles in a stand-in of its own, with plain
 * linkage. */
#if defined(ORLINDEX_STATIC) || !defined(_WIN32)
#define ORLINDEX_API
#elif defined(ORLINDEX_BUILDING_LIBRARY)
#define ORLINDEX_API __declspec(dllexport)
#else
#define ORLINDEX_API __declspec(dllimport)
#endif

/**
 * One calling convention for flat functions and their callbacks, whatever a host's compiler options say. Elsewhere than
 * on Windows there is nothing to call; a host's portable code can use the types there, in tests of its own.
 */
#ifdef _WIN32
#define TALIX_CALL __cdecl
#else
#define TALIX_CALL
#endif

#endif
