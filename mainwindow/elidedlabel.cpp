#include "mainwindow/elidedlabel.h"

#include "mainwindow/wholetexttip.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>

namespace {

constexpr int leastCharacters = 3;

}

ElidedLabel::ElidedLabel(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
}

void ElidedLabel::setMaximumLines(int lines)
{
    m_maximumLines = qMax(1, lines);
    updateGeometry();
    update();
}

QRect ElidedLabel::textRect() const
{
    const int inner = margin();
    return contentsRect().adjusted(inner, inner, -inner, -inner);
}

/// What lies around the text.
QSize ElidedLabel::frame() const
{
    return size() - textRect().size();
}

ElidedLabel::Lines ElidedLabel::linesIn(int width) const
{
    Lines result;
    const QStringList paragraphs = text().split(QLatin1Char('\n'));
    for (const QString &paragraph : paragraphs) {
        QTextLayout layout(paragraph, font());
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        int start = 0;
        for (int i = 1; i < m_maximumLines; ++i) {
            QTextLine line = layout.createLine();
            if (!line.isValid())
                break;
            line.setLineWidth(width);
            if (line.textStart() + line.textLength() >= paragraph.size())
                break;
            result.texts.append(paragraph.mid(line.textStart(), line.textLength()).trimmed());
            start = line.textStart() + line.textLength();
        }
        layout.endLayout();
        const QString rest = paragraph.mid(start);
        result.texts.append(fontMetrics().elidedText(rest, Qt::ElideRight, width));
        result.cut = result.cut || result.texts.constLast() != rest;
    }
    return result;
}

QString ElidedLabel::shownText() const
{
    return linesIn(textRect().width()).texts.join(QLatin1Char('\n'));
}

bool ElidedLabel::isCut() const
{
    return linesIn(textRect().width()).cut;
}

QSize ElidedLabel::sizeHint() const
{
    return {QLabel::sizeHint().width(), minimumSizeHint().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    ensurePolished();
    const int lines = text().count(QLatin1Char('\n')) + 1;
    return frame() + QSize(fontMetrics().averageCharWidth() * leastCharacters, fontMetrics().lineSpacing() * lines);
}

int ElidedLabel::heightForWidth(int width) const
{
    ensurePolished();
    return frame().height() + fontMetrics().lineSpacing() * linesIn(width - frame().width()).texts.size();
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip || !isCut())
        return QLabel::event(event);
    showWholeText(event, text(), this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawFrame(&painter);
    style()->drawItemText(&painter, textRect(),
                          static_cast<int>(QStyle::visualAlignment(layoutDirection(), alignment())), palette(),
                          isEnabled(), shownText(), foregroundRole());
}
