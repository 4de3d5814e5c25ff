/*
 * lxengine.h - the public interface of the lxengine spelling-check engine.
 *
 * If a function, record or constant is not declared here, it is not part of
 * the library's interface. The header is C (C99 or later) and compiles as C++.
 *
 * Conventions that hold for every function below:
 *  - Texts are NUL-terminated arrays of 8-bit characters in ISO 8859-1.
 *    A length does not count the terminator; a buffer size does.
 *  - The caller owns every buffer it passes and states its size; a text too
 *    long for a buffer is cut, silently.
 *  - Functions return 0, a length or a count on success and a negative
 *    LX_ERR_... code on failure. A failure usually leaves a message that
 *    LX_Diag_GetLastMsg() returns.
 *  - Passing a null pointer where a value is required, or a negative cursor
 *    where it would be read from, is a programming error and stops the
 *    process through the standard assertion route, with the failed test as
 *    the message (such as "lexicons != NULL").
 *  - Offsets into a text are signed 32-bit numbers. A cursor must lie
 *    within the text, at its terminator at most: one beyond it is the
 *    caller's error, and the engine doesn't test for it.
 *
 * Threads. The engine has no threads and takes no locks. Which calls may
 * run at the same time on different threads:
 *  - Calls that use separate lexicons (each thread its own): all of them,
 *    with texts, buffers and suggestion sets of each thread's own.
 *    LX_NextTextWord, LX_DelText and LX_InsertText on different texts use
 *    no lexicon. Each thread has its own last message (LX_Diag_GetLastMsg).
 *  - One memory lexicon (LEX_DMT) shared and read only: lookups through
 *    LX_CheckText and LX_Suggest, and LX_Lexicon_GetImage and
 *    LX_Lexicon_Size, may overlap, as long as nobody changes the lexicon
 *    meanwhile.
 *  - A call that changes a lexicon (LX_Lexicon_AddWord, _DelWord, _Clear,
 *    _Close, or its creation) must not overlap any other call that uses
 *    that lexicon. Nor may any two calls on one lexicon of another kind.
 */
#ifndef LXENGINE_H
#define LXENGINE_H

#include <stdint.h>

#if defined(LX_BUILDING)
#define LX_API __attribute__((visibility("default")))
#else
#define LX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------- limits */

/* Size of every word buffer of the engine: 80 characters and the NUL. */
#define LX_MAX_WORD_SZ 81

/* ---------------------------------------------------------- return codes */

#define LX_ERR_FAILED (-1)         /* plain failure of a low-level routine */
#define LX_ERR_BAD_SESSION (-2)    /* session number out of range, or not open */
#define LX_ERR_NOT_FOUND (-3)      /* nothing there: no further word, no such word */
#define LX_ERR_FILE_OPEN (-4)      /* a file could not be opened */
#define LX_ERR_RANGE (-8)          /* buffer too small, or index out of range */
#define LX_ERR_NO_MEMORY (-12)     /* allocation failed */
#define LX_ERR_UNSUPPORTED (-13)   /* operation not available for this lexicon kind */
#define LX_ERR_FILE_EXISTS (-14)   /* a lexicon file to be created exists already */
#define LX_ERR_INVALID_WORD (-19)  /* a word holds a byte a lexicon can't store, or is too long */
#define LX_ERR_SEGMENT_EXISTS (-20) /* a segment key was registered already */
#define LX_ERR_READ (-22)          /* a table or index could not be read */
#define LX_ERR_WRITE (-23)         /* a file could not be locked, written or saved */
#define LX_ERR_CANT_CREATE (-24)   /* a file can't be created or opened for writing */
#define LX_ERR_BAD_FORMAT (-26)    /* a lexicon file isn't valid */

/* ---------------------------------------------------------- option bits */

