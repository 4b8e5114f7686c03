#pragma once

#include <cstdio>
#include <cstdlib>

// A broken invariant is a finding like a crash: print what broke and abort,
// so libFuzzer saves the input that broke it.
#define ZUVI_FUZZ_CHECK(condition)                                                                 \
    do {                                                                                           \
        if (!(condition)) {                                                                        \
            std::fprintf(stderr, "invariant broken: %s (%s:%d)\n", #condition, __FILE__,           \
                         __LINE__);                                                                \
            std::abort();                                                                          \
        }                                                                                          \
    } while (false)
