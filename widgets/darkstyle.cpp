#include "widgets/darkstyle.h"

#include <QApplication>
#include <QFile>
#include <QFileDialog>
#include <QMenu>
#include <QPainter>
#include <QScopedValueRollback>
#include <QStyleOption>
#include <QTimer>
#include <QToolTip>

namespace {

const QColor white(255, 255, 255);
const QColor accent(0x15, 0xcf, 0xbb);
const QColor frameColor(0x10, 0x10, 0x10);
const QColor chartColor(0x15, 0x15, 0x15);
const QColor trackColor(0x17, 0x17, 0x17);
const QColor panelColor(0x20, 0x20, 0x20);
const QColor raisedColor(0x33, 0x33, 0x33);
const QColor edgeLine(0x77, 0x77, 0x77);
const QColor disabledEdgeLine(0x3a, 0x3a, 0x3a);
const QColor tipColor(0x2b, 0x2b, 0x2b);

constexpr int textSize = 12; // px, as in the window's own tables

const QString noSheet = QStringLiteral("/* none */");

QString readSheet()
{
    QFile file(QStringLiteral(":/darkstyle.qss"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.readAll());
}

QColor edgeColor(const QStyleOption &option)
{
    QColor edge = option.palette.color(QPalette::Text);
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    edge.setAlpha(enabled && option.state.testFlag(QStyle::State_MouseOver) ? 220 : 150);
    return edge;
}

/// The square that an indicator fills, on whole pixels plus a half so that a line of 1 px is sharp.
QRectF indicatorRect(const QRect &rect)
{
    const int side = qMin(rect.width(), rect.height());
    const int left = rect.x() + (rect.width() - side) / 2;
    const int top = rect.y() + (rect.height() - side) / 2;
    return QRectF(left + 0.5, top + 0.5, side - 1, side - 1);
}

void prepareIndicator(const QStyleOption &option, QPainter *painter, bool filled)
{
    const QPalette::ColorGroup group =
        option.state.testFlag(QStyle::State_Enabled) ? QPalette::Active : QPalette::Disabled;
    const QColor fill = option.palette.color(group, filled ? QPalette::Highlight : QPalette::Base);
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(filled ? fill : edgeColor(option), 1.0));
    painter->setBrush(option.state.testFlag(QStyle::State_Sunken) ? fill.lighter(130) : fill);
}

QColor markColor(const QStyleOption &option)
{
    const bool enabled = option.state.testFlag(QStyle::State_Enabled);
    return option.palette.color(enabled ? QPalette::Active : QPalette::Disabled, QPalette::HighlightedText);
}

void drawCheckBox(const QStyleOption &option, QPainter *painter)
{
    const bool on = option.state.testFlag(QStyle::State_On);
    const bool partly = option.state.testFlag(QStyle::State_NoChange);
    const QRectF box = indicatorRect(option.rect);
    painter->save();
    prepareIndicator(option, painter, on || partly);
    painter->drawRoundedRect(box, 2.0, 2.0);
    painter->setPen(QPen(markColor(option), qMax(1.5, box.width() / 7), Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter->setBrush(Qt::NoBrush);
    const auto at = [&box](double x, double y) {
        return QPointF(box.x() + x * box.width(), box.y() + y * box.height());
    };
    if (partly) {
        painter->drawLine(at(0.28, 0.5), at(0.72, 0.5));
    } else if (on) {
        const QPointF tick[] = {at(0.24, 0.52), at(0.43, 0.71), at(0.77, 0.31)};
        painter->drawPolyline(tick, 3);
    }
    painter->restore();
}

void drawRadioButton(const QStyleOption &option, QPainter *painter)
{
    const bool on = option.state.testFlag(QStyle::State_On);
    const QRectF box = indicatorRect(option.rect);
    painter->save();
    prepareIndicator(option, painter, on);
    painter->drawEllipse(box);
    if (on) {
        const double inset = box.width() * 0.3;
        painter->setPen(Qt::NoPen);
        painter->setBrush(markColor(option));
        painter->drawEllipse(box.adjusted(inset, inset, -inset, -inset));
    }
    painter->restore();
}

void drawOutline(const QRect &rect, const QColor &color, QPainter *painter)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, 1.0));
    painter->setBrush(Qt::NoBrush);
    painter->drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), 2.0, 2.0);
    painter->restore();
}

