// lexsq.cpp - the squeezer. A word list is read whole into an Sma, sorted,
// and written in one pass: a segment for each run of words with one key,
// each word front-coded against the one before it, with the longest ending
// that a suffix table holds replaced by its code. The segments are kept in
// a list sorted by key, from which LexSq_End writes the index.
//
// The file is written in place and every write is checked. The stream
// buffers what is written, so a full disk may show only at a later write
// or at the flush of LexSq_End; either way the run ends in LX_ERR_WRITE and
// no index is written.
#include "lexsq.h"

#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "diag.h"
#include "lxvector.h"
#include "mclex.h"
#include "platform.h"
#include "safestr.h"

namespace {

constexpr int16_t kLineSz = 128;
constexpr int32_t kMaxWordLen = LX_MAX_WORD_SZ - 1;

bool put(LexSqContext *ctx, const void *data, uint32_t count) {
    return PORT_Write(ctx->file, data, count) == count;
}

bool put32(LexSqContext *ctx, uint32_t value) {
    uchar raw[LXC_NUMBER_SZ];
    LXC_Put32(raw, value);
    return put(ctx, raw, sizeof raw);
}

bool put_section_head(LexSqContext *ctx, uint32_t type, uint32_t length) {
    return put32(ctx, type) && put32(ctx, length);
}

int16_t write_failed(const LexSqContext *ctx) {
    LX_Diag_Msg("error writing to %s", ctx->lexFileName);
    return LX_ERR_WRITE;
}

int16_t too_large(const LexSqContext *ctx) {
    LX_Diag_Msg("%s would reach 2 GiB", ctx->lexFileName);
    return LX_ERR_RANGE;
}

int16_t too_many_segments() {
    LX_Diag_Msg("addSegment: more than %d segments", MAX_SEGMENTS);
    return LX_ERR_RANGE;
}

int compare_words(const void *a, const void *b) {
    return LX_Str_Cmp(*static_cast<const char *const *>(a), *static_cast<const char *const *>(b));
}

// Steps common to both ways of starting: the file and its first sections.
int16_t create_file(LexSqContext *ctx, const char *lexFileName, int16_t lang) {
    LX_Str_Copy(ctx->lexFileName, LEXSQ_PATH_SZ, lexFileName);
    ctx->segments = nullptr;
    ctx->lastSegment = nullptr;
    ctx->nSegments = 0;
    ctx->nSimple = 0;
    ctx->nExt = 0;
    ctx->fileOpen = 0;
    ctx->dataStart = 0; // no data section yet
    ctx->file = PORT_OpenFile(lexFileName, PORT_MODE_UPDATE);
    if (!ctx->file) {
        LX_Diag_Msg("can't open %s", lexFileName);
        return LX_ERR_CANT_CREATE;
    }
    ctx->fileOpen = 1;
    if (!put32(ctx, FCLEX_FILE_MAGIC)) {
        LX_Diag_Msg("can't write to %s", ctx->lexFileName);
        return LX_ERR_WRITE;
    }
    const auto langValue = static_cast<uint32_t>(static_cast<int32_t>(lang));
    if (!put_section_head(ctx, SECT_LANGUAGE, LXC_NUMBER_SZ) || !put32(ctx, langValue) ||
        !put_section_head(ctx, SECT_CHAR_SIZE, LXC_NUMBER_SZ) || !put32(ctx, LXC_CHAR_SIZE))
        return write_failed(ctx);
    return 0;
}

// True once LexSq_Init has succeeded, until the end of the run.
bool data_open(const LexSqContext *ctx) {
    return ctx->fileOpen && PORT_IS_VALID_FILE_ID(ctx->file) && ctx->dataStart > 0;
}

// Writes the suffix tables and opens the data section, whose length
// LexSq_End patches.
int16_t open_data(LexSqContext *ctx) {
    int16_t r = LexSq_WriteSuffixes(ctx);
    if (r == 0 && !put_section_head(ctx, SECT_SEG_DATA, SECT_SEG_DATA)) r = write_failed(ctx);
    if (r < 0) {
        LexSq_Reset(ctx);
        return r;
    }
    ctx->dataStart = PORT_Tell(ctx->file);
    return 0;
}

// Flushes the stream and syncs the file to the disk. A file that can't be
// synced at all (a device) counts as synced.
bool flush_and_sync(PortFile *file) {
    if (std::fflush(file->fp) != 0 || std::ferror(file->fp)) return false;
    if (fsync(fileno(file->fp)) == 0) return true;
    return errno == EINVAL || errno == EROFS || errno == ENOTSUP;
}

// After a failed LexSq_End: throws away what the stream still holds and
// cuts the file back to end, where the index would have begun.
void cut_back(PortFile *file, int32_t end) {
    __fpurge(file->fp);
    const int fd = fileno(file->fp);
    struct stat st;
    if (end >= 0 && fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > end) {
        [[maybe_unused]] int ignored = ftruncate(fd, end);
    }
}

} // namespace

