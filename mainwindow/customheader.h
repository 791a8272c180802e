#pragma once

#include <QHeaderView>

/// The header of the table of sources, with a box for all rows in its first section. GUI thread.
///
/// The box is a mark of its own: who owns the rows keeps the two in step. Only a press on the box does
/// anything; sections can neither be pressed nor dragged.
class CustomHeader final : public QHeaderView {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomHeader)

public:
    /// Where the box is, in pixels of the first section.
    static constexpr QRect boxRect{5, 10, 12, 12};
    static constexpr int headerHeight = 32; ///< pixels; has room for the box

    explicit CustomHeader(Qt::Orientation orientation, QWidget *parent = nullptr);

    bool isAllChecked() const { return m_allChecked; }
    /// Sends no signal.
    void setAllChecked(bool checked);
    /// As a press on the box does.
    void toggle();

signals:
    /// The user has toggled the box.
    void changed(bool checked);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void paintSection(QPainter *painter, const QRect &rect, int logicalIndex) const override;

private:
    bool m_allChecked = false;
};
