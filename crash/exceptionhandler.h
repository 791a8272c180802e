#pragma once

#include <QString>

#include <memory>

namespace google_breakpad {
class ExceptionHandler;
}

struct ExceptionHandlerDeleter {
    void operator()(google_breakpad::ExceptionHandler *handler) const;
};

/// What writes the dump of a crash; only the platform's file knows its insides.
using ExceptionHandlerPointer = std::unique_ptr<google_breakpad::ExceptionHandler, ExceptionHandlerDeleter>;

/// From now on, and as long as the pointer is kept, a crash of any thread leaves "ID.dmp" in this folder, which must
/// exist, with one line about it on standard error; then the process ends as it would have without. One at a time in a
/// process. The calling thread, which should be the main one, may also overflow its stack. Null in a build without a
/// minidump writer.
ExceptionHandlerPointer installExceptionHandler(const QString &folder);
