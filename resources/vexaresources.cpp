#include "resources/vexaresources.h"

#include <QtGlobal>

void initVexaResources()
{
    Q_INIT_RESOURCE(images);
    Q_INIT_RESOURCE(fonts);
}
