// platform.cpp - memory pool, growing format buffer and trace output.
//
// The pool is the plain heap with a thin layer on top: each block is
// counted while it lives, and a test can arrange for an allocation to fail,
// so that every creating call can be driven through its out-of-memory path.
#include "platform.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

LX_MemPool LX_MemHandle = 0;

namespace {
long gFailAfter = -1;
long gLiveBlocks = 0;
long gAllocations = 0;
} // namespace

LX_MemPool LX_Mem_NewHandle(const char *, const char *, const char *, int) { return 1; }

void *LX_Mem_Alloc(LX_MemPool, size_t size, const char *, int) {
    if (gFailAfter == 0) {
        gFailAfter = -1;
        return nullptr;
    }
    if (gFailAfter > 0) --gFailAfter;
    void *block = std::malloc(size == 0 ? 1 : size);
    if (block) ++gLiveBlocks;
    ++gAllocations;
    return block;
}

void LX_Mem_Free(LX_MemPool, void *block, const char *, int) {
    if (!block) return;
    --gLiveBlocks;
    std::free(block);
}

void *LX_Mem_AllocHere(size_t size, const char *file, int line) {
    if (LX_MemHandle == 0) LX_MemHandle = LX_Mem_NewHandle("OVERHEAD", "LX", file, line);
    return LX_Mem_Alloc(LX_MemHandle, size, file, line);
}

void LX_Mem_FailAfter(long failAfter) { gFailAfter = failAfter; }
long LX_Mem_LiveBlocks() { return gLiveBlocks; }
long LX_Mem_Allocations() { return gAllocations; }

int LX_VFormatGrow(char **buf, size_t *bufSize, const char *format, va_list args) {
    va_list again;
    va_copy(again, args);
    char small[256];
    int n = std::vsnprintf(small, sizeof small, format, args);
    if (n < 0) {
        va_end(again);
        return 0;
    }
    size_t need = static_cast<size_t>(n) + 1;
    if (*buf == nullptr || *bufSize < need) {
        size_t grown = need < 256 ? 256 : need;
        char *bigger = static_cast<char *>(std::malloc(grown));
        if (!bigger) {
            va_end(again);
            return 0;
        }
        std::free(*buf);
        *buf = bigger;
        *bufSize = grown;
    }
    if (need <= sizeof small)
        std::memcpy(*buf, small, need);
    else
        std::vsnprintf(*buf, *bufSize, format, again);
    va_end(again);
    return 1;
}

void LX_TraceLine(const char *format, ...) {
    va_list args;
    va_start(args, format);
    std::vfprintf(stderr, format, args);
    va_end(args);
    std::fputc('\n', stderr);
    std::fflush(stderr);
}
