#pragma once

#include <QPixmap>
#include <QWidget>

#include <memory>

class QGraphicsDropShadowEffect;

/// The shadow that a window's frame casts: lies below the frame and reaches beyond it by the width of the shadow.
/// The effect renders it once, for a small square; its corners and edges are then drawn at any size. An effect on the
/// frame itself would render the whole content by way of a picture each time, and OpenGL not at all. GUI thread.
class FrameShadow final : public QWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FrameShadow)

public:
    static constexpr int reach = 10; ///< px around the frame; the effect must not reach further

    FrameShadow(double blurRadius, const QColor &colour, QWidget *parent);

    const QGraphicsDropShadowEffect &effect() const { return *m_effect; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::unique_ptr<QWidget> m_stage;              ///< never shown; holds what casts the shadow
    QGraphicsDropShadowEffect *m_effect = nullptr; ///< its caster's
    QPixmap m_picture;                             ///< null before the first paint
};
