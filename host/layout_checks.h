// How the host's declarations hold their layout: a record's field by offset and size, a function table's
// entry by its place. A declaration that differs from the host's does not compile.
#pragma once

#include <cstddef>

#define ORVANTIS_HOST_FIELD(record, field, offset, bytes) \
    static_assert(offsetof(record, field) == (offset) &&  \
                  sizeof(record::field) == (bytes)) /* NOLINT(bugprone-sizeof-expression): pointers too */

#define ORVANTIS_HOST_SLOT(table, name, slot) \
    static_assert(offsetof(table, name) == (slot) * sizeof(void*) && sizeof(table::name) == sizeof(void*))
