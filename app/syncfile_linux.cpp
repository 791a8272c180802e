#include "app/syncfile.h"

#include <QFile>

#include <cerrno>
#include <unistd.h>

bool syncFile(QFile *file)
{
    // EINVAL: a file of a kind that cannot be synchronised, which is no loss.
    return fdatasync(file->handle()) == 0 || errno == EINVAL;
}
