// api.cpp - byte order of the compressed lexicon files, and the session
// layer of the compiler.
//
// Every number wider than a byte in a compressed lexicon is stored most
// significant byte first. Readers and writers move such a field as four
// raw bytes and pass it through LX_Swap32, which knows the host's order by
// the first byte in memory of the 16-bit constant 0x1234.
#include "api.h"

#include <cstdint>
#include <cstring>

#include "diag.h"
#include "lexsq.h"
#include "lxvector.h"
#include "platform.h"
#include "portab.h"

uint32_t LX_Swap32(uint32_t value) {
    const uint16_t probe = 0x1234;
    uchar first;
    std::memcpy(&first, &probe, 1);
    if (first == 0x12) return value;
    return (value >> 24) | ((value >> 8) & 0x0000FF00u) | ((value << 8) & 0x00FF0000u) | (value << 24);
}

// The session layer. The table is one LX_Vector of LX_Session records,
// made at the first FENRO_OpenSession and freed when its last session
// closes. Every access goes through PORT_EnterCritical and
// PORT_LeaveCritical, which only mark the places: the engine has no
// threads, and the layer is not reentrant.

namespace {

LX_Vector gSessionTable{};
bool gSessionTableReady = false;

// Leaves the critical section of its token on every way out.
class Critical {
public:
    Critical() : token_(PORT_EnterCritical()) {}
    ~Critical() { PORT_LeaveCritical(token_); }
    Critical(const Critical &) = delete;
    Critical &operator=(const Critical &) = delete;

private:
    uint32_t token_;
};

LX_Session *slot_at(int32_t index) { return static_cast<LX_Session *>(LX_Vector_At(&gSessionTable, index)); }

// The open session of that number, or null.
LX_Session *valid_session(int16_t session) {
    if (!gSessionTableReady || session < 0) return nullptr;
    LX_Session *s = slot_at(session);
    return s && s->open ? s : nullptr;
}

void free_table_if_unused() {
    if (!gSessionTableReady) return;
    for (int32_t i = 0; i < gSessionTable.count; ++i)
        if (slot_at(i)->open) return;
    LX_Vector_Free(&gSessionTable);
    gSessionTableReady = false;
}

int16_t open_failed() {
    LX_Diag_Msg("FENRO_OpenSession: Out of memory");
    free_table_if_unused();
    return LX_ERR_NO_MEMORY;
}

void end_squeeze(LX_Session *s) {
    LexSq_Abort(s->squeeze);
    LX_MEM_FREE(s->squeeze);
    s->squeeze = nullptr;
}

} // namespace

int16_t FENRO_OpenSession() {
    Critical critical;
    if (!gSessionTableReady) {
        if (LX_Vector_Init(&gSessionTable, sizeof(LX_Session), 4) != 0) {
            LX_Vector_Free(&gSessionTable);
            LX_Diag_Msg("FENRO_OpenSession: Out of memory");
            return LX_ERR_NO_MEMORY;
        }
        gSessionTableReady = true;
    }
    int32_t index = 0;
    while (index < gSessionTable.count && slot_at(index)->open) ++index;
    if (index == gSessionTable.count) {
        if (index > INT16_MAX) return open_failed(); // numbers are 16-bit
        const LX_Session closed{};
        if (LX_Vector_Append(&gSessionTable, &closed) < 0) return open_failed();
    }
    LX_Session *s = slot_at(index);
    if (LX_Vector_Init(&s->lexicons, sizeof(LX_Lexicon), 4) != 0) return open_failed();
    if (LX_Vector_Init(&s->blocks, sizeof(LX_SessionBlock), 4) != 0) {
        LX_Vector_Free(&s->lexicons);
        return open_failed();
    }
    s->lang = LX_SESSION_LANG;
    s->squeeze = nullptr;
    s->options = LX_SESSION_OPTIONS;
    s->open = 1;
    const auto number = static_cast<int16_t>(index);
    LX_Diag_Msg("FENRO_OpenSession: session %hd opened", number);
    return number;
}

int16_t FENRO_CloseSession(int16_t session) {
    Critical critical;
    LX_Session *s = valid_session(session);
    if (!s) {
        LX_Diag_Msg("FENRO_CloseSession: bad session id %hd", session);
        return LX_ERR_BAD_SESSION;
    }
    for (int32_t i = 0; i < s->lexicons.count; ++i) {
        auto *lex = static_cast<LX_Lexicon *>(LX_Vector_At(&s->lexicons, i));
        if (lex->kind == 0) continue;
        LX_Diag_Msg("FENRO_CloseSession: closing lexId %d", static_cast<int>(i));
        LX_Lexicon_Close(lex);
    }
    LX_Vector_Free(&s->lexicons);
    for (int32_t i = 0; i < s->blocks.count; ++i) {
        auto *block = static_cast<LX_SessionBlock *>(LX_Vector_At(&s->blocks, i));
        if (!block->text) continue;
        if (block->owned) LX_MEM_FREE(block->text);
        block->text = nullptr;
    }
    LX_Vector_Free(&s->blocks);
    if (s->squeeze) end_squeeze(s);
    s->open = 0;
    LX_Diag_Msg("FENRO_CloseSession: Session %hd closed", session);
    free_table_if_unused();
    return 0;
}

int16_t FENRO_CompressLexInit(int16_t session, const char *lexFileName, const char *suffixFileName,
                              int16_t lang, uint32_t *errLine) {
    Critical critical;
    LX_Session *s = valid_session(session);
    if (!s) {
        LX_Diag_Msg("FENRO_CompressLexInit: bad session id %hd", session);
        return LX_ERR_BAD_SESSION;
    }
    if (s->squeeze) {
        // Used again: whatever an earlier run left open is closed first.
        LexSq_Abort(s->squeeze);
    } else {
        s->squeeze = static_cast<LexSqContext *>(LX_MEM_ALLOC(sizeof(LexSqContext)));
        if (!s->squeeze) {
            LX_Diag_Msg("FENRO_CompressLexInit: out of memory");
            return LX_ERR_NO_MEMORY;
        }
        *s->squeeze = LexSqContext{};
    }
    return LexSq_Init(s->squeeze, lexFileName, suffixFileName, lang, errLine);
}

int16_t FENRO_CompressLexFile(int16_t session, const char *wordFileName, uint32_t *errLine) {
    Critical critical;
    LX_Session *s = valid_session(session);
    if (!s) {
        LX_Diag_Msg("FENRO_CompressLexFile: bad session id %hd", session);
        return LX_ERR_BAD_SESSION;
    }
    if (!s->squeeze) {
        LX_Diag_Msg("FENRO_CompressLexFile: call FENRO_CompressLexInit first");
        return LX_ERR_UNSUPPORTED;
    }
    return LexSqFile(s->squeeze, wordFileName, errLine);
}

int16_t FENRO_CompressLexEnd(int16_t session) {
    Critical critical;
    LX_Session *s = valid_session(session);
    if (!s) return LX_ERR_BAD_SESSION;
    if (!s->squeeze) return 0;
    const int16_t r = LexSq_End(s->squeeze);
    end_squeeze(s); // after LexSq_End the abort has nothing left to close
    return r;
}

void FENRO_CompressLexAbort(int16_t session) {
    Critical critical;
    LX_Session *s = valid_session(session);
    if (!s) {
        LX_Diag_Msg("FENRO_CompressLexAbort: bad session id %hd", session);
        return;
    }
    if (s->squeeze) end_squeeze(s);
}

int32_t FENRO_SessionSlots() { return gSessionTableReady ? gSessionTable.count : 0; }