int32_t LexSq_CompareKeys(const void *id1, const void *id2) {
    LX_ASSERT(id1 != NULL);
    LX_ASSERT(id2 != NULL);
    return LXC_CompareKeys(static_cast<const uchar *>(id1), static_cast<const uchar *>(id2));
}

int32_t LexSq_CompareSegs(const void *p1, const void *p2) {
    LX_ASSERT(p1 != NULL);
    LX_ASSERT(p2 != NULL);
    return LexSq_CompareKeys(static_cast<const LexSqSegment *>(p1)->key, static_cast<const LexSqSegment *>(p2)->key);
}

int16_t LexSq_Init(LexSqContext *context, const char *lexFileName, const char *suffixFileName, int16_t lang,
                   uint32_t *errLine) {
    LX_ASSERT(context != NULL);
    LX_ASSERT(lexFileName != NULL);
    LX_ASSERT(suffixFileName != NULL);
    LX_ASSERT(errLine != NULL);
    int16_t r = create_file(context, lexFileName, lang);
    if (r < 0) return r;
    r = LexSq_ReadSuffixes(context, suffixFileName, errLine);
    if (r < 0) {
        LexSq_Reset(context);
        return r;
    }
    return open_data(context);
}

int16_t LexSq_InitTables(LexSqContext *context, const char *lexFileName, const char *const *simple,
                         int32_t nSimple, const char *const *ext, int32_t nExt, int16_t lang) {
    LX_ASSERT(context != NULL);
    LX_ASSERT(lexFileName != NULL);
    LX_ASSERT(nSimple >= 0 && nSimple <= MAX_SIMPLE_SUFFIXES && (nSimple == 0 || simple != NULL));
    LX_ASSERT(nExt >= 0 && nExt <= MAX_EXT_SUFFIXES && (nExt == 0 || ext != NULL));
    const int16_t r = create_file(context, lexFileName, lang);
    if (r < 0) return r;
    for (int32_t i = 0; i < nSimple; ++i) LX_Str_Copy(context->simple[i], MAX_SUFFIX_LEN + 1, simple[i]);
    for (int32_t i = 0; i < nExt; ++i) LX_Str_Copy(context->ext[i], MAX_SUFFIX_LEN + 1, ext[i]);
    context->nSimple = static_cast<uint16_t>(nSimple);
    context->nExt = static_cast<uint16_t>(nExt);
    return open_data(context);
}

int16_t LexSq_ReadSuffixes(LexSqContext *context, const char *fileName, uint32_t *errLine) {
    LX_ASSERT(context != NULL);
    LX_ASSERT(fileName != NULL);
    LX_ASSERT(errLine != NULL);
    *errLine = 0;
    PortFile *file = PORT_OpenFile(fileName, PORT_MODE_READ_TEXT);
    if (!file) {
        LX_Diag_Msg("can't open %s", fileName);
        return LX_ERR_CANT_CREATE;
    }
    char line[kLineSz];
    bool atEnd = false;
    context->nSimple = 0;
    context->nExt = 0;
    while (context->nSimple < MAX_SIMPLE_SUFFIXES) {
        if (PORT_ReadLine(file, line, kLineSz) < 0) {
            atEnd = true;
            break;
        }
        ++*errLine;
        if (line[0] == '#') continue;
        LX_Str_Copy(context->simple[context->nSimple++], MAX_SUFFIX_LEN + 1, line);
    }
    while (!atEnd && context->nExt < MAX_EXT_SUFFIXES) {
        if (PORT_ReadLine(file, line, kLineSz) < 0) break;
        if (line[0] == '#') continue;
        LX_Str_Copy(context->ext[context->nExt++], MAX_SUFFIX_LEN + 1, line);
    }
    PORT_CloseFile(file);
    return 0;
}

