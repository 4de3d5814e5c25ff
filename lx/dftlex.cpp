// dftlex.cpp - the disk text lexicon.
//
// The record (member dft) owns a memory lexicon, mem, that holds every
// entry of the file, and the stamp of the file as it was last read or
// written. Lookups and searches go to mem alone. A change runs, under an
// advisory lock that excludes other processes:
//
//   refresh (if the file's stamp differs from ours, load the file beside
//   what mem holds) -> change mem -> save (write the whole file beside the
//   old one, sync, rename over it) -> note the stamp of what was written.
//
// So several processes that change one file lose none of each other's
// additions, and a crash at any moment leaves the old file or the new one,
// whole. A refresh is a union: a word that another process deleted comes
// back if this one still holds it.
//
// The file: CR LF lines. An optional header "#LID <language>"; entry lines
// "word<TAB><action letter><other word>", or a word alone (external files
// are only that). Lines are read in pieces of at most 79 bytes, which is
// why an entry whose line wouldn't read back whole is refused at once.
#include "dftlex.h"

#include <cstring>

#include "chartab.h"
#include "diag.h"
#include "dmtlex.h"
#include "safestr.h"

#define MAGIC DFTLEX_MAGIC

namespace {

// Windows language identifiers that a header may hold, and the language
// letters they stand for.
struct LangRow {
    int16_t identifier;
    int16_t lang;
};
constexpr LangRow LANGUAGE_IDS[] = {
    {1033, 0x616D}, {2057, 0x6272}, {4105, 0x6361}, {1027, 0x7363}, {1029, 0x6373},
    {1030, 0x6461}, {1043, 0x6475}, {1035, 0x6669}, {1036, 0x6672}, {1031, 0x6765},
    {1038, 0x6875}, {1040, 0x6974}, {1044, 0x6E62}, {2068, 0x6E6E}, {1045, 0x706C},
    {1046, 0x7062}, {2070, 0x706F}, {1049, 0x7275}, {1034, 0x7370}, {1053, 0x7377},
};

void check_open(const LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT_TEXT(MAGIC == lex->dft.magic, "MAGIC == lex->magic");
}

LX_Lexicon *mem(LX_Lexicon *lex) { return LX_DFTLex_Mem(lex); }

const LX_LexEntry *entries_of(const LX_Lexicon *lex) {
    return static_cast<const LX_LexEntry *>(lex->dft.mem.words.data);
}

// ------------------------------------------------------------------ stamp

uint64_t file_id(const PortStamp &stamp) { return stamp.inode ^ (stamp.device * 0x9E3779B97F4A7C15ull); }

void set_stamp(LX_Lexicon *lex, const PortStamp &stamp) {
    lex->dft.fileTime = static_cast<int32_t>(stamp.seconds);
    lex->dft.fileTimeNsec = stamp.nanoseconds;
    lex->dft.fileSize = stamp.size;
    lex->dft.fileId = file_id(stamp);
}

bool same_stamp(const LX_Lexicon *lex, const PortStamp &stamp) {
    return lex->dft.fileTime == static_cast<int32_t>(stamp.seconds) && lex->dft.fileTimeNsec == stamp.nanoseconds &&
           lex->dft.fileSize == stamp.size && lex->dft.fileId == file_id(stamp);
}

// Forgets the stamp, so that the next change reads the file again.
void forget_stamp(LX_Lexicon *lex) { set_stamp(lex, PortStamp{}); }

// ------------------------------------------------------------------ lines

// Whether line, written with CR LF behind it, comes back from the reader
// as the same one line. That takes more than a length: the reader stops at
// 79 bytes (a line of exactly 79 then leaves an empty line behind, which
// is passed over, but one of 78 leaves its CR in the buffer and its LF to
// the next line), CR CR LF is no line end, an inner CR LF is one, and a
// line that is empty or begins with '#' is no entry.
bool line_reads_back(const char *line, size_t len) {
    if (len == 0 || line[0] == '#') return false;
    const int32_t limit = DFTLEX_LINE_SZ - 1;
    int32_t stored = 0;
    bool afterCr = false;
    for (size_t i = 0; i < len + 2; ++i) {
        if (stored == limit) return i == len && static_cast<size_t>(stored) == len;
        const char c = i < len ? line[i] : PORT_LINE_END[i - len];
        ++stored;
        if (afterCr && c == '\n') return i == len + 1 && static_cast<size_t>(stored - 2) == len;
        afterCr = !afterCr && c == '\r';
    }
    return false;
}

// The line of an entry as the file format has it: the word alone in an
// external file, else word, tab, the action's low byte and the other word,
// cut to the buffer.
void standard_line(bool external, const char *word, int16_t action, const char *otherWord, char *line) {
    LX_Str_Copy(line, DFTLEX_WRITE_LINE_SZ, word);
    if (external) return;
    LX_Str_CatChar(line, DFTLEX_WRITE_LINE_SZ, '\t');
    LX_Str_CatChar(line, DFTLEX_WRITE_LINE_SZ, static_cast<char>(action & 0xFF));
    if (otherWord) LX_Str_Cat(line, DFTLEX_WRITE_LINE_SZ, otherWord);
}

// The line to write for an entry. Entries that the engine has added
// always read back in their standard form. An entry loaded from a piece
// of an overlong line may not: a word without action and other word is
// then written in another form that reads back the same (the word alone,
// or the word and a tab), and any other entry is cut until its line reads
// back as one line. The one thing that must never happen is a line that
// merges with the next one on reading, taking its word with it.
size_t entry_line(bool external, const LX_LexEntry &entry, char *line) {
    standard_line(external, entry.word, entry.action, entry.otherWord, line);
    size_t len = std::strlen(line);
    if (line_reads_back(line, len)) return len;
    const bool plain = external || (entry.action == LX_ACT_IGNORE &&
                                    (entry.otherWord == nullptr || entry.otherWord[0] == '\0'));
    if (plain) {
        LX_Str_Copy(line, DFTLEX_WRITE_LINE_SZ, entry.word);
        len = std::strlen(line);
        if (line_reads_back(line, len)) return len;
        LX_Str_CatChar(line, DFTLEX_WRITE_LINE_SZ, '\t');
        len = std::strlen(line);
        if (line_reads_back(line, len)) return len;
    }
    standard_line(external, entry.word, entry.action, entry.otherWord, line);
    len = std::strlen(line);
    if (len > static_cast<size_t>(DFTLEX_LINE_SZ - 1)) len = DFTLEX_LINE_SZ - 1;
    while (len > 0 && !line_reads_back(line, len)) --len;
    line[len] = '\0';
    return len;
}

// Reads the lines of file into the memory lexicon target. The header sets
// *lang; a file without one sets *external and the language to none.
int32_t read_entries(PortFile *file, LX_Lexicon *target, int16_t *lang, int16_t *external) {
    char line[DFTLEX_LINE_SZ];
    int16_t n = PORT_ReadLine(file, line, DFTLEX_LINE_SZ);
    if (n >= 0 && line[0] == '#') {
        LX_DFTLex_ParseHeader(line, lang);
    } else {
        *external = 1;
        *lang = LX_LANG_NONE;
        PORT_Seek(file, 0, SEEK_SET);
    }
    while (PORT_ReadLine(file, line, DFTLEX_LINE_SZ) >= 0) {
        if (line[0] == '#' || line[0] == '\0') continue; // comment or empty line
        int16_t action = LX_ACT_IGNORE;
        char otherWord[LX_MAX_WORD_SZ] = "";
        if (char *tab = const_cast<char *>(LX_Str_Chr(line, '\t'))) {
            *tab = '\0';
            // A line that ends right behind its tab has no action byte:
            // the word alone.
            if (tab[1] != '\0') {
                action = static_cast<int16_t>(lx_byte(tab[1]));
                LX_Str_Copy(otherWord, sizeof otherWord, tab + 2);
            }
        }
        int32_t r = LX_DMTLex_AddWord(target, line, action, otherWord);
        if (r < 0) return r;
    }
    return 0;
}

// Adds the entries of from that to hasn't got to to.
int32_t add_missing(LX_Lexicon *to, LX_Lexicon *from) {
    const auto *all = static_cast<const LX_LexEntry *>(from->dmt.words.data);
    for (int32_t e = 0; e < from->dmt.words.count; ++e) {
        if (LX_DMTLex_FindWord(to, all[e].word, 1, nullptr, 0) >= 0) continue;
        int32_t r = LX_DMTLex_AddWord(to, all[e].word, all[e].action, all[e].otherWord);
        if (r < 0) return r;
    }
    return 0;
}

int32_t lock_failed(LX_Lexicon *lex, int16_t token) {
    LX_Diag_Msg("Can't lock %s (%ld)", lex->dft.fileName, static_cast<long>(token));
    return LX_ERR_WRITE;
}

// Whether a failed refresh stops the change. A change never replaces a
// file that holds what it couldn't read: a load that fails stops it, and
// so does a file that is there but couldn't be opened. Only where no file
// stands (a folder, or nothing at all any more) does the change go on with
// what memory holds; its save then reports what is wrong with the path.
bool refresh_stops(const LX_Lexicon *lex, int32_t r) {
    if (r >= 0) return false;
    if (r != LX_ERR_FILE_OPEN) return true;
    PortStamp stamp;
    return PORT_FileStamp(lex->dft.fileName, &stamp) == 0 && stamp.regular;
}

} // namespace

