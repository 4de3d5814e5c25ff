// clex.cpp - word forms. LX_NormaliseWord turns a word of the text into
// the form that is looked up; LX_RestorePossessive and LX_TransferCase turn
// a word from a lexicon into the form that stands in the text. Everything
// works in automatic buffers of LX_MAX_WORD_SZ bytes.
#include "clex.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api.h"
#include "chartab.h"
#include "portab.h"
#include "safestr.h"
#include "suffix.h"

namespace {

constexpr int32_t kMaxChars = LX_MAX_WORD_SZ - 1;

bool is_apostrophe(uchar c) { return c == '\''; }
bool is_s(uchar c) { return c == 's' || c == 'S'; }

// Decodes the entities of word into out (at most 80 characters).
void decode_entities(const char *word, char *out) {
    const uchar *w = reinterpret_cast<const uchar *>(word);
    int32_t n = 0;
    auto put = [&](uchar c) {
        if (n < kMaxChars) out[n++] = static_cast<char>(c);
    };
    bool inEntity = false;
    size_t ampAt = 0;    // index in word of the '&' that opened the entity
    char name[LX_MAX_WORD_SZ];
    int32_t nameLen = 0;
    for (size_t i = 0; w[i] != 0; ++i) { // a caller's word may be of any length
        uchar c = w[i];
        if (c == '&') {
            inEntity = true;
            ampAt = i;
            nameLen = 0;
        } else if (!inEntity) {
            put(c);
        } else if (c != ';') {
            if (nameLen < kMaxChars) name[nameLen++] = static_cast<char>(c);
        } else {
            name[nameLen] = '\0';
            inEntity = false;
            if (name[0] == '#') {
                put(static_cast<uchar>(LX_Str_ToInt(name + 1) & 0xFF));
            } else {
                int ch = LX_Entity_Find(name);
                if (ch >= 0) {
                    put(static_cast<uchar>(ch));
                } else {
                    // Not a known entity: the '&' and everything behind it
                    // are plain characters.
                    put('&');
                    i = ampAt;
                }
            }
        }
    }
    out[n] = '\0'; // an entity still open at the end is dropped
}

} // namespace

int32_t LX_NormaliseWord(const char *word, uint32_t options, char *out) {
    int32_t n = 0;
    if (options & LX_OPT_MARKUP) {
        // Decoding reads the whole word, not just its first 80
        // characters: entities shorten it. A decoded 0 ends the word.
        decode_entities(word, out);
        n = LX_Str_Len(out);
    } else {
        for (; n < kMaxChars && word[n] != '\0'; ++n) out[n] = word[n];
        out[n] = '\0';
    }
    if ((options & LX_OPT_STRIP_POSSESSIVE) && n >= 2) {
        const uchar *w = reinterpret_cast<const uchar *>(out);
        if (is_s(w[n - 1]) && is_apostrophe(w[n - 2]))
            n -= 2;
        else if (is_apostrophe(w[n - 1]))
            n -= 1;
        out[n] = '\0';
    }
    return n;
}

void LX_RestorePossessive(const char *word, uint32_t options, char *repl) {
    LX_RestorePossessiveIn(word, options, repl, LX_MAX_WORD_SZ);
}

void LX_RestorePossessiveIn(const char *word, uint32_t options, char *repl, int32_t replSz) {
    if (replSz > LX_MAX_WORD_SZ) replSz = LX_MAX_WORD_SZ;
    if (!(options & LX_OPT_STRIP_POSSESSIVE)) return;
    const size_t n = std::strlen(word); // a caller's word may be of any length
    if (n < 2) return;
    const uchar *w = reinterpret_cast<const uchar *>(word);
    char s;
    if (is_apostrophe(w[n - 2]) && is_s(w[n - 1]))
        s = static_cast<char>(w[n - 1]);
    else if (is_s(w[n - 2]) && is_apostrophe(w[n - 1]))
        s = static_cast<char>(w[n - 2]);
    else
        return;
    int32_t r = LX_Str_Len(repl);
    LX_Str_CatChar(repl, replSz, '\'');
    if (r == 0 || !is_s(lx_byte(repl[r - 1]))) LX_Str_CatChar(repl, replSz, s);
}

void LX_TransferCase(const char *word, int16_t mode, int16_t keepAccents, char *repl) {
    const uchar *w = reinterpret_cast<const uchar *>(word);
    uchar *r = reinterpret_cast<uchar *>(repl);

    // Each position of repl is settled on its own: first its case, then,
    // without keepAccents, a capital takes its base letter. A character that
    // was just raised loses its accent whatever its class is then, so 0xFF
    // becomes 0xDF and then 'S'.
    auto settle = [keepAccents](uchar &c, int raise) {
        bool raised = false;
        if (raise > 0) {
            raised = lx_is_lower(c);
            c = lx_to_upper(c);
        } else if (raise < 0) {
            c = lx_to_lower(c);
        }
        if (keepAccents == 0 && (raised || lx_is_upper(c)) && lx_fold(c) != 0) c = lx_fold(c);
    };

    if (mode == 1) {
        int32_t wi = 0;
        for (int32_t i = 0; r[i] != 0; ++i) {
            uchar wc = w[wi];
            if (wc != 0 && w[wi + 1] != 0) ++wi; // the last character stands for the rest
            settle(r[i], lx_is_upper(wc) ? 1 : -1);
        }
        return;
    }

    size_t len = 0;           // a caller's word may be of any length
    bool lacksUpper = false; // a letter without the capital bit
    for (; w[len] != 0; ++len)
        if (lx_is_alpha(w[len]) && !lx_is_upper(w[len])) lacksUpper = true;
    bool allCapitals = !lacksUpper && len >= 2;
    bool capitalised = lacksUpper && lx_is_upper(w[0]);
    for (int32_t i = 0; r[i] != 0; ++i)
        settle(r[i], allCapitals || (capitalised && i == 0) ? 1 : 0);
}

