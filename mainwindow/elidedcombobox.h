#pragma once

#include <QComboBox>

/// A combo box whose current text ends in an ellipsis when it does not fit; a tool tip shows it whole.
/// GUI thread.
class ElidedComboBox final : public QComboBox {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ElidedComboBox)

public:
    explicit ElidedComboBox(QWidget *parent = nullptr);

    /// What is drawn in the width that the box has now.
    QString shownText() const;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};
