#include "widgets/frameshadow.h"

#include <QGraphicsDropShadowEffect>
#include <QPainter>
#include <qdrawutil.h>

namespace {

constexpr int casterSide = 50;
constexpr int corner = 2 * FrameShadow::reach; ///< of the picture; the edges between are even

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
    qDrawBorderPixmap(&painter, rect(), QMargins(corner, corner, corner, corner), m_picture);
}
