#include "app/unusedmemory.h"

// Windows has one store, and gives blocks of the pictures' size back as soon as they are freed.

void keepFewMemoryStores() {}

void returnUnusedMemory() {}
