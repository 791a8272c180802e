#include "app/unusedmemory.h"

#include <malloc.h>

void returnUnusedMemory()
{
    malloc_trim(0);
}
