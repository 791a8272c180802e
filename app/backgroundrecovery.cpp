#include "app/backgroundrecovery.h"

#include "app/journalrecovery.h"

#include <QThread>

BackgroundRecovery::BackgroundRecovery(const std::function<void(const QStringList &)> &tell)
    : m_thread(QThread::create([this] {
          const QStringList lines = recoverJournals(&m_isEnough);
          const std::lock_guard<std::mutex> locker(m_mutex);
          m_lines = lines;
      }))
{
    m_thread->setObjectName(QStringLiteral("journal recovery"));
    QObject::connect(m_thread.get(), &QThread::finished, &m_listener, [this, tell] {
        QStringList lines;
        {
            const std::lock_guard<std::mutex> locker(m_mutex);
            lines = m_lines;
        }
        if (!lines.isEmpty())
            tell(lines);
    });
    m_thread->start();
}

BackgroundRecovery::~BackgroundRecovery()
{
    m_isEnough = true;
    m_thread->wait();
    // The lock says to whoever looks for races that the lines are this thread's now.
    const std::lock_guard<std::mutex> locker(m_mutex);
    m_lines.clear();
}