int32_t FCLex_CheckWordCb(const char *keyWord, const char *checkWord, void *data) {
    LX_ASSERT(keyWord != NULL);
    LX_ASSERT(checkWord != NULL);
    (void)data;
    return LX_Str_ICmp(keyWord, checkWord) == 0 ? 0 : 1;
}

// ------------------------------------------------------------ compilation
//
// LX_Compress_Lex compiles a word list in three steps: suffix discovery
// writes the suffix tables to a temporary file, the squeezer makes the
// lexicon from the list and that file through a session of its own, and
// the temporary file is removed on every way out. The lexicon is written
// in place: after a failure of the squeezer what it wrote stays, a file
// without an index, which a reader refuses. Failures are told in the
// compiler's message buffer. Process-wide state: one call at a time.

namespace {

constexpr size_t kCompressMsgSz = 256;
char gCompressMsg[kCompressMsgSz] = "";

__attribute__((format(printf, 1, 2))) void compress_msg(const char *format, ...) {
    va_list args;
    va_start(args, format);
    std::vsnprintf(gCompressMsg, kCompressMsgSz, format, args); // cut to 255 characters
    va_end(args);
}

const char *diag_text() {
    const char *m = LX_Diag_GetLastMsg();
    return m ? m : "";
}

// Creates a new empty file for the suffix tables in the folder for
// temporary files (TMPDIR, else /tmp), named LX<unique>.tmp, and leaves its
// path in name (PORT_TEMP_NAME_SZ bytes). The name is claimed by creating
// the file exclusively with mode 0600, so no other process can take it
// first or put a link in its place. name stays empty if that fails.
void create_temp_file(char *name) {
    name[0] = '\0';
    const char *dir = std::getenv("TMPDIR");
    if (dir == nullptr || dir[0] == '\0') dir = "/tmp";
    char path[PORT_TEMP_NAME_SZ];
    const size_t dirLen = LX_Str_Len(dir);
    const int n = std::snprintf(path, sizeof path, "%s%sLXXXXXXX.tmp", dir, dir[dirLen - 1] == '/' ? "" : "/");
    if (n < 0 || static_cast<size_t>(n) >= sizeof path) return;
    const int fd = mkstemps(path, 4);
    if (fd < 0) return;
    close(fd);
    LX_Str_Copy(name, PORT_TEMP_NAME_SZ, path);
}

// The session steps after its opening; the code of the first that fails.
int32_t squeeze(int16_t session, const char *wordFileName, const char *lexFileName, const char *suffixFileName,
                uint32_t *errLine) {
    int16_t r = FENRO_CompressLexInit(session, lexFileName, suffixFileName, 999, errLine);
    const char *step = "FENRO_CompressLexInit";
    if (r == 0) {
        uint32_t wordLine = 0;
        r = FENRO_CompressLexFile(session, wordFileName, &wordLine);
        step = "FENRO_CompressLexFile";
    }
    if (r == 0) {
        r = FENRO_CompressLexEnd(session);
        step = "FENRO_CompressLexEnd";
    }
    if (r < 0) {
        compress_msg("%s: %s", step, diag_text());
        FENRO_CompressLexAbort(session);
    }
    FENRO_CloseSession(session);
    return r;
}

} // namespace

extern "C" LX_API int32_t LX_Compress_Lex(const char *wordFileName, const char *lexFileName, uint32_t *errLine) {
    LX_ASSERT(wordFileName != NULL);
    LX_ASSERT(lexFileName != NULL);
    LX_ASSERT(errLine != NULL);
    *errLine = 0;
    int32_t result = LX_ERR_FAILED;
    char suffixFileName[PORT_TEMP_NAME_SZ];
    create_temp_file(suffixFileName);
    const char *lists[] = {wordFileName};
    if (LX_FindSuffixes(1, lists, suffixFileName) < 0) {
        compress_msg("Suffix: %s", LX_SuffixMsg ? LX_SuffixMsg : "");
    } else if (const int16_t session = FENRO_OpenSession(); session < 0) {
        compress_msg("FENRO_OpenSession: %s", diag_text());
    } else {
        result = squeeze(session, wordFileName, lexFileName, suffixFileName, errLine);
    }
    if (suffixFileName[0] != '\0') std::remove(suffixFileName);
    return result;
}

extern "C" LX_API const char *LX_Compress_GetLastMsg(void) { return gCompressMsg; }
