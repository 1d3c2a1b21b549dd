#pragma once

#include <cstdio>
#include <cstdlib>

// A property that must hold for every input: when it does not, the input is kept as a crash.
#define FUZZ_CHECK(condition)                                                                      \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "%s:%d: property broken: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
