// api.cpp - byte order of the compressed lexicon files.
//
// Every number wider than a byte in a compressed lexicon is stored most
// significant byte first. Readers and writers move such a field as four
// raw bytes and pass it through LX_Swap32, which knows the host's order by
// the first byte in memory of the 16-bit constant 0x1234.
#include "api.h"

#include <cstring>

uint32_t LX_Swap32(uint32_t value) {
    const uint16_t probe = 0x1234;
    uchar first;
    std::memcpy(&first, &probe, 1);
    if (first == 0x12) return value;
    return (value >> 24) | ((value >> 8) & 0x0000FF00u) | ((value << 8) & 0x00FF0000u) | (value << 24);
}