// ----------------------------------------------------------- creating calls

extern "C" LX_API int32_t LX_DFTLex_Create(LX_Lexicon *lex, const char *fileName, int16_t lang) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT(fileName != NULL);
    forget_stamp(lex);
    lex->dft.external = 0;
    LX_Str_Copy(lex->dft.fileName, sizeof lex->dft.fileName, fileName);
    int32_t r = LX_DMTLex_Create(mem(lex), 16, lang);
    if (r < 0) return r;

    if (PortFile *file = PORT_OpenFile(lex->dft.fileName, PORT_MODE_READ_TEXT)) {
        LX_Diag_Msg("%s already exists", lex->dft.fileName);
        PORT_CloseFile(file);
        LX_DMTLex_Close(mem(lex));
        return LX_ERR_FILE_EXISTS;
    }
    r = PORT_CreateFile(lex->dft.fileName); // fails if anything is there
    if (r < 0) {
        LX_Diag_Msg("%s already exists", lex->dft.fileName);
        LX_DMTLex_Close(mem(lex));
        return r;
    }
    // The new file is empty; its header is written under the lock, as every
    // save is. Should another process have taken the empty file up and
    // written to it in the meantime, the file is that process's now.
    const int16_t token = PORT_LockFile(lex->dft.fileName);
    PortStamp stamp;
    const bool written = PORT_FileStamp(lex->dft.fileName, &stamp) == 0 && stamp.size != 0;
    if (token < 0 || written) {
        if (!written) std::remove(lex->dft.fileName);
        PORT_UnlockFile(token);
        LX_DMTLex_Close(mem(lex));
        if (token < 0) return lock_failed(lex, token);
        LX_Diag_Msg("%s already exists", lex->dft.fileName);
        return LX_ERR_FILE_EXISTS;
    }
    r = LX_DFTLex_Save(lex, lex->dft.fileName);
    if (r < 0) {
        // Take the empty file away again, unless someone has written to it.
        if (PORT_FileStamp(lex->dft.fileName, &stamp) == 0 && stamp.size == 0) std::remove(lex->dft.fileName);
        PORT_UnlockFile(token);
        LX_DMTLex_Close(mem(lex));
        return r;
    }
    PORT_UnlockFile(token);
    lex->dft.magic = MAGIC;
    LX_Diag_Msg("%s created", lex->dft.fileName);
    return 0;
}

