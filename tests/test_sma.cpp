// Tests of the bump allocator: block sizes, the rounding of pieces, when a
// new block starts, and what an allocation failure leaves behind.
#include <cstdint>

#include "lxtest.h"
#include "platform.h"
#include "sma.h"

namespace {

// Number of blocks in the list.
int blocks(const Sma &sma) {
    int n = 0;
    for (const SmaBlock *b = sma.blocks; b != nullptr; b = b->nextBlock) ++n;
    return n;
}

} // namespace

TEST(Sma, InitSetsBlockSize) {
    static const struct { uint32_t elemSize, count; int16_t status; uint32_t blockSize; } kCases[] = {
        {20, 1000, 0, 20000},
        {9, 1024, 0, 9216},
        {0, 0, 0, 4096},                       // 16 bytes, 256 pieces
        {0, 3, 0, 48},
        {5, 0, 0, 1280},
        {0x10000, 0x10000, 0, 0xFFFFFFBFu / 0x10000 * 0x10000}, // product cut below 0xFFFFFFC0
        {0xFFFFFFBFu, 7, 0, 0xFFFFFFBFu},
        {0xFFFFFFC0u, 1, LX_ERR_FAILED, 12345}, // refused: blockSize untouched
    };
    for (const auto &c : kCases) {
        SCOPED_TRACE(std::to_string(c.elemSize) + " x " + std::to_string(c.count));
        Sma sma;
        sma.blocks = reinterpret_cast<SmaBlock *>(&sma);
        sma.blockSize = 12345;
        EXPECT_EQ(c.status, Sma_Init(&sma, c.elemSize, c.count));
        EXPECT_EQ(c.blockSize, sma.blockSize);
        EXPECT_TRUE(sma.blocks == nullptr && sma.next == nullptr && sma.left == 0);
    }
}

TEST(Sma, PiecesAreRoundedAboveTheirSize) {
    static const struct { uint32_t size, rounded; } kCases[] = {
        {0, 8}, {1, 8}, {7, 8}, {8, 16}, {15, 16}, {16, 24}, {20, 24}, {4095, 4096},
    };
    const long live = LX_Mem_LiveBlocks();
    for (const auto &c : kCases) {
        SCOPED_TRACE(c.size);
        Sma sma;
        Sma_Init(&sma, 1, 8192);
        auto *first = static_cast<char *>(Sma_Alloc(&sma, c.size));
        auto *second = static_cast<char *>(Sma_Alloc(&sma, 1));
        ASSERT_TRUE(first != nullptr && second != nullptr);
        EXPECT_EQ(c.rounded, static_cast<uint32_t>(second - first));
        EXPECT_EQ(0u, reinterpret_cast<uintptr_t>(second) % 8);
        EXPECT_EQ(8192 - c.rounded - 8, sma.left);
        std::memset(first, 'x', c.size); // the whole piece is usable
        Sma_Free(&sma);
    }
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
    Sma sma;
    Sma_Init(&sma, 0, 0);
    EXPECT_EQ(nullptr, Sma_Alloc(&sma, 0xFFFFFFC0u)); // beyond any block
    EXPECT_EQ(nullptr, Sma_Alloc(&sma, UINT32_MAX));
    EXPECT_EQ(0, blocks(sma));
}

TEST(Sma, NewBlockWhenAPieceDoesNotFit) {
    const long live = LX_Mem_LiveBlocks();
    Sma sma;
    Sma_Init(&sma, 20, 1000); // 20000 bytes: 833 pieces of 24
    EXPECT_EQ(0, blocks(sma));
    std::vector<char *> pieces;
    for (int i = 0; i < 834; ++i) pieces.push_back(static_cast<char *>(Sma_Alloc(&sma, 20)));
    EXPECT_EQ(2, blocks(sma));
    EXPECT_EQ(sma.blocks->nextBlock->memory, pieces[0]);
    EXPECT_EQ(pieces[0] + 832 * 24, pieces[832]);
    EXPECT_EQ(sma.blocks->memory, pieces[833]);
    EXPECT_EQ(20000u - 24, sma.left);
    Sma_Free(&sma);
    EXPECT_TRUE(sma.blocks == nullptr && sma.next == nullptr && sma.left == 0);
    EXPECT_EQ(live, LX_Mem_LiveBlocks());

    // A large piece raises the block size for good.
    Sma_Init(&sma, 9, 1024);
    ASSERT_NE(nullptr, Sma_Alloc(&sma, 10000));
    EXPECT_EQ(10008u, sma.blockSize);
    EXPECT_EQ(0u, sma.left);
    Sma_Alloc(&sma, 1);
    EXPECT_EQ(10000u, sma.left);
    EXPECT_EQ(2, blocks(sma));
    Sma_Free(&sma);
    Sma_Free(&sma); // nothing left: changes nothing
    EXPECT_EQ(10008u, sma.blockSize);
    ASSERT_NE(nullptr, Sma_Alloc(&sma, 1)); // usable again without Sma_Init
    EXPECT_EQ(10000u, sma.left);
    Sma_Free(&sma);
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
}

TEST(Sma, FailedAllocationLeavesTheCurrentBlock) {
    const long live = LX_Mem_LiveBlocks();
    Sma sma;
    Sma_Init(&sma, 8, 4); // 32 bytes
    char *first = static_cast<char *>(Sma_Alloc(&sma, 1));
    ASSERT_NE(nullptr, first);
    // 0: the node fails; 1: the block fails after the node was made.
    for (long failAfter : {0L, 1L}) {
        SCOPED_TRACE(failAfter);
        LX_Mem_FailAfter(failAfter);
        EXPECT_EQ(nullptr, Sma_Alloc(&sma, 100));
        LX_Mem_FailAfter(-1);
        EXPECT_EQ(1, blocks(sma));
        EXPECT_EQ(24u, sma.left);
        EXPECT_EQ(live + 2, LX_Mem_LiveBlocks());
    }
    EXPECT_EQ(104u, sma.blockSize); // the raise stays after the block failed
    EXPECT_EQ(first + 8, Sma_Alloc(&sma, 1)); // the old block goes on
    Sma_Free(&sma);
    EXPECT_EQ(live, LX_Mem_LiveBlocks());
}
