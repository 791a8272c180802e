#include "app/syncfile.h"

#include <QFile>

bool syncFile(QFile *file)
{
    // The system's own handle is not reachable through QFile here; WriteFile has reported a full disk
    // already, since space is taken when the file grows.
    return file->flush();
}
