#pragma once

#include <QLabel>

/// A label that never asks for more room than it gets: what does not fit ends in an ellipsis, and a tool
/// tip shows it whole. Its text is plain, whatever it looks like. GUI thread.
class ElidedLabel final : public QLabel {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ElidedLabel)
    Q_PROPERTY(int maximumLines READ maximumLines WRITE setMaximumLines)

public:
    explicit ElidedLabel(QWidget *parent = nullptr);

    /// How many lines each line of the text may take before it is cut; 1 or more.
    int maximumLines() const { return m_maximumLines; }
    void setMaximumLines(int lines);

    /// What is drawn in the width that the label has now.
    QString shownText() const;
    /// Whether something of the text is not drawn.
    bool isCut() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return m_maximumLines > 1; }
    int heightForWidth(int width) const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    struct Lines {
        QStringList texts;
        bool cut = false;
    };

    Lines linesIn(int width) const;
    QRect textRect() const;
    QSize frame() const;

    int m_maximumLines = 1;
};
