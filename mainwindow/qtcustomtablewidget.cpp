#include "mainwindow/qtcustomtablewidget.h"

#include "mainwindow/customheader.h"
#include "mainwindow/sourcecheck.h"

#include <QCheckBox>
#include <QKeyEvent>
#include <QPushButton>

namespace {

constexpr QSize cornerSize{28, 28};
constexpr int cornerTop = 4;
constexpr int cornerFromRight = 29; // px, from the table's right edge to the button's left

const QString expandStyle = QStringLiteral("QPushButton{ border-image: url(:/images/enlarge-table.png);} "
                                           "QPushButton:hover{ border-image: url(:/images/enlarge-table-hover.png); }");
const QString reduceStyle =
    QStringLiteral("QPushButton{margin-right:-3px; border-image: url(:/images/reduce-table.png);} "
                   "QPushButton:hover{ border-image: url(:/images/reduce-table-hover.png); }");

} // namespace

QtCustomTableWidget::QtCustomTableWidget(QWidget *parent)
    : QTableWidget(parent), m_cornerButton(new QPushButton(QString(), this))
{
    m_cornerButton->setAccessibleName(tr("Show details"));
    connect(m_cornerButton, &QPushButton::released, this, &QtCustomTableWidget::onClickedDetails);
}

void QtCustomTableWidget::onClickedDetails()
{
    emit clickedDetails();
}

void QtCustomTableWidget::setExpandFlag(bool flag)
{
    expandFlag = flag;
}

void QtCustomTableWidget::resizeEvent(QResizeEvent *event)
{
    QTableWidget::resizeEvent(event);
    m_cornerButton->setGeometry(QRect(QPoint(width() - cornerFromRight, cornerTop), cornerSize));
    m_cornerButton->raise(); // above a header and scroll bars that came later
    const QString style = expandFlag ? expandStyle : reduceStyle;
    if (m_cornerButton->styleSheet() == style)
        return;
    m_cornerButton->setStyleSheet(style);
    m_cornerButton->setAccessibleName(expandFlag ? tr("Show details") : tr("Hide details"));
    m_cornerButton->setToolTip(expandFlag ? tr("Shows the formats of all sources in place of the charts")
                                          : tr("Back to the charts"));
}

void QtCustomTableWidget::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space) {
        if (QCheckBox *const check = sourceCheckAt(*this, currentRow())) {
            check->toggle();
            return;
        }
    }
    if (event->matches(QKeySequence::SelectAll)) {
        if (auto *const header = qobject_cast<CustomHeader *>(horizontalHeader())) {
            header->toggle();
            return;
        }
    }
    QTableWidget::keyPressEvent(event);
}
