#include "mainwindow/sourcecheck.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QTableWidget>

QCheckBox *addSourceCheck(QTableWidget *table, int row, const QString &sourceName)
{
    auto *cell = new QWidget(table->viewport());
    auto *check = new QCheckBox(cell);
    check->setStyleSheet(QStringLiteral(
        "QCheckBox {background:none;}QCheckBox::indicator {width:                  12px;height:                 12px;}"
        "QCheckBox::indicator:checked {border-image:url(:/images/selected.png);}"
        "QCheckBox::indicator:unchecked {border-image:url(:/images/unselected.png);}"));
    check->setAccessibleName(sourceName);
    // The table keeps the focus: one stop for all rows, and its Space key toggles the box.
    check->setFocusPolicy(Qt::NoFocus);
    auto *layout = new QHBoxLayout(cell);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(check, 0, Qt::AlignCenter);
    // Showing the cell would lay it out in a size that it never has; its resizing does so in the right one. A size that
    // is set, and no cell's, spares it to compute one.
    layout->setEnabled(false);
    cell->resize(1, 1);
    table->setCellWidget(row, 0, cell);
    layout->setEnabled(true);
    return check;
}

QCheckBox *sourceCheckAt(const QTableWidget &table, int row)
{
    const QWidget *const cell = table.cellWidget(row, 0);
    return cell ? cell->findChild<QCheckBox *>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}
