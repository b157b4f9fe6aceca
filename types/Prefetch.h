/// Asking the memory for what a pass will need soon. Internal to the library.
#pragma once

#include <stdint.h>

#include <bit>

#include "types/DString.h"

/// Fetches what stands `bytes` behind `place`, or ahead of it, which may be outside of any object.
/// Functions of nothing but fetches have to be part of their callers: compilers take them for ones
/// without effect and drop the calls.
[[gnu::always_inline]] inline void Prefetch(const void* place, int64_t bytes = 0) {
    const uintptr_t address = std::bit_cast<uintptr_t>(place) + static_cast<uintptr_t>(bytes);
    __builtin_prefetch(std::bit_cast<const void*>(address));
}

/// Fetches a short text, whose block may reach into a second line of the cache.
[[gnu::always_inline]] inline void PrefetchText(const DString& text) {
    constexpr int EndOfShortText = 24;
    const char* const characters = text;
    Prefetch(characters);
    Prefetch(characters, EndOfShortText);
}
