// api.h - byte order of the compressed lexicon files, and the session
// layer through which LX_Compress_Lex drives the squeezer.
#ifndef LX_API_H
#define LX_API_H

#include "lxbase.h"

struct LexSqContext; // lexsq.h

// Converts a 32-bit number between the host's order and the big-endian
// order of compressed lexicon files, in either direction: it is its own
// inverse. On a big-endian host the value comes back unchanged.
uint32_t LX_Swap32(uint32_t value);

// A text block of a session.
struct LX_SessionBlock {
    char *text;    // the buffer, or null
    int16_t owned; // the session frees text
};

// One session: what it holds and the compilation it runs. A session's
// number is its index in the process-wide table; a closed slot is used
// again. The language and option bits are set up for callers that would
// check text in a session; nothing reads them yet, and nothing adds to
// lexicons or blocks.
struct LX_Session {
    int16_t open;          // the slot holds a session
    LX_Vector lexicons;    // LX_Lexicon records, by value
    LX_Vector blocks;      // LX_SessionBlock records
    int16_t lang;          // starts as "am" (0x616D)
    LexSqContext *squeeze; // the running compilation, or null
    uint32_t options;      // LX_OPT_... bits
};

inline constexpr int16_t LX_SESSION_LANG = 24941;      // 0x616D
inline constexpr uint32_t LX_SESSION_OPTIONS = 755344; // 0x000B8690

// The session layer. Not reentrant: the table is process-wide, and only
// LX_Compress_Lex calls these. Each writes its message (lexsq.h for the
// squeezer's own) and gives 0 or more, or a negative code; a bad session
// number (negative, beyond the table, or a closed slot) gives
// LX_ERR_BAD_SESSION.

// Opens a session in the first free slot, making the table at the first
// call. The session number, or LX_ERR_NO_MEMORY.
int16_t FENRO_OpenSession();
// Closes the session's lexicons, frees its blocks and any compilation, and
// the table with the last session. 0.
int16_t FENRO_CloseSession(int16_t session);
// Starts a compilation into lexFileName with the suffix tables of
// suffixFileName (LexSq_Init). errLine: lines read for the simple table.
int16_t FENRO_CompressLexInit(int16_t session, const char *lexFileName, const char *suffixFileName,
                              int16_t lang, uint32_t *errLine);
// Adds a word list to the compilation (LexSqFile); LX_ERR_UNSUPPORTED
// before FENRO_CompressLexInit.
int16_t FENRO_CompressLexFile(int16_t session, const char *wordFileName, uint32_t *errLine);
// Completes the file (LexSq_End) and ends the compilation, also when that
// fails. 0 when no compilation runs.
int16_t FENRO_CompressLexEnd(int16_t session);
// Ends the compilation, leaving the file as it stands.
void FENRO_CompressLexAbort(int16_t session);

// Test hook: the session table's number of slots, 0 when it doesn't exist.
int32_t FENRO_SessionSlots();

#endif
