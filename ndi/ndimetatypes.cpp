#include "ndi/ndimetatypes.h"

void registerNdiMetaTypes()
{
    qRegisterMetaType<const NDIlib_source_t *>("const NDIlib_source_t*");
    qRegisterMetaType<uint8_t *>("uint8_t*");
}