extern "C" LX_API int32_t LX_DFTLex_Open(LX_Lexicon *lex, const char *fileName) {
    LX_ASSERT(lex != NULL);
    LX_ASSERT(fileName != NULL);
    PortFile *file = PORT_OpenFile(fileName, PORT_MODE_READ_TEXT);
    if (!PORT_IS_VALID_FILE_ID(file)) {
        LX_Diag_Msg("%s: file open error", fileName);
        return LX_ERR_FILE_OPEN;
    }
    // The stamp of the version about to be read: a change made while it is
    // read shows as a change at the next refresh.
    PortStamp stamp;
    PORT_FileStampOf(file, &stamp);
    set_stamp(lex, stamp);
    lex->dft.external = 0;
    LX_Str_Copy(lex->dft.fileName, sizeof lex->dft.fileName, fileName);
    int32_t r = LX_DMTLex_Create(mem(lex), 16, LX_LANG_NONE);
    if (r < 0) {
        PORT_CloseFile(file);
        return r;
    }
    r = LX_DFTLex_Load(file, lex, 0);
    PORT_CloseFile(file);
    if (r < 0) {
        LX_DMTLex_Close(mem(lex));
        return r;
    }
    lex->dft.magic = MAGIC;
    return 0;
}

// ---------------------------------------------------------------- changes

