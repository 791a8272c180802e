#include "app/unusedmemory.h"

#include <malloc.h>

namespace {

// What is small comes from stocks of the threads, without a lock, so that they rarely meet in a store.
constexpr int mostStores = 2;

} // namespace

void keepFewMemoryStores()
{
    mallopt(M_ARENA_MAX, mostStores);
}

void returnUnusedMemory()
{
    malloc_trim(0);
}
