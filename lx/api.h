// api.h - byte order of the compressed lexicon files. (The compiler's
// session layer will stand here as well.)
#ifndef LX_API_H
#define LX_API_H

#include "lxbase.h"

// Converts a 32-bit number between the host's order and the big-endian
// order of compressed lexicon files, in either direction: it is its own
// inverse. On a big-endian host the value comes back unchanged.
uint32_t LX_Swap32(uint32_t value);

#endif