void drawFocus(const QStyleOption &option, QPainter *painter)
{
    // On an item that is selected the highlight's colour would not be seen.
    const auto *const focus = qstyleoption_cast<const QStyleOptionFocusRect *>(&option);
    const bool onHighlight = focus && focus->backgroundColor.isValid()
                             && focus->backgroundColor == option.palette.color(QPalette::Highlight);
    drawOutline(option.rect, option.palette.color(onHighlight ? QPalette::WindowText : QPalette::Highlight), painter);
}

/// The window's sheets give some buttons a picture and nothing that tells the focus.
bool isPictureOfSheet(const QStyleOption &option)
{
    const auto *const button = qstyleoption_cast<const QStyleOptionToolButton *>(&option);
    return button && button->text.isEmpty() && button->icon.isNull()
           && !button->features.testFlag(QStyleOptionToolButton::Arrow);
}

/// The application's font is made for captions: large and bold. Under a style sheet of the application a dialog does
/// not hand its font on, so each of its widgets is asked.
bool hasPlainText(const QWidget &widget)
{
    return qobject_cast<const QMenu *>(&widget) || qobject_cast<const QFileDialog *>(widget.window());
}

/// Fields that are drawn without the style sheet get the edge that it gives to a line edit.
bool isField(QStyle::ComplexControl control, const QStyleOptionComplex &option)
{
    if (const auto *const spin = qstyleoption_cast<const QStyleOptionSpinBox *>(&option))
        return control == QStyle::CC_SpinBox && spin->frame;
    const auto *const combo = qstyleoption_cast<const QStyleOptionComboBox *>(&option);
    return combo && control == QStyle::CC_ComboBox && combo->frame && combo->editable;
}

} // namespace

// The macro declares a function, which may not stand inside of a namespace. A linker takes the sheet out of a static
// library only when it is asked for.
static void initStyleResources()
{
    Q_INIT_RESOURCE(style);
}

DarkStyle::DarkStyle() : QProxyStyle(QStringLiteral("Fusion")) {}

DarkStyle::DarkStyle(QStyle *base) : QProxyStyle(base) {}

QPalette DarkStyle::darkPalette()
{
    QPalette palette(white, raisedColor, /*light*/ QColor(0x4a, 0x4a, 0x4a), frameColor, trackColor, white, white,
                     chartColor, panelColor);
    palette.setColor(QPalette::Midlight, QColor(0x42, 0x42, 0x42));
    palette.setColor(QPalette::Shadow, Qt::black);
    palette.setColor(QPalette::AlternateBase, QColor(0x1a, 0x1a, 0x1a));
    palette.setColor(QPalette::ToolTipBase, tipColor);
    palette.setColor(QPalette::ToolTipText, white);
    palette.setColor(QPalette::PlaceholderText, QColor(0x8c, 0x8c, 0x8c));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, frameColor);
    palette.setColor(QPalette::Link, accent);
    palette.setColor(QPalette::LinkVisited, QColor(0x74, 0xc8, 0xff));

    const QColor faint(0x70, 0x70, 0x70);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText, QPalette::BrightText})
        palette.setColor(QPalette::Disabled, role, faint);
    palette.setColor(QPalette::Disabled, QPalette::PlaceholderText, QColor(0x4a, 0x4a, 0x4a));
    palette.setColor(QPalette::Disabled, QPalette::Button, tipColor);
    palette.setColor(QPalette::Disabled, QPalette::Base, QColor(0x1c, 0x1c, 0x1c));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor(0x0c, 0x57, 0x4f));
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, QColor(0x8f, 0xb0, 0xac));
    palette.setColor(QPalette::Disabled, QPalette::Link, faint);
    palette.setColor(QPalette::Disabled, QPalette::LinkVisited, faint);
    return palette;
}

