// sma.h - Sma, a bump allocator for many small pieces that are given back
// together. The compressed lexicon reader takes its segment records from
// one, the lexicon compiler the texts of a whole word list.
#ifndef LX_SMA_H
#define LX_SMA_H

#include "lxbase.h"

// One block of an Sma: a node of its own allocation, beside the block.
// The allocator's record, Sma, is public (lxengine.h), since the compressed
// lexicon's record embeds one: pieces come from the newest block, one
// behind the other; a piece can't be freed alone.
struct SmaBlock {
    void *memory;        // the block
    SmaBlock *nextBlock; // the next older block; null at the end
};

// Sets up sma for blocks of count pieces of elemSize bytes (0 means 16
// bytes, and 256 pieces). Allocates nothing. Gives 0, or LX_ERR_FAILED for
// an elemSize above 0xFFFFFFBF, which leaves blockSize as it was.
int16_t Sma_Init(Sma *sma, uint32_t elemSize, uint32_t count);

// A piece of more than size bytes, aligned to 8, not cleared; null when
// memory runs out or size is beyond what a block can hold. Writes no
// message: the caller does, in its own words.
void *Sma_Alloc(Sma *sma, uint32_t size);

// The bytes that Sma_Alloc takes for a piece of size bytes: the next
// multiple of 8 above size (0 and 7 give 8, 8 gives 16). A record whose
// size is a multiple of 8 fits without waste in a piece of one byte less.
constexpr uint32_t Sma_PieceSize(uint32_t size) { return size + 8 - size % 8; }

// Gives back every block. The record can be used again at once: blockSize
// stays.
void Sma_Free(Sma *sma);

#endif
