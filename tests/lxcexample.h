// lxcexample.h - the smallest complete compressed lexicon, byte for byte:
// the words at, walk, walked, walking, walks and wall, with the simple
// suffixes ed, ing and s and the extended suffix l, language 999. The
// format's tests build it from the codec, the squeezer's tests compile it.
#ifndef LX_TESTS_LXCEXAMPLE_H
#define LX_TESTS_LXCEXAMPLE_H

inline const char *const kLxcExampleWords[] = {"at", "walk", "walked", "walking", "walks", "wall"};
inline const char *const kLxcExampleSimple[] = {"ed", "ing", "s"};
inline const char *const kLxcExampleExt[] = {"l"};
inline constexpr short kLxcExampleLang = 999;

// The file, as hex bytes separated by blanks: 111 bytes.
inline const char *const kLxcExampleFile =
    "57 00 05 01 "
    "00 00 00 01 00 00 00 04 00 00 03 E7 "
    "00 00 00 02 00 00 00 04 00 00 00 01 "
    "00 00 00 03 00 00 00 13 00 00 00 09 65 64 00 69 6E 67 00 73 00 00 00 00 02 6C 00 "
    "00 00 00 05 00 00 00 0E "
    "00 00 00 6B 00 01 02 01 03 01 04 00 01 00 "
    "00 00 00 04 00 00 00 1A 00 00 00 02 "
    "61 74 00 00 00 00 00 00 00 00 02 "
    "77 61 6C 00 00 00 02 00 00 00 0C";

#endif
