// sma.cpp - the bump allocator: pieces are cut from the newest block in
// steps of 8 bytes, and a piece that doesn't fit opens a new block of
// blockSize bytes (raised for good if the piece is larger). What was left in
// the former block is abandoned. Each block has a node of its own, so the
// list can be walked and freed without touching the blocks' contents.
//
// All memory comes from the engine's pool. There is no header per piece.
#include "sma.h"

#include "platform.h"

namespace {
// Largest block size, so that the rounding of a piece and the product of a
// piece size and a count stay inside 32 bits.
constexpr uint32_t SMA_MAX_BLOCK = 0xFFFFFFBF;
} // namespace

int16_t Sma_Init(Sma *sma, uint32_t elemSize, uint32_t count) {
    LX_ASSERT(sma != NULL);
    sma->blocks = nullptr;
    sma->next = nullptr;
    sma->left = 0;
    if (elemSize == 0) elemSize = 16;
    if (elemSize > SMA_MAX_BLOCK) return LX_ERR_FAILED;
    if (count == 0) count = 256;
    if (static_cast<uint64_t>(elemSize) * count > SMA_MAX_BLOCK) count = SMA_MAX_BLOCK / elemSize;
    sma->blockSize = elemSize * count;
    return 0;
}

void *Sma_Alloc(Sma *sma, uint32_t size) {
    LX_ASSERT(sma != NULL);
    // The next multiple of 8 above size: 0 and 7 give 8, 8 gives 16. A
    // piece is always larger than what was asked, and next stays aligned.
    if (size > SMA_MAX_BLOCK) return nullptr;
    const uint32_t rounded = Sma_PieceSize(size);
    if (rounded > sma->left) {
        auto *node = static_cast<SmaBlock *>(LX_MEM_ALLOC(sizeof(SmaBlock)));
        if (node == nullptr) return nullptr;
        if (rounded > sma->blockSize) sma->blockSize = rounded;
        void *memory = LX_MEM_ALLOC(sma->blockSize);
        if (memory == nullptr) {
            LX_MEM_FREE(node);
            return nullptr;
        }
        node->memory = memory;
        node->nextBlock = sma->blocks;
        sma->blocks = node;
        sma->left = sma->blockSize;
        sma->next = memory;
    }
    void *piece = sma->next;
    sma->next = static_cast<char *>(sma->next) + rounded;
    sma->left -= rounded;
    return piece;
}

void Sma_Free(Sma *sma) {
    LX_ASSERT(sma != NULL);
    for (SmaBlock *node = sma->blocks; node != nullptr;) {
        SmaBlock *older = node->nextBlock;
        LX_MEM_FREE(node->memory);
        LX_MEM_FREE(node);
        node = older;
    }
    sma->blocks = nullptr;
    sma->next = nullptr;
    sma->left = 0;
}
