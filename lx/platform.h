// platform.h - the small runtime layer the engine stands on: a memory pool
// that records where each allocation was made, formatting into a growing
// buffer, and the trace line on standard error.
#ifndef LX_PLATFORM_H
#define LX_PLATFORM_H

#include <atomic>
#include <cstdarg>

#include "lxbase.h"

// Handle of the process-wide memory pool; 0 until the first allocation,
// which makes it once, whatever the number of threads allocating then.
using LX_MemPool = uintptr_t;
extern std::atomic<LX_MemPool> LX_MemHandle;

// The pool: blocks of size bytes, aligned to 8, tagged with the source
// place of the call. LX_Mem_Alloc gives null when memory is exhausted (or
// when a test has asked for a failure).
LX_MemPool LX_Mem_NewHandle(const char *pool, const char *owner, const char *file, int line);
void *LX_Mem_Alloc(LX_MemPool handle, size_t size, const char *file, int line);
void LX_Mem_Free(LX_MemPool handle, void *block, const char *file, int line);

// Allocation through LX_MemHandle, creating it at the first use.
void *LX_Mem_AllocHere(size_t size, const char *file, int line);
#define LX_MEM_ALLOC(size) LX_Mem_AllocHere((size), __FILE__, __LINE__)
#define LX_MEM_FREE(block) \
    LX_Mem_Free(LX_MemHandle.load(std::memory_order_acquire), (block), __FILE__, __LINE__)

// Test hook: make the allocation that comes failAfter allocations from now
// fail (0 = the next one); a negative value switches failures off.
// Live blocks and allocations are counted so that tests can see leaks
// and benchmarks can see allocations.
void LX_Mem_FailAfter(long failAfter);
long LX_Mem_LiveBlocks();
// Allocations asked of the pool since the process began.
long LX_Mem_Allocations();

// Formats into *buf, growing it (and *bufSize) as needed. Gives non-zero if
// the text was formatted; on failure the buffer keeps its old text.
int LX_VFormatGrow(char **buf, size_t *bufSize, const char *format, va_list args);

// Writes one line of trace to standard error.
void LX_TraceLine(const char *format, ...) __attribute__((format(printf, 1, 2)));

#endif
