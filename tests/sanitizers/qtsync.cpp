// Tells the thread sanitizer how Qt synchronises threads, which it cannot see, since the system's Qt is
// not compiled with it: what happened before a signal was sent, a functor was queued, a semaphore was
// released or a thread ended has happened for whoever takes the event, the semaphore or waits for the
// thread. Each function stands in front of Qt's own of the same name and calls it. The edges go from one
// sender to the handlers of its events, no further, so that real races stay visible.

#include <QCoreApplication>
#include <QSemaphore>
#include <QThread>
#include <QThreadStorage>

#include <private/qobject_p.h>

#include <dlfcn.h>

extern "C" {
void __tsan_acquire(void *address);
void __tsan_release(void *address);
void AnnotateIgnoreReadsBegin(const char *file, int line);
void AnnotateIgnoreReadsEnd(const char *file, int line);
}

namespace {

template <typename Function>
Function qtFunction(const char *mangledName)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, mangledName));
}

void *addressOf(const void *object, int offset = 0)
{
    return const_cast<char *>(static_cast<const char *>(object)) + offset;
}

constexpr int answerOffset = 1; // beside the object: the way back of a blocking call

/// Qt destroys it when the thread's work is done, before anybody who waits for the thread goes on.
class ThreadEnd final {
public:
    ~ThreadEnd() { __tsan_release(addressOf(QThread::currentThread())); }
};

void noteThreadEnd()
{
    static QThreadStorage<ThreadEnd> ends;
    ends.localData();
}

} // namespace

void QMetaObject::activate(QObject *sender, const QMetaObject *metaObject, int signal, void **arguments)
{
    static const auto original = qtFunction<void (*)(QObject *, const QMetaObject *, int, void **)>(
        "_ZN11QMetaObject8activateEP7QObjectPKS_iPPv");
    noteThreadEnd();
    __tsan_release(addressOf(sender));
    original(sender, metaObject, signal, arguments);
}

bool QMetaObject::invokeMethodImpl(QObject *object, QtPrivate::QSlotObjectBase *slot, Qt::ConnectionType type,
                                   void *result)
{
    static const auto original =
        qtFunction<bool (*)(QObject *, QtPrivate::QSlotObjectBase *, Qt::ConnectionType, void *)>(
            "_ZN11QMetaObject16invokeMethodImplEP7QObjectPN9QtPrivate15QSlotObjectBaseEN2Qt14ConnectionTypeEPv");
    slot->ref(); // what it captured goes only after the way back
    __tsan_release(addressOf(object));
    const bool invoked = original(object, slot, type, result);
    if (type == Qt::BlockingQueuedConnection)
        __tsan_acquire(addressOf(object, answerOffset));
    slot->destroyIfLastRef();
    return invoked;
}

bool QObject::event(QEvent *event)
{
    static const auto original = qtFunction<bool (*)(QObject *, QEvent *)>("_ZN7QObject5eventEP6QEvent");
    AnnotateIgnoreReadsBegin(__FILE__, __LINE__); // Qt's queue hands the event over
    const bool isCall = event->type() == QEvent::MetaCall;
    const QObject *const sender = isCall ? static_cast<QAbstractMetaCallEvent *>(event)->sender() : nullptr;
    AnnotateIgnoreReadsEnd(__FILE__, __LINE__);
    if (!isCall)
        return original(this, event);
    __tsan_acquire(addressOf(sender ? sender : this)); // a queued functor has no sender
    const bool handled = original(this, event);
    __tsan_release(addressOf(this, answerOffset));
    return handled;
}

bool QThread::wait(unsigned long timeMs)
{
    static const auto original = qtFunction<bool (*)(QThread *, unsigned long)>("_ZN7QThread4waitEm");
    const bool ended = original(this, timeMs);
    if (ended)
        __tsan_acquire(addressOf(this));
    return ended;
}

bool QThread::wait(QDeadlineTimer deadline)
{
    static const auto original = qtFunction<bool (*)(QThread *, QDeadlineTimer)>("_ZN7QThread4waitE14QDeadlineTimer");
    const bool ended = original(this, deadline);
    if (ended)
        __tsan_acquire(addressOf(this));
    return ended;
}

void QSemaphore::acquire(int count)
{
    static const auto original = qtFunction<void (*)(QSemaphore *, int)>("_ZN10QSemaphore7acquireEi");
    original(this, count);
    __tsan_acquire(addressOf(this));
}

void QSemaphore::release(int count)
{
    static const auto original = qtFunction<void (*)(QSemaphore *, int)>("_ZN10QSemaphore7releaseEi");
    __tsan_release(addressOf(this));
    original(this, count);
}
