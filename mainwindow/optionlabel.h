#pragma once

#include <QLabel>

class QAbstractButton;

/// The text of a radio button that stands apart from it. It looks as its buddy, the button, does: its
/// style sheet may ask for [checked=true] and :disabled. A click on it is one on the button. GUI thread.
class OptionLabel final : public QLabel {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(OptionLabel)
    Q_PROPERTY(bool checked READ isChecked)

public:
    explicit OptionLabel(QWidget *parent = nullptr);

    bool isChecked() const { return m_checked; }

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    QAbstractButton *option() const;
    void followOption();

    bool m_follows = false;
    bool m_checked = false;
};
