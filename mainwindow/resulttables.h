#pragma once

#include <QString>
#include <QVector>

class CustomHeader;
class QCheckBox;
class QTableWidget;
class QtCustomTableWidget;

// The columns of the window's three tables, and what their rows say. GUI thread.

/// Columns and header of the choice of sources. The header belongs to the table.
CustomHeader *setUpSourceTable(QtCustomTableWidget *table);
/// Columns of the format facts.
void setUpDetailTable(QtCustomTableWidget *table);
/// Columns of the sources under test, with their widths.
void setUpStatusTable(QTableWidget *table);
/// Column widths by the table's width. The names get what is left, but always enough to tell them apart:
/// a table narrower than 800 pixels scrolls, though down to 600 all figures are seen.
void sizeStatusColumns(QTableWidget *table);

/// Fills an existing row for the source of that index and returns its check box, unchecked.
QCheckBox *fillSourceRow(QtCustomTableWidget *table, int row, const QString &name);
/// What is known of a source before its video was seen.
void fillDetailRow(QtCustomTableWidget *table, int row, const QString &name, const QString &url);
/// Columns 3 to 6 of a row; does nothing when there is no such row.
void fillDetailFormat(QtCustomTableWidget *table, int row, const QString &format, double framesPerSecond, int width,
                      int height);
/// The latest rate and interval of a source under test; does nothing when there is no such row.
void fillStatusFigures(QTableWidget *table, int row, const QString &rate, const QString &interval);
/// Asks for a repaint of all rates and intervals that are seen.
void updateStatusFigures(QTableWidget *table);
/// Sets the text of a cell of an existing row; does nothing when there is no such row.
void setCellText(QTableWidget *table, int row, int column, const QString &text);

/// One row in statusTable for each row of sourceTable in checked. The
/// header's mark becomes set when all are checked, clear when none is, and else stays.
void updateStatusTable(QTableWidget *statusTable, const QTableWidget &sourceTable, const QVector<int> &checked,
                       CustomHeader *header);