#define LX_OPT_IGNORE_CAPITALISED 0x1u      /* capitalised words pass */
#define LX_OPT_IGNORE_MIXED_CASE 0x2u       /* words of mixed case pass */
#define LX_OPT_IGNORE_WITH_DIGITS 0x4u      /* words with a digit pass */
#define LX_OPT_IGNORE_ALL_CAPITALS 0x8u     /* words in capitals pass */
#define LX_OPT_REPORT_CAPITALISATION 0x10u  /* report a word right but for its case */
#define LX_OPT_REPORT_MIXED_CASE 0x20u      /* report words of mixed case */
#define LX_OPT_REPORT_WITH_DIGITS 0x40u     /* report words holding a digit */
#define LX_OPT_CHECK_SPELLING 0x80u         /* look words up at all */
#define LX_OPT_REPORT_REPEATED 0x100u       /* report a word equal to the one before */
#define LX_OPT_CASE_SENSITIVE 0x200u        /* lookups respect case */
#define LX_OPT_SPLIT_AT_HYPHEN 0x400u       /* judge a compound piece by piece at '-' */
#define LX_OPT_SPLIT_AT_APOSTROPHE 0x800u   /* judge piece by piece at an apostrophe */
#define LX_OPT_SPLIT_RUN_TOGETHER 0x1000u   /* accept a word made of two accepted words */
#define LX_OPT_SUGGEST_SPLIT 0x2000u        /* LX_Suggest: try dividing the word */
#define LX_OPT_SUGGEST_PHONETIC 0x4000u     /* LX_Suggest: phonetic comparisons */
#define LX_OPT_SUGGEST_TYPOGRAPHIC 0x8000u  /* LX_Suggest: edits and typographic comparisons */
#define LX_OPT_STRIP_POSSESSIVE 0x10000u    /* take 's or ' off before judging */
#define LX_OPT_IGNORE_NO_LETTERS 0x20000u   /* words without a letter pass */
#define LX_OPT_IGNORE_ADDRESSES 0x40000u    /* keep addresses, URLs, file names whole; they pass */
#define LX_OPT_ACCENTED_CAPITALS 0x80000u   /* accents on capitals are significant */
#define LX_OPT_SINGLE_WORD 0x100000u        /* the text from the cursor on is one word */
#define LX_OPT_MARKUP 0x200000u             /* skip tags, decode '&' entities */

/* ---------------------------------------------------------- result bits */

#define LX_RES_MISSPELLED 1       /* no lexicon accepts the word */
#define LX_RES_AUTO_CHANGE 2      /* replace by repl without asking */
#define LX_RES_COND_CHANGE 4      /* offer repl for confirmation */
#define LX_RES_CAPITALISATION 8   /* right but for its case; comes with MISSPELLED */
#define LX_RES_MIXED_CASE 16      /* word of mixed case */
#define LX_RES_WITH_DIGITS 32     /* word holds a digit */
#define LX_RES_NONE_LEFT 64       /* nothing (more) to report */
#define LX_RES_REPEATED 128       /* the word repeats the word before it */

/* ------------------------------------------------------- lexicon actions */

#define LX_ACT_IGNORE 'i'            /* the word is acceptable */
#define LX_ACT_EXCLUDE 'e'           /* the word is a misspelling */
#define LX_ACT_AUTO_CHANGE 'a'       /* replace by the other word as stored */
#define LX_ACT_AUTO_CHANGE_CASE 'A'  /* replace, the other word taking the word's case */
#define LX_ACT_COND_CHANGE 'c'       /* offer the other word as stored */
#define LX_ACT_COND_CHANGE_CASE 'C'  /* offer the other word in the word's case */

/* Language value: two lower-case letters, the first in the high byte. */
#define LX_LANG_NONE 0x7878

/* --------------------------------------------------------------- records */

/* A growable array of fixed-size elements, stored by value in one block.
 * count <= capacity always; data is null exactly when capacity is 0. */
typedef struct LX_Vector {
    uint32_t magic;    /* set by initialisation, never cleared */
    void *data;        /* the element block, or null */
    uint32_t elemSize; /* bytes of one element */
    int32_t count;     /* elements in use */
    int32_t capacity;  /* elements the block holds */
} LX_Vector;

/* One entry of a text lexicon. The texts belong to the lexicon. */
typedef struct LX_LexEntry {
    char *word;      /* the word, never null */
    char *otherWord; /* replacement of a change action, or null */
    int16_t action;  /* one of the LX_ACT_... codes */
} LX_LexEntry;

/* Member dmt: a lexicon held in memory. The entries are in strictly
 * ascending byte order of word, each word once. */
typedef struct LX_DMTLex {
    uint32_t magic;    /* 0x01A5934B while open */
    LX_Vector words;   /* LX_LexEntry, sorted */
    int16_t lang;      /* the lexicon's language */
    void *index;       /* private lookup cache of the engine */
} LX_DMTLex;

