#include "widgets/framelesswindow.h"

#include "ui_framelesswindow.h"
#include "widgets/framegeometry.h"
#include "widgets/frameshadow.h"

#include <QBoxLayout>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QPointer>
#include <QScopedValueRollback>
#include <QScreen>
#include <QWindow>
#include <QWindowStateChangeEvent>

#include <utility>

namespace {

constexpr double inactiveBlurRadius = 4.0;
constexpr double activeBlurRadius = 9.0;
constexpr QSize leastSize(1280, 720);

} // namespace

FramelessWindow::FramelessWindow(QWidget *parent)
    : FramelessWindow(WindowSystem::of(QGuiApplication::platformName()), parent)
{
}

FramelessWindow::FramelessWindow(WindowSystem system, QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::FramelessWindow>()), m_system(std::move(system))
{
    ui->setupUi(this); // connects the slots with the buttons and the title bar by their names
    setWindowFlags(Qt::FramelessWindowHint | Qt::WindowSystemMenuHint);
    setWindowFlags(windowFlags() | Qt::WindowMinimizeButtonHint);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_TranslucentBackground);
    ui->restoreButton->hide();
    makeShadows();
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &FramelessWindow::on_applicationStateChanged);
    setAttribute(Qt::WA_DeleteOnClose);

    setMinimumSize(leastSize);
    // Opaque, so that nothing below the frame is drawn when the content changes. The style sheet resets that.
    ui->windowFrame->ensurePolished();
    QPalette palette = ui->windowFrame->palette();
    palette.setColor(QPalette::Window, QColor(16, 16, 16));
    ui->windowFrame->setPalette(palette);
    ui->windowFrame->setAutoFillBackground(true);
    ui->windowTitlebar->setIsForMe([this](const QPoint &position) {
        return isMaximized() || zoneAt(position, geometry(), m_borderWidth) == FrameZone::none;
    });
    ui->windowTitlebar->setStartMove(
        [this] { return m_system.startMove && windowHandle() && m_system.startMove(*windowHandle()); });
    // Pictures: the title bar is dragged there, too.
    ui->btnLogo->setAttribute(Qt::WA_TransparentForMouseEvents);
    ui->lblLogo->setAttribute(Qt::WA_TransparentForMouseEvents);
    updateLook();
    qApp->installEventFilter(this);
}

FramelessWindow::~FramelessWindow()
{
    qApp->removeEventFilter(this);
}

void FramelessWindow::setContent(QWidget *content)
{
    const QMargins window = layout()->contentsMargins();
    const QMargins inside = ui->windowContent->layout()->contentsMargins();
    QSize wanted = content->size().expandedTo(content->sizeHint());
    ui->windowContent->layout()->addWidget(content);
    content->show();

    wanted = wanted.grownBy(window).grownBy(inside) + QSize(0, ui->windowTitlebar->height());
    const QRect room = screen() ? screen()->availableGeometry() : m_system.pointerScreen();
    const QSize fitting = wanted.boundedTo(room.size()).expandedTo(minimumSize());
    resize(fitting);
    move(room.x() + qMax(0, (room.width() - fitting.width()) / 2),
         room.y() + qMax(0, (room.height() - fitting.height()) / 2));
}

void FramelessWindow::maximizeOrCenter()
{
    on_maximizeButton_clicked();
}

void FramelessWindow::setWindowTitle(const QString &text)
{
    QWidget::setWindowTitle(text);
}

bool FramelessWindow::fillsScreen() const
{
    return isMaximized() || isFullScreen();
}

void FramelessWindow::on_maximizeButton_clicked()
{
    if (m_isMaximizing)
        return;
    const QScopedValueRollback<bool> guard(m_isMaximizing, true);
    if (!m_normalGeometry.isValid())
        m_normalGeometry = fillsScreen() ? normalGeometry() : geometry();
    ui->restoreButton->show();
    ui->maximizeButton->hide();
    applyMaximumGeometry();
}

