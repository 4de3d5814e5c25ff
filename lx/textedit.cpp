// textedit.cpp - the two edits a host needs to apply a report to its text:
// removing the reported word and inserting the replacement, in place, with
// overlapping moves that keep the terminator right.
#include <cstring>

#include "lxbase.h"

extern "C" LX_API int32_t LX_DelText(char *text, int32_t cursor, int32_t count) {
    LX_ASSERT(text != NULL);
    LX_ASSERT(cursor >= 0);
    LX_ASSERT(count >= 0);
    // The text may be longer than a 32-bit length counts.
    const size_t rest = std::strlen(text) - static_cast<size_t>(cursor);
    if (static_cast<size_t>(count) > rest) count = static_cast<int32_t>(rest);
    std::memmove(text + cursor, text + cursor + count, rest - static_cast<size_t>(count) + 1);
    return count;
}

extern "C" LX_API int32_t LX_InsertText(char *text, int32_t textSz, int32_t cursor, const char *str) {
    LX_ASSERT(text != NULL);
    LX_ASSERT(str != NULL);
    LX_ASSERT(textSz > 0);
    LX_ASSERT(cursor >= 0);
    int64_t len = static_cast<int64_t>(std::strlen(text));
    int64_t add = static_cast<int64_t>(std::strlen(str));
    int64_t total = len + add;
    if (total >= textSz) return LX_ERR_RANGE;
    std::memmove(text + cursor + add, text + cursor, static_cast<size_t>(len - cursor) + 1);
    std::memcpy(text + cursor, str, static_cast<size_t>(add));
    return static_cast<int32_t>(total);
}