/* Member dft: a lexicon kept in a text file. All its entries are held in
 * mem, sorted, with the file's language in mem.lang; every change is
 * written through to the file before the call returns. The stamp (fileTime
 * and the three fields behind external) is that of the version of the file
 * last read or written: a file with another stamp was changed by someone
 * else, and its words are taken up before the next change. */
typedef struct LX_DFTLex {
    uint32_t magic;       /* 0x201C7E96 while open */
    LX_DMTLex mem;        /* the words of the file */
    int32_t fileTime;     /* modification time of the file, in seconds */
    char fileName[516];   /* the file's path, cut to 515 bytes, terminated */
    int16_t external;     /* set: the file is a plain word list without header */
    int32_t fileTimeNsec; /* private: nanoseconds of the modification time */
    int64_t fileSize;     /* private: size of the file in bytes */
    uint64_t fileId;      /* private: identity (inode) of the file */
} LX_DFTLex;
/* A bump allocator for many small pieces that are freed together, embedded
 * in the record that owns it. Its blocks are the engine's. */
struct SmaBlock;
typedef struct Sma {
    struct SmaBlock *blocks; /* newest block, head of the list; null while none */
    void *next;              /* next free byte of the newest block */
    uint32_t left;           /* bytes free behind next in the newest block */
    uint32_t blockSize;      /* size of the next block to be allocated */
} Sma;

/* One segment of a compressed lexicon: the engine's own record. */
struct FCSegment;

/* Member fc: a read-only compressed lexicon file, opened by LX_FCLex_Open.
 * The index and the suffix tables stay in memory; the segments of words
 * are read from the file when a lookup needs them, and within budget. The
 * file is not held open. Every field belongs to the engine. */
typedef struct LX_FCLex {
    uint32_t magic;                /* 0x0045066B while open */
    struct FCSegment **segIndex;   /* one per segment, ascending by key */
    int32_t nSegments;             /* length of segIndex, at least 1 */
    int32_t dataStart;             /* file position of the segment data */
    int32_t budget;                /* bytes of segments in memory at once; <= 0: no limit */
    int32_t budgetLeft;            /* budget less the segments in memory */
    uint32_t useClock;             /* counts the requests for a segment */
    int16_t lang;                  /* language of the file, kept but not used */
    uint16_t charSize;             /* bytes per character: 1 */
    char **simpleSuffixes;         /* the simple table, into simpleText */
    int32_t nSimpleSuffixes;
    char **extSuffixes;            /* the extended table, into extText */
    int32_t nExtSuffixes;
    char fileName[516];            /* the path, cut to 515 bytes */
    Sma segPool;                   /* the memory of the segment records */
    char *simpleText;              /* the tables' bytes as in the file */
    char *extText;
    uint32_t *packedKeys;          /* private: the keys of segIndex as numbers, hashed */
    struct FCSegment *oldestLoaded; /* private: segments in memory, least */
    struct FCSegment *newestLoaded; /* recently requested first */
    struct FCVerdict *verdicts;    /* private: verdicts of recent lookups */
    uint32_t verdictMask;          /* private: their number less one */
} LX_FCLex;

/* The record of every lexicon. The host provides it and sets kind; the
 * creating call fills the member of that kind. */
typedef struct LX_Lexicon {
    union {
        LX_DMTLex dmt; /* LEX_DMT */
        LX_DFTLex dft; /* LEX_DFT */
        LX_FCLex fc;   /* LEX_FC */
    };
    int32_t kind; /* LEX_DMT, ...; 0 for none */
} LX_Lexicon;

/* One suggestion. */
typedef struct SuggEntry {
    char word[LX_MAX_WORD_SZ]; /* NUL-terminated; two words with a space between are one candidate */
    int16_t score;             /* 0 to 100, higher is better */
} SuggEntry;

/* The caller's bounded list of suggestions: by falling score, each text
 * once, count <= capacity. The caller allocates entries, sets capacity
 * (which the engine never changes) and count (normally 0). */
typedef struct SuggSet {
    SuggEntry *entries; /* capacity entries, owned by the caller */
    int32_t count;      /* entries in use */
    int32_t capacity;   /* length of entries */
} SuggSet;

/* Kinds of lexicon, the values of LX_Lexicon.kind. */
#define LEX_DMT 2 /* memory text lexicon */
#define LEX_DFT 3 /* disk text lexicon */
#define LEX_MC 5  /* a compressed kind without routines: always unsupported */
#define LEX_FC 6  /* compressed lexicon file */

