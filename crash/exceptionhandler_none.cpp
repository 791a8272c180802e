#include "crash/exceptionhandler.h"

// Builds without a minidump writer: crashes are left to the system, or to the sanitizer that watches for them.

void ExceptionHandlerDeleter::operator()(google_breakpad::ExceptionHandler *) const {}

ExceptionHandlerPointer installExceptionHandler(const QString &)
{
    return {};
}
