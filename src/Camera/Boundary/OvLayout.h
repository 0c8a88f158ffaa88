/* Compile-time checks of the records that cross the boundary, in C99 and in C++. */
#ifndef OV_LAYOUT_H
#define OV_LAYOUT_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define OV_LAYOUT_ASSERT(condition, name) static_assert(condition, #name)
#else
#define OV_LAYOUT_ASSERT(condition, name) typedef char ov_layout_##name[(condition) ? 1 : -1]
#endif

/* OV_AT(record, field, offset, tag): the field stands at that offset; tag makes the check's name unique. */
#define OV_AT(record, field, offset, tag)                                                                    \
    OV_LAYOUT_ASSERT(offsetof(record, field) == (offset), record##_##tag)
#define OV_SIZE(record, size) OV_LAYOUT_ASSERT(sizeof(record) == (size), record##_size)

OV_LAYOUT_ASSERT(sizeof(void*) == 8, pointers_have_64_bits);

#endif
