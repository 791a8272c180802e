#include "crash/dumpmessage.h"
#include "crash/exceptionhandler.h"

#include <QFile>

#include <client/linux/handler/exception_handler.h>

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace {

constexpr char suffix[] = ".dmp";
constexpr std::size_t suffixSize = sizeof suffix - 1;

// Not on the small stack that signals are handled on. Only one crash is handled in a process.
DumpMessage message;
char path[4096];

bool onDumpWritten(const google_breakpad::MinidumpDescriptor &descriptor, void *, bool succeeded)
{
    // "FOLDER/ID.dmp", taken apart
    std::size_t size = std::strlen(descriptor.path());
    if (size >= sizeof path)
        size = sizeof path - 1;
    std::memcpy(path, descriptor.path(), size);
    if (size >= suffixSize && std::memcmp(path + size - suffixSize, suffix, suffixSize) == 0)
        size -= suffixSize;
    path[size] = '\0';
    char *id = std::strrchr(path, '/');
    if (id)
        *id++ = '\0';
    message.set(succeeded, path, id ? id : "");

    const char *text = message.text();
    std::size_t left = message.size();
    while (left > 0) {
        const ssize_t written = write(STDERR_FILENO, text, left);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            break;
        text += written;
        left -= static_cast<std::size_t>(written);
    }
    return succeeded;
}

} // namespace

void ExceptionHandlerDeleter::operator()(google_breakpad::ExceptionHandler *handler) const
{
    delete handler;
}

ExceptionHandlerPointer installExceptionHandler(const QString &folder)
{
    const google_breakpad::MinidumpDescriptor descriptor(QFile::encodeName(folder).toStdString());
    return ExceptionHandlerPointer(
        new google_breakpad::ExceptionHandler(descriptor, nullptr, &onDumpWritten, nullptr, true, -1));
}
