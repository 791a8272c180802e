#pragma once

#include <QDialog>
#include <QRect>

class QLabel;
class QPushButton;
class QToolButton;
class QWidget;

/// Top left corner of a window of this size in the middle of anchor, moved so that it lies inside
/// screen. When it is larger than the screen, its top left corner is the screen's.
QPoint centeredPosition(const QSize &window, const QRect &anchor, const QRect &screen);

/// How wide a message box is, in pixels. textWidth: of its longest line, when nothing wraps. A short
/// text does not make the box narrower than 400, a long one is spread over lines of about the same
/// length in at most 640; only a long word (wordWidth) makes it wider, up to the screen.
int messageBoxWidth(int textWidth, int wordWidth, int screenWidth);

/// The program's own message dialog: no frame, dark, one button. Show it with exec(): Enter and the
/// button accept; Escape and the close button reject. It appears in the middle of its parent's window,
/// without one in the middle of the primary screen. Long texts wrap; empty ones take no room.
/// GUI thread only.
class CustomMessageBox final : public QDialog {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(CustomMessageBox)

public:
    explicit CustomMessageBox(QWidget *parent = nullptr);

    void setTitle(const QString &title);
    /// main stands large at the top with text01 beside it, text10 and text11 beside each other below.
    /// All are plain text; any may be empty.
    void setMessage(const QString &main, const QString &text01, const QString &text10, const QString &text11);
    void setButtonText(const QString &text);
    /// The main text large and red, no logo.
    void setErrorStyle();
    /// Gives the box the size that its texts need. Shown, it does so by itself.
    void adjustLayout();

protected:
    void showEvent(QShowEvent *event) override;

private:
    QWidget *makeBody();
    QWidget *makeBottom();
    QLabel *makeText(const QString &name, double pointSize);
    QLabel *m_title = nullptr;
    QToolButton *m_logo = nullptr;
    QLabel *m_main = nullptr;
    QLabel *m_text01 = nullptr;
    QLabel *m_text10 = nullptr;
    QLabel *m_text11 = nullptr;
    QPushButton *m_ok = nullptr;
};