int32_t LX_DFTLex_AddWord(LX_Lexicon *lex, const char *word, int16_t action, const char *otherWord) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    const char *name = lex->dft.fileName;
    if (lex->dft.external && action != LX_ACT_IGNORE) {
        LX_Diag_Msg("Can't use action %c with external lexicon %s", static_cast<char>(action), name);
        return LX_ERR_UNSUPPORTED;
    }
    if (!LX_DFTLex_EntryReadsBack(lex, word, action, otherWord)) {
        LX_Diag_Msg("AddWord: %s can't be stored in %s: its line would not read back whole "
                    "(at most 79 bytes, no line end, no '#' first, an action of one byte)",
                    word, name);
        return LX_ERR_INVALID_WORD;
    }
    const int16_t token = PORT_LockFile(name);
    if (token < 0) return lock_failed(lex, token);
    int32_t r = LX_DFTLex_Refresh(lex);
    if (refresh_stops(lex, r)) {
        PORT_UnlockFile(token);
        return r;
    }
    r = LX_DMTLex_AddWord(mem(lex), word, action, otherWord);
    if (r < 0) {
        LX_Diag_Msg("Can't add word to %s (%ld)", name, static_cast<long>(r));
        PORT_UnlockFile(token);
        return r;
    }
    r = LX_DFTLex_Save(lex, name);
    if (r < 0) {
        LX_Diag_Msg("Can't write %s (%ld)", name, static_cast<long>(r));
        LX_DMTLex_DelWord(mem(lex), word);
        // The file still holds what it held, an older entry of this word
        // included: the next change reads it again.
        forget_stamp(lex);
        PORT_UnlockFile(token);
        return r;
    }
    PORT_UnlockFile(token);
    return 0;
}

int32_t LX_DFTLex_DelWord(LX_Lexicon *lex, const char *word) {
    check_open(lex);
    LX_ASSERT(word != NULL);
    const char *name = lex->dft.fileName;
    const int16_t token = PORT_LockFile(name);
    if (token < 0) return lock_failed(lex, token);
    char otherWord[DFTLEX_WRITE_LINE_SZ];
    int32_t r = LX_DMTLex_FindWord(mem(lex), word, 1, otherWord, sizeof otherWord);
    if (r < 0) {
        LX_Diag_Msg("%s doesn't exist in %s", word, name);
        PORT_UnlockFile(token);
        return r;
    }
    r = LX_DFTLex_Refresh(lex);
    if (refresh_stops(lex, r)) {
        PORT_UnlockFile(token);
        return r;
    }
    // The entry as it stands after the refresh, to put back if the save fails.
    const int16_t action = LX_DMTLex_FindWord(mem(lex), word, 1, otherWord, sizeof otherWord);
    r = LX_DMTLex_DelWord(mem(lex), word);
    if (r < 0) {
        LX_Diag_Msg("Can't delete %s from %s", word, name);
        PORT_UnlockFile(token);
        return r;
    }
    r = LX_DFTLex_Save(lex, name);
    if (r < 0) {
        LX_Diag_Msg("Can't save %s (%ld)", name, static_cast<long>(r));
        LX_DMTLex_AddWord(mem(lex), word, action, otherWord);
        forget_stamp(lex);
        PORT_UnlockFile(token);
        return r;
    }
    PORT_UnlockFile(token);
    return 0;
}

