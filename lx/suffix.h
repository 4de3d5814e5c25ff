// suffix.h - suffix discovery: which word endings of a word list are worth
// a code of their own in a compressed lexicon, and the suffix file that
// hands them to the squeezer (lexsq).
//
// The suffix file: one suffix to a line, CR LF after each, nothing else.
// First stand at most MAX_SIMPLE_SUFFIXES simple suffixes, then at most
// MAX_EXT_SUFFIXES extended ones, each kind by falling gain. Extended
// suffixes are written only behind a full set of simple ones, so a reader
// takes the first 30 lines for the simple table and the rest for the
// extended table.
#ifndef LX_SUFFIX_H
#define LX_SUFFIX_H

#include "lxbase.h"
#include "lxcformat.h"

// A table of strings with separate chaining. It takes its memory from the
// standard heap, but for the keys, which are LX_Str_Dup copies.
struct StrHashEntry {
    char *key;          // owned by the entry
    void *value;        // the user's; the table only stores it
    StrHashEntry *next; // next entry of the chain
};

struct StrHash {
    uint32_t size;          // number of buckets, fixed at StrHash_Init
    StrHashEntry **buckets; // heads of the chains; null for an empty bucket
};

// Sets up table with size buckets (at least 1). Gives table, or null if the
// bucket array can't be allocated.
StrHash *StrHash_Init(StrHash *table, uint32_t size);
// The hash of text (32-bit FNV-1a with a final mix): every bit of every
// byte reaches the low bits that pick a bucket.
uint32_t StrHash_Key(const char *text);
// Stores value under key. Gives the value the key held before if it was
// there, otherwise value; null if memory runs out (the table is unchanged).
void *StrHash_Put(const char *key, void *value, StrHash *table);
// The key's value, or null.
void *StrHash_Get(const char *key, const StrHash *table);
// Calls fn(key, value, user) for each entry: buckets in index order, each
// chain from its head.
void StrHash_ForEach(const StrHash *table, void (*fn)(const char *key, void *value, void *user), void *user);
// Frees all entries, their keys and the bucket array, and each value with
// freeValue if it is given. Leaves size 0 and buckets null.
void StrHash_Free(StrHash *table, void (*freeValue)(void *value));

// What is counted for each ending.
struct SuffixCounter {
    int32_t count;      // times the ending was met again after its first meeting
    int32_t simpleGain; // bytes a simple suffix would save
    int32_t extGain;    // bytes an extended suffix would save
};

// One ending that is worth a place in a table.
struct SuffixCandidate {
    char suffix[MAX_SUFFIX_LEN + 1];
    int32_t count;
    int32_t simpleGain;
    int32_t extGain;
};

// The gains of an ending of len characters met count times again: a
// one-byte code saves count x len (it takes the place of the end byte too),
// a two-byte code count x (len - 1); either costs len + 1 bytes of table.
// Computed wide and held to the 32-bit range.
int32_t Suffix_SimpleGain(int32_t count, int32_t len);
int32_t Suffix_ExtGain(int32_t count, int32_t len);

// Reads the nFiles word lists into one table of endings and writes the
// winners to suffixFileName. 0, or LX_ERR_FAILED with the reason in
// LX_SuffixMsg. A word list that can't be opened leaves "Can't open input
// file" in LX_SuffixMsg and is passed over; the call goes on. Ties of gain
// are broken by the ending's bytes, so that the file depends on the word
// lists alone. Process-wide state: one call at a time.
int32_t LX_FindSuffixes(int32_t nFiles, const char *const *fileNames, const char *suffixFileName);

// The last failure of LX_FindSuffixes, constant text; not cleared by a call
// that succeeds.
extern const char *LX_SuffixMsg;

// Test hook: called for every ending of the table, with its counter and
// gains filled in, before the candidates are chosen. Null switches it off.
using SuffixCountHook = void (*)(const char *ending, const SuffixCounter *counter);
void Suffix_SetCountHook(SuffixCountHook hook);

#endif
