#pragma once

// Counts one step of a benchmark alone under callgrind started with --collect-atstart=no;
// nothing outside valgrind, or where its headers are missing.
#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#define BENCH_TOGGLE_COLLECT CALLGRIND_TOGGLE_COLLECT
#else
#define BENCH_TOGGLE_COLLECT
#endif