int32_t LX_DFTLex_Clear(LX_Lexicon *lex) {
    check_open(lex);
    const char *name = lex->dft.fileName;
    // Unlike the other changes, a clear reads nothing first: what others
    // wrote goes too. The lock still keeps their saves and this one apart.
    const int16_t token = PORT_LockFile(name);
    if (token < 0) return lock_failed(lex, token);
    LX_DMTLex_Clear(mem(lex));
    int32_t r = LX_DFTLex_Save(lex, name);
    if (r < 0) {
        LX_Diag_Msg("Can't write %s (%ld)", name, static_cast<long>(r));
        PortStamp stamp;
        PORT_FileStamp(name, &stamp);
        set_stamp(lex, stamp);
    }
    PORT_UnlockFile(token);
    return r;
}

int32_t LX_DFTLex_Close(LX_Lexicon *lex) {
    check_open(lex);
    LX_DMTLex_Close(mem(lex));
    lex->dft.magic = 0;
    return 0;
}

// ------------------------------------------------------------- forwarding

int16_t LX_DFTLex_FindWord(LX_Lexicon *lex, const char *word, int16_t caseSensitive, char *otherWord,
                           int32_t otherWordSize) {
    check_open(lex);
    return LX_DMTLex_FindWord(mem(lex), word, caseSensitive, otherWord, otherWordSize);
}

int32_t LX_DFTLex_GetImage(LX_Lexicon *lex, char *bfr, int32_t bfrSize) {
    check_open(lex);
    return LX_DMTLex_GetImage(mem(lex), bfr, bfrSize);
}

int32_t LX_DFTLex_Size(LX_Lexicon *lex) {
    check_open(lex);
    return LX_DMTLex_Size(mem(lex));
}

int32_t LX_DFTLex_FindPattern(LX_Lexicon *lex, const char *pattern, int16_t caseSensitive,
                              SuggSet *matches) {
    check_open(lex);
    return LX_DMTLex_FindPattern(mem(lex), pattern, caseSensitive, matches);
}

int32_t LX_DFTLex_FindSimilar(LX_Lexicon *lex, const char *word, int32_t depth,
                              LX_WordComparatorCb wordComparatorCb, SuggSet *suggestions) {
    check_open(lex);
    return LX_DMTLex_FindSimilar(mem(lex), word, depth, wordComparatorCb, suggestions);
}

int32_t LX_DFTLex_ForEachBaseForm(LX_Lexicon *lex, const char *word, LX_BaseFormVisitor visit, void *ctx) {
    check_open(lex);
    return LX_DMTLex_ForEachBaseForm(mem(lex), word, visit, ctx);
}

// ------------------------------------------------------------------- file

int32_t LX_DFTLex_Load(PortFile *file, LX_Lexicon *lex, int16_t merge) {
    LX_ASSERT(lex != NULL);
    if (!merge) {
        LX_DMTLex_Clear(mem(lex));
        int32_t r = read_entries(file, mem(lex), &lex->dft.mem.lang, &lex->dft.external);
        if (r < 0) {
            LX_Diag_Msg("Can't load %s", lex->dft.fileName);
            LX_DMTLex_Clear(mem(lex));
        }
        return r;
    }
    // Merging: the file is read into a lexicon of its own, which then takes
    // the entries of mem that the file hasn't got and replaces mem. Until
    // that last step nothing of mem has changed, so a failure leaves it
    // as it was.
    LX_Lexicon fresh{};
    int16_t external = 0;
    int32_t r = LX_DMTLex_Create(&fresh, 16, LX_LANG_NONE);
    if (r == 0) r = read_entries(file, &fresh, &fresh.dmt.lang, &external);
    if (r == 0) r = add_missing(&fresh, mem(lex));
    if (r < 0) {
        LX_Diag_Msg("Can't load %s", lex->dft.fileName);
        if (fresh.dmt.magic != 0) LX_DMTLex_Close(&fresh);
        return r;
    }
    LX_DMTLex_Close(mem(lex));
    lex->dft.mem = fresh.dmt;
    if (external) lex->dft.external = 1;
    return 0;
}

