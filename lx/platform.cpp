// platform.cpp - memory pool, growing format buffer and trace output.
//
// The pool is the plain heap with a thin layer on top: each block is
// counted while it lives, and a test can arrange for an allocation to fail,
// so that every creating call can be driven through its out-of-memory path.
// Threads may allocate at the same time: the handle is made once, by
// whichever thread comes first, and the counters are atomic.
#include "platform.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>

std::atomic<LX_MemPool> LX_MemHandle{0};

namespace {
std::atomic<long> gFailAfter{-1};
std::atomic<long> gLiveBlocks{0};
std::atomic<long> gAllocations{0};
std::once_flag gHandleOnce;

// Counts one allocation against the test hook; true if it is to fail.
bool failure_due() {
    long left = gFailAfter.load(std::memory_order_relaxed);
    while (left >= 0) {
        const long next = left == 0 ? -1 : left - 1;
        if (gFailAfter.compare_exchange_weak(left, next, std::memory_order_relaxed)) return left == 0;
    }
    return false;
}
} // namespace

LX_MemPool LX_Mem_NewHandle(const char *, const char *, const char *, int) { return 1; }

void *LX_Mem_Alloc(LX_MemPool, size_t size, const char *, int) {
    if (failure_due()) return nullptr;
    void *block = std::malloc(size == 0 ? 1 : size);
    if (block) gLiveBlocks.fetch_add(1, std::memory_order_relaxed);
    gAllocations.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void LX_Mem_Free(LX_MemPool, void *block, const char *, int) {
    if (!block) return;
    gLiveBlocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

void *LX_Mem_AllocHere(size_t size, const char *file, int line) {
    LX_MemPool handle = LX_MemHandle.load(std::memory_order_acquire);
    if (handle == 0) {
        std::call_once(gHandleOnce, [file, line] {
            LX_MemHandle.store(LX_Mem_NewHandle("OVERHEAD", "LX", file, line), std::memory_order_release);
        });
        handle = LX_MemHandle.load(std::memory_order_acquire);
    }
    return LX_Mem_Alloc(handle, size, file, line);
}

void LX_Mem_FailAfter(long failAfter) { gFailAfter.store(failAfter, std::memory_order_relaxed); }
long LX_Mem_LiveBlocks() { return gLiveBlocks.load(std::memory_order_relaxed); }
long LX_Mem_Allocations() { return gAllocations.load(std::memory_order_relaxed); }

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
