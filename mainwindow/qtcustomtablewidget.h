#pragma once

#include <QTableWidget>

class QPushButton;

/// A table with a button in its upper right corner that asks for the detailed view, or back from it.
/// GUI thread.
///
/// For the keyboard: Space toggles the check box in the current row, Ctrl+A the one of a CustomHeader.
class QtCustomTableWidget final : public QTableWidget {
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(QtCustomTableWidget)

public:
    explicit QtCustomTableWidget(QWidget *parent = nullptr);

    QPushButton *cornerButton() const { return m_cornerButton; }

signals:
    void clickedDetails();

public slots:
    void onClickedDetails();
    /// Whether the button asks for more (true) or for less. It changes its look with the next resize.
    void setExpandFlag(bool flag);
    bool getExpandFlag() const { return expandFlag; }

protected:
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool expandFlag = true;
    QPushButton *m_cornerButton;
};