void DarkStyle::polish(QPalette &palette)
{
    palette = darkPalette();
}

QPalette DarkStyle::standardPalette() const
{
    return darkPalette();
}

void DarkStyle::polish(QApplication *application)
{
    if (m_switching)
        return;
    QProxyStyle::polish(application);
    QToolTip::setPalette(darkPalette());                            // a desktop may bring its own for tool tips alone
    static const bool isSheetLinked = (initStyleResources(), true); // once
    Q_UNUSED(isSheetLinked)
    const QString sheet = readSheet();
    if (sheet.isEmpty())
        return;
    const QScopedValueRollback<bool> switching(m_switching, true);
    m_formerSheet = application->styleSheet();
    if (m_formerSheet == noSheet)
        m_formerSheet.clear();
    m_sheet = sheet;
    application->setStyleSheet(sheet);
}

void DarkStyle::unpolish(QApplication *application)
{
    if (m_switching)
        return;
    if (!m_sheet.isEmpty() && application->styleSheet() == m_sheet) {
        const QScopedValueRollback<bool> switching(m_switching, true);
        if (!m_formerSheet.isEmpty()) {
            application->setStyleSheet(m_formerSheet);
        } else {
            // Without a sheet Qt would delete the very style that is calling; so that happens a turn later.
            application->setStyleSheet(noSheet);
            QTimer::singleShot(0, application, [application] {
                if (application->styleSheet() == noSheet)
                    application->setStyleSheet(QString());
            });
        }
    }
    m_sheet.clear();
    QProxyStyle::unpolish(application);
}

void DarkStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (!hasPlainText(*widget))
        return;
    QFont font = widget->font();
    font.setWeight(QFont::Normal);
    font.setPixelSize(textSize);
    widget->setFont(font);
}

int DarkStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                         QStyleHintReturn *returned) const
{
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) // some desktops bring theirs
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}

void DarkStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                              const QWidget *widget) const
{
    switch (element) {
    case PE_IndicatorCheckBox:
    case PE_IndicatorItemViewItemCheck:
        drawCheckBox(*option, painter);
        return;
    case PE_IndicatorRadioButton:
        drawRadioButton(*option, painter);
        return;
    case PE_FrameFocusRect:
        drawFocus(*option, painter);
        return;
    case PE_Frame: // around lists, tables and texts, where Fusion does not show the focus
        if (option->state.testFlag(State_HasFocus)) {
            drawFocus(*option, painter);
            return;
        }
        break;
    case PE_PanelMenu: // also below the list of a combo box
    case PE_FrameMenu:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        drawOutline(option->rect, edgeLine, painter);
        return;
    default:
        break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void DarkStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                            const QWidget *widget) const
{
    QProxyStyle::drawControl(element, option, painter, widget);
    if (element == CE_TabBarTabLabel && option->state.testFlag(State_HasFocus)) // Fusion only tints its edge
        drawOutline(option->rect.adjusted(3, 3, -3, -2), option->palette.color(QPalette::Highlight), painter);
    if (element == CE_ToolButtonLabel && option->state.testFlag(State_HasFocus)
        && option->state.testFlag(State_KeyboardFocusChange) && isPictureOfSheet(*option))
        drawOutline(option->rect, white, painter); // the picture may have the highlight's colour
}

void DarkStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                   const QWidget *widget) const
{
    QProxyStyle::drawComplexControl(control, option, painter, widget);
    if (isField(control, *option) && !option->state.testFlag(State_HasFocus))
        drawOutline(option->rect, option->state.testFlag(State_Enabled) ? edgeLine : disabledEdgeLine, painter);
}
