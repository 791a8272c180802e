#include "widgets/frameshadow.h"

#include <QGraphicsDropShadowEffect>
#include <QPainter>

#include <array>

namespace {

constexpr int casterSide = 50;
constexpr int corner = 2 * FrameShadow::reach; ///< of the picture; the edges between are even

/// A corner or an edge along one direction: where it goes, and where in the picture it comes from. px.
struct Part {
    int at;
    int size;
    int from;
    int fromSize;
};

std::array<Part, 3> partsOf(int length, int picture)
{
    return {{{0, corner, 0, corner},
             {corner, length - 2 * corner, corner, picture - 2 * corner},
             {length - corner, corner, picture - corner, corner}}};
}

} // namespace

FrameShadow::FrameShadow(double blurRadius, const QColor &colour, QWidget *parent)
    : QWidget(parent), m_stage(std::make_unique<QWidget>()), m_effect(new QGraphicsDropShadowEffect)
{
    m_effect->setOffset(0, 0);
    m_effect->setBlurRadius(blurRadius);
    m_effect->setColor(colour);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    m_stage->setAttribute(Qt::WA_TranslucentBackground);
    m_stage->resize(casterSide + 2 * reach, casterSide + 2 * reach);
    auto *const caster = new QWidget(m_stage.get());
    caster->setGeometry(reach, reach, casterSide, casterSide);
    QPalette palette;
    palette.setColor(QPalette::Window, Qt::black);
    caster->setPalette(palette);
    caster->setAutoFillBackground(true);
    caster->setGraphicsEffect(m_effect); // takes it over
}

void FrameShadow::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    if (m_picture.isNull()) {
        m_picture = QPixmap(m_stage->size());
        m_picture.fill(Qt::transparent);
        m_stage->render(&m_picture, QPoint(), QRegion(), QWidget::DrawChildren);
    }
    QPainter painter(this);
    const std::array<Part, 3> columns = partsOf(width(), m_picture.width());
    const std::array<Part, 3> rows = partsOf(height(), m_picture.height());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < columns.size(); ++column) {
            if (row == 1 && column == 1)
                continue; // the frame covers it
            painter.drawPixmap(
                QRect(columns[column].at, rows[row].at, columns[column].size, rows[row].size), m_picture,
                QRect(columns[column].from, rows[row].from, columns[column].fromSize, rows[row].fromSize));
        }
    }
}
