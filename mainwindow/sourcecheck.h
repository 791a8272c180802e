#pragma once

#include <QString>

class QCheckBox;
class QTableWidget;

/// Puts a check box, unchecked, into column 0 of an existing row; the table owns it. The name is for
/// those who do not see the row.
QCheckBox *addSourceCheck(QTableWidget *table, int row, const QString &sourceName);

/// The check box that addSourceCheck() put there; null when there is none.
QCheckBox *sourceCheckAt(const QTableWidget &table, int row);
