#include "mainwindow/resulttables.h"

#include "mainwindow/customheader.h"
#include "mainwindow/qtcustomtablewidget.h"
#include "mainwindow/sourcecheck.h"

#include <QCheckBox>
#include <QHeaderView>
#include <QTableWidget>

#include <array>

namespace {

constexpr int leastSection = 30;                                         // px, at least
constexpr int sourceRowHeight = 20;                                      // px
constexpr std::array<int, 7> detailWidths{40, 500, 140, 60, 60, 60, 60}; // px
constexpr int numberWidth = 50;                                          // px, in the table of tests
constexpr int figureWidth = 300;                                         // px, in the table of tests
constexpr int leastNameWidth = 150;                                      // px, in the table of tests
constexpr int nameColumn = 1;

const QString numberText = QStringLiteral("No");
const QString sourceNameText = QStringLiteral("Source Name");

void setUpHeaders(QTableWidget *table, const QStringList &titles)
{
    table->setColumnCount(titles.size());
    table->setHorizontalHeaderLabels(titles);
    table->verticalHeader()->hide();
    QHeaderView *const header = table->horizontalHeader();
    header->setFixedHeight(CustomHeader::headerHeight);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header->setHighlightSections(false);
    header->setMinimumSectionSize(leastSection); // a style's own may be larger than the widths that are set
}

QTableWidgetItem *plainItem(const QString &text)
{
    auto *item = new QTableWidgetItem(text);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    return item;
}

/// Names may be longer than their column. They come from the network and may look like HTML.
QTableWidgetItem *nameItem(const QString &name)
{
    QTableWidgetItem *item = plainItem(name);
    item->setToolTip(name.toHtmlEscaped());
    return item;
}

} // namespace

CustomHeader *setUpSourceTable(QtCustomTableWidget *table)
{
    auto *header = new CustomHeader(Qt::Horizontal, table);
    table->setHorizontalHeader(header);
    setUpHeaders(table, {QString(), numberText, sourceNameText});
    header->setDefaultSectionSize(leastSection);
    header->setStretchLastSection(true);
    header->setSectionResizeMode(QHeaderView::Fixed);
    table->verticalHeader()->setMinimumSectionSize(sourceRowHeight);
    table->verticalHeader()->setDefaultSectionSize(sourceRowHeight);
    table->setSelectionMode(QAbstractItemView::NoSelection);
    return header;
}

void setUpDetailTable(QtCustomTableWidget *table)
{
    table->setExpandFlag(false);
    setUpHeaders(table, {numberText, QStringLiteral("Name"), QStringLiteral("IP"), QStringLiteral("Format"),
                         QStringLiteral("FPS"), QStringLiteral("Width"), QStringLiteral("Height")});
    for (std::size_t column = 0; column < detailWidths.size(); ++column)
        table->setColumnWidth(static_cast<int>(column), detailWidths[column]);
}

void setUpStatusTable(QTableWidget *table)
{
    setUpHeaders(table, {numberText, sourceNameText, QStringLiteral("Receive FPS"), QStringLiteral("Frame Length")});
    sizeStatusColumns(table);
}

void sizeStatusColumns(QTableWidget *table)
{
    table->setColumnWidth(0, numberWidth);
    table->setColumnWidth(2, figureWidth);
    table->setColumnWidth(3, figureWidth);
    table->setColumnWidth(nameColumn, qMax(table->width() - numberWidth - 2 * figureWidth, leastNameWidth));
}

QCheckBox *fillSourceRow(QtCustomTableWidget *table, int row, const QString &name)
{
    QCheckBox *const check = addSourceCheck(table, row, name);
    table->setItem(row, 1, plainItem(QString::number(row + 1)));
    table->setItem(row, 2, nameItem(name));
    return check;
}

void fillDetailRow(QtCustomTableWidget *table, int row, const QString &name, const QString &url)
{
    table->setItem(row, 0, plainItem(QString::number(row + 1)));
    table->setItem(row, 1, nameItem(name));
    table->setItem(row, 2, nameItem(url));
}

void fillDetailFormat(QtCustomTableWidget *table, int row, const QString &format, double framesPerSecond, int width,
                      int height)
{
    setCellText(table, row, 3, format);
    setCellText(table, row, 4, QStringLiteral("%1fps").arg(framesPerSecond));
    setCellText(table, row, 5, QString::number(width));
    setCellText(table, row, 6, QString::number(height));
}

void fillStatusFigures(QTableWidget *table, int row, const QString &rate, const QString &interval)
{
    setCellText(table, row, 2, rate);
    setCellText(table, row, 3, interval);
}

void updateStatusFigures(QTableWidget *table)
{
    for (const int column : {2, 3}) {
        QWidget *const viewport = table->viewport();
        viewport->update(table->columnViewportPosition(column), 0, table->columnWidth(column), viewport->height());
    }
}

void setCellText(QTableWidget *table, int row, int column, const QString &text)
{
    if (row < 0 || row >= table->rowCount())
        return;
    if (QTableWidgetItem *const item = table->item(row, column))
        item->setText(text);
    else
        table->setItem(row, column, plainItem(text));
}

void updateStatusTable(QTableWidget *statusTable, const QTableWidget &sourceTable, const QVector<int> &checked,
                       CustomHeader *header)
{
    statusTable->setRowCount(0);
    statusTable->setRowCount(checked.size());
    for (int i = 0; i < checked.size(); ++i) {
        const QTableWidgetItem *const name = sourceTable.item(checked.at(i), 2);
        statusTable->setItem(i, 0, plainItem(QString::number(checked.at(i) + 1)));
        statusTable->setItem(i, 1, nameItem(name ? name->text() : QString()));
    }
    if (checked.isEmpty())
        header->setAllChecked(false);
    else if (checked.size() == sourceTable.rowCount())
        header->setAllChecked(true);
    header->viewport()->update();
}