/// Changes of the state may come back as further ones: m_isMaximizing is set meanwhile.
///
/// In the middle of a large screen the window is maximised for us alone. Window managers do not let a window that
/// is so for them choose its geometry.
void FramelessWindow::applyMaximumGeometry()
{
    std::optional<QRect> centred;
    if (m_system.placesOwnWindows)
        centred = centredMaximum(m_system.pointerScreen());
    m_isCentred = centred.has_value();
    if (centred) {
        if (windowHandle() && windowHandle()->windowStates() & (Qt::WindowMaximized | Qt::WindowFullScreen))
            windowHandle()->setWindowStates(Qt::WindowNoState);
        setGeometry(*centred);
        overrideWindowState(Qt::WindowMaximized); // after the geometry, which takes a window out of this state
    } else {
        if (windowHandle() && !(windowHandle()->windowStates() & Qt::WindowMaximized))
            overrideWindowState(Qt::WindowNoState);
        showMaximized();
        setWindowState(Qt::WindowMaximized);
    }
}

void FramelessWindow::on_applicationStateChanged(Qt::ApplicationState state)
{
    Q_UNUSED(state)
    // Showing a window that was minimised or closed would bring it back.
    if (m_isMaximizing || !isVisible() || isMinimized() || !fillsScreen())
        return;
    const QScopedValueRollback<bool> guard(m_isMaximizing, true);
    applyMaximumGeometry();
}

/// The dragger tells of a click; nothing is to be done.
void FramelessWindow::onTitle_clicked() {}

void FramelessWindow::on_minimizeButton_clicked()
{
    setWindowState(Qt::WindowMinimized);
}

void FramelessWindow::on_restoreButton_clicked()
{
    restore();
}

void FramelessWindow::on_windowTitlebar_doubleClicked()
{
    if (fillsScreen())
        restore();
    else
        on_maximizeButton_clicked();
}

void FramelessWindow::restore()
{
    const QRect before = std::exchange(m_normalGeometry, QRect());
    m_isCentred = false;
    ui->restoreButton->hide();
    ui->maximizeButton->show();
    setWindowState(Qt::WindowNoState);
    show();
    // The geometry that Qt remembered is the maximised one, when that was set as a geometry.
    if (before.isValid() && m_system.placesOwnWindows)
        setGeometry(before);
}

void FramelessWindow::on_closeButton_clicked()
{
    const QPointer<FramelessWindow> self(this);
    announceClose();
    if (self && !QCoreApplication::closingDown())
        close();
}

void FramelessWindow::closeEvent(QCloseEvent *event)
{
    announceClose();
    event->accept();
}

/// Hidden first: what the content still has to end is nothing to wait for.
void FramelessWindow::announceClose()
{
    if (std::exchange(m_isCloseRequested, true))
        return;
    hide();
    // Closed once more from the receiver's event loop, the window would be deleted under the receiver.
    setAttribute(Qt::WA_DeleteOnClose, false);
    const QPointer<FramelessWindow> self(this);
    emit requestClose();
    if (self)
        setAttribute(Qt::WA_DeleteOnClose);
}

void FramelessWindow::makeShadows()
{
    m_inactiveShadow = new FrameShadow(inactiveBlurRadius, QColor(0, 0, 0, 255), this);
    m_inactiveShadow->setObjectName(QStringLiteral("inactiveShadow"));
    m_activeShadow = new FrameShadow(activeBlurRadius, palette().color(QPalette::Highlight), this);
    m_activeShadow->setObjectName(QStringLiteral("activeShadow"));
    for (FrameShadow *shadow : {m_inactiveShadow, m_activeShadow})
        shadow->lower();
}

void FramelessWindow::placeShadows()
{
    m_activeShadow->setGeometry(rect());
    m_inactiveShadow->setGeometry(rect());
}

/// What is seen follows the state, also where the window system has changed it.
void FramelessWindow::updateLook()
{
    const bool fills = fillsScreen();
    ui->restoreButton->setVisible(fills);
    ui->maximizeButton->setVisible(!fills);
    const int around = fills ? 0 : FrameShadow::reach; // no control of the content lies in the border
    layout()->setContentsMargins(around, around, around, around);
    m_activeShadow->setVisible(!fills && isActiveWindow());
    m_inactiveShadow->setVisible(!fills && !isActiveWindow());
    placeShadows();
}

void FramelessWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placeShadows();
}

void FramelessWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::WindowStateChange) {
        followState(static_cast<QWindowStateChangeEvent *>(event)->oldState());
        updateLook();
    } else if (event->type() == QEvent::ActivationChange) {
        updateLook();
    }
}

/// The window system may change the state by itself, and it knows nothing of windows that are maximised for us
/// alone. One that was maximised before it was minimised is so again when it comes back.
void FramelessWindow::followState(Qt::WindowStates before)
{
    constexpr Qt::WindowStates filling = Qt::WindowMaximized | Qt::WindowFullScreen;
    if (isMinimized()) {
        m_wasMaximized = m_wasMaximized || (before | windowState()) & filling;
    } else if (std::exchange(m_wasMaximized, false)) {
        if (isVisible())
            QMetaObject::invokeMethod(this, &FramelessWindow::on_maximizeButton_clicked, Qt::QueuedConnection);
    } else if (!fillsScreen() && !m_isMaximizing) {
        if (m_isCentred)
            overrideWindowState(Qt::WindowMaximized);
        else if (before & filling)
            m_normalGeometry = QRect(); // the window system has restored it
    }
}

bool FramelessWindow::event(QEvent *event)
{
    // The release that follows goes elsewhere.
    if (event->type() == QEvent::WindowBlocked || event->type() == QEvent::Hide)
        endDrag();
    return QWidget::event(event);
}

/// Sees the events of the whole program: most of them must cost nothing.
bool FramelessWindow::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseMove:
        if (ui && isVisible() && !isMaximized())
            moveTo(static_cast<QMouseEvent *>(event)->globalPos());
        break;
    case QEvent::MouseButtonPress:
        if (ui && isVisible() && !isMaximized() && watched->isWidgetType()
            && static_cast<QWidget *>(watched)->window() == this)
            pressAt(static_cast<QMouseEvent *>(event)->globalPos());
        break;
    case QEvent::MouseButtonRelease:
        if (ui && isVisible() && !isMaximized() && m_mousePressed)
            endDrag();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

/// Called once for each widget that the press passes on its way up.
void FramelessWindow::pressAt(const QPoint &position)
{
    if (m_isWithSystem)
        return;
    const FrameZone zone = zoneAt(position, geometry(), m_borderWidth);
    if (zone != FrameZone::none && m_system.startResize && windowHandle()) {
        // No release comes after it.
        m_isWithSystem = m_system.startResize(*windowHandle(), edgesOf(zone));
        if (m_isWithSystem)
            return;
    }
    m_mousePressed = true;
    m_startGeometry = geometry();
    setDragged(edgesOf(zone));
    showCursor(cursorOf(zone));
}

void FramelessWindow::moveTo(const QPoint &position)
{
    m_isWithSystem = false;
    if (!m_mousePressed) {
        const FrameZone zone = zoneAt(position, geometry(), m_borderWidth);
        if (zone == FrameZone::none)
            setDragged({});
        showCursor(cursorOf(zone));
        return;
    }
    if (!dragged())
        return;
    const std::optional<QRect> wanted =
        draggedGeometry(dragged(), m_startGeometry, position, m_system.desktop(), minimumSize());
    if (wanted)
        setGeometry(*wanted);
}

void FramelessWindow::endDrag()
{
    m_mousePressed = false;
    if (dragged())
        showCursor(Qt::ArrowCursor);
    setDragged({});
}

void FramelessWindow::setDragged(Qt::Edges edges)
{
    m_dragTop = edges.testFlag(Qt::TopEdge);
    m_dragLeft = edges.testFlag(Qt::LeftEdge);
    m_dragRight = edges.testFlag(Qt::RightEdge);
    m_dragBottom = edges.testFlag(Qt::BottomEdge);
}

Qt::Edges FramelessWindow::dragged() const
{
    Qt::Edges edges;
    edges.setFlag(Qt::TopEdge, m_dragTop);
    edges.setFlag(Qt::LeftEdge, m_dragLeft);
    edges.setFlag(Qt::RightEdge, m_dragRight);
    edges.setFlag(Qt::BottomEdge, m_dragBottom);
    return edges;
}

/// Mouse moves are many; a cursor that stays is not set again.
void FramelessWindow::showCursor(Qt::CursorShape shape)
{
    if (cursor().shape() != shape)
        setCursor(shape);
}
