#include "app/unusedmemory.h"

// Windows gives blocks of the pictures' size back as soon as they are freed.
void returnUnusedMemory() {}