int32_t LX_DFTLex_Save(LX_Lexicon *lex, const char *path) {
    LX_ASSERT(lex != NULL);
    // Saves of the lexicon's own file are made under its lock, so the new
    // version can have a fixed name beside it: a save that dies half-way
    // leaves one such file, which the next save replaces.
    PortReplace replace;
    const bool ownFile = LX_Str_Cmp(path, lex->dft.fileName) == 0;
    if (PORT_BeginReplace(&replace, path, ownFile ? DFTLEX_SAVE_SUFFIX : nullptr) != 0) {
        LX_Diag_Msg("Can't open %s for writing", path);
        return LX_ERR_CANT_CREATE;
    }
    bool ok = true;
    const bool external = lex->dft.external != 0;
    if (!external) {
        char header[DFTLEX_LINE_SZ] = "#LID", number[20];
        LX_Str_CatChar(header, sizeof header, ' ');
        LX_Str_FromInt(lex->dft.mem.lang, number, sizeof number);
        LX_Str_Cat(header, sizeof header, number);
        ok = PORT_WriteLine(replace.file, header) >= 0;
    }
    const LX_LexEntry *all = entries_of(lex);
    char line[DFTLEX_WRITE_LINE_SZ];
    for (int32_t e = 0; ok && e < lex->dft.mem.words.count; ++e) {
        entry_line(external, all[e], line);
        ok = PORT_WriteLine(replace.file, line) >= 0;
    }
    if (!ok) {
        PORT_AbortReplace(&replace);
        LX_Diag_Msg("%s: file write err", path);
        return LX_ERR_WRITE;
    }
    PortStamp stamp;
    if (PORT_CommitReplace(&replace, &stamp) != 0) {
        LX_Diag_Msg("%s: file write err", path);
        return LX_ERR_WRITE;
    }
    if (ownFile) set_stamp(lex, stamp);
    return 0;
}

int32_t LX_DFTLex_Refresh(LX_Lexicon *lex) {
    LX_ASSERT(lex != NULL);
    PortStamp stamp;
    // A file that can't be examined, or that is as it was, leaves mem alone.
    if (PORT_FileStamp(lex->dft.fileName, &stamp) != 0 || same_stamp(lex, stamp)) return 0;
    PortFile *file = PORT_OpenFile(lex->dft.fileName, PORT_MODE_READ_TEXT);
    if (!PORT_IS_VALID_FILE_ID(file)) {
        LX_Diag_Msg("%s: Can't open", lex->dft.fileName);
        return LX_ERR_FILE_OPEN;
    }
    PORT_FileStampOf(file, &stamp); // the version actually read
    int32_t r = LX_DFTLex_Load(file, lex, 1);
    PORT_CloseFile(file);
    if (r < 0) return r;
    set_stamp(lex, stamp);
    return 0;
}

int32_t LX_DFTLex_ParseHeader(const char *line, int16_t *lang) {
    char token[DFTLEX_TOKEN_SZ];
    const char *rest = LX_DFTLex_NextToken(line, token, sizeof token); // "#LID", not compared
    LX_DFTLex_NextToken(rest, token, sizeof token);
    *lang = static_cast<int16_t>(static_cast<uint16_t>(LX_Str_ToInt(token) & 0xFFFF));
    for (const LangRow &row : LANGUAGE_IDS)
        if (*lang == row.identifier) *lang = row.lang;
    return 0;
}

const char *LX_DFTLex_NextToken(const char *s, char *dst, int16_t dstSize) {
    LX_ASSERT(s != NULL);
    while (*s && lx_is_space(lx_byte(*s))) ++s;
    int16_t n = 0;
    while (*s && !lx_is_space(lx_byte(*s)) && n < dstSize - 1) dst[n++] = *s++;
    if (dstSize > 0) dst[n] = '\0';
    return s;
}

bool LX_DFTLex_EntryReadsBack(const LX_Lexicon *lex, const char *word, int16_t action,
                              const char *otherWord) {
    if (action <= 0 || action > 0xFF) return false; // only the low byte is written
    char line[DFTLEX_WRITE_LINE_SZ];
    standard_line(lex->dft.external != 0, word, action, otherWord, line);
    size_t len = std::strlen(line);
    // A line cut by the write buffer doesn't come back either.
    size_t full = std::strlen(word) + (lex->dft.external ? 0 : 2 + (otherWord ? std::strlen(otherWord) : 0));
    return len == full && line_reads_back(line, len);
}