/* ------------------------------------------------ walking and checking */

/* LX_CheckText: from *cursor on, find the first word of text that has
 * something to report, judging each word against the null-terminated list
 * lexicons (searched in order) under the option bits.
 *   word, wordSz: the caller's buffer for the word at hand (wordSz >= 1,
 *     normally LX_MAX_WORD_SZ); asserted non-null.
 *   repl, replSz: buffer for a replacement, or null and 0. It may be the
 *     same buffer as word.
 *   text, lexicons, cursor and word are asserted non-null. In
 *     LX_OPT_SINGLE_WORD mode *cursor is asserted to be 0 or more; in text
 *     mode a negative one finds nothing.
 * Returns the LX_RES_... bits of the report, with *cursor at the first byte
 * of the word; or LX_RES_NONE_LEFT when nothing is left to report (a
 * single word that passes, in LX_OPT_SINGLE_WORD mode). Never an error:
 * a lexicon that fails counts as not holding the word.
 * A text is walked up to offset INT32_MAX at most (2 GiB): the byte there
 * counts as its end, and a word that reaches it is cut before it. */
LX_API int32_t LX_CheckText(const char *text, LX_Lexicon *const *lexicons,
                            uint32_t options, int32_t *cursor, char *word,
                            int32_t wordSz, char *repl, int32_t replSz);

/* LX_NextTextWord: offset of the word behind the word at or after cursor,
 * or LX_ERR_NOT_FOUND if there is none. Only LX_OPT_MARKUP and
 * LX_OPT_IGNORE_ADDRESSES act here. Asserts text != NULL, cursor >= 0.
 * Like LX_CheckText it ends the text at offset INT32_MAX at the latest. */
LX_API int32_t LX_NextTextWord(const char *text, int32_t cursor, uint32_t options);

/* LX_DelText: removes up to count characters at cursor, in place.
 * Returns the number removed. */
LX_API int32_t LX_DelText(char *text, int32_t cursor, int32_t count);

/* LX_InsertText: inserts str at cursor into text, whose buffer has textSz
 * bytes. Returns the new length, or LX_ERR_RANGE (text unchanged) when the
 * result and its terminator would not fit. */
LX_API int32_t LX_InsertText(char *text, int32_t textSz, int32_t cursor, const char *str);

/* ----------------------------------------------------------- suggestions */

/* LX_Suggest: proposes replacements for word (as it stands in the text,
 * with its case and any possessive ending) and adds them to set, best
 * first. options are those given to LX_CheckText, with the suggestion bits:
 *   LX_OPT_SUGGEST_TYPOGRAPHIC: single edits of the word (depth >= 10),
 *     wildcard searches (depth >= 30), and a sweep of the lexicons with the
 *     typographic comparator;
 *   LX_OPT_SUGGEST_PHONETIC: a sweep with the phonetic comparator;
 *   LX_OPT_SUGGEST_SPLIT: the word divided into two words.
 * depth (0 to 100) says how far to search; above 30 every lexicon is swept.
 * An edit counts only if LX_CheckText passes it. Every candidate ends up
 * with a score of 0 to 100, the likeness that the typographic comparator
 * finds between it and word (99: the replacement a lexicon stores for this
 * very word), in the case of word and with its possessive ending. A
 * candidate found by an edit, a pattern search or a division keeps its
 * score even when that is 0: "a" against a lexicon holding "x" gives "x"
 * with 0.
 * Candidates of equal score keep the order in which they were found, so
 * the list is the same on every run. Entries already in set stay and are
 * treated like new ones. Asserts word, lexicons, set and set->entries
 * non-null.
 * Returns the number of entries in set; 0 (set unchanged) if nothing of
 * word is left to check. Never an error. */
LX_API int32_t LX_Suggest(const char *word, int32_t depth, LX_Lexicon *const *lexicons,
                          uint32_t options, SuggSet *set);

/* -------------------------------------------------------------- lexicons */

/* LX_DMTLex_Create: makes lex an empty memory lexicon with room for
 * initialCapacity entries and the language lang. The caller sets
 * lex->kind to LEX_DMT. Returns 0 or LX_ERR_NO_MEMORY. */
