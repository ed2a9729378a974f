#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/// What a target does with one input. Called by libFuzzer, and by main.cpp for the seeds.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

/// Ends the program, as a crash does, when something is not so that always has to be.
inline void demand(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "Not so: %s\n", what);
    std::abort();
}