int16_t LexSq_WriteSuffixes(LexSqContext *context) {
    LX_ASSERT(context != NULL);
    if (!put32(context, SECT_SUFFIXES)) return write_failed(context);
    uint32_t s = 0, e = 0;
    for (uint16_t i = 0; i < context->nSimple; ++i) s += LX_Str_Len(context->simple[i]) + 1;
    for (uint16_t i = 0; i < context->nExt; ++i) e += LX_Str_Len(context->ext[i]) + 1;
    bool ok = put32(context, 2 * LXC_NUMBER_SZ + s + e) && put32(context, s);
    for (uint16_t i = 0; ok && i < context->nSimple; ++i)
        ok = put(context, context->simple[i], LX_Str_Len(context->simple[i]) + 1);
    ok = ok && put32(context, e);
    for (uint16_t i = 0; ok && i < context->nExt; ++i)
        ok = put(context, context->ext[i], LX_Str_Len(context->ext[i]) + 1);
    return ok ? 0 : write_failed(context);
}

int16_t LexSq_ReadWords(PortFile *file, LX_Vector *words, Sma *sma, uint32_t *errLine) {
    char line[kLineSz];
    for (int16_t len; (len = PORT_ReadLine(file, line, kLineSz)) >= 0;) {
        ++*errLine;
        if (len == 0 || line[0] == '#') continue;
        if (len > kMaxWordLen) {
            LX_Diag_Msg("word at line %lu too long", static_cast<unsigned long>(*errLine));
            return LX_ERR_INVALID_WORD;
        }
        for (int16_t i = 0; i < len; ++i) {
            if (!LexSq_IsWordByte(lx_byte(line[i]))) {
                LX_Diag_Msg("invalid word at line %lu [%s]", static_cast<unsigned long>(*errLine), line);
                return LX_ERR_INVALID_WORD;
            }
        }
        auto *copy = static_cast<char *>(Sma_Alloc(sma, static_cast<uint32_t>(len) + 1));
        if (copy) std::memcpy(copy, line, static_cast<size_t>(len) + 1);
        if (!copy || LX_Vector_Append(words, &copy) < 0) {
            LX_Diag_Msg("Out of memory at line %lu", static_cast<unsigned long>(*errLine));
            return LX_ERR_NO_MEMORY;
        }
    }
    LX_Vector_Sort(words, compare_words);
    return 0;
}

int16_t addSegment(LexSqContext *context, const LexSqSegment *seg) {
    // Within one word list the keys ascend, so a new key mostly belongs
    // behind the last node; only a later list can reach into the middle.
    LexSqSegment **link;
    LexSqSegment *at = nullptr;
    if (!context->lastSegment || LXC_CompareKeys(context->lastSegment->key, seg->key) < 0) {
        link = context->lastSegment ? &context->lastSegment->next : &context->segments;
    } else {
        link = &context->segments;
        while (*link && LXC_CompareKeys((*link)->key, seg->key) < 0) link = &(*link)->next;
        at = *link;
        if (at && LXC_CompareKeys(at->key, seg->key) == 0) {
            LX_Diag_Msg("addSegment: segment exists");
            return LX_ERR_SEGMENT_EXISTS;
        }
    }
    if (context->nSegments >= MAX_SEGMENTS) return too_many_segments();
    auto *node = static_cast<LexSqSegment *>(LX_MEM_ALLOC(sizeof(LexSqSegment)));
    if (!node) {
        LX_Diag_Msg("addSegment: out of memory");
        return LX_ERR_NO_MEMORY;
    }
    *node = *seg;
    node->next = at;
    *link = node;
    if (!at) context->lastSegment = node;
    ++context->nSegments;
    return 0;
}