LX_API int32_t LX_DMTLex_Create(LX_Lexicon *lex, int32_t initialCapacity, int16_t lang);

/* LX_DFTLex_Create: makes lex an empty disk lexicon in a new file at
 * fileName (cut to 515 bytes), whose header line records the language
 * lang: "#LID", a blank and lang as a decimal number, then CR LF. The
 * caller sets lex->kind to LEX_DFT. Asserts lex and fileName non-null.
 * Returns 0 (message "%s created"), LX_ERR_FILE_EXISTS if anything is at
 * fileName already (left untouched), LX_ERR_CANT_CREATE if the file can't
 * be made, LX_ERR_WRITE or LX_ERR_CANT_CREATE if the header can't be
 * written, or
 * LX_ERR_NO_MEMORY; on failure the record isn't open and no file is left.
 *
 * A disk lexicon holds the whole file in memory: lookups and suggestions
 * never touch the disk. Every LX_Lexicon_AddWord, LX_Lexicon_DelWord and
 * LX_Lexicon_Clear rewrites the file whole before it returns, replacing it
 * in one step, so that a crash or a full disk leaves the old file or the
 * new one. Before an addition or a deletion the lexicon takes a lock that
 * excludes other processes (on the companion file fileName + ".lock") and
 * takes up the words that another process has written to the file since;
 * a deleted word that the other process still had comes back that way.
 * LX_Lexicon_AddWord refuses (LX_ERR_INVALID_WORD) an entry that the file
 * couldn't give back whole: a line (word, TAB, action letter, other word)
 * longer than 79 bytes, a word beginning with '#', a line end in the other
 * word, an action that isn't a single byte. An external lexicon (a file
 * without header line: a plain word list, one word a line) takes only
 * words with LX_ACT_IGNORE (LX_ERR_UNSUPPORTED otherwise). A change that
 * fails leaves the file as it was and the word as it was in memory: with
 * LX_ERR_WRITE if the lock can't be had within 10 seconds, with the code of
 * the failure if the changed file can't be opened or read, and with
 * LX_ERR_CANT_CREATE (the file or its folder can't be written) or
 * LX_ERR_WRITE (a write failed) if the save fails. LX_Lexicon_Clear empties
 * memory even when its save fails. LX_Lexicon_Close leaves the file as it
 * is. Create also returns LX_ERR_WRITE if the lock can't be had. */
LX_API int32_t LX_DFTLex_Create(LX_Lexicon *lex, const char *fileName, int16_t lang);

/* LX_DFTLex_Open: makes lex a disk lexicon holding the words of the file
 * at fileName (cut to 515 bytes); see LX_DFTLex_Create. A file whose first
 * line doesn't begin with '#' is external, with the language LX_LANG_NONE.
 * In the file, a line "word", "word<TAB>" or "word<TAB><action>[other
 * word]" is an entry (the first two with LX_ACT_IGNORE), a later line
 * beginning with '#' a comment; empty lines are passed over; a line of
 * more than 79 bytes is read as several; a last line without CR LF isn't
 * read. The caller sets lex->kind to LEX_DFT. Asserts lex and fileName
 * non-null. Returns 0, LX_ERR_FILE_OPEN if the file can't be opened,
 * LX_ERR_INVALID_WORD if a line's word holds a control byte or a byte
 * without a class (message "Can't load %s"), or LX_ERR_NO_MEMORY; on
 * failure the record isn't open. */
LX_API int32_t LX_DFTLex_Open(LX_Lexicon *lex, const char *fileName);

/* LX_FCLex_Open: opens the compressed lexicon file fileName into lex,
 * reading its suffix tables and its index of segments; the segments
 * themselves are read from the file later, as lookups need them, and the
 * file is not kept open in between. At most budget bytes of segments are
 * held in memory at once, the least recently requested going first when a
 * new one needs room; budget 0 or below means no limit. The caller sets
 * lex->kind to LEX_FC. The lexicon can't be changed: adding, deleting,
 * clearing and images give LX_ERR_UNSUPPORTED.
 * Returns 0, or (message left, nothing held, lex not open):
 * LX_ERR_FILE_OPEN (can't be opened), LX_ERR_BAD_FORMAT (not a valid
 * compressed lexicon), LX_ERR_READ (a table or the index cut short),
 * LX_ERR_UNSUPPORTED (16-bit characters), LX_ERR_NO_MEMORY (out of memory,
 * more than 65,535 segments, or a segment larger than a budget above 0). */
