// lxvector.h - LX_Vector, a growable array of fixed-size elements stored by
// value in one block. The vector keeps no order of its own; owners that
// want sorted data insert at the right place or sort once, then search.
#ifndef LX_LXVECTOR_H
#define LX_LXVECTOR_H

#include "lxbase.h"

inline constexpr uint32_t VECTOR_MAGIC = 0x1649C2BC;

using LX_VectorCmp = int (*)(const void *, const void *);

int16_t LX_Vector_Init(LX_Vector *vector, uint32_t elemSize, int32_t initialCapacity);
void LX_Vector_Free(LX_Vector *vector);
void LX_Vector_Clear(LX_Vector *vector);
int16_t LX_Vector_Reserve(LX_Vector *vector, int32_t minCapacity);
int16_t LX_Vector_Set(LX_Vector *vector, int32_t index, const void *element);
int32_t LX_Vector_Append(LX_Vector *vector, const void *element);
int16_t LX_Vector_Insert(LX_Vector *vector, int32_t index, const void *element);
int16_t LX_Vector_Delete(LX_Vector *vector, int32_t index);
void *LX_Vector_Search(const LX_Vector *vector, const void *key, LX_VectorCmp cmp);
void LX_Vector_Sort(LX_Vector *vector, LX_VectorCmp cmp);

// Address of element index, or null when index is outside 0..count-1.
inline void *LX_Vector_At(const LX_Vector *vector, int32_t index) {
    if (index < 0 || index >= vector->count) return nullptr;
    return static_cast<char *>(vector->data) + static_cast<size_t>(index) * vector->elemSize;
}

#endif