int16_t LexSqFile(LexSqContext *context, const char *wordFileName, uint32_t *errLine) {
    LX_ASSERT(context != NULL);
    LX_ASSERT(wordFileName != NULL);
    LX_ASSERT(errLine != NULL);
    *errLine = 0;
    if (!data_open(context)) {
        LX_Diag_Msg("LexSq_Init not called");
        return LX_ERR_UNSUPPORTED;
    }
    LX_Vector words;
    if (LX_Vector_Init(&words, sizeof(char *), 1024) < 0) {
        LX_Vector_Free(&words);
        LX_Diag_Msg("LexSqFile: Can't create word list vector");
        return LX_ERR_NO_MEMORY;
    }
    Sma sma;
    if (Sma_Init(&sma, 9, 1024) < 0) {
        LX_Vector_Free(&words);
        LX_Diag_Msg("LexSqFile: Can't create SMA");
        return LX_ERR_NO_MEMORY;
    }
    PortFile *wordFile = PORT_OpenFile(wordFileName, PORT_MODE_READ_TEXT);
    if (!wordFile) {
        LX_Vector_Free(&words);
        Sma_Free(&sma);
        LX_Diag_Msg("can't open %s", wordFileName);
        return LX_ERR_CANT_CREATE;
    }
    int16_t r = LexSq_ReadWords(wordFile, &words, &sma, errLine);
    PORT_CloseFile(wordFile);

    // The tables as the coder takes them, made once for the whole list.
    const char *simplePtrs[MAX_SIMPLE_SUFFIXES], *extPtrs[MAX_EXT_SUFFIXES];
    for (uint16_t i = 0; i < context->nSimple; ++i) simplePtrs[i] = context->simple[i];
    for (uint16_t i = 0; i < context->nExt; ++i) extPtrs[i] = context->ext[i];
    const MCSuffixTable simpleView{simplePtrs, context->nSimple}, extView{extPtrs, context->nExt};

    const auto *word = static_cast<const char *const *>(words.data);
    int64_t pos = PORT_Tell(context->file);
    LexSqSegment seg{};
    bool segOpen = false;
    const char *prevTail = "";
    for (int32_t i = 0; r == 0 && i < words.count; ++i) {
        uchar key[LXC_KEY_SZ];
        LXC_MakeKey(word[i], key);
        if (!segOpen || LXC_CompareKeys(key, seg.key) != 0) {
            if (segOpen && (r = addSegment(context, &seg)) < 0) break;
            // Refused before its records are written, so that the file
            // holds no data of a segment that can't have an index entry.
            if (context->nSegments >= MAX_SEGMENTS) {
                r = too_many_segments();
                break;
            }
            seg = {static_cast<int32_t>(pos), 0, nullptr, {key[0], key[1], key[2]}};
            segOpen = true;
            prevTail = "";
        }
        uchar record[LXC_MAX_RECORD_SZ];
        const char *tail = LXC_WordTail(word[i]);
        const int32_t n = MCLex_EncodeWord(tail, prevTail, &simpleView, &extView, record);
        LX_ASSERT_TEXT(n > 0, "a checked word has a record");
        if (pos + n > LXC_MAX_FILE_SZ) {
            r = too_large(context);
        } else if (!put(context, record, static_cast<uint32_t>(n))) {
            r = write_failed(context);
        } else {
            pos += n;
            seg.size += static_cast<uint32_t>(n);
            prevTail = tail;
        }
    }
    if (r == 0 && segOpen) r = addSegment(context, &seg);
    LX_Vector_Free(&words);
    Sma_Free(&sma);
    return r;
}

int16_t LexSq_End(LexSqContext *context) {
    LX_ASSERT(context != NULL);
    if (!data_open(context)) {
        LX_Diag_Msg("LexSq_Init not called");
        return LX_ERR_UNSUPPORTED;
    }
    PortFile *file = context->file;
    const int32_t end = PORT_Tell(file);
    const uint32_t indexLen = LXC_INDEX_HEAD_SZ + LXC_INDEX_ENTRY_SZ * context->nSegments;
    if (end < 0 || static_cast<int64_t>(end) + LXC_SECTION_HEAD_SZ + indexLen > LXC_MAX_FILE_SZ) {
        const int16_t r = too_large(context);
        cut_back(file, end);
        LexSq_Reset(context);
        return r;
    }
    bool ok = PORT_Seek(file, context->dataStart - static_cast<int32_t>(LXC_NUMBER_SZ), SEEK_SET) == 0 &&
              put32(context, static_cast<uint32_t>(end - context->dataStart)) &&
              PORT_Seek(file, end, SEEK_SET) == 0 && put_section_head(context, SECT_SEG_INDEX, indexLen) &&
              put32(context, context->nSegments);
    for (const LexSqSegment *s = context->segments; ok && s; s = s->next) {
        uchar raw[LXC_INDEX_ENTRY_SZ];
        LXC_PutIndexEntry(raw, {{s->key[0], s->key[1], s->key[2]},
                                static_cast<uint32_t>(s->offset - context->dataStart), s->size});
        ok = put(context, raw, sizeof raw);
    }
    ok = ok && flush_and_sync(file);
    if (!ok) {
        const int16_t r = write_failed(context);
        cut_back(file, end);
        LexSq_Reset(context);
        return r;
    }
    LexSq_Reset(context);
    return 0;
}

void LexSq_Reset(LexSqContext *context) {
    if (context->fileOpen) {
        PORT_CloseFile(context->file);
        context->fileOpen = 0;
        context->file = nullptr;
    }
    for (LexSqSegment *s = context->segments; s;) {
        LexSqSegment *next = s->next;
        LX_MEM_FREE(s);
        s = next;
    }
    context->segments = nullptr;
    context->lastSegment = nullptr;
    context->nSegments = 0;
}

void LexSq_Abort(LexSqContext *context) {
    LX_ASSERT(context != NULL);
    LexSq_Reset(context);
}