LX_API int32_t LX_FCLex_Open(LX_Lexicon *lex, const char *fileName, int32_t budget);

/* LX_Lexicon_AddWord: stores word with action and otherWord (the
 * replacement of a change action, or null); a word stored already gets the
 * new action and other word. Returns 0, LX_ERR_INVALID_WORD (a control byte
 * or a byte without a class, more than 80 characters, or an action outside
 * 1 to 255, as the image keeps it in one byte; message left),
 * LX_ERR_NO_MEMORY (nothing changed) or LX_ERR_UNSUPPORTED for a kind that
 * can't be changed. Of a word longer than 80 characters no more than 81
 * bytes are read, whatever its length. */
LX_API int32_t LX_Lexicon_AddWord(LX_Lexicon *lex, const char *word, int16_t action,
                                  const char *otherWord);

/* LX_Lexicon_DelWord: removes word, exact in case. Returns 0,
 * LX_ERR_NOT_FOUND or LX_ERR_UNSUPPORTED. */
LX_API int32_t LX_Lexicon_DelWord(LX_Lexicon *lex, const char *word);

/* LX_Lexicon_Clear: removes all words; the lexicon stays open. */
LX_API int32_t LX_Lexicon_Clear(LX_Lexicon *lex);

/* LX_Lexicon_Close: releases what the lexicon holds. The record may be
 * given to a creating call again. */
LX_API int32_t LX_Lexicon_Close(LX_Lexicon *lex);

/* LX_Lexicon_GetImage: writes every entry into bfr as
 * word, TAB, action byte, other word, NUL; and a final NUL.
 * Returns the number of entries, or LX_ERR_RANGE if bfrSize is too small
 * (the buffer's contents are then unspecified). */
LX_API int32_t LX_Lexicon_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize);

/* LX_Lexicon_Size: bytes that LX_Lexicon_GetImage needs. */
LX_API int32_t LX_Lexicon_Size(LX_Lexicon *lex);

/* ----------------------------------------------------------- compilation */

/* LX_Compress_Lex: compiles the word list wordFileName into the compressed
 * lexicon lexFileName, with language 999. The list is a text file with
 * CR LF line ends: one word a line (at most 80 bytes, letters, digits,
 * punctuation and blanks), empty lines and lines that begin with '#'
 * skipped. The suffix tables are found first and kept in a temporary file
 * of its own, removed before the call returns. lexFileName is written in
 * place: an existing file of that name is overwritten, and after a failure
 * of the squeezer the incomplete file stays (it has no index, and opening
 * it fails). *errLine receives the number of lines read from the suffix
 * file for the simple table; the line of a bad word stands in the message.
 * Returns 0, or LX_ERR_FAILED (suffix discovery or the session failed) or
 * the squeezer's code: LX_ERR_CANT_CREATE (the list can't be opened, or
 * the lexicon can't be created), LX_ERR_INVALID_WORD, LX_ERR_RANGE (more
 * than 65,535 keys, or 2 GiB), LX_ERR_WRITE, LX_ERR_NO_MEMORY. A failure
 * leaves its message for LX_Compress_GetLastMsg. Not reentrant: one
 * compilation at a time in a process. Asserts that the arguments are not
 * null. */
LX_API int32_t LX_Compress_Lex(const char *wordFileName, const char *lexFileName, uint32_t *errLine);

/* LX_Compress_GetLastMsg: the message of the last failed LX_Compress_Lex,
 * at most 255 characters, such as "FENRO_CompressLexFile: invalid word at
 * line 7 [...]"; empty before the first failure. A success leaves it as it
 * was. Never null; the buffer is the engine's. */
LX_API const char *LX_Compress_GetLastMsg(void);

/* ----------------------------------------------------------- diagnostics */

/* LX_Diag_GetLastMsg: the last message that a call of the engine left on
 * the calling thread, or null before the first one. Each thread has its
 * own: what one thread's calls write never changes what another reads.
 * The text is the engine's: don't free it, and copy it if it is needed
 * after the thread's next call into the engine or after the thread ends. */
LX_API const char *LX_Diag_GetLastMsg(void);

/* The library's revision text. */
LX_API extern const char LX_Version[];

#ifdef __cplusplus
}
#endif

#endif /* LXENGINE_H */
