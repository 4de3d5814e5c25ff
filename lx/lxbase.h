// lxbase.h - what every module of the engine includes: the public header,
// fixed-width types, and the assertion macro for programmer errors.
//
// Assertions guard against a caller's mistakes (a null pointer, a wrong
// magic number), never against input from a text, a file or a user. They
// stay active in every build type: a release build that silently reads
// through a null pointer is worse than one that stops with a clear message.
#ifndef LX_LXBASE_H
#define LX_LXBASE_H

#include <cstddef>
#include <cstdint>

#include "lxengine.h"

extern "C" void __assert_fail(const char *assertion, const char *file, unsigned int line,
                              const char *function) noexcept __attribute__((__noreturn__));

// LX_ASSERT(cond): on failure, the standard assertion message with the
// condition's own text. LX_ASSERT_TEXT lets a check print the conventional
// text where the code has to spell the condition differently.
#define LX_ASSERT_TEXT(cond, text)                                               \
    ((cond) ? static_cast<void>(0)                                               \
            : __assert_fail(text, __FILE__, __LINE__, __extension__ __PRETTY_FUNCTION__))
#define LX_ASSERT(cond) LX_ASSERT_TEXT(cond, #cond)

// Characters are handled as unsigned bytes everywhere inside the engine.
using uchar = unsigned char;

inline uchar lx_byte(char c) { return static_cast<uchar>(c); }

#endif
