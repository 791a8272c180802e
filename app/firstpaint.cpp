#include "app/firstpaint.h"

#include <QEvent>
#include <QLoggingCategory>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {

Q_LOGGING_CATEGORY(startup, "vexa.startup", QtInfoMsg)

class FirstPaint final : public QObject {
public:
    explicit FirstPaint(QWindow *window) : QObject(window) { window->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Expose && static_cast<QWindow *>(watched)->isExposed()) {
            watched->removeEventFilter(this);
            // Everything is painted while the window takes this event.
            QTimer::singleShot(0, this, [this] {
                qCDebug(startup, "window painted");
                deleteLater();
            });
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

void logFirstPaint(QWidget *window)
{
    if (startup().isDebugEnabled() && window->windowHandle())
        new FirstPaint(window->windowHandle()); // owned by the window
}
