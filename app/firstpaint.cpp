#include "app/firstpaint.h"

#include <QEvent>
#include <QLoggingCategory>
#include <QTimer>
#include <QWidget>

namespace {

Q_LOGGING_CATEGORY(startup, "vexa.startup", QtInfoMsg)

class FirstPaint final : public QObject {
public:
    explicit FirstPaint(QWidget *window) : QObject(window) { window->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint) {
            watched->removeEventFilter(this);
            // After this paint and those of the widgets inside.
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
    if (startup().isDebugEnabled())
        new FirstPaint(window); // owned by the window
}
