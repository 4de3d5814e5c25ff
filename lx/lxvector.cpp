// lxvector.cpp - growth, insertion and removal for LX_Vector.
//
// Growth asks for half again the capacity that is needed (not of the
// present capacity), allocates a new block and copies; a failed allocation
// leaves the vector exactly as it was.
#include "lxvector.h"

#include <cstdlib>
#include <cstring>

#include "diag.h"
#include "platform.h"

namespace {
char *elem(const LX_Vector *vector, int32_t index) {
    return static_cast<char *>(vector->data) + static_cast<size_t>(index) * vector->elemSize;
}
} // namespace

int16_t LX_Vector_Init(LX_Vector *vector, uint32_t elemSize, int32_t initialCapacity) {
    vector->magic = VECTOR_MAGIC;
    vector->data = nullptr;
    vector->elemSize = elemSize;
    vector->count = 0;
    vector->capacity = 0;
    return LX_Vector_Reserve(vector, initialCapacity);
}

void LX_Vector_Free(LX_Vector *vector) {
    LX_ASSERT(vector != NULL);
    if (vector->data == nullptr) return;
    LX_ASSERT(vector->magic == VECTOR_MAGIC);
    LX_MEM_FREE(vector->data);
    vector->data = nullptr;
    vector->count = 0;
    vector->capacity = 0;
}

void LX_Vector_Clear(LX_Vector *vector) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(VECTOR_MAGIC == vector->magic);
    vector->count = 0;
}

int16_t LX_Vector_Reserve(LX_Vector *vector, int32_t minCapacity) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(vector->magic == VECTOR_MAGIC);
    if (vector->capacity >= minCapacity) return 0;
    int64_t capacity = static_cast<int64_t>(minCapacity) + minCapacity / 2;
    size_t bytes = static_cast<size_t>(capacity) * vector->elemSize;
    // Capacities beyond the 32-bit count, or sizes beyond the address
    // range, are refused like an exhausted heap.
    void *block = nullptr;
    if (capacity <= INT32_MAX && (vector->elemSize == 0 || bytes / vector->elemSize == static_cast<size_t>(capacity)))
        block = LX_MEM_ALLOC(bytes);
    if (block == nullptr) {
        LX_Diag_Msg("out of memory");
        return LX_ERR_NO_MEMORY;
    }
    if (vector->data != nullptr) {
        std::memcpy(block, vector->data, static_cast<size_t>(vector->capacity) * vector->elemSize);
        LX_MEM_FREE(vector->data);
    }
    vector->data = block;
    vector->capacity = static_cast<int32_t>(capacity);
    return 0;
}

int16_t LX_Vector_Set(LX_Vector *vector, int32_t index, const void *element) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(vector->magic == VECTOR_MAGIC);
    LX_ASSERT(index >= 0);
    int16_t status = LX_Vector_Reserve(vector, index + 1);
    if (status != 0) return status;
    LX_ASSERT_TEXT(vector->data != NULL, "data != NULL");
    std::memcpy(elem(vector, index), element, vector->elemSize);
    if (index > vector->count) vector->count = index;
    return 0;
}

int32_t LX_Vector_Append(LX_Vector *vector, const void *element) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(vector->magic == VECTOR_MAGIC);
    int32_t index = vector->count;
    int16_t status = LX_Vector_Set(vector, index, element);
    if (status != 0) return status;
    vector->count = index + 1;
    return index;
}

int16_t LX_Vector_Insert(LX_Vector *vector, int32_t index, const void *element) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(vector->magic == VECTOR_MAGIC);
    int16_t status = LX_Vector_Reserve(vector, vector->count + 1);
    if (status != 0) return status;
    std::memmove(elem(vector, index + 1), elem(vector, index),
                 static_cast<size_t>(vector->count - index) * vector->elemSize);
    std::memcpy(elem(vector, index), element, vector->elemSize);
    ++vector->count;
    return 0;
}

int16_t LX_Vector_Delete(LX_Vector *vector, int32_t index) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(vector->magic == VECTOR_MAGIC);
    LX_ASSERT(index >= 0);
    if (index >= vector->count) return LX_ERR_RANGE;
    std::memmove(elem(vector, index), elem(vector, index + 1),
                 static_cast<size_t>(vector->count - index - 1) * vector->elemSize);
    --vector->count;
    return 0;
}

void *LX_Vector_Search(const LX_Vector *vector, const void *key, LX_VectorCmp cmp) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(VECTOR_MAGIC == vector->magic);
    LX_ASSERT(key != NULL);
    LX_ASSERT(cmp != NULL);
    if (vector->count == 0) return nullptr;
    return std::bsearch(key, vector->data, static_cast<size_t>(vector->count), vector->elemSize, cmp);
}

void LX_Vector_Sort(LX_Vector *vector, LX_VectorCmp cmp) {
    LX_ASSERT(vector != NULL);
    LX_ASSERT(VECTOR_MAGIC == vector->magic);
    LX_ASSERT(cmp != NULL);
    if (vector->count > 1)
        std::qsort(vector->data, static_cast<size_t>(vector->count), vector->elemSize, cmp);
}
